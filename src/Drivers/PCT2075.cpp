#include "Drivers/PCT2075.h"

#include "Ham/Ham.h"

#include <cassert>
#include <cmath>

namespace Drivers {

namespace {

constexpr uint32_t tempRegister = 0x00;
constexpr uint8_t regSize = 1;

/** A field of two's complement in the high bits of a register. */
struct Format {
   int shift;
   int mask;
   float step;
};

constexpr Format temperatureFormat = { .shift = 5, .mask = 0x7FF, .step = 0.125F };
constexpr Format thresholdFormat = { .shift = 7, .mask = 0x1FF, .step = 0.5F };

/** The chip sends the high byte first, a Ham takes the first byte as the low one. */
constexpr uint16_t swapBytes( uint16_t word ) {
   return static_cast<uint16_t>( ( word & 0xFF ) << 8 | word >> 8 );
}

} // namespace

std::map<uint32_t, Utils::ExpectedVal> PCT2075::values = {
   { 0x00, { 0x2000, 2 } },
   { 0x02, { 0x2000, 2 } },
   { 0x03, { 0x2000, 2 } },
};

Component::HardwareDevice* PCT2075::create( const DriverArgs&, Ham::Ham* ) { return new PCT2075; }

Component::LogicalDevice::TempSensor* PCT2075::newTempSensor( const DriverArgs& ) {
   ql_trace( 5, "Creating PCT2075" );
   return new TempSensor( this );
}

std::map<uint32_t, Utils::ExpectedVal>* PCT2075::expectedValues() { return &values; }

float PCT2075::registerToTemperature( uint16_t word, RegisterType type ) {
   auto format = type == Temperature ? temperatureFormat : thresholdFormat;
   int value = swapBytes( word ) >> format.shift;
   if ( word & 0x80 ) {
      value = -( -value & format.mask );
   }
   return format.step * static_cast<float>( value );
}

ql_status PCT2075::setThreshold( Threshold which, float value ) {
   assert( ham );
   auto rounded = static_cast<float>( std::round( 2 * static_cast<double>( value ) ) * 0.5 );
   auto halves = 2 * std::fabs( rounded );
   // Beyond 32 bits, and for what is no number, the 16 bits that the chip takes are 0.
   auto word = halves < 0x1p31F ? static_cast<uint32_t>( halves ) << 7 : 0;
   if ( rounded < 0 ) {
      word = -word;
   }
   return ham->write16( which, swapBytes( static_cast<uint16_t>( word & 0xFFFF ) ), false, regSize );
}

ql_status PCT2075::getThreshold( Threshold which, float* value ) {
   assert( ham );
   uint16_t word = 0;
   auto status = ham->read16( which, &word, regSize );
   if ( status == QL_STATUS_OK ) {
      *value = registerToTemperature( word, ThresholdValue );
   }
   return status;
}

ql_status PCT2075::getTemperature( float* value ) {
   ql_trace( 6, "%s", "ql_status Drivers::PCT2075::getTemperature(float*)" );
   assert( ham );
   uint16_t word = 0;
   auto status = ham->read16( tempRegister, &word, regSize );
   if ( status == QL_STATUS_OK ) {
      *value = registerToTemperature( word, Temperature );
   }
   return status;
}

PCT2075::TempSensor::TempSensor( PCT2075* device ) : device_( device ) {}

void PCT2075::TempSensor::alertThresholdIs( float value ) {
   alertThreshold = value;
   assert( device_->setThreshold( Threshold::Alert, value ) == QL_STATUS_OK );
}

void PCT2075::TempSensor::criticalThresholdIs( float value ) {
   criticalThreshold = value;
   assert( device_->setThreshold( Threshold::Overheat, value ) == QL_STATUS_OK );
}

ql_status PCT2075::TempSensor::getTemperature( float* value ) { return device_->getTemperature( value ); }

} // namespace Drivers
