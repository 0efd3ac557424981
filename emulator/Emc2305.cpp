#include "Emc2305.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Emulator {

namespace {

constexpr uint8_t regConfiguration = 0x20;
constexpr uint8_t regFanStatus = 0x24;
constexpr uint8_t regFanStallStatus = 0x25;

constexpr unsigned configurationWdEn = 1U << 5;
constexpr unsigned statusWatch = 1U << 7;
constexpr unsigned statusFanStall = 1U << 0;

// Each fan has a block of 16 registers; these are the first fan's.
constexpr uint8_t firstBlock = 0x30;
constexpr uint8_t regSetting = 0x30;
constexpr uint8_t regConfig1 = 0x32;
constexpr uint8_t regSpinUp = 0x36;
constexpr uint8_t regValidTach = 0x39;
constexpr uint8_t regTachHigh = 0x3E;
constexpr uint8_t regTachLow = 0x3F;

const std::vector<Register> chipRegisters = {
   { regConfiguration, 1, 0x40, 0xE3 },
   { regFanStatus, 1, 0x00, 0x00, 0xFF },
   { regFanStallStatus, 1, 0x00, 0x00, 0xFF },
   // Spin-up status, drive fail status, interrupt enable.
   { 0x26, 1, 0x00, 0x00, 0xFF },
   { 0x27, 1, 0x00, 0x00, 0xFF },
   { 0x29, 1, 0x00, 0x1F },
   // PWM polarity, output, base frequencies.
   { 0x2A, 1, 0x00, 0x1F },
   { 0x2B, 1, 0x00, 0x1F },
   { 0x2C, 1, 0x00, 0x0F },
   { 0x2D, 1, 0x00, 0x3F },
   // Software lock, product features, product id, manufacturer id, revision.
   { 0xEF, 1, 0x00, 0x01 },
   { 0xFC, 1, 0x00, 0x00 },
   { 0xFD, 1, 0x34, 0x00 },
   { 0xFE, 1, 0x5D, 0x00 },
   { 0xFF, 1, 0x80, 0x00 },
};

const std::vector<Register> fanRegisters = {
   { regSetting, 1, 0x00, 0xFF },
   // PWM divide.
   { 0x31, 1, 0x01, 0xFF },
   { regConfig1, 1, 0x2B, 0xFF },
   // Configuration 2, gain.
   { 0x33, 1, 0x28, 0x7E },
   { 0x35, 1, 0x2A, 0x3F },
   { regSpinUp, 1, 0x19, 0xFF },
   // Maximum step, minimum drive.
   { 0x37, 1, 0x10, 0x3F },
   { 0x38, 1, 0x66, 0xFF },
   { regValidTach, 1, 0xF5, 0xFF },
   // Drive fail band and tachometer target, low byte first.
   { 0x3A, 1, 0x00, 0xF8 },
   { 0x3B, 1, 0x00, 0xFF },
   { 0x3C, 1, 0xF8, 0xF8 },
   { 0x3D, 1, 0xFF, 0xFF },
   { regTachHigh, 1, 0xFF, 0x00 },
   { regTachLow, 1, 0xF8, 0x00 },
};

uint8_t blockOf( size_t index ) { return static_cast<uint8_t>( firstBlock + 0x10 * index ); }

std::vector<Register> table( size_t fans ) {
   auto table = chipRegisters;
   for ( size_t i = 0; i < fans; ++i ) {
      for ( auto definition : fanRegisters ) {
         definition.number = static_cast<uint8_t>( definition.number - firstBlock + blockOf( i ) );
         table.push_back( definition );
      }
   }
   return table;
}

constexpr std::chrono::seconds watchdogTime( 4 );

constexpr unsigned fullDrive = 0xFF;
constexpr uint32_t highestRpm = 100000;
/** A rotor is then within 37% of the step to its new speed. */
constexpr std::chrono::duration<double> timeConstant( 1 );

/** Bits 1:0 of the spin-up configuration. */
std::chrono::milliseconds spinUpTime( unsigned configuration ) {
   return std::chrono::milliseconds( 250U << ( configuration & 3U ) );
}

// 13 bits; the highest stands for everything slower.
constexpr unsigned highestCount = 0x1FFF;

/**
 * Clocks of 32.768 kHz as the data sheet has them: RPM = 1/poles * (n - 1) / (COUNT / m) * 32768 * 60, with n
 * edges by EDG, bits 4:3 of configuration 1, and the multiplier m by RNG, bits 6:5.
 */
unsigned tachCount( double rpm, unsigned configuration ) {
   constexpr double poles = 2;
   double edges = 3 + 2 * ( configuration >> 3 & 3U );
   double multiplier = 1U << ( configuration >> 5 & 3U );
   double count = ( edges - 1 ) / poles * multiplier * 32768 * 60 / rpm;
   return count < highestCount ? static_cast<unsigned>( count ) : highestCount;
}

} // namespace

Emc2305::Emc2305() : registers_( RegisterFile::Pointer::Increments, table( fanCount ) ) {
   for ( size_t i = 0; i < fanCount; ++i ) {
      addFan( i );
   }
}

void Emc2305::addFan( size_t index ) {
   auto& fan = fans_[index];
   fan.block = blockOf( index );
   auto prefix = fmt::format( "fan{}.", index + 1 );
   addProperty(
      prefix + "rpm", [&fan] { return format( std::round( fan.rpm ) ); },
      [this, &fan, name = prefix + "rpm"]( const std::string& value ) {
         auto rpm = unsignedIn( name, value, 0, highestRpm );
         if ( fan.stalled && rpm > 0 ) {
            throw std::invalid_argument( fmt::format( "{} stays 0 while the fan is stalled", name ) );
         }
         fan.rpm = rpm;
         run( {} );
      } );
   addProperty(
      prefix + "drive", [this, &fan] { return fmt::format( "{}", content( fan, regSetting ) ); },
      [this, &fan, name = prefix + "drive"]( const std::string& value ) {
         registers_.set( fan.block, static_cast<uint16_t>( unsignedIn( name, value, 0, fullDrive ) ) );
         endPowerUp();
      } );
   addProperty(
      prefix + "max_rpm", [&fan] { return format( fan.maxRpm ); },
      [&fan, name = prefix + "max_rpm"](
         const std::string& value ) { fan.maxRpm = unsignedIn( name, value, 1, highestRpm ); } );
   addProperty(
      prefix + "stalled", [&fan] { return fan.stalled ? "1" : "0"; },
      [this, &fan, name = prefix + "stalled"]( const std::string& value ) {
         fan.stalled = unsignedIn( name, value, 0, 1 ) == 1;
         run( {} );
      } );
}

void Emc2305::start() {
   registers_.start();
   // The watchdog of power-up waits for a drive, the other one for any word.
   if ( !poweringUp_ ) {
      quiet_ = {};
   }
}

bool Emc2305::write( std::span<const uint8_t> bytes ) {
   if ( !registers_.write( bytes ) ) {
      return false;
   }
   for ( size_t i = 1; i < bytes.size(); ++i ) {
      auto number = bytes[0] + i - 1;
      if ( std::ranges::any_of( fans_, [&]( auto& fan ) { return fan.block == number; } ) ) {
         endPowerUp();
      }
   }
   return true;
}

void Emc2305::advance( std::chrono::nanoseconds elapsed ) {
   auto left = watchdogTime - quiet_;
   if ( isWatching() && left > left.zero() && elapsed >= left ) {
      run( left );
      for ( auto& fan : fans_ ) {
         registers_.set( fan.block, fullDrive );
      }
      raise( regFanStatus, statusWatch );
      poweringUp_ = false;
      quiet_ += left;
      elapsed -= left;
   }
   quiet_ += elapsed;
   run( elapsed );
}

void Emc2305::reset() {
   registers_.reset();
   poweringUp_ = true;
   quiet_ = {};
   run( {} );
}

void Emc2305::endPowerUp() {
   poweringUp_ = false;
   quiet_ = {};
}

uint8_t Emc2305::content( const Fan& fan, uint8_t reg ) const {
   return static_cast<uint8_t>( registers_.get( static_cast<uint8_t>( fan.block + reg - firstBlock ) ) );
}

void Emc2305::run( std::chrono::nanoseconds elapsed ) {
   for ( size_t i = 0; i < fanCount; ++i ) {
      auto& fan = fans_[i];
      turn( fan, elapsed );
      measure( fan );
      if ( isTooSlow( fan ) ) {
         raise( regFanStallStatus, 1U << i );
         raise( regFanStatus, statusFanStall );
      }
   }
}

void Emc2305::turn( Fan& fan, std::chrono::nanoseconds elapsed ) const {
   unsigned drive = content( fan, regSetting );
   if ( drive == 0 ) {
      fan.spinUp = spinUpTime( content( fan, regSpinUp ) );
   } else {
      fan.spinUp -= std::min( fan.spinUp, elapsed );
   }
   double target = fan.maxRpm * drive / fullDrive;
   fan.rpm = fan.stalled ? 0 : target + ( fan.rpm - target ) * std::exp( -elapsed / timeConstant );
}

void Emc2305::measure( const Fan& fan ) {
   auto count = tachCount( fan.rpm, content( fan, regConfig1 ) );
   // Bits 12:5 and 4:0 of the count, both from bit 7 on.
   registers_.set(
      static_cast<uint8_t>( fan.block + regTachHigh - firstBlock ), static_cast<uint16_t>( count >> 5 ) );
   registers_.set( static_cast<uint8_t>( fan.block + regTachLow - firstBlock ),
      static_cast<uint16_t>( count << 3 & 0xFFU ) );
}

bool Emc2305::isTooSlow( const Fan& fan ) const {
   return !poweringUp_ && content( fan, regSetting ) > 0 && fan.spinUp == fan.spinUp.zero() &&
          content( fan, regTachHigh ) > content( fan, regValidTach );
}

void Emc2305::raise( uint8_t reg, unsigned bits ) {
   registers_.set( reg, static_cast<uint16_t>( registers_.get( reg ) | bits ) );
}

bool Emc2305::isWatching() const {
   return poweringUp_ || ( registers_.get( regConfiguration ) & configurationWdEn );
}

} // namespace Emulator
