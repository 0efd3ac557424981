#include "Drivers/Selvane/SelvanePortLed.h"

#include "Drivers/Selvane/LedCodes.h"
#include "Ham/Ham.h"

#include <cassert>

namespace Drivers {

namespace {

constexpr uint32_t startUpReg = 0x4C;
constexpr uint8_t regSize = 1;

// The codes are opaque bytes to us. "Good" and "Warning" change places between the two kinds of port.
const LedCodes sfpCodes = {
   { QL_LED_OFF, 0xB3 },
   { QL_LED_GOOD, 0xA3 },
   { QL_LED_WARNING, 0x93 },
   { QL_LED_INACTIVE, 0x93 },
   { QL_LED_BEACON, 0xD3 },
};
const LedCodes otherCodes = {
   { QL_LED_OFF, 0xB3 },
   { QL_LED_GOOD, 0x93 },
   { QL_LED_WARNING, 0xA3 },
   { QL_LED_INACTIVE, 0xA3 },
   { QL_LED_BEACON, 0xE3 },
};

} // namespace

std::map<uint32_t, Utils::ExpectedVal> SelvanePortLed::values = {
   { 0x46, { 0xFF, 1 } },
};

Component::HardwareDevice* SelvanePortLed::create( const DriverArgs&, Ham::Ham* ) {
   ql_trace( 5, "Creating SelvanePortLed device" );
   return new SelvanePortLed;
}

void SelvanePortLed::init() {
   assert( ham );
   ham->write8( startUpReg, 0, false, regSize );
}

Component::LogicalDevice::Led* SelvanePortLed::newLed( const DriverArgs& args ) {
   auto& name = args.driverArgs.at( "ledName" );
   auto ledReg = static_cast<uint8_t>( std::stoi( args.driverArgs.at( "ledReg" ) ) );
   auto& portType = args.driverArgs.at( "portType" );
   return new PortLed( this, name, ledReg, portType );
}

std::map<uint32_t, Utils::ExpectedVal>* SelvanePortLed::expectedValues() { return &values; }

SelvanePortLed::PortLed::PortLed(
   SelvanePortLed* owner, const std::string& ledName, uint8_t reg, const std::string& type )
   : Led( true ), device( owner ), name( ledName ), ledReg( reg ), portType( type ) {}

bool SelvanePortLed::PortLed::handleBlinkTimer( bool ) { return false; }

ql_status SelvanePortLed::PortLed::setLightSetting( ql_led_status status ) {
   ql_trace( 6, "setting CPLD System Led %s to %s", name.c_str(), ledStatusName( status ) );
   auto& codes = portType == "sfp" ? sfpCodes : otherCodes;
   auto code = codes.find( status );
   if ( code == codes.end() ) {
      ql_trace( 0, "led %s was given an unexpected setting %d", name.c_str(), static_cast<int>( status ) );
      return QL_STATUS_INVALID_ARGUMENT;
   }
   auto ham = device->ham;
   assert( ham );
   auto result = ham->write8( ledReg, code->second, false, regSize );
   if ( result != QL_STATUS_OK ) {
      ql_trace( 6, "Setting status for SelvanePortLed LED %s failed.", name.c_str() );
   }
   return result;
}

} // namespace Drivers
