#include "Pct2075.h"

#include "Text.h"

#include <cmath>

namespace Emulator {

namespace {

constexpr uint8_t regTemp = 0x00;
constexpr uint8_t regConf = 0x01;
constexpr uint8_t regThyst = 0x02;
constexpr uint8_t regTos = 0x03;
constexpr uint8_t regTidle = 0x04;

// Conf. Bits 7:5 are reserved and read as 0, bits 4:3 are the fault queue, bit 2 is the level of OS.
constexpr unsigned confShutdown = 1U << 0;
constexpr unsigned confInterrupt = 1U << 1;

constexpr double lowest = -55;
constexpr double highest = 125;

const std::vector<Register> table = {
   // Two's complement in bits 15:5, 0.125 °C a step.
   { regTemp, 2, 0x0000, 0x0000 },
   { regConf, 1, 0x00, 0x1F },
   // Two's complement in bits 15:7, 0.5 °C a step: 75 °C and 80 °C.
   { regThyst, 2, 0x4B00, 0xFF80 },
   { regTos, 2, 0x5000, 0xFF80 },
   // Time between conversions, 0.1 s a step.
   { regTidle, 1, 0x00, 0x1F },
};

/** The step that a temperature is on or above, as the converter gives it. */
uint16_t tempCode( double celsius ) {
   return static_cast<uint16_t>( static_cast<int>( std::floor( celsius * 8 ) ) * 32 );
}

/** A 9-bit number of 0.5 °C steps. Comparisons take no more bits than this of Temp either. */
int halves( uint16_t code ) { return static_cast<int16_t>( code ) >> 7; }

} // namespace

Pct2075::Pct2075() : registers_( RegisterFile::Pointer::Stays, table ) {
   addProperty(
      "temperature", [this] { return format( temperature_ ); },
      [this]( const std::string& value ) {
         temperature_ = numberIn( "temperature", value, lowest, highest );
         convert();
      } );
   addProperty( "os", [this] { return os_ ? "1" : "0"; } );
   addProperty( "thyst", [this] { return format( halves( registers_.get( regThyst ) ) / 2.0 ); } );
   addProperty( "tos", [this] { return format( halves( registers_.get( regTos ) ) / 2.0 ); } );
   convert();
}

void Pct2075::read( std::span<uint8_t> bytes ) {
   // In interrupt mode OS stays active until any register is read.
   if ( configured( confInterrupt ) ) {
      os_ = false;
   }
   registers_.read( bytes );
}

void Pct2075::reset() {
   registers_.reset();
   over_ = false;
   os_ = false;
   convert();
}

bool Pct2075::configured( unsigned bit ) const { return registers_.get( regConf ) & bit; }

void Pct2075::convert() {
   if ( !configured( confShutdown ) ) {
      registers_.set( regTemp, tempCode( temperature_ ) );
      compare();
   } else if ( configured( confInterrupt ) ) {
      os_ = false;
   }
}

void Pct2075::compare() {
   bool interrupt = configured( confInterrupt );
   if ( interrupt && os_ ) {
      return;
   }
   bool wasOver = over_;
   int temp = halves( registers_.get( regTemp ) );
   if ( temp > halves( registers_.get( regTos ) ) ) {
      over_ = true;
   } else if ( temp < halves( registers_.get( regThyst ) ) ) {
      over_ = false;
   }
   os_ = interrupt ? over_ != wasOver : over_;
}

} // namespace Emulator
