#include "Assertion.h"
#include "Drivers/Drivers.h"
#include "FreshLibrary.h"
#include "Ham/Ham.h"
#include "LoggingHam.h"
#include "OwnedSimHam.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <gmock/gmock.h>

using Host::TraceLine;
using testing::ElementsAre;

namespace {

constexpr uint32_t noUid = Drivers::DriverArgs::noUid;

/** A topology whose media all want the Ham "Logging". */
class HamSelection : public FreshLibrary {
protected:
   HamSelection() { logging.log.clear(); }

   /** @param media elements of the topology document, in which $ stands for the Ham */
   static void load( std::string media ) {
      for ( auto at = media.find( '$' ); at != std::string::npos; at = media.find( '$' ) ) {
         media.replace( at, 1, R"("ham": "Logging")" );
      }
      ASSERT_EQ( Topology::loadTopology( ( "[" + media + "]" ).c_str() ), QL_STATUS_OK );
      Host::traces.clear();
   }

   /** Device 10 with component 77, and device 20 with component 88. */
   static void loadTwoDevices() {
      load( R"({ "type": "I2C", $, "id": 5, "devices": [
         { "did": 10, "components": [ { "uid": 77 } ] }, { "did": 20, "components": [ { "uid": 88 } ] } ] })" );
   }

   Ham::Ham* create( uint32_t did, uint32_t uid = noUid ) {
      args.did = did;
      args.uid = uid;
      return Ham::createHam( args );
   }

   std::string lookingUpFor( const std::string& name ) const {
      return fmt::format(
         "looking up for {} in {} with {}", name, fmt::ptr( Topology::_topology ), fmt::ptr( &args ) );
   }

   Drivers::DriverArgs args;
   static inline LoggingHam logging;
   TestRow<decltype( Ham::hams )> row { Ham::hams, "Logging",
      []( const Topology::Topology&, const Drivers::DriverArgs& ) -> Ham::Ham* { return &logging; } };
   TestRow<decltype( Ham::hams )> none { Ham::hams, "None",
      []( const Topology::Topology&, const Drivers::DriverArgs& ) -> Ham::Ham* { return nullptr; } };
};

} // namespace

TEST( HamTables, HoldTheHamsOfThisLibrary ) {
   std::vector<std::string> names;
   for ( auto& [name, factory] : Ham::hams ) {
      names.push_back( name );
   }
   EXPECT_THAT( names, ElementsAre( "QuillonSmbus", "SimHam" ) );
}

TEST( HamTables, MakeASimHamUnderItsName ) {
   auto made = takeSimHam( Ham::hams.at( "SimHam" )( {}, {} ) );
   EXPECT_NE( made, nullptr );
}

TEST( HamTables, HaveNoRowForIpmi ) { EXPECT_TRUE( Ham::ipmiHams.empty() ); }

using HamSelectionDeathTest = HamSelection;

TEST_F( HamSelectionDeathTest, NeedsATopology ) {
   EXPECT_DEATH( create( 10 ), assertionFailed( "topology" ) );
}

TEST_F( HamSelection, TracesTheWayFromADeviceToItsHam ) {
   loadTwoDevices();
   EXPECT_EQ( create( 10 ), &logging );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "looking for component 4294967295 of device 10 in topology" },
         TraceLine { 2, "Device 10 contain the component" }, TraceLine { 2, "BusId 5" },
         TraceLine { 2, "I2C bus 5" }, TraceLine { 0, "creating Logging HAM using topology information" },
         TraceLine { 3, lookingUpFor( "Logging" ) }, TraceLine { 3, "calling Logging factory function" },
         TraceLine { 3, "ham initialisation" } ) );
   EXPECT_THAT( logging.log, ElementsAre( "init()" ) );
}

TEST_F( HamSelection, TracesTheWayFromAComponentThroughAMux ) {
   load( R"({ "type": "SCD", $, "pci": 43981, "accelerators": [ { "id": 3, "busses": [ { "id": 5, "muxes": [
      { "did": 30, "busses": [ { "id": 6, "devices": [
      { "did": 10, "components": [ { "uid": 76 }, { "uid": 77 } ] } ] } ] } ] } ] } ] })" );
   EXPECT_EQ( create( 1, 77 ), &logging );
   EXPECT_THAT(
      Host::tracesOf( 2 ), ElementsAre( "Component 77 found in tree", "Device 10 contain the component",
                              "BusId 6", "Mux using device 30", "BusId 5", "AccelId 3", "SCD 0 0000ABCD" ) );
}

TEST_F( HamSelection, TakesTheHamOfEveryMediumThatHasOne ) {
   struct Row {
      const char* type;
      const char* children;
      std::vector<std::string> wayUp;
   };

   const Row rows[] = {
      { "SCD",
         R"("pci": 1, "accelerators": [ { "id": 3, "busses": [ { "id": 5, "devices": [ { "did": 10 } ] } ] } ])",
         { "BusId 5", "AccelId 3", "SCD 0 00000001" } },
      { "I2C", R"("id": 5, "devices": [ { "did": 10 } ])", { "BusId 5", "I2C bus 5" } },
      { "IOPort", R"("id": 5, "devices": [ { "did": 10 } ])", { "BusId 5", "IOPort" } },
      { "Celestica",
         R"("accelerators": [ { "id": 3, "busses": [ { "id": 5, "devices": [ { "did": 10 } ] } ] } ])",
         { "BusId 5", "AccelId 3", "Celestica" } },
      { "PLM", R"("id": 5, "devices": [ { "did": 10 } ])", { "BusId 5", "PLM" } },
      { "SccSpi", R"("id": 5, "devices": [ { "did": 10 } ])", { "BusId 5", "SccSpi" } },
      { "FbDomFpga", R"("pci": 1, "busses": [ { "id": 5, "devices": [ { "did": 10 } ] } ])",
         { "BusId 5", "FbDomFpga" } },
   };
   for ( auto& medium : rows ) {
      SCOPED_TRACE( medium.type );
      load( fmt::format( R"({{ "type": "{}", $, {} }})", medium.type, medium.children ) );
      EXPECT_EQ( create( 10 ), &logging );

      auto expected = medium.wayUp;
      expected.insert( expected.begin(), "Device 10 contain the component" );
      EXPECT_EQ( Host::tracesOf( 2 ), expected );
   }
}

TEST_F( HamSelection, TakesTheHamOfTheMediumThatHoldsTheDevice ) {
   load( R"({ "type": "I2C", "ham": "None", "id": 1, "devices": [ { "did": 10 } ] },
            { "type": "I2C", $, "id": 2, "devices": [ { "did": 20 } ] },
            { "type": "I2C", "ham": "None", "id": 3, "devices": [ { "did": 30 } ] })" );
   EXPECT_EQ( create( 20 ), &logging );
}

TEST_F( HamSelection, GivesNullForADeviceThatTheTopologyLacks ) {
   loadTwoDevices();
   EXPECT_EQ( create( 30 ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "looking for component 4294967295 of device 30 in topology" },
                       TraceLine { 0, "could not find component uid -1 in topology" } ) );
}

TEST_F( HamSelection, FindsADeviceByItsComponentWhateverItsDid ) {
   loadTwoDevices();
   EXPECT_EQ( create( 10, 88 ), &logging );
   EXPECT_THAT( Host::tracesOf( 2 ), ElementsAre( "Component 88 found in tree",
                                        "Device 20 contain the component", "BusId 5", "I2C bus 5" ) );
}

TEST_F( HamSelection, GivesNullForAComponentThatTheTopologyLacksThoughItHasTheDevice ) {
   loadTwoDevices();
   EXPECT_EQ( create( 10, 99 ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "looking for component 99 of device 10 in topology" },
                       TraceLine { 0, "could not find component uid 99 in topology" } ) );
}

TEST_F( HamSelection, FailsWhenTheHamIsUnknown ) {
   load( R"({ "type": "I2C", "ham": "Smoke", "id": 5, "devices": [ { "did": 10 } ] })" );
   EXPECT_EQ( create( 10 ), nullptr );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "looking for component 4294967295 of device 10 in topology",
                                        "creating Smoke HAM using topology information",
                                        "Couldn't find HAM Smoke", "failed to create HAM" ) );
}

TEST_F( HamSelection, FailsUnderLinuxFsWhoseHamIsNotLookedAt ) {
   load( R"({ "type": "LinuxFs", $, "devices": [ { "did": 10 } ] })" );
   EXPECT_EQ( create( 10 ), nullptr );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "looking for component 4294967295 of device 10 in topology" },
         TraceLine { 2, "Device 10 contain the component" },
         TraceLine { 0, "creating  HAM using topology information" }, TraceLine { 3, lookingUpFor( "" ) },
         TraceLine { 0, "Couldn't find HAM " }, TraceLine { 0, "failed to create HAM" } ) );
}

TEST_F( HamSelection, FailsWhenTheFactoryDoes ) {
   load( R"({ "type": "I2C", "ham": "None", "id": 5, "devices": [ { "did": 10 } ] })" );
   EXPECT_EQ( create( 10 ), nullptr );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "looking for component 4294967295 of device 10 in topology",
         "creating None HAM using topology information",
         "Factory function returned, couldn't create HAM None", "failed to create HAM" ) );
}

namespace {

using SimulationSwitch = HamSelection;

} // namespace

TEST_F( SimulationSwitch, IsUndecidedAtFirst ) { EXPECT_EQ( Utils::isInSimulation, -1 ); }

TEST_F( SimulationSwitch, IsOffWithoutTheVariable ) {
   loadTwoDevices();
   create( 10 );
   EXPECT_EQ( Utils::isInSimulation, 0 );
}

TEST_F( SimulationSwitch, IsOnWithAnyValueOfTheVariable ) {
   loadTwoDevices();
   for ( auto value : { "", "0", "vm-1" } ) {
      SCOPED_TRACE( value );
      setenv( "SIMULATION_VMID", value, 1 );
      Utils::isInSimulation = -1;
      auto made = takeSimHam( create( 10 ) );
      EXPECT_NE( made, nullptr );
      EXPECT_EQ( Utils::isInSimulation, 1 );
   }
}

TEST_F( SimulationSwitch, OverridesTheHamOfTheTopology ) {
   setenv( "SIMULATION_VMID", "", 1 );
   load( R"({ "type": "LinuxFs", $, "devices": [ { "did": 10 } ] })" );
   auto made = takeSimHam( create( 10 ) );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "looking for component 4294967295 of device 10 in topology" },
         TraceLine { 2, "Device 10 contain the component" },
         TraceLine { 0, "creating SimHam HAM using topology information" },
         TraceLine { 3, lookingUpFor( "SimHam" ) }, TraceLine { 3, "calling SimHam factory function" },
         TraceLine { 3, "ham initialisation" } ) );
   EXPECT_THAT( logging.log, ElementsAre() );
}

TEST_F( SimulationSwitch, StaysOffWhenTheVariableComesLater ) {
   loadTwoDevices();
   create( 10 );
   setenv( "SIMULATION_VMID", "1", 1 );
   EXPECT_EQ( create( 20 ), &logging );
   EXPECT_FALSE( Utils::simulationIsOn() );
}

TEST_F( SimulationSwitch, StaysOnWhenTheVariableGoes ) {
   setenv( "SIMULATION_VMID", "1", 1 );
   EXPECT_TRUE( Utils::simulationIsOn() );
   unsetenv( "SIMULATION_VMID" );
   loadTwoDevices();
   auto made = takeSimHam( create( 10 ) );
   EXPECT_NE( made, nullptr );
}

TEST_F( SimulationSwitch, IsLeftUndecidedByASearchThatFindsNothing ) {
   loadTwoDevices();
   create( 30 );
   EXPECT_EQ( Utils::isInSimulation, -1 );
}
