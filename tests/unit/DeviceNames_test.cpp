#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "ScriptedHam.h"
#include "Simulation.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <gmock/gmock.h>

using Component::DeviceBase;
using Component::HardwareDevice;
using Drivers::DriverArgs;
using testing::ElementsAre;
using Utils::ExpectedVal;

namespace {

std::string argsText( uint32_t did, const std::string& driver, const std::string& more = "" ) {
   return fmt::format(
      R"({{ "did": {}, "driver": "{}", "address": {{ "address": 72 }}{} }})", did, driver, more );
}

/** Devices in simulation that are given a Ham, which tells how they are named. */
class DeviceName : public Simulation {
protected:
   void create( const std::string& text ) {
      DriverArgs args;
      args.parseJSON( text.c_str() );
      HardwareDevice::create( args, &ham );
   }

   ScriptedHam ham;
};

/** A record of the topology, whose text is not known. */
class DeviceNameWithoutText : public Simulation {
protected:
   DeviceNameWithoutText() {
      args.did = 7;
      args.driver = "Dummy";
   }

   DriverArgs args;
};

using DeviceNameDeathTest = DeviceNameWithoutText;

} // namespace

TEST_F( DeviceName, IsTakenFromTheText ) {
   create( argsText( 7, "Dummy", R"(, "name": "inlet")" ) );
   EXPECT_THAT( ham.log, ElementsAre( "setDriverName Dummy 'inlet'", "setExpected" ) );
}

TEST_F( DeviceName, IsEmptyWhenTheTextHasNone ) {
   create( argsText( 7, "Dummy", R"(, "driverArgs": { "name": "not this one" })" ) );
   EXPECT_THAT( ham.log, ElementsAre( "setDriverName Dummy ''", "setExpected" ) );
}

TEST_F( DeviceName, IsEmptyOutsideSimulation ) {
   unsetenv( "SIMULATION_VMID" );
   create( argsText( 7, "Dummy", R"(, "name": "inlet")" ) );
   EXPECT_THAT( ham.log, ElementsAre( "setDriverName Dummy ''", "setExpected" ) );
}

TEST_F( DeviceName, DecidesTheSimulationWithoutAHamToo ) {
   DriverArgs args;
   DeviceBase::create( argsText( 7, "Dummy", R"(, "provideHam": 0)" ).c_str(), args );
   EXPECT_EQ( Utils::isInSimulation, 1 );
}

TEST_F( DeviceNameDeathTest, MustBeAText ) {
   args.jsonText = R"({ "name": 5 })";
   EXPECT_DEATH( HardwareDevice::create( args, nullptr ), assertionFailed( "IsString()" ) );
}

TEST_F( DeviceNameDeathTest, NeedsTheTextOfTheRecord ) {
   EXPECT_DEATH( HardwareDevice::create( args, nullptr ), assertionFailed( "args.jsonText" ) );
}

TEST_F( DeviceNameDeathTest, NeedsATextThatHoldsAnObject ) {
   args.jsonText = "[]";
   EXPECT_DEATH( HardwareDevice::create( args, nullptr ), assertionFailed( "document.IsObject()" ) );
}

TEST_F( DeviceNameWithoutText, IsNotLookedForOutsideSimulation ) {
   unsetenv( "SIMULATION_VMID" );
   EXPECT_NE( HardwareDevice::create( args, nullptr ), nullptr );
}

namespace {

/** A driver with one register of one byte. */
class FiledDevice : public HardwareDevice {
public:
   void init() override { hadItsFileInInit = std::filesystem::exists( itsFile ); }

   std::map<uint32_t, ExpectedVal>* expectedValues() override { return &values; }

   bool hadItsFileInInit = false;
   static inline std::string itsFile;
   static inline std::map<uint32_t, ExpectedVal> values { { 1, ExpectedVal( 0x2A, 1 ) } };
};

/** Devices 7 and 8 with the driver "Filed", in simulation. */
class DeviceFile : public Simulation {
protected:
   DeviceFile() {
      Topology::loadTopology(
         R"([ { "type": "LinuxFs", "ham": "", "devices": [ { "did": 7 }, { "did": 8 } ] } ])" );
   }

   static FiledDevice* create( uint32_t did, const std::string& more = "" ) {
      DriverArgs args;
      auto device = DeviceBase::create( argsText( did, "Filed", more ).c_str(), args );
      return dynamic_cast<FiledDevice*>( device );
   }

   TestRow<decltype( Drivers::drivers )> row { Drivers::drivers, "Filed",
      []( const DriverArgs&, Ham::Ham* ) { return new FiledDevice; } };
};

} // namespace

TEST_F( DeviceFile, BearsTheNamesOfDriverAndDevice ) {
   create( 7, R"(, "name": "inlet")" );
   EXPECT_EQ( contentOf( "Filed-inlet" ), "2a\n" );
   EXPECT_TRUE( Host::hasTraced( 5, "Created " + pathOf( "Filed-inlet" ) ) );
}

TEST_F( DeviceFile, BearsTheNameOfTheDriverAloneForADeviceWithoutAName ) {
   create( 7 );
   EXPECT_EQ( contentOf( "Filed" ), "2a\n" );
}

TEST_F( DeviceFile, IsInPlaceBeforeInit ) {
   FiledDevice::itsFile = pathOf( "Filed" );
   EXPECT_TRUE( create( 7 )->hadItsFileInInit );
}

TEST_F( DeviceFile, IsSharedByDevicesOfOneDriverWithoutANameAndWrittenAfreshForTheLater ) {
   auto first = create( 7 );
   first->ham->write8( 1, 0xEE, false, 1 );
   auto second = create( 8 );
   EXPECT_EQ( contentOf( "Filed" ), "2a\n" );
   second->ham->write8( 1, 0xDD, false, 1 );
   uint8_t value = 0;
   EXPECT_EQ( first->ham->read8( 1, &value, 1 ), QL_STATUS_OK );
   EXPECT_EQ( value, 0xDD );
}

TEST_F( DeviceFile, IsItsOwnForEachName ) {
   create( 7 )->ham->write8( 1, 0xEE, false, 1 );
   create( 8, R"(, "name": "inlet")" );
   EXPECT_EQ( contentOf( "Filed" ), "ee\n" );
   EXPECT_EQ( contentOf( "Filed-inlet" ), "2a\n" );
}

TEST_F( DeviceFile, IsNotMadeForADriverWithoutExpectedValues ) {
   DriverArgs args;
   EXPECT_NE( DeviceBase::create( argsText( 7, "Dummy" ).c_str(), args ), nullptr );
   EXPECT_TRUE( std::filesystem::is_empty( directory() ) );
}
