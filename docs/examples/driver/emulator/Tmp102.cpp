#include "Tmp102.h"

#include "Text.h"

#include <cmath>

namespace Emulator {

namespace {

constexpr uint8_t regTemperature = 0x00;
constexpr uint8_t regConfiguration = 0x01;
constexpr uint8_t regTlow = 0x02;
constexpr uint8_t regThigh = 0x03;

// Configuration. AL tells the comparator: it differs from POL while the alert is active.
constexpr uint16_t shutdown = 1 << 8;
constexpr uint16_t polarity = 1 << 10;
constexpr uint16_t al = 1 << 5;

constexpr double lowest = -40;
constexpr double highest = 125;

const std::vector<Register> table = {
   // Two's complement in bits 15:4, 0.0625 °C a step.
   { regTemperature, 2, 0x0000, 0x0000 },
   // Resolution and AL are read-only, OS and EM not modelled: fault queue, POL, TM, SD and conversion rate
   // remain.
   { regConfiguration, 2, 0x60A0, 0x1FC0 },
   // 75 °C and 80 °C.
   { regTlow, 2, 0x4B00, 0xFFF0 },
   { regThigh, 2, 0x5000, 0xFFF0 },
};

/** Sixteenths of a degree. */
int sixteenths( uint16_t code ) { return static_cast<int16_t>( code ) / 16; }

} // namespace

Tmp102::Tmp102() : registers_( RegisterFile::Pointer::Stays, table ) {
   addProperty(
      "temperature", [this] { return format( temperature_ ); },
      [this]( const std::string& value ) {
         temperature_ = numberIn( "temperature", value, lowest, highest );
         convert();
      } );
   addProperty( "alert", [this] { return alert_ ? "1" : "0"; } );
   addProperty( "tlow", [this] { return format( sixteenths( registers_.get( regTlow ) ) / 16.0 ); } );
   addProperty( "thigh", [this] { return format( sixteenths( registers_.get( regThigh ) ) / 16.0 ); } );
   convert();
}

void Tmp102::reset() {
   registers_.reset();
   alert_ = false;
   convert();
}

void Tmp102::convert() {
   auto configuration = registers_.get( regConfiguration );
   if ( !( configuration & shutdown ) ) {
      auto steps = static_cast<int>( std::floor( temperature_ * 16 ) );
      registers_.set( regTemperature, static_cast<uint16_t>( steps * 16 ) );
      if ( steps >= sixteenths( registers_.get( regThigh ) ) ) {
         alert_ = true;
      } else if ( steps < sixteenths( registers_.get( regTlow ) ) ) {
         alert_ = false;
      }
   }
   bool isHigh = static_cast<bool>( configuration & polarity ) == alert_;
   auto others = static_cast<uint16_t>( configuration & ~al );
   registers_.set( regConfiguration, isHigh ? others | al : others );
}

} // namespace Emulator
