#include "Drivers/TMP102.h"

#include "Ham/Ham.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace Drivers {

namespace {

constexpr uint32_t temperatureReg = 0x00;
constexpr uint8_t regSize = 1;

// Two's complement in bits 15 to 4 of every register but the configuration.
constexpr int shift = 4;
constexpr float step = 0.0625F;
constexpr float lowest = -128.0F;
constexpr float highest = 127.9375F;

/** The chip sends the high byte first, a Ham takes the first byte as the low one. */
constexpr uint16_t swapBytes( uint16_t word ) {
   return static_cast<uint16_t>( ( word & 0xFF ) << 8 | word >> 8 );
}

} // namespace

std::map<uint32_t, Utils::ExpectedVal> TMP102::values = {
   { temperatureReg, { 0x0019, 2 } },
   { Low, { 0x004B, 2 } },
   { High, { 0x0050, 2 } },
};

Component::HardwareDevice* TMP102::create( const DriverArgs&, Ham::Ham* ) { return new TMP102; }

Component::LogicalDevice::TempSensor* TMP102::newTempSensor( const DriverArgs& ) {
   ql_trace( 5, "Creating TMP102" );
   return new TempSensor( this );
}

std::map<uint32_t, Utils::ExpectedVal>* TMP102::expectedValues() { return &values; }

ql_status TMP102::getTemperature( float* value ) {
   assert( ham );
   uint16_t word = 0;
   auto status = ham->read16( temperatureReg, &word, regSize );
   if ( status == QL_STATUS_OK ) {
      *value = step * static_cast<float>( static_cast<int16_t>( swapBytes( word ) ) >> shift );
   }
   return status;
}

ql_status TMP102::setLimit( Limit which, float value ) {
   assert( ham );
   if ( std::isnan( value ) ) {
      return QL_STATUS_INVALID_ARGUMENT;
   }
   auto steps = static_cast<int>( std::lround( std::clamp( value, lowest, highest ) / step ) );
   auto word = static_cast<uint16_t>( ( steps << shift ) & 0xFFFF );
   auto status = ham->write16( which, swapBytes( word ), false, regSize );
   if ( status != QL_STATUS_OK ) {
      ql_trace(
         0, "Error: writing TMP102 limit %#x failed with status %d", which, static_cast<int>( status ) );
   }
   return status;
}

TMP102::TempSensor::TempSensor( TMP102* device ) : device_( device ) {}

void TMP102::TempSensor::alertThresholdIs( float value ) {
   alertThreshold = value;
   device_->setLimit( Low, value );
}

void TMP102::TempSensor::criticalThresholdIs( float value ) {
   criticalThreshold = value;
   device_->setLimit( High, value );
}

ql_status TMP102::TempSensor::getTemperature( float* value ) { return device_->getTemperature( value ); }

} // namespace Drivers
