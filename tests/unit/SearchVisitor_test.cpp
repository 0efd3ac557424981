#include "FieldOrder.h"
#include "Ham/Ham.h"
#include "HostServices.h"

#include <gmock/gmock.h>

#include <type_traits>

using Host::TraceLine;
using testing::ElementsAre;

namespace {

constexpr uint32_t noUid = 0xFFFFFFFF;

/** A medium and the Ham that it names. */
template <typename Medium>
Medium medium( const char* ham ) {
   Medium made;
   made.ham = ham;
   return made;
}

/** A node that may lie above the target of a search. */
struct Ancestor {
   const char* kind;
   bool ( *visit )( Ham::SearchVisitor& search );
   /* What the visit does when the target has been found below; hamName was "inner" before. */
   bool goesOn;
   std::string trace;
   std::string hamName;
};

template <typename Node>
Node numbered( uint32_t id ) {
   Node made;
   made.id = id;
   return made;
}

const Ancestor ancestors[] = {
   { "Mux",
      []( Ham::SearchVisitor& search ) {
         Topology::Mux mux;
         mux.did = 30;
         return search.visit( &mux );
      },
      false, "Mux using device 30", "inner" },
   { "Mux of a high did",
      []( Ham::SearchVisitor& search ) {
         Topology::Mux mux;
         mux.did = 0xFFFFFFFE;
         return search.visit( &mux );
      },
      false, "Mux using device -2", "inner" },
   { "Bus",
      []( Ham::SearchVisitor& search ) {
         auto bus = numbered<Topology::Bus>( 0xFFFFFFFF );
         return search.visit( &bus );
      },
      true, "BusId 4294967295", "inner" },
   { "Accelerator",
      []( Ham::SearchVisitor& search ) {
         auto accelerator = numbered<Topology::Accelerator>( 0xFFFFFFFF );
         return search.visit( &accelerator );
      },
      true, "AccelId 4294967295", "inner" },
   { "SCD",
      []( Ham::SearchVisitor& search ) {
         auto scd = medium<Topology::SCD>( "of SCD" );
         scd.id = 4;
         scd.pci = 0xAB;
         return search.visit( &scd );
      },
      true, "SCD 4 000000AB", "of SCD" },
   { "I2C",
      []( Ham::SearchVisitor& search ) {
         auto i2c = medium<Topology::I2C>( "of I2C" );
         i2c.id = 5;
         return search.visit( &i2c );
      },
      true, "I2C bus 5", "of I2C" },
   { "IOPort",
      []( Ham::SearchVisitor& search ) {
         auto ioPort = medium<Topology::IOPort>( "of IOPort" );
         return search.visit( &ioPort );
      },
      true, "IOPort", "of IOPort" },
   { "Celestica",
      []( Ham::SearchVisitor& search ) {
         auto celestica = medium<Topology::Celestica>( "of Celestica" );
         return search.visit( &celestica );
      },
      true, "Celestica", "of Celestica" },
   { "PLM",
      []( Ham::SearchVisitor& search ) {
         auto plm = medium<Topology::PLM>( "of PLM" );
         return search.visit( &plm );
      },
      true, "PLM", "of PLM" },
   { "SccSpi",
      []( Ham::SearchVisitor& search ) {
         auto sccSpi = medium<Topology::SccSpi>( "of SccSpi" );
         return search.visit( &sccSpi );
      },
      true, "SccSpi", "of SccSpi" },
   { "FbDomFpga",
      []( Ham::SearchVisitor& search ) {
         auto fbDomFpga = medium<Topology::FbDomFpga>( "of FbDomFpga" );
         return search.visit( &fbDomFpga );
      },
      true, "FbDomFpga", "of FbDomFpga" },
   { "LinuxFs",
      []( Ham::SearchVisitor& search ) {
         auto linuxFs = medium<Topology::LinuxFs>( "of LinuxFs" );
         return search.visit( &linuxFs );
      },
      true, "", "inner" },
   { "Topology",
      []( Ham::SearchVisitor& search ) {
         Topology::Topology topology;
         return search.visit( &topology );
      },
      true, "", "inner" },
};

class SearchVisitor : public Host::Test {
protected:
   bool visitComponent( uint32_t uid ) {
      Topology::Component component;
      component.uid = uid;
      return search.visit( &component );
   }

   bool visitDevice( uint32_t did ) {
      device.did = did;
      return search.visit( &device );
   }

   Topology::Device device;
   Ham::SearchVisitor search;
};

} // namespace

TEST_F( SearchVisitor, IsATopologyVisitorThatHasFoundNothing ) {
   static_assert( std::is_base_of_v<Topology::TopologyVisitor, Ham::SearchVisitor> );
   EXPECT_FALSE( search.found );
   EXPECT_EQ( search.device, nullptr );
   EXPECT_EQ( search.hamName, "" );
}

TEST_F( SearchVisitor, HasItsFieldsInTheAgreedOrder ) {
   EXPECT_TRUE( inOrder( search.uid, search.did, search.found, search.device, search.hamName ) );
}

TEST_F( SearchVisitor, GoesOnAtAComponentOfAnotherUid ) {
   search.uid = 77;
   EXPECT_TRUE( visitComponent( 78 ) );
   EXPECT_FALSE( search.found );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SearchVisitor, StopsAtTheComponentThatItLooksFor ) {
   search.uid = 77;
   EXPECT_FALSE( visitComponent( 77 ) );
   EXPECT_TRUE( search.found );
   EXPECT_EQ( search.device, nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 2, "Component 77 found in tree" } ) );
}

TEST_F( SearchVisitor, RemembersTheDeviceOfTheComponent ) {
   search.uid = 77;
   search.did = 10;
   search.found = true;
   EXPECT_FALSE( visitDevice( 20 ) );
   EXPECT_EQ( search.device, &device );
   EXPECT_TRUE( search.found );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 2, "Device 20 contain the component" } ) );
}

TEST_F( SearchVisitor, StopsAtTheDeviceThatItLooksForWithoutAUid ) {
   search.uid = noUid;
   search.did = 10;
   EXPECT_FALSE( visitDevice( 10 ) );
   EXPECT_EQ( search.device, &device );
   EXPECT_TRUE( search.found );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 2, "Device 10 contain the component" } ) );
}

TEST_F( SearchVisitor, GoesOnAtADeviceOfAnotherDid ) {
   search.uid = noUid;
   search.did = 10;
   EXPECT_TRUE( visitDevice( 11 ) );
   EXPECT_FALSE( search.found );
   EXPECT_EQ( search.device, nullptr );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SearchVisitor, GoesOnAtADeviceOfItsDidWhenItHasAUid ) {
   search.uid = 77;
   search.did = 10;
   EXPECT_TRUE( visitDevice( 10 ) );
   EXPECT_FALSE( search.found );
   EXPECT_EQ( search.device, nullptr );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SearchVisitor, PassesEveryAncestorInSilenceBeforeItHasFound ) {
   for ( auto& row : ancestors ) {
      SCOPED_TRACE( row.kind );
      search.hamName = "inner";
      EXPECT_TRUE( row.visit( search ) );
      EXPECT_EQ( search.hamName, "inner" );
      EXPECT_THAT( Host::traces, ElementsAre() );
   }
}

TEST_F( SearchVisitor, TracesEveryAncestorOfWhatItHasFoundAndTakesTheHamOfAMedium ) {
   for ( auto& row : ancestors ) {
      SCOPED_TRACE( row.kind );
      Host::traces.clear();
      search.found = true;
      search.hamName = "inner";
      EXPECT_EQ( row.visit( search ), row.goesOn );
      EXPECT_EQ( search.hamName, row.hamName );
      std::vector<TraceLine> expected;
      if ( !row.trace.empty() ) {
         expected.push_back( { 2, row.trace } );
      }
      EXPECT_EQ( Host::traces, expected );
   }
}

TEST_F( SearchVisitor, TakesTheHamOfTheOutermostMedium ) {
   search.found = true;
   auto inner = medium<Topology::I2C>( "inner" );
   auto outer = medium<Topology::SCD>( "outer" );
   search.visit( &inner );
   search.visit( &outer );
   EXPECT_EQ( search.hamName, "outer" );
}
