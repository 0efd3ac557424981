#include "Cpld.h"

#include <fmt/format.h>

namespace Emulator {

namespace {

constexpr uint8_t regMinorVersion = 0x00;
constexpr uint8_t regMajorVersion = 0x01;
constexpr uint8_t regPoeReset = 0x05;
constexpr uint8_t regRebootAction = 0x06;
// Bits 2:0 fan trays, 0 = present. Bits 5:4 power supplies, 1 = power good.
constexpr uint8_t regSupply = 0x07;
constexpr unsigned firstPowerGood = 4;
// Bits 3:0 0 = module present, bits 7:4 1 = loss of signal.
constexpr uint8_t regCages = 0x10;
constexpr unsigned firstRxLos = 4;
// Bits 3:0 1 = transmit fault, bits 7:4 1 = transmitter disabled.
constexpr uint8_t regTransmitters = 0x1F;
constexpr unsigned firstTxDisable = 4;
constexpr unsigned txDisables = 0xF0;
constexpr uint8_t regResetReason = 0x60;

constexpr unsigned powerLoss = 0x40;

struct Led {
   const char* name;
   uint8_t number;
};

constexpr Led leds[] = {
   { "status", 0x40 },
   { "power", 0x41 },
   { "cloud", 0x42 },
   { "fan", 0x43 },
   { "sfp1", 0x44 },
   { "sfp2", 0x45 },
   { "sfp3", 0x46 },
   { "sfp4", 0x47 },
   // What the port LEDs need to start.
   { "ports", 0x4C },
};

constexpr uint8_t firstPortLed = 0x80;
constexpr unsigned portLeds = 48;

std::vector<Register> table() {
   std::vector<Register> table = {
      { regMinorVersion, 1, 0x00, 0x00 },
      { regMajorVersion, 1, 0x00, 0x00 },
      { regPoeReset, 1, 0x01, 0x01 },
      { regRebootAction, 1, 0x00, 0x01 },
      { regSupply, 1, 0x00, 0x00 },
      { regCages, 1, 0x00, 0x00 },
      { regTransmitters, 1, 0x00, txDisables },
      { regResetReason, 1, powerLoss, 0xFF },
   };
   for ( auto& led : leds ) {
      table.push_back( { led.number, 1, 0xFF, 0xFF } );
   }
   for ( unsigned i = 0; i < portLeds; ++i ) {
      table.push_back( { static_cast<uint8_t>( firstPortLed + i ), 1, 0xFF, 0xFF } );
   }
   return table;
}

} // namespace

Cpld::Cpld() : registers_( RegisterFile::Pointer::Increments, table() ) {
   addProperty(
      "version", [this] { return fmt::format( "{:#06x}", version_ ); },
      [this]( const std::string& value ) {
         version_ = static_cast<uint16_t>( unsignedIn( "version", value, 0, 0xFFFF ) );
         sample();
      } );
   addProperty(
      "reset_reason", [this] { return fmt::format( "{:#04x}", registers_.get( regResetReason ) ); },
      [this]( const std::string& value ) {
         registers_.set(
            regResetReason, static_cast<uint16_t>( unsignedIn( "reset_reason", value, 0, 0xFF ) ) );
      } );
   addBit( "reboot_action", regRebootAction, 0 );
   addBit( "poe_reset", regPoeReset, 0 );
   for ( size_t i = 0; i < trays_.size(); ++i ) {
      addSwitch( fmt::format( "tray{}.present", i + 1 ), trays_[i] );
   }
   for ( size_t i = 0; i < supplies_.size(); ++i ) {
      addSwitch( fmt::format( "psu{}.power_good", i + 1 ), supplies_[i] );
   }
   for ( size_t i = 0; i < cages_.size(); ++i ) {
      addSwitch( fmt::format( "sfp{}.present", i + 1 ), cages_[i].present );
      addSwitch( fmt::format( "sfp{}.rx_los", i + 1 ), cages_[i].rxLos );
      addSwitch( fmt::format( "sfp{}.tx_fault", i + 1 ), cages_[i].txFault );
      addBit( fmt::format( "sfp{}.tx_disable", i + 1 ), regTransmitters,
         firstTxDisable + static_cast<unsigned>( i ) );
   }
   for ( auto& led : leds ) {
      addLed( led.name, led.number );
   }
   for ( unsigned i = 0; i < portLeds; ++i ) {
      addLed( fmt::format( "port{}", i + 1 ), static_cast<uint8_t>( firstPortLed + i ) );
   }
   sample();
}

void Cpld::addBit( const std::string& name, uint8_t number, unsigned bit ) {
   addProperty( name, [this, number, bit] { return registers_.get( number ) >> bit & 1 ? "1" : "0"; } );
}

void Cpld::addSwitch( const std::string& name, bool& state ) {
   addProperty(
      name, [&state] { return state ? "1" : "0"; },
      [this, &state, name]( const std::string& value ) {
         state = unsignedIn( name, value, 0, 1 ) == 1;
         sample();
      } );
}

void Cpld::addLed( const std::string& name, uint8_t number ) {
   addProperty(
      "led." + name, [this, number] { return fmt::format( "{:#04x}", registers_.get( number ) ); } );
}

bool Cpld::write( std::span<const uint8_t> bytes ) {
   auto reason = registers_.get( regResetReason );
   bool acknowledged = registers_.write( bytes );
   // It can be cleared and not set.
   if ( registers_.get( regResetReason ) != 0 ) {
      registers_.set( regResetReason, reason );
   }
   return acknowledged;
}

void Cpld::reset() {
   registers_.reset();
   sample();
}

void Cpld::sample() {
   unsigned supply = 0;
   for ( size_t i = 0; i < trays_.size(); ++i ) {
      supply |= trays_[i] ? 0U : 1U << i;
   }
   for ( size_t i = 0; i < supplies_.size(); ++i ) {
      supply |= supplies_[i] ? 1U << ( firstPowerGood + i ) : 0U;
   }
   unsigned cages = 0;
   unsigned transmitters = registers_.get( regTransmitters ) & txDisables;
   for ( size_t i = 0; i < cages_.size(); ++i ) {
      auto& cage = cages_[i];
      cages |= cage.present ? 0U : 1U << i;
      cages |= !cage.present || cage.rxLos ? 1U << ( firstRxLos + i ) : 0U;
      transmitters |= cage.present && cage.txFault ? 1U << i : 0U;
   }
   registers_.set( regMinorVersion, version_ & 0xFF );
   registers_.set( regMajorVersion, static_cast<uint16_t>( version_ >> 8 ) );
   registers_.set( regSupply, static_cast<uint16_t>( supply ) );
   registers_.set( regCages, static_cast<uint16_t>( cages ) );
   registers_.set( regTransmitters, static_cast<uint16_t>( transmitters ) );
}

} // namespace Emulator
