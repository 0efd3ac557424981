#include "Drivers/Selvane/SelvaneSystemLed.h"

#include "Ham/Ham.h"

#include <cassert>
#include <string>

namespace Drivers {

namespace {

constexpr uint8_t statusLedReg = 0x40;
constexpr uint8_t powerLedReg = 0x41;
constexpr uint8_t cloudLedReg = 0x42;
constexpr uint8_t fanLedReg = 0x43;
constexpr uint8_t regSize = 1;

/** The one cloud and fan LED that can show "Bad". */
constexpr uint8_t ledWithBad = 3;

const LedCodes statusCodes = {
   { QL_LED_OFF, 0x00 },
   { QL_LED_GOOD, 0x01 },
   { QL_LED_WARNING, 0x02 },
   { QL_LED_UNKNOWN, 0x09 },
   { QL_LED_BEACON, 0x0C },
};
const LedCodes cloudAndFanCodes = {
   { QL_LED_OFF, 0x07 },
   { QL_LED_GOOD, 0x06 },
   { QL_LED_WARNING, 0x05 },
};
const LedCodes cloudAndFanCodesWithBad = {
   { QL_LED_OFF, 0x07 },
   { QL_LED_GOOD, 0x06 },
   { QL_LED_WARNING, 0x05 },
   { QL_LED_BAD, 0x05 },
};
const LedCodes powerCodes = {
   { QL_LED_OFF, 0x07 },
   { QL_LED_GOOD, 0x06 },
   { QL_LED_BAD, 0x05 },
};

} // namespace

std::map<uint32_t, Utils::ExpectedVal> SelvaneSystemLed::values = {
   { statusLedReg, { 0xFF, 1 } },
   { powerLedReg, { 0xFF, 1 } },
   { cloudLedReg, { 0xFF, 1 } },
   { fanLedReg, { 0xFF, 1 } },
};

Component::HardwareDevice* SelvaneSystemLed::create( const DriverArgs&, Ham::Ham* ) {
   ql_trace( 5, "Creating SelvaneSystemLed device" );
   return new SelvaneSystemLed;
}

Component::LogicalDevice::Led* SelvaneSystemLed::newLed( const DriverArgs& args ) {
   auto reg = static_cast<uint8_t>( std::stoi( args.driverArgs.at( "reg" ) ) );
   auto id = static_cast<uint8_t>( std::stoi( args.driverArgs.at( "id" ) ) );
   switch ( reg ) {
   case statusLedReg:
      ql_trace( 5, "Creating new SelvaneSystemLed Status LED with id %hhu", id );
      return new StatusLed( this, id, reg );
   case powerLedReg:
      ql_trace( 5, "Creating new SelvaneSystemLed Power LED with id %hhu", id );
      return new PowerLed( this, id, reg );
   case cloudLedReg:
   case fanLedReg:
      ql_trace( 5, "Creating new SelvaneSystemLed CloudAndFan LED with id %hhu", id );
      return new CloudAndFanLed( this, id, reg );
   default:
      ql_trace( 0, "Error: failed to find driverArg for SelvaneSystemLed::newLed" );
      return nullptr;
   }
}

std::map<uint32_t, Utils::ExpectedVal>* SelvaneSystemLed::expectedValues() { return &values; }

SelvaneSystemLed::SystemLed::SystemLed( SelvaneSystemLed* owner, uint8_t number, uint8_t ledReg )
   : Led( true ), device( owner ), id( number ), reg( ledReg ) {}

bool SelvaneSystemLed::SystemLed::handleBlinkTimer( bool ) { return false; }

ql_status SelvaneSystemLed::SystemLed::set( ql_led_status status, const LedCodes& codes ) {
   auto code = codes.find( status );
   if ( code == codes.end() ) {
      ql_trace( 0, "led %hhu was given an unexpected setting %d", id, static_cast<int>( status ) );
      return QL_STATUS_INVALID_ARGUMENT;
   }
   auto ham = device->ham;
   assert( ham );
   auto result = ham->write8( reg, code->second, false, regSize );
   if ( result != QL_STATUS_OK ) {
      ql_trace( 6, "Setting status for SelvaneSystemLed %hhu failed.", id );
   }
   return result;
}

ql_status SelvaneSystemLed::StatusLed::setLightSetting( ql_led_status status ) {
   ql_trace( 6, "setting CPLD System Status Led %hhu to %s", id, ledStatusName( status ) );
   return set( status, statusCodes );
}

ql_status SelvaneSystemLed::CloudAndFanLed::setLightSetting( ql_led_status status ) {
   ql_trace( 6, "setting CPLD System Cloud and Fan Led %hhu to %s", id, ledStatusName( status ) );
   return set( status, id == ledWithBad ? cloudAndFanCodesWithBad : cloudAndFanCodes );
}

ql_status SelvaneSystemLed::PowerLed::setLightSetting( ql_led_status status ) {
   ql_trace( 6, "setting CPLD System Cloud and Fan Led %hhu to %s", id, ledStatusName( status ) );
   return set( status, powerCodes );
}

} // namespace Drivers
