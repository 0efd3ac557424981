#include "Drivers/Dummy.h"

#include "Components/Gpio.h"
#include "Drivers/Drivers.h"
#include "FreshLibrary.h"
#include "Ham/Ham.h"
#include "ScriptedHam.h"

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>
#include <typeinfo>

using Component::HardwareDevice;
using Drivers::DriverArgs;
using testing::ElementsAre;

namespace {

class Dummy : public FreshLibrary {
protected:
   DriverArgs args;
   ScriptedHam ham;
   std::unique_ptr<HardwareDevice> device { Drivers::Dummy::create( args, &ham ) };
};

} // namespace

TEST_F( Dummy, IsABareHardwareDevice ) {
   static_assert( std::is_base_of_v<HardwareDevice, Drivers::Dummy> );
   auto& made = *device;
   EXPECT_EQ( typeid( made ), typeid( Drivers::Dummy ) );
   EXPECT_EQ( sizeof( Drivers::Dummy ), sizeof( HardwareDevice ) );
}

TEST_F( Dummy, DoesNotTouchTheHamThatItIsGiven ) {
   EXPECT_EQ( device->ham, nullptr );
   EXPECT_TRUE( ham.log.empty() );
}

TEST_F( Dummy, ExpectsNoValues ) {
   EXPECT_EQ( device->expectedValues(), &HardwareDevice::emptyExpectedValues );
}

TEST_F( Dummy, OffersNoKindButAGpio ) {
   EXPECT_THROW( device->newPoePort( args ), NotImplementedException );
   EXPECT_THROW( device->newTempSensor( args ), NotImplementedException );
   EXPECT_THROW( device->newSlot( args ), NotImplementedException );
   EXPECT_THROW( device->newSfpXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( device->newQsfpXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( device->newCmisXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( device->newLed( args ), NotImplementedException );
   EXPECT_THROW( device->newFan( args ), NotImplementedException );
   EXPECT_THROW( device->newMux( args, 1 ), NotImplementedException );
   EXPECT_THROW( device->newPsu( args ), NotImplementedException );
   EXPECT_THROW( device->newSmbusProxy( args ), NotImplementedException );
}

TEST_F( Dummy, MakesAGpioOfABitOfItsRegisters ) {
   device->ham = &ham;
   ham.registers[18] = 0x08;
   args.driverArgs = { { "register", "18" }, { "bitpos", "3" } };
   std::unique_ptr<Component::LogicalDevice::Gpio> gpio( device->newGpio( args ) );
   uint32_t value = 7;
   EXPECT_EQ( gpio->bitRead( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1U );
}

TEST( DriverTable, HoldsNoDriverBesideThoseOfThisPlatform ) {
   std::vector<std::string> names;
   for ( auto& [name, factory] : Drivers::drivers ) {
      names.push_back( name );
   }
   EXPECT_THAT( names, ElementsAre( "BCM59121", "Dummy", "EMC2305", "GpioDriver", "PCT2075", "SelvanePortLed",
                          "SelvaneSystemLed", "SelvaneXcvr" ) );
}

TEST( DriverTable, HasOneFunctionForDummyAndGpioDriver ) {
   using Factory = HardwareDevice* ( * )( const DriverArgs&, Ham::Ham* );
   auto dummy = Drivers::drivers.at( "Dummy" ).target<Factory>();
   auto gpioDriver = Drivers::drivers.at( "GpioDriver" ).target<Factory>();
   ASSERT_NE( dummy, nullptr );
   ASSERT_NE( gpioDriver, nullptr );
   EXPECT_EQ( *dummy, *gpioDriver );
}

TEST( DriverTable, MakesADummyUnderBothNames ) {
   for ( auto name : { "Dummy", "GpioDriver" } ) {
      SCOPED_TRACE( name );
      std::unique_ptr<Component::DeviceBase> device( Drivers::drivers.at( name )( {}, nullptr ) );
      EXPECT_NE( dynamic_cast<Drivers::Dummy*>( device.get() ), nullptr );
   }
}
