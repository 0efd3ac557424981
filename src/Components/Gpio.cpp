#include "Components/Gpio.h"

#include "Components/HardwareDevice.h"
#include "Ham/Ham.h"

#include <cassert>
#include <string>

namespace Component::LogicalDevice {

const ql_gpio_ops Gpio::ops_ = {
   .size = sizeof( ql_gpio_ops ),
   .bit_set = bitSetCallback,
   .bit_clear = bitClearCallback,
   .bit_read = bitReadCallback,
};
static_assert( sizeof( ql_gpio_ops ) == 32 );

Gpio::Gpio() {
   record.ops = &ops_;
   record.owner = this;
}

ql_status Gpio::bitSetCallback( ql_gpio* record ) {
   ql_trace( 4, "%s", "bitSetCallback" );
   return static_cast<Gpio*>( record->owner )->bitSet();
}

ql_status Gpio::bitClearCallback( ql_gpio* record ) {
   ql_trace( 4, "%s", "bitClearCallback" );
   return static_cast<Gpio*>( record->owner )->bitClear();
}

ql_status Gpio::bitReadCallback( ql_gpio* record, uint32_t* value ) {
   ql_trace( 4, "%s", "bitReadCallback" );
   return static_cast<Gpio*>( record->owner )->bitRead( value );
}

namespace {

int32_t numberArg( const Drivers::DriverArgs& args, const char* key ) {
   auto it = args.driverArgs.find( key );
   assert( it != args.driverArgs.end() );
   return std::stoi( it->second );
}

} // namespace

RegGpio::RegGpio( HardwareDevice* owner, const Drivers::DriverArgs& args )
   : device( owner ), reg( numberArg( args, "register" ) ), bitpos( numberArg( args, "bitpos" ) ) {}

Ham::Ham* RegGpio::ham() const {
   assert( device->ham );
   return device->ham;
}

uint32_t RegGpio::mask() const { return 1U << ( static_cast<uint32_t>( bitpos ) % 32 ); }

ql_status RegGpio::write( uint32_t content ) {
   return ham()->write8( static_cast<uint32_t>( reg ), static_cast<uint8_t>( content & 0xFF ), false, 1 );
}

ql_status RegGpio::readUnlessWriteOnly( uint8_t* content ) {
   return writeWithoutRead ? QL_STATUS_OK : ham()->read8( static_cast<uint32_t>( reg ), content, 1 );
}

ql_status RegGpio::bitClear() {
   uint8_t content = 0xFF;
   auto status = readUnlessWriteOnly( &content );
   return status == QL_STATUS_OK ? write( content & ~mask() ) : status;
}

ql_status RegGpio::bitSet() {
   uint8_t content = 0x00;
   auto status = readUnlessWriteOnly( &content );
   return status == QL_STATUS_OK ? write( content | mask() ) : status;
}

ql_status RegGpio::bitRead( uint32_t* value ) {
   uint8_t content = 0;
   auto status = ham()->read8( static_cast<uint32_t>( reg ), &content, 1 );
   if ( status == QL_STATUS_OK ) {
      *value = content & mask() ? 1 : 0;
   }
   return status;
}

} // namespace Component::LogicalDevice
