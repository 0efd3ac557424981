#include "Topology.h"

#include "FreshLibrary.h"
#include "TopologyText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/** A label on everything that can bear one, and what the lookups make of it. */
constexpr auto labels = R"( [
   { "type": "SCD", "ham": "SimHam", "pci": 1, "label": "scd", "accelerators": [
      { "id": 1, "label": "accelerator", "busses": [
         { "id": 1, "label": "bus",
           "devices": [ { "did": 7, "label": "device", "components": [ { "uid": 70, "label": "component" } ] } ],
           "muxes": [ { "did": 20, "label": "mux", "busses": [
              { "id": 2, "label": "inner bus",
                "devices": [ { "did": 8, "driver": null, "isMultiDevice": true, "multiDeviceArgs": {},
                               "label": "driven device" } ] } ] } ] } ] } ] },
   { "type": "Celestica", "ham": "SimHam", "label": "celestica" },
   { "type": "LinuxFs", "ham": "SimHam", "label": "linuxfs" },
   { "type": "FbDomFpga", "ham": "SimHam", "pci": 1, "label": "fbdomfpga" },
   { "type": "I2C", "ham": "SimHam", "id": 11, "label": "i2c" },
   { "type": "IOPort", "ham": "SimHam", "id": 12, "label": "ioport" },
   { "type": "PLM", "ham": "SimHam", "id": 13, "label": "plm" },
   { "type": "SccSpi", "ham": "SimHam", "id": 14, "label": "sccspi" } ] )";

const struct {
   const char* label;
   bool isDevice;
   bool isBus;
} labelled[] = {
   { "scd", false, false },
   { "accelerator", false, false },
   { "bus", false, true },
   { "device", true, false },
   { "component", false, false },
   { "mux", false, false },
   { "inner bus", false, true },
   { "driven device", true, false },
   { "celestica", false, false },
   { "linuxfs", false, false },
   { "fbdomfpga", false, false },
   { "i2c", false, true },
   { "ioport", false, true },
   { "plm", false, true },
   { "sccspi", false, true },
};

uint32_t busIdOf( const char* label ) {
   auto bus = Topology::getBusByLabel( label );
   return bus ? bus->id : 0;
}

uint32_t didOf( const char* label ) {
   auto device = Topology::getDeviceByLabel( label );
   return device ? device->did : 0;
}

} // namespace

class TopologyLabel : public FreshLibrary {};

TEST_F( TopologyLabel, FindsEveryNodeAndDevicesAndBussesByTheirKind ) {
   TopologyText::load( labels );
   for ( auto& [label, isDevice, isBus] : labelled ) {
      SCOPED_TRACE( label );
      EXPECT_NE( Topology::getNodeByLabel( label ), nullptr );
      EXPECT_EQ( Topology::getDeviceByLabel( label ) != nullptr, isDevice );
      EXPECT_EQ( Topology::getBusByLabel( label ) != nullptr, isBus );
   }
   EXPECT_EQ( Topology::_topology_index.size(), std::size( labelled ) );
}

TEST_F( TopologyLabel, FindsTheVeryNode ) {
   TopologyText::load( labels );
   EXPECT_EQ( didOf( "device" ), 7U );
   EXPECT_EQ( didOf( "driven device" ), 8U );
   EXPECT_EQ( busIdOf( "bus" ), 1U );
   EXPECT_EQ( busIdOf( "inner bus" ), 2U );
   EXPECT_EQ( busIdOf( "i2c" ), 11U );
   EXPECT_EQ( busIdOf( "ioport" ), 12U );
   EXPECT_EQ( busIdOf( "plm" ), 13U );
   EXPECT_EQ( busIdOf( "sccspi" ), 14U );
}

TEST_F( TopologyLabel, OfAMediumThatIsABusRefersToItsBusSide ) {
   auto& i2c =
      TopologyText::loadMedium<Topology::I2C>( TopologyText::medium( "I2C", R"("id": 1, "label": "it")" ) );
   auto& bus = static_cast<const Topology::Bus&>( i2c );
   EXPECT_EQ( Topology::getBusByLabel( "it" ), &bus );
   EXPECT_EQ( Topology::getNodeByLabel( "it" ), static_cast<const Topology::Node*>( &bus ) );
}

TEST_F( TopologyLabel, ThatIsUnknownIsAMissWithoutATrace ) {
   TopologyText::load( labels );
   Host::traces.clear();
   for ( auto label : { "", "devic", "device ", "Device", " device", "devices" } ) {
      SCOPED_TRACE( label );
      EXPECT_EQ( Topology::getNodeByLabel( label ), nullptr );
      EXPECT_EQ( Topology::getDeviceByLabel( label ), nullptr );
      EXPECT_EQ( Topology::getBusByLabel( label ), nullptr );
   }
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( TopologyLabel, IsAMissWithoutATraceWhileNothingIsLoaded ) {
   EXPECT_EQ( Topology::getNodeByLabel( "device" ), nullptr );
   EXPECT_EQ( Topology::getDeviceByLabel( "device" ), nullptr );
   EXPECT_EQ( Topology::getBusByLabel( "device" ), nullptr );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( TopologyLabel, OfTheWrongKindIsAMissWithoutATrace ) {
   TopologyText::load( labels );
   Host::traces.clear();
   EXPECT_EQ( Topology::getDeviceByLabel( "i2c" ), nullptr );
   EXPECT_EQ( Topology::getBusByLabel( "scd" ), nullptr );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( TopologyLabel, MayBeEmpty ) {
   TopologyText::load( TopologyText::device( R"("did": 7, "label": "")" ) );
   EXPECT_EQ( didOf( "" ), 7U );
}

TEST_F( TopologyLabel, IsOrderedByItsBytes ) {
   TopologyText::load( TopologyText::medium( "LinuxFs", R"("devices": [ { "did": 1, "label": "\u00e9" },
      { "did": 2, "label": "b" }, { "did": 3, "label": "B" }, { "did": 4, "label": "b2" } ])" ) );
   std::vector<std::string> order;
   for ( auto& [label, node] : Topology::_topology_index ) {
      order.push_back( label );
   }
   EXPECT_THAT( order, ElementsAre( "B", "b", "b2", "\xc3\xa9" ) );
}

TEST_F( TopologyLabel, ThatTwoNodesBearFindsTheLaterOne ) {
   TopologyText::load( TopologyText::medium(
      "LinuxFs", R"("devices": [ { "did": 7, "label": "it" }, { "did": 8, "label": "it" } ])" ) );
   EXPECT_EQ( didOf( "it" ), 8U );
   EXPECT_EQ( Topology::_topology_index.size(), 1U );
}

TEST_F( TopologyLabel, ThatTwoNodesBearFindsTheOneBuiltLater ) {
   TopologyText::load( TopologyText::accelerator(
      R"("id": 1, "busses": [ { "id": 9, "label": "it" }, { "id": 3, "label": "it" } ])" ) );
   EXPECT_EQ( busIdOf( "it" ), 3U );
   TopologyText::load( TopologyText::bus(
      R"("muxes": [ { "did": 20, "busses": [ { "id": 2, "devices": [ { "did": 7, "label": "it" } ] } ] } ],
         "devices": [ { "did": 8, "label": "it" } ])" ) );
   EXPECT_EQ( didOf( "it" ), 7U );
}

TEST_F( TopologyLabel, ThatAChildRepeatsFindsTheChild ) {
   const struct {
      const std::type_info& child;
      const char* parent;
      std::string text;
   } rows[] = {
      { typeid( Topology::Component ), "device",
         TopologyText::device(
            R"("did": 7, "label": "it", "components": [ { "uid": 70, "label": "it" } ])" ) },
      { typeid( Topology::Device ), "bus",
         TopologyText::bus( R"("label": "it", "devices": [ { "did": 7, "label": "it" } ])" ) },
      { typeid( Topology::Mux ), "bus",
         TopologyText::bus( R"("label": "it", "muxes": [ { "did": 7, "label": "it" } ])" ) },
      { typeid( Topology::Bus ), "mux",
         TopologyText::mux( R"("did": 20, "label": "it", "busses": [ { "id": 2, "label": "it" } ])" ) },
      { typeid( Topology::Bus ), "accelerator",
         TopologyText::accelerator( R"("id": 1, "label": "it", "busses": [ { "id": 2, "label": "it" } ])" ) },
      { typeid( Topology::Accelerator ), "SCD",
         TopologyText::medium(
            "SCD", R"("pci": 1, "label": "it", "accelerators": [ { "id": 1, "label": "it" } ])" ) },
      { typeid( Topology::Accelerator ), "Celestica",
         TopologyText::medium(
            "Celestica", R"("label": "it", "accelerators": [ { "id": 1, "label": "it" } ])" ) },
      { typeid( Topology::Bus ), "FbDomFpga",
         TopologyText::medium(
            "FbDomFpga", R"("pci": 1, "label": "it", "busses": [ { "id": 2, "label": "it" } ])" ) },
      { typeid( Topology::Device ), "LinuxFs",
         TopologyText::medium( "LinuxFs", R"("label": "it", "devices": [ { "did": 7, "label": "it" } ])" ) },
   };

   for ( auto& [child, parent, text] : rows ) {
      TopologyText::load( text );
      auto& found = *Topology::getNodeByLabel( "it" );
      EXPECT_TRUE( typeid( found ) == child ) << parent;
   }
}

TEST_F( TopologyLabel, KeepsItsNodeAliveWithoutTheTree ) {
   TopologyText::load(
      TopologyText::device( R"("did": 7, "label": "it", "components": [ { "uid": 70 } ])" ) );
   delete Topology::_topology;
   Topology::_topology = nullptr;
   ASSERT_EQ( didOf( "it" ), 7U );
   EXPECT_EQ( Topology::getDeviceByLabel( "it" )->components.at( 0 )->uid, 70U );
}

TEST_F( TopologyLabel, FindsABusThatWasReplacedInItsMux ) {
   TopologyText::load( TopologyText::mux( R"("did": 20, "busses": [
      { "id": 2, "label": "early", "devices": [ { "did": 7 } ] }, { "id": 2, "label": "late" } ])" ) );
   ASSERT_EQ( busIdOf( "early" ), 2U );
   EXPECT_NE( Topology::getBusByLabel( "early" ), Topology::getBusByLabel( "late" ) );
   EXPECT_EQ( Topology::findDevice( 7 ), nullptr );
}

class TopologyFindDevice : public FreshLibrary {};

TEST_F( TopologyFindDevice, FindsADeviceWhereverItLiesAndTellsIt ) {
   TopologyText::load( R"( [
      { "type": "LinuxFs", "ham": "", "devices": [ { "did": 0 } ] },
      { "type": "FbDomFpga", "ham": "", "pci": 1, "busses": [ { "id": 1, "devices": [ { "did": 2 } ] } ] },
      { "type": "I2C", "ham": "", "id": 1, "devices": [ { "did": 3, "components": [ { "uid": 30 } ] } ],
        "muxes": [ { "did": 3, "busses": [ { "id": 1, "devices": [ { "did": 4294967295 } ] } ] } ] } ] )" );
   for ( auto did : { 0U, 2U, 3U, 4294967295U } ) {
      SCOPED_TRACE( did );
      Host::traces.clear();
      auto device = Topology::findDevice( did );
      ASSERT_NE( device, nullptr );
      EXPECT_EQ( device->did, did );
      EXPECT_THAT( Host::traces,
         ElementsAre( Host::TraceLine { 2, "Device " + std::to_string( did ) + " found in topology" } ) );
   }
}

TEST_F( TopologyFindDevice, MissesWithoutATrace ) {
   TopologyText::load( TopologyText::device( R"("did": 7, "components": [ { "uid": 70 } ])" ) );
   Host::traces.clear();
   EXPECT_EQ( Topology::findDevice( 8 ), nullptr );
   EXPECT_EQ( Topology::findDevice( 70 ), nullptr );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( TopologyFindDevice, DoesNotFindAMux ) {
   TopologyText::load( TopologyText::mux( R"("did": 20)" ) );
   EXPECT_EQ( Topology::findDevice( 20 ), nullptr );
}

TEST_F( TopologyFindDevice, TakesTheFirstInTheOrderOfTheWalk ) {
   TopologyText::load( R"( [ { "type": "PLM", "ham": "", "id": 1,
      "muxes": [ { "did": 20, "busses": [ { "id": 2, "devices": [ { "did": 7, "label": "behind the mux" } ] } ] } ],
      "devices": [ { "did": 7, "label": "first" }, { "did": 7, "label": "second" } ] },
      { "type": "LinuxFs", "ham": "", "devices": [ { "did": 7, "label": "on the next medium" } ] } ] )" );
   Host::traces.clear();
   EXPECT_EQ( Topology::findDevice( 7 ), Topology::getDeviceByLabel( "first" ) );
   EXPECT_EQ( Host::traces.size(), 1U );
}

TEST_F( TopologyFindDevice, TakesTheLowerBusIdFirst ) {
   TopologyText::load( TopologyText::mux( R"("did": 20, "busses": [
      { "id": 9, "devices": [ { "did": 7, "label": "on bus 9" } ] },
      { "id": 3, "devices": [ { "did": 7, "label": "on bus 3" } ] } ])" ) );
   EXPECT_EQ( Topology::findDevice( 7 ), Topology::getDeviceByLabel( "on bus 3" ) );
}

class TopologySearchDeviceVisitor : public Host::Test {
protected:
   Topology::SearchDeviceVisitor visitor;
   Topology::Device device;
};

TEST_F( TopologySearchDeviceVisitor, StartsWithoutADevice ) {
   EXPECT_FALSE( visitor.found );
   EXPECT_EQ( visitor.device, nullptr );
}

TEST_F( TopologySearchDeviceVisitor, GoesOnAtAnotherDevice ) {
   visitor.id = 7;
   device.did = 8;
   EXPECT_TRUE( visitor.visit( &device ) );
   EXPECT_FALSE( visitor.found );
   EXPECT_EQ( visitor.device, nullptr );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( TopologySearchDeviceVisitor, StopsAtItsDevice ) {
   visitor.id = 7;
   device.did = 7;
   EXPECT_FALSE( visitor.visit( &device ) );
   EXPECT_TRUE( visitor.found );
   EXPECT_EQ( visitor.device, &device );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 2, "Device 7 found in topology" } ) );
}

TEST( TopologyIsDeviceObject, GoesByTheFirstCharacter ) {
   const std::pair<const char*, bool> rows[] = { { "{", true }, { "{}", true }, { R"({ "did": 7 })", true },
      { "{ no JSON", true }, { "", false }, { " {}", false }, { "\n{}", false }, { "[]", false },
      { "}", false }, { "CpuCpld", false }, { "label{", false } };
   for ( auto& [text, isObject] : rows ) {
      EXPECT_EQ( Topology::isDeviceObject( text ), isObject ) << '"' << text << '"';
   }
}
