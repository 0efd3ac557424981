// What the add functions of all kinds have in common; the rest stands in the tests of each kind.

#include "Assertion.h"
#include "FakeDriver.h"
#include "FreshLibrary.h"
#include "MockDevices.h"
#include "Quillon.h"
#include "VirtualTime.h"

#include <cstdlib>

using Component::DeviceBase;
using Host::TraceLine;
using testing::ElementsAre;
using testing::NiceMock;

namespace {

/** One object of each kind for a device to give. */
struct Objects {
   NiceMock<MockTempSensor> tempSensor;
   MockFan fan;
   MockPsu psu;
   MockSlot slot { uint8_t { 0 }, std::map<std::string, std::string>(), "" };
   MockLed led { false };
   MockSfpXcvr sfp { 12 };
   MockQsfpXcvr qsfp { 12 };
   MockCmisXcvr cmis { 12 };
   MockGpio gpio;
   MockPoePort poePort;
};

struct Given {
   void* object;
   void* record;
   void* owner;
};

/** Puts one of the objects into the device. */
template <auto place, auto object>
Given offer( FakeDevice& device, Objects& objects ) {
   auto& base = *( device.*place = &( objects.*object ) );
   return { &base, &base.record, base.record.owner };
}

template <auto function, typename... Thresholds>
void* add( const char* args ) {
   return function( args, Thresholds {}... );
}

constexpr int silent = -1;

struct Kind {
   std::string name;
   /** The driver's operation, as FakeDevice logs it. */
   std::string operation;
   /** Level of the two failure lines, and the second of them. */
   int level;
   std::string noObjectLine;
   void* ( *add )( const char* );
   Given ( *offer )( FakeDevice&, Objects& );
   std::string driverArgs = "{}";

   friend std::ostream& operator<<( std::ostream& stream, const Kind& kind ) { return stream << kind.name; }
};

// clang-format off
const Kind kinds[] = {
   { "slot", "newSlot", 0, "newSlot() failed",
     add< ql_slot_add >, offer< &FakeDevice::slot, &Objects::slot > },
   { "led", "newLed", 0, "newLed() failed",
     add< ql_led_add >, offer< &FakeDevice::led, &Objects::led > },
   { "fan", "newFan", 0, "newFan() failed",
     add< ql_fan_add >, offer< &FakeDevice::fan, &Objects::fan > },
   { "psu", "newPsu", 2, "newPsu() failed",
     add< ql_psu_add >, offer< &FakeDevice::psu, &Objects::psu > },
   { "temp_sensor", "newTempSensor", silent, "",
     add< ql_temp_sensor_add, float, float >, offer< &FakeDevice::tempSensor, &Objects::tempSensor > },
   { "gpio", "newGpio", silent, "",
     add< ql_gpio_add >, offer< &FakeDevice::gpio, &Objects::gpio > },
   { "poe_port", "newPoePort", silent, "",
     add< ql_poe_port_add >, offer< &FakeDevice::poePort, &Objects::poePort > },
   { "sfp_xcvr", "newSfpXcvr 12", 0, "newSfpXcvr() failed",
     add< ql_xcvr_add >, offer< &FakeDevice::sfpXcvr, &Objects::sfp >, R"({ "id": 12, "type": "sfp" })" },
   { "qsfp_xcvr", "newQsfpXcvr 12", 0, "newQsfpXcvr() failed",
     add< ql_xcvr_add >, offer< &FakeDevice::qsfpXcvr, &Objects::qsfp >, R"({ "id": 12, "type": "qsfp" })" },
   { "cmis_xcvr", "newCmisXcvr 12", 0, "newCmisXcvr() failed",
     add< ql_xcvr_add >, offer< &FakeDevice::cmisXcvr, &Objects::cmis >, R"({ "id": 12, "type": "qsfpCmis" })" },
};

// clang-format on

class AddFunction : public Host::Test, public testing::WithParamInterface<Kind> {
protected:
   const Kind& kind = GetParam();
   const std::string text = deviceText( "Fake", kind.driverArgs );
   FakeDriver driver;
   Objects objects;

   /** Expects these traces, and behind them the failure line of a kind that has one. */
   void expectTraces( std::vector<TraceLine> lines, const std::string& failureLine ) {
      if ( kind.level != silent ) {
         lines.push_back( { kind.level, failureLine } );
      }
      EXPECT_EQ( Host::traces, lines );
   }
};

INSTANTIATE_TEST_SUITE_P( Kinds, AddFunction, testing::ValuesIn( kinds ) );

} // namespace

TEST_P( AddFunction, GivesTheRecordInsideTheNewObject ) {
   auto given = kind.offer( driver.device, objects );
   auto handle = kind.add( text.c_str() );
   EXPECT_EQ( handle, given.record );
   EXPECT_NE( handle, given.object );
   EXPECT_EQ( given.owner, given.object );
}

TEST_P( AddFunction, AsksTheDeviceWithTheParsedArguments ) {
   kind.add( text.c_str() );
   EXPECT_THAT( driver.device.calls, ElementsAre( kind.operation ) );
   EXPECT_EQ( driver.device.args.did, 7U );
   EXPECT_EQ( driver.device.args.driver, "Fake" );
   EXPECT_EQ( driver.device.args.jsonText, text.c_str() );
   EXPECT_EQ( driver.device.args.driverArgs.size(), kind.driverArgs == "{}" ? 0U : 2U );
}

TEST_P( AddFunction, GivesNullForATextThatIsNoJson ) {
   EXPECT_EQ( kind.add( "" ), nullptr );
   expectTraces(
      {
         { 0, "parsing devArgs = " },
         { 0, "failed to load device from json: The document is empty. offset 0" },
         { 0, "failed to parse json object as a device" },
      },
      "DeviceBase::create() failed" );
   EXPECT_TRUE( driver.device.calls.empty() );
}

TEST_P( AddFunction, GivesNullForAnUnknownDriver ) {
   auto unknown = deviceText( "Missing", kind.driverArgs );
   EXPECT_EQ( kind.add( unknown.c_str() ), nullptr );
   expectTraces(
      {
         { 0, "parsing devArgs = " + unknown },
         { 0, "looking for already existing device 7" },
         { 0, "creating HardwareDevice Missing" },
         { 0, "driver Missing not found" },
         { 0, "factory function returned a null object" },
      },
      "DeviceBase::create() failed" );
}

TEST_P( AddFunction, GivesNullWhenTheDriverMakesNoObject ) {
   EXPECT_EQ( kind.add( text.c_str() ), nullptr );
   expectTraces(
      {
         { 0, "parsing devArgs = " + text },
         { 0, "looking for already existing device 7" },
         { 0, "creating HardwareDevice Fake" },
         { 0, "calling factory function for Fake" },
         { 0, "Fake device created" },
      },
      kind.noObjectLine );
}

TEST_P( AddFunction, CanBeTriedAgainAfterAFailure ) {
   kind.add( "" );
   kind.add( text.c_str() );
   auto given = kind.offer( driver.device, objects );
   EXPECT_EQ( kind.add( text.c_str() ), given.record );
}

TEST_P( AddFunction, AsksTheSameDeviceForANewObjectEachTime ) {
   kind.offer( driver.device, objects );
   kind.add( text.c_str() );
   Host::traces.clear();
   kind.add( text.c_str() );
   EXPECT_EQ( driver.made, 1 );
   EXPECT_THAT( driver.device.calls, ElementsAre( kind.operation, kind.operation ) );
   EXPECT_TRUE( Host::hasTraced( 0, "using previously instanciated HardwareDevice Fake" ) );
}

namespace {

class EntryFunctions : public FreshLibrary {
protected:
   ~EntryFunctions() override {
      delete _qlSock;
      _qlSock = nullptr;
   }
};

} // namespace

TEST_F( EntryFunctions, LetAKindThatTheDriverDoesNotOfferThrow ) {
   for ( auto& kind : kinds ) {
      if ( kind.name == "gpio" ) {
         continue; // every hardware device offers its register bits
      }
      SCOPED_TRACE( kind.name );
      DeviceBase::devices.clear();
      auto text = deviceText( "Dummy", kind.driverArgs );
      auto operation = kind.operation.substr( 0, kind.operation.find( ' ' ) );
      try {
         kind.add( text.c_str() );
         ADD_FAILURE() << "nothing was thrown";
      } catch ( const NotImplementedException& exception ) {
         EXPECT_EQ( exception.what(), "Not implemented " + operation );
      }
      EXPECT_EQ( DeviceBase::devices.count( 7 ), 1U ) << "the device is kept";
   }
}

TEST_F( EntryFunctions, PutTwoObjectsOnOneDevice ) {
   auto first = ql_gpio_add( deviceText( "Dummy", R"({ "register": 1, "bitpos": 0 })" ).c_str() );
   auto second = ql_gpio_add( deviceText( "Dummy", R"({ "register": 1, "bitpos": 0 })" ).c_str() );
   EXPECT_NE( first, second );
   EXPECT_NE( first->owner, second->owner );
   EXPECT_EQ( first->ops, second->ops );
   EXPECT_EQ( DeviceBase::devices.size(), 1U );
}

TEST_F( EntryFunctions, EndTheProcessAtADeviceThatNeedsAHamWithoutATopology ) {
   auto text = R"({ "did": 7, "driver": "Dummy", "address": { "address": 72 } })";
   EXPECT_DEATH( ql_gpio_add( text ), assertionFailed( "topology" ) );
}

TEST_F( EntryFunctions, ReportAServerThatNobodyRuns ) {
   VirtualTime time;
   setenv( "QUILLON_SMBUS_SOCKET", "/nonexistent/smbus.sock", 1 );
   EXPECT_EQ( ql_fan_init( "[]" ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( time.waits, std::vector<std::chrono::microseconds>( 30, std::chrono::seconds( 1 ) ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "ql_fan_init" }, TraceLine { 5, "ql_fan_init: json = []" },
                       TraceLine { 0, "ql_fan_init: socket Setup failed!" } ) );
   EXPECT_EQ( Topology::_topology, nullptr );
}

TEST_F( EntryFunctions, NeedNoServerInSimulation ) {
   VirtualTime time;
   setenv( "SIMULATION_VMID", "1", 1 );
   EXPECT_EQ( ql_fan_init( "[]" ), QL_STATUS_OK );
   EXPECT_TRUE( time.waits.empty() );
   EXPECT_NE( Topology::_topology, nullptr );
}

TEST_F( EntryFunctions, LeaveObjectsAloneWhenTheTopologyIsReplaced ) {
   setenv( "SIMULATION_VMID", "1", 1 );
   FakeDriver driver;
   MockFan fan;
   driver.device.fan = &fan;
   ql_fan_init( "[ { \"type\": \"LinuxFs\", \"ham\": \"\" } ]" );
   auto record = ql_fan_add( deviceText( "Fake" ).c_str() );
   ql_fan_init( "[]" );
   EXPECT_CALL( fan, setRpm( 4000 ) ).WillOnce( testing::Return( QL_STATUS_OK ) );
   EXPECT_EQ( record->ops->set_rpm( record, 4000 ), QL_STATUS_OK );
   EXPECT_EQ( DeviceBase::devices.count( 7 ), 1U );
}
