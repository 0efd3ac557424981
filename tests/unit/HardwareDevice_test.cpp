#include "Components/HardwareDevice.h"

#include "Components/Gpio.h"
#include "Drivers/Drivers.h"
#include "FreshLibrary.h"
#include "MockDevices.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

using Component::DeviceBase;
using Component::HardwareDevice;
using Drivers::DriverArgs;
using testing::ElementsAre;

namespace {

struct ThrowingDefault {
   const char* operation;
   void ( *call )( DeviceBase& device, const DriverArgs& args );
};

const ThrowingDefault throwingDefaults[] = {
   { "newPoePort", []( DeviceBase& device, const DriverArgs& args ) { device.newPoePort( args ); } },
   { "newTempSensor", []( DeviceBase& device, const DriverArgs& args ) { device.newTempSensor( args ); } },
   { "newSlot", []( DeviceBase& device, const DriverArgs& args ) { device.newSlot( args ); } },
   { "newSfpXcvr", []( DeviceBase& device, const DriverArgs& args ) { device.newSfpXcvr( 1, args ); } },
   { "newQsfpXcvr", []( DeviceBase& device, const DriverArgs& args ) { device.newQsfpXcvr( 1, args ); } },
   { "newCmisXcvr", []( DeviceBase& device, const DriverArgs& args ) { device.newCmisXcvr( 1, args ); } },
   { "newLed", []( DeviceBase& device, const DriverArgs& args ) { device.newLed( args ); } },
   { "newFan", []( DeviceBase& device, const DriverArgs& args ) { device.newFan( args ); } },
   { "newMux", []( DeviceBase& device, const DriverArgs& args ) { device.newMux( args, 1 ); } },
   { "newPsu", []( DeviceBase& device, const DriverArgs& args ) { device.newPsu( args ); } },
   { "newSmbusProxy", []( DeviceBase& device, const DriverArgs& args ) { device.newSmbusProxy( args ); } },
};

class DeviceDefaults : public FreshLibrary {
protected:
   DriverArgs args;
   HardwareDevice device;
};

} // namespace

TEST_F( DeviceDefaults, ThrowTheNameOfTheOperation ) {
   for ( auto& row : throwingDefaults ) {
      SCOPED_TRACE( row.operation );
      try {
         row.call( device, args );
         ADD_FAILURE() << "nothing thrown";
      } catch ( const NotImplementedException& exception ) {
         EXPECT_EQ( exception.what(), std::string( "Not implemented " ) + row.operation );
      }
   }
}

TEST_F( DeviceDefaults, InitDoesNothing ) {
   device.init();
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( DeviceDefaults, HaveNoHam ) { EXPECT_EQ( device.ham, nullptr ); }

TEST_F( DeviceDefaults, ExpectNoValues ) {
   EXPECT_EQ( device.expectedValues(), &HardwareDevice::emptyExpectedValues );
   EXPECT_TRUE( HardwareDevice::emptyExpectedValues.empty() );
}

TEST_F( DeviceDefaults, MakeAGpioOfARegisterBitOfTheDevice ) {
   args.driverArgs = { { "register", "18" }, { "bitpos", "3" } };
   std::unique_ptr<Component::LogicalDevice::Gpio> made( device.newGpio( args ) );
   auto gpio = dynamic_cast<Component::LogicalDevice::RegGpio*>( made.get() );
   ASSERT_NE( gpio, nullptr );
   EXPECT_EQ( gpio->device, &device );
   EXPECT_EQ( gpio->reg, 18 );
   EXPECT_EQ( gpio->bitpos, 3 );
}

TEST( DeviceBase, HasItsVirtualOperationsInTheAgreedOrder ) {
   using Layout::slotOf;
   using D = DeviceBase;
   size_t slots[] = { slotOf( &D::init ), slotOf( &D::newPoePort ), slotOf( &D::newTempSensor ),
      slotOf( &D::newSlot ), slotOf( &D::newSfpXcvr ), slotOf( &D::newQsfpXcvr ), slotOf( &D::newCmisXcvr ),
      slotOf( &D::newLed ), slotOf( &D::newFan ), slotOf( &D::newMux ), slotOf( &D::newPsu ),
      slotOf( &D::newSmbusProxy ) };
   EXPECT_THAT( slots, ElementsAre( 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11 ) );
}

TEST( DeviceBase, IsNothingButItsTable ) {
   EXPECT_EQ( sizeof( DeviceBase ), sizeof( void* ) );
   EXPECT_TRUE( std::has_virtual_destructor_v<DeviceBase> );
}

TEST( HardwareDevice, HasItsVirtualOperationsBehindTheDestructor ) {
   static_assert( std::is_base_of_v<DeviceBase, HardwareDevice> );
   // The destructor has slots 12 and 13.
   EXPECT_EQ( Layout::slotOf( &HardwareDevice::newGpio ), 14U );
   EXPECT_EQ( Layout::slotOf( &HardwareDevice::expectedValues ), 15U );
}

TEST( HardwareDevice, AddsItsHamAndNothingElse ) {
   HardwareDevice device;
   EXPECT_EQ( Layout::offsetOf( device, device.ham ), sizeof( void* ) );
   EXPECT_EQ( sizeof( HardwareDevice ), 2 * sizeof( void* ) );
}

namespace {

class DeviceCache : public FreshLibrary {
protected:
   DeviceCache() { args.did = 7; }

   DriverArgs args;
   HardwareDevice device;
};

} // namespace

TEST_F( DeviceCache, IsEmptyAtFirst ) { EXPECT_TRUE( DeviceBase::devices.empty() ); }

TEST_F( DeviceCache, GivesNullForAnUnknownDid ) {
   DeviceBase::devices[8] = &device;
   EXPECT_EQ( DeviceBase::findDevice( args ), nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 0, "looking for already existing device 7" } ) );
}

TEST_F( DeviceCache, GivesTheDeviceOfADidWhateverItsDriver ) {
   DeviceBase::devices[7] = &device;
   args.driver = "Any";
   EXPECT_EQ( DeviceBase::findDevice( args ), &device );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 0, "looking for already existing device 7" },
                       Host::TraceLine { 0, "using previously instanciated HardwareDevice Any" } ) );
}

TEST_F( DeviceCache, HasDidsOf32Bits ) {
   DeviceBase::devices[0xFFFFFFFF] = &device;
   args.did = 0xFFFFFFFF;
   EXPECT_EQ( DeviceBase::findDevice( args ), &device );
   EXPECT_TRUE( Host::hasTraced( 0, "looking for already existing device 4294967295" ) );
}

TEST_F( DeviceCache, IsNotAskedForARecordThatIsCreatedByItsDriverAlone ) {
   DeviceBase::devices[7] = &device;
   args.driver = "Dummy";
   std::unique_ptr<DeviceBase> made( DeviceBase::callDriverFactoryFunc( args, nullptr ) );
   EXPECT_NE( made.get(), &device );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 0, "creating HardwareDevice Dummy" },
                                 Host::TraceLine { 0, "calling factory function for Dummy" } ) );
}
