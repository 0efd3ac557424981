#include "Topology.h"

#include "FreshLibrary.h"
#include "TopologyText.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

namespace {

using Visits = std::vector<std::string>;

/** Notes each visit as class and number, and answers false to those named in `stops`. */
class Recorder : public Topology::TopologyVisitor {
public:
   bool visit( const Topology::Component* node ) override { return note( node, "Component", node->uid ); }

   bool visit( const Topology::Device* node ) override { return note( node, "Device", node->did ); }

   bool visit( const Topology::Mux* node ) override { return note( node, "Mux", node->did ); }

   bool visit( const Topology::Bus* node ) override { return note( node, "Bus", node->id ); }

   bool visit( const Topology::Accelerator* node ) override { return note( node, "Accelerator", node->id ); }

   bool visit( const Topology::SCD* node ) override { return note( node, "SCD", node->pci ); }

   bool visit( const Topology::I2C* node ) override { return note( node, "I2C", node->id ); }

   bool visit( const Topology::IOPort* node ) override { return note( node, "IOPort", node->id ); }

   bool visit( const Topology::Celestica* node ) override { return note( node, "Celestica", 0 ); }

   bool visit( const Topology::PLM* node ) override { return note( node, "PLM", node->id ); }

   bool visit( const Topology::LinuxFs* node ) override { return note( node, "LinuxFs", 0 ); }

   bool visit( const Topology::SccSpi* node ) override { return note( node, "SccSpi", node->id ); }

   bool visit( const Topology::FbDomFpga* node ) override { return note( node, "FbDomFpga", node->pci ); }

   bool visit( const Topology::Topology* node ) override { return note( node, "Topology", 0 ); }

   Visits visits;
   /** The complete object of each visit, which a medium shares with its bus. */
   std::vector<const void*> objects;
   std::set<std::string> stops;

private:
   template <typename Visited>
   bool note( const Visited* node, const char* name, uint32_t number ) {
      visits.push_back( fmt::format( "{} {}", name, number ) );
      objects.push_back( dynamic_cast<const void*>( node ) );
      return !stops.contains( visits.back() );
   }
};

Visits visitsOf( const std::string& text ) {
   Recorder recorder;
   EXPECT_TRUE( TopologyText::load( text ).accept( &recorder ) );
   return recorder.visits;
}

/** One of everything, with brothers at every level. */
constexpr auto board = R"( [
   { "type": "LinuxFs", "ham": "SimHam", "devices": [ { "did": 1 } ] },
   { "type": "SCD", "ham": "SimHam", "pci": 2, "accelerators": [
      { "id": 1, "busses": [
         { "id": 1,
           "devices": [ { "did": 10, "components": [ { "uid": 100 }, { "uid": 101 } ] }, { "did": 11 } ],
           "muxes": [ { "did": 20, "busses": [ { "id": 2, "devices": [ { "did": 30 } ] },
                                               { "id": 3, "devices": [ { "did": 31 } ] } ] },
                      { "did": 21 } ] },
         { "id": 4, "devices": [ { "did": 40 } ] } ] },
      { "id": 2 } ] },
   { "type": "Celestica", "ham": "SimHam", "accelerators": [
      { "id": 3, "busses": [ { "id": 7 } ] },
      { "id": 4 } ] },
   { "type": "FbDomFpga", "ham": "SimHam", "pci": 5, "busses": [
      { "id": 5, "devices": [ { "did": 50 } ] },
      { "id": 6 } ] },
   { "type": "I2C", "ham": "SimHam", "id": 61, "devices": [ { "did": 60 } ] },
   { "type": "IOPort", "ham": "SimHam", "id": 62 },
   { "type": "PLM", "ham": "SimHam", "id": 63, "muxes": [ { "did": 64 } ] },
   { "type": "SccSpi", "ham": "SimHam", "id": 65 } ] )";

const Visits scdPath { "Bus 1", "Accelerator 1", "SCD 2", "Topology 0" };

Visits operator+( Visits left, const Visits& right ) {
   left.insert( left.end(), right.begin(), right.end() );
   return left;
}

/** Each node of the board in the order of the walk, with its ancestors from the nearest to the root. */
const struct {
   std::string node;
   Visits ancestors;
} walk[] = {
   { "Device 1", { "LinuxFs 0", "Topology 0" } },
   { "LinuxFs 0", { "Topology 0" } },
   { "Component 100", Visits { "Device 10" } + scdPath },
   { "Component 101", Visits { "Device 10" } + scdPath },
   { "Device 10", scdPath },
   { "Device 11", scdPath },
   { "Device 30", Visits { "Bus 2", "Mux 20" } + scdPath },
   { "Bus 2", Visits { "Mux 20" } + scdPath },
   { "Device 31", Visits { "Bus 3", "Mux 20" } + scdPath },
   { "Bus 3", Visits { "Mux 20" } + scdPath },
   { "Mux 20", scdPath },
   { "Mux 21", scdPath },
   { "Bus 1", { "Accelerator 1", "SCD 2", "Topology 0" } },
   { "Device 40", { "Bus 4", "Accelerator 1", "SCD 2", "Topology 0" } },
   { "Bus 4", { "Accelerator 1", "SCD 2", "Topology 0" } },
   { "Accelerator 1", { "SCD 2", "Topology 0" } },
   { "Accelerator 2", { "SCD 2", "Topology 0" } },
   { "SCD 2", { "Topology 0" } },
   { "Bus 7", { "Accelerator 3", "Celestica 0", "Topology 0" } },
   { "Accelerator 3", { "Celestica 0", "Topology 0" } },
   { "Accelerator 4", { "Celestica 0", "Topology 0" } },
   { "Celestica 0", { "Topology 0" } },
   { "Device 50", { "Bus 5", "FbDomFpga 5", "Topology 0" } },
   { "Bus 5", { "FbDomFpga 5", "Topology 0" } },
   { "Bus 6", { "FbDomFpga 5", "Topology 0" } },
   { "FbDomFpga 5", { "Topology 0" } },
   { "Device 60", { "Bus 61", "I2C 61", "Topology 0" } },
   { "Bus 61", { "I2C 61", "Topology 0" } },
   { "I2C 61", { "Topology 0" } },
   { "Bus 62", { "IOPort 62", "Topology 0" } },
   { "IOPort 62", { "Topology 0" } },
   { "Mux 64", { "Bus 63", "PLM 63", "Topology 0" } },
   { "Bus 63", { "PLM 63", "Topology 0" } },
   { "PLM 63", { "Topology 0" } },
   { "Bus 65", { "SccSpi 65", "Topology 0" } },
   { "SccSpi 65", { "Topology 0" } },
   { "Topology 0", {} },
};

Visits walkUpTo( const std::string& node ) {
   Visits visits;
   for ( auto& step : walk ) {
      visits.push_back( step.node );
      if ( step.node == node ) {
         break;
      }
   }
   return visits;
}

} // namespace

class TopologyWalk : public FreshLibrary {};

TEST_F( TopologyWalk, OfAnEmptyTreeVisitsTheRootAlone ) {
   EXPECT_THAT( visitsOf( "[]" ), ElementsAre( "Topology 0" ) );
}

TEST_F( TopologyWalk, VisitsEveryNodeAfterItsChildren ) {
   EXPECT_THAT( visitsOf( board ), ElementsAreArray( walkUpTo( "Topology 0" ) ) );
}

TEST_F( TopologyWalk, ThatIsStoppedVisitsTheAncestorsAndNothingElse ) {
   auto& topology = TopologyText::load( board );
   for ( auto& [node, ancestors] : walk ) {
      SCOPED_TRACE( node );
      Recorder recorder;
      recorder.stops = { node };
      EXPECT_FALSE( topology.accept( &recorder ) );
      EXPECT_THAT( recorder.visits, ElementsAreArray( walkUpTo( node ) + ancestors ) );
   }
}

TEST_F( TopologyWalk, ThatIsStoppedIgnoresWhatAncestorsAnswer ) {
   auto& topology = TopologyText::load( board );
   for ( auto& [node, ancestors] : walk ) {
      SCOPED_TRACE( node );
      Recorder recorder;
      recorder.stops = { ancestors.begin(), ancestors.end() };
      recorder.stops.insert( node );
      EXPECT_FALSE( topology.accept( &recorder ) );
      EXPECT_THAT( recorder.visits, ElementsAreArray( walkUpTo( node ) + ancestors ) );
   }
}

TEST_F( TopologyWalk, ThatAComponentStopsGoesStraightToTheRoot ) {
   auto& topology = TopologyText::load( R"( [
      { "type": "I2C", "ham": "SimHam", "id": 1,
        "devices": [ { "did": 7, "components": [ { "uid": 70 }, { "uid": 71 } ] }, { "did": 8 } ],
        "muxes": [ { "did": 8 } ] },
      { "type": "PLM", "ham": "SimHam", "id": 2 } ] )" );
   Recorder recorder;
   recorder.stops = { "Component 70" };
   EXPECT_FALSE( topology.accept( &recorder ) );
   EXPECT_THAT( recorder.visits, ElementsAre( "Component 70", "Device 7", "Bus 1", "I2C 1", "Topology 0" ) );
}

TEST_F( TopologyWalk, FromADeviceBehindAMuxPassesBothBusses ) {
   auto& topology = TopologyText::load(
      TopologyText::mux( R"("did": 20, "busses": [ { "id": 2, "devices": [ { "did": 7 } ] } ])" ) );
   Recorder recorder;
   recorder.stops = { "Device 7" };
   topology.accept( &recorder );
   EXPECT_THAT(
      recorder.visits, ElementsAre( "Device 7", "Bus 2", "Mux 20", "Bus 1", "PLM 1", "Topology 0" ) );
}

TEST_F( TopologyWalk, TakesMediaInTheOrderOfTheDocument ) {
   EXPECT_THAT( visitsOf( R"( [ { "type": "PLM", "ham": "", "id": 9 }, { "type": "Celestica", "ham": "" },
                                { "type": "PLM", "ham": "", "id": 3 } ] )" ),
      ElementsAre( "Bus 9", "PLM 9", "Celestica 0", "Bus 3", "PLM 3", "Topology 0" ) );
}

TEST_F( TopologyWalk, TakesAcceleratorsByAscendingId ) {
   auto accelerators = R"("pci": 1, "accelerators": [ { "id": 5 }, { "id": 4294967295 }, { "id": 2 } ])";
   EXPECT_THAT( visitsOf( TopologyText::medium( "SCD", accelerators ) ),
      ElementsAre( "Accelerator 2", "Accelerator 5", "Accelerator 4294967295", "SCD 1", "Topology 0" ) );
   EXPECT_THAT( visitsOf( TopologyText::medium( "Celestica", accelerators ) ),
      ElementsAre(
         "Accelerator 2", "Accelerator 5", "Accelerator 4294967295", "Celestica 0", "Topology 0" ) );
}

TEST_F( TopologyWalk, TakesBussesByAscendingIdAndNegativeOnesLast ) {
   auto busses = R"("busses": [ { "id": -1 }, { "id": 9 }, { "id": 3 } ])";
   EXPECT_THAT( visitsOf( TopologyText::medium( "FbDomFpga", R"("pci": 1, )" + std::string( busses ) ) ),
      ElementsAre( "Bus 3", "Bus 9", "Bus 4294967295", "FbDomFpga 1", "Topology 0" ) );
   EXPECT_THAT( visitsOf( TopologyText::accelerator( R"("id": 1, )" + std::string( busses ) ) ),
      ElementsAre( "Bus 3", "Bus 9", "Bus 4294967295", "Accelerator 1", "Celestica 0", "Topology 0" ) );
   EXPECT_THAT( visitsOf( TopologyText::mux( R"("did": 20, )" + std::string( busses ) ) ),
      ElementsAre( "Bus 3", "Bus 9", "Bus 4294967295", "Mux 20", "Bus 1", "PLM 1", "Topology 0" ) );
}

TEST_F( TopologyWalk, TakesDevicesBeforeMuxesEachInTheOrderOfTheDocument ) {
   EXPECT_THAT(
      visitsOf( TopologyText::bus(
         R"("muxes": [ { "did": 21 }, { "did": 20 } ], "devices": [ { "did": 9 }, { "did": 7 } ])" ) ),
      ElementsAre( "Device 9", "Device 7", "Mux 21", "Mux 20", "Bus 1", "PLM 1", "Topology 0" ) );
   EXPECT_THAT( visitsOf( TopologyText::medium( "LinuxFs", R"("devices": [ { "did": 9 }, { "did": 7 } ])" ) ),
      ElementsAre( "Device 9", "Device 7", "LinuxFs 0", "Topology 0" ) );
}

TEST_F( TopologyWalk, TakesComponentsInTheOrderOfTheDocument ) {
   EXPECT_THAT(
      visitsOf( TopologyText::device( R"("did": 7, "components": [ { "uid": 71 }, { "uid": 70 } ])" ) ),
      ElementsAre( "Component 71", "Component 70", "Device 7", "LinuxFs 0", "Topology 0" ) );
}

class TopologyMediumBusWalk : public FreshLibrary, public ::testing::WithParamInterface<const char*> {
protected:
   const std::string type = GetParam();
   const Topology::MediumNode& medium = TopologyText::loadMedium<Topology::MediumNode>(
      TopologyText::medium( type, R"("id": 9, "label": "it", "devices": [ { "did": 7 } ])" ) );
   const Topology::Bus& bus = *Topology::getBusByLabel( "it" );
   const std::string own = type + " 9";
   Recorder recorder;
};

INSTANTIATE_TEST_SUITE_P( Medium, TopologyMediumBusWalk,
   ::testing::Values( "I2C", "IOPort", "PLM", "SccSpi" ),
   []( auto& row ) { return std::string( row.param ); } );

TEST_P( TopologyMediumBusWalk, VisitsTheBusAndThenTheMediumFromBothSides ) {
   EXPECT_TRUE( medium.accept( &recorder ) );
   EXPECT_TRUE( bus.accept( &recorder ) );
   EXPECT_THAT( recorder.visits, ElementsAre( "Device 7", "Bus 9", own, "Device 7", "Bus 9", own ) );
}

TEST_P( TopologyMediumBusWalk, HandsOverTheWholeObjectFromBothSides ) {
   recorder.stops = { "Device 7" };
   medium.accept( &recorder );
   bus.accept( &recorder );
   auto whole = dynamic_cast<const void*>( &medium );
   EXPECT_THAT( recorder.visits, ElementsAre( "Device 7", "Bus 9", own, "Device 7", "Bus 9", own ) );
   EXPECT_EQ( recorder.objects.at( 1 ), whole );
   EXPECT_EQ( recorder.objects.at( 2 ), whole );
   EXPECT_EQ( recorder.objects.at( 4 ), whole );
   EXPECT_EQ( recorder.objects.at( 5 ), whole );
}

TEST_P( TopologyMediumBusWalk, VisitsTheMediumAlsoWhenStopped ) {
   for ( auto stop : { std::string( "Device 7" ), std::string( "Bus 9" ), own } ) {
      for ( auto side :
         { static_cast<const Topology::Node*>( &medium ), static_cast<const Topology::Node*>( &bus ) } ) {
         SCOPED_TRACE( stop );
         Recorder stopped;
         stopped.stops = { stop };
         EXPECT_FALSE( side->accept( &stopped ) );
         EXPECT_THAT( stopped.visits, ElementsAre( "Device 7", "Bus 9", own ) );
      }
   }
}
