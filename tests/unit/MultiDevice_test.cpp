#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "FakeDriver.h"
#include "FieldOrder.h"
#include "FreshLibrary.h"
#include "MockDevices.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <gmock/gmock.h>

#include <type_traits>

using Component::DeviceBase;
using Component::HardwareDevice;
using Component::MultiDevice;
using Drivers::DriverArgs;
using Host::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StrEq;

TEST( MultiDeviceClass, IsADeviceWithoutAHam ) {
   static_assert( std::is_base_of_v<DeviceBase, MultiDevice> );
   static_assert( !std::is_base_of_v<HardwareDevice, MultiDevice> );
}

TEST( MultiDeviceClass, HasItsFieldsInTheAgreedOrder ) {
   MultiDevice device;
   EXPECT_TRUE( inOrder( device.slots, device.leds, device.psus, device.fans, device.xcvrs, device.gpios,
      device.deviceDriverArgs ) );
}

TEST( MultiDeviceClass, HasNoPartsAtFirst ) {
   MultiDevice device;
   EXPECT_THAT( device.slots, IsEmpty() );
   EXPECT_THAT( device.leds, IsEmpty() );
   EXPECT_THAT( device.psus, IsEmpty() );
   EXPECT_THAT( device.fans, IsEmpty() );
   EXPECT_THAT( device.xcvrs, IsEmpty() );
   EXPECT_THAT( device.gpios, IsEmpty() );
   EXPECT_THAT( device.deviceDriverArgs, IsEmpty() );
}

namespace {

class MultiDeviceArgs : public Host::Test {
protected:
   MultiDevice device;
};

} // namespace

TEST_F( MultiDeviceArgs, AreReplacedAsAWhole ) {
   device.deviceDriverArgsIs( { { "left", "1" }, { "right", "2" } } );
   device.deviceDriverArgsIs( { { "middle", "3" } } );
   EXPECT_THAT( device.deviceDriverArgs, ElementsAre( Pair( "middle", "3" ) ) );
}

TEST_F( MultiDeviceArgs, AreGivenByTheirKey ) {
   device.deviceDriverArgsIs( { { "left", "1" }, { "right", "2" } } );
   EXPECT_THAT( device.getDeviceDriverArg( "right" ), StrEq( "2" ) );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( MultiDeviceArgs, AreNullForAnUnknownKey ) {
   device.deviceDriverArgsIs( { { "left", "1" } } );
   EXPECT_EQ( device.getDeviceDriverArg( "Left" ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "Failed to find driverArgs for driver key 'Left'" } ) );
}

namespace {

/** One add operation, with what it makes and where it keeps that. */
struct AddOperation {
   const char* name;
   void* ( *add )( MultiDevice& device, const std::string& key );
   std::vector<void*> ( *parts )( const MultiDevice& device );
   /** The trace before the part's own, or empty. */
   std::string trace;
};

template <typename Part>
std::vector<void*> untyped( const std::vector<Part*>& parts ) {
   return { parts.begin(), parts.end() };
}

const AddOperation addOperations[] = {
   { "addSlot", []( MultiDevice& device, const std::string& key ) -> void* { return device.addSlot( key ); },
      []( const MultiDevice& device ) { return untyped( device.slots ); }, "" },
   { "addLed", []( MultiDevice& device, const std::string& key ) -> void* { return device.addLed( key ); },
      []( const MultiDevice& device ) { return untyped( device.leds ); }, "" },
   { "addPsu", []( MultiDevice& device, const std::string& key ) -> void* { return device.addPsu( key ); },
      []( const MultiDevice& device ) { return untyped( device.psus ); }, "" },
   { "addFan", []( MultiDevice& device, const std::string& key ) -> void* { return device.addFan( key ); },
      []( const MultiDevice& device ) { return untyped( device.fans ); },
      "MultiDevice::addFan driver args = " },
   { "addXcvr", []( MultiDevice& device, const std::string& key ) -> void* { return device.addXcvr( key ); },
      []( const MultiDevice& device ) { return untyped( device.xcvrs ); },
      "MultiDevice::addXcvr driver args = " },
   { "addGpio", []( MultiDevice& device, const std::string& key ) -> void* { return device.addGpio( key ); },
      []( const MultiDevice& device ) { return untyped( device.gpios ); },
      "MultiDevice::addGpio driver args = " },
};

/** Parts of the driver "Fake", which offers one object of each kind. */
class MultiDeviceParts : public FreshLibrary {
protected:
   MultiDeviceParts() {
      driver.device.slot = &slot;
      driver.device.led = &led;
      driver.device.psu = &psu;
      driver.device.fan = &fan;
      driver.device.sfpXcvr = &xcvr;
      driver.device.gpio = &gpio;
      device.deviceDriverArgsIs( { { "part", partText }, { "wrong", wrongText } } );
   }

   const std::string partText = deviceText( "Fake", R"({ "id": 3, "type": "sfp" })" );
   const std::string wrongText = "no JSON";
   MockSlot slot { 0, {}, nullptr };
   MockLed led { false };
   MockPsu psu;
   MockFan fan;
   MockSfpXcvr xcvr { 3 };
   MockGpio gpio;
   FakeDriver driver;
   MultiDevice device;
};

} // namespace

TEST_F( MultiDeviceParts, AreMadeAsTheHostWouldMakeThem ) {
   EXPECT_EQ( device.addSlot( "part" ), &slot.record );
   EXPECT_EQ( device.addLed( "part" ), &led.record );
   EXPECT_EQ( device.addPsu( "part" ), &psu.record );
   EXPECT_EQ( device.addFan( "part" ), &fan.record );
   EXPECT_EQ( device.addXcvr( "part" ), &xcvr.record );
   EXPECT_EQ( device.addGpio( "part" ), &gpio.record );
   EXPECT_THAT( driver.device.calls,
      ElementsAre( "newSlot", "newLed", "newPsu", "newFan", "newSfpXcvr 3", "newGpio" ) );
   EXPECT_THAT( DeviceBase::devices, ElementsAre( Pair( 7, &driver.device ) ) );
}

TEST_F( MultiDeviceParts, AreKeptByKindInTheOrderOfMaking ) {
   for ( auto& operation : addOperations ) {
      SCOPED_TRACE( operation.name );
      MultiDevice owner;
      owner.deviceDriverArgsIs( device.deviceDriverArgs );
      auto part = operation.add( owner, "part" );
      operation.add( owner, "part" );
      EXPECT_NE( part, nullptr );
      EXPECT_THAT( operation.parts( owner ), ElementsAre( part, part ) );
      EXPECT_EQ( owner.slots.size() + owner.leds.size() + owner.psus.size() + owner.fans.size() +
                    owner.xcvrs.size() + owner.gpios.size(),
         2U );
   }
}

TEST_F( MultiDeviceParts, AreTracedWithTheirTextForSomeKinds ) {
   for ( auto& operation : addOperations ) {
      SCOPED_TRACE( operation.name );
      Host::traces.clear();
      operation.add( device, "part" );
      TraceLine parsing { 0, "parsing devArgs = " + partText };
      if ( operation.trace.empty() ) {
         EXPECT_EQ( Host::traces.at( 0 ), parsing );
      } else {
         EXPECT_EQ( Host::traces.at( 0 ), ( TraceLine { 6, operation.trace + partText } ) );
         EXPECT_EQ( Host::traces.at( 1 ), parsing );
      }
   }
}

TEST_F( MultiDeviceParts, AreNullAndNotKeptForAnUnknownKey ) {
   for ( auto& operation : addOperations ) {
      SCOPED_TRACE( operation.name );
      Host::traces.clear();
      EXPECT_EQ( operation.add( device, "other" ), nullptr );
      EXPECT_THAT( operation.parts( device ), IsEmpty() );
      EXPECT_THAT(
         Host::traces, ElementsAre( TraceLine { 0, "Failed to find driverArgs for driver key 'other'" } ) );
   }
}

TEST_F( MultiDeviceParts, AreKeptAsNullWhenTheyCannotBeMade ) {
   for ( auto& operation : addOperations ) {
      SCOPED_TRACE( operation.name );
      EXPECT_EQ( operation.add( device, "wrong" ), nullptr );
      auto part = operation.add( device, "part" );
      EXPECT_THAT( operation.parts( device ), ElementsAre( nullptr, part ) );
   }
}

namespace {

/** A device of two fan trays with a fan each. */
class Trays : public MultiDevice {
public:
   void init() override {
      wasCachedInInit = devices.contains( 1 );
      addFan( "left" );
      addFan( "right" );
   }

   bool wasCachedInInit = true;
};

class MultiDeviceCreation : public FreshLibrary {
protected:
   DeviceBase* create( const std::string& given ) {
      text = given;
      args = {};
      return DeviceBase::create( text.c_str(), args );
   }

   static std::string argsText( const std::string& driver ) {
      return fmt::format( R"({{ "did": 1, "driver": "{}", "isMultiDevice": true,
         "multiDeviceArgs": {{ "left": "{{ left", "right": "{{ right" }} }})",
         driver );
   }

   DeviceBase* make( Ham::Ham* ham ) {
      factoryGotHam = ham != nullptr;
      return new Trays;
   }

   std::string text;
   DriverArgs args;
   bool factoryGotHam = true;
   TestRow<decltype( Drivers::drivers )> traysRow { Drivers::drivers, "Trays",
      [this]( const DriverArgs&, Ham::Ham* ham ) { return make( ham ); } };
   TestRow<decltype( Drivers::drivers )> nullRow { Drivers::drivers, "Null",
      []( const DriverArgs&, Ham::Ham* ) { return nullptr; } };
};

using MultiDeviceCreationDeathTest = MultiDeviceCreation;

} // namespace

TEST_F( MultiDeviceCreation, TracesEveryStepAndMakesThePartsInInit ) {
   create( argsText( "Trays" ) );
   TraceLine noJson { 0, "failed to load device from json: Missing a name for object member. offset 2" };
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
         TraceLine { 0, "looking for already existing device 1" },
         TraceLine { 0, "creating HardwareDevice Trays" },
         TraceLine { 0, "calling factory function for Trays" },
         TraceLine { 6, "MultiDevice::addFan driver args = { left" },
         TraceLine { 0, "parsing devArgs = { left" }, noJson,
         TraceLine { 0, "failed to parse json object as a device" },
         TraceLine { 0, "DeviceBase::create() failed" },
         TraceLine { 6, "MultiDevice::addFan driver args = { right" },
         TraceLine { 0, "parsing devArgs = { right" }, noJson,
         TraceLine { 0, "failed to parse json object as a device" },
         TraceLine { 0, "DeviceBase::create() failed" }, TraceLine { 0, "Trays MultiDevice created" } ) );
}

TEST_F( MultiDeviceCreation, CachesTheDeviceAfterItsInit ) {
   auto device = dynamic_cast<Trays*>( create( argsText( "Trays" ) ) );
   ASSERT_NE( device, nullptr );
   EXPECT_FALSE( device->wasCachedInInit );
   EXPECT_THAT( device->fans, ElementsAre( nullptr, nullptr ) );
   EXPECT_THAT( DeviceBase::devices, ElementsAre( Pair( 1, device ) ) );
}

TEST_F( MultiDeviceCreation, GivesTheDeviceACopyOfTheTextsOfItsParts ) {
   auto device = dynamic_cast<Trays*>( create( argsText( "Trays" ) ) );
   args.multiDeviceArgs.clear();
   EXPECT_THAT(
      device->deviceDriverArgs, ElementsAre( Pair( "left", "{ left" ), Pair( "right", "{ right" ) ) );
}

TEST_F( MultiDeviceCreation, MakesNoHam ) {
   create( argsText( "Trays" ) );
   EXPECT_TRUE( args.provideHam );
   EXPECT_FALSE( factoryGotHam );
   EXPECT_FALSE( Host::hasTraced( 0, "creating Ham" ) );
}

TEST_F( MultiDeviceCreation, GivesTheCachedDeviceForItsDid ) {
   auto device = create( argsText( "Trays" ) );
   Host::traces.clear();
   EXPECT_EQ( create( argsText( "Other" ) ), device );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
                                 TraceLine { 0, "looking for already existing device 1" },
                                 TraceLine { 0, "using previously instanciated HardwareDevice Other" } ) );
}

TEST_F( MultiDeviceCreation, GivesNullForAnUnknownDriver ) {
   EXPECT_EQ( create( argsText( "Other" ) ), nullptr );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
         TraceLine { 0, "looking for already existing device 1" },
         TraceLine { 0, "creating HardwareDevice Other" }, TraceLine { 0, "driver Other not found" },
         TraceLine { 0, "factory function returned a null object" } ) );
   EXPECT_THAT( DeviceBase::devices, IsEmpty() );
}

TEST_F( MultiDeviceCreation, GivesNullForADriverThatMakesNothing ) {
   EXPECT_EQ( create( argsText( "Null" ) ), nullptr );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "factory function returned a null object" } ) );
   EXPECT_THAT( DeviceBase::devices, IsEmpty() );
}

TEST_F( MultiDeviceCreation, NeedsNoTextInSimulation ) {
   setenv( "SIMULATION_VMID", "1", 1 );
   args.did = 1;
   args.driver = "Trays";
   EXPECT_NE( MultiDevice::create( args ), nullptr );
   EXPECT_EQ( Utils::isInSimulation, -1 );
}

TEST_F( MultiDeviceCreationDeathTest, NeedsAMultiDevice ) {
   EXPECT_DEATH( create( argsText( "Dummy" ) ), assertionFailed( "device" ) );
}

TEST_F( MultiDeviceCreation, MakesEachPartADeviceInItsOwnRight ) {
   FakeDriver fake;
   MockFan fan;
   fake.device.fan = &fan;
   args.did = 1;
   args.driver = "Trays";
   args.multiDeviceArgs = { { "left", deviceText( "Fake" ) }, { "right", deviceText( "Fake" ) } };
   auto device = dynamic_cast<Trays*>( MultiDevice::create( args ) );
   ASSERT_NE( device, nullptr );
   EXPECT_THAT( device->fans, ElementsAre( &fan.record, &fan.record ) );
   EXPECT_THAT( DeviceBase::devices, ElementsAre( Pair( 1, device ), Pair( 7, &fake.device ) ) );
   EXPECT_EQ( fake.made, 1 );
}
