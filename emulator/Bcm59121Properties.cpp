#include "Bcm59121.h"

#include "Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cmath>

namespace Emulator {

namespace {

std::string byte( uint8_t value ) { return fmt::format( "{:#04x}", value ); }

std::string watts( double tenths ) { return format( tenths / 10 ); }

const char* detectionText( uint8_t type ) {
   constexpr std::array<const char*, 6> texts = { "none", "capacitive", "4-point", "legacy-4-point",
      "2-point", "legacy-2-point" };
   return texts.at( type );
}

const char* modeText( uint8_t mode ) {
   constexpr std::array<const char*, 7> texts = { "802.3af", "high-inrush", "pre-802.3at", "802.3at",
      "pre-802.3bt", "802.3bt-type3", "802.3bt-type4" };
   return texts.at( mode );
}

std::string limitText( const Bcm59121Port::Settings& settings ) {
   switch ( settings.violationType ) {
   case 0:
      return "none";
   case 1:
      return "class";
   default:
      return watts( settings.limit * 2 );
   }
}

} // namespace

void Bcm59121::addChipProperties() {
   addProperty(
      "reset", [this] { return isHeld_ ? "1" : "0"; },
      [this]( const std::string& value ) { setReset( unsignedIn( "reset", value, 0, 1 ) == 1 ); } );
   addProperty(
      "temperature", [this] { return format( state_.celsius ); },
      [this]( const std::string& value ) { state_.celsius = numberIn( "temperature", value, -40, 150 ); } );
   addProperty(
      "supply", [this] { return format( state_.power.volts ); },
      [this]( const std::string& value ) {
         state_.power.volts = numberIn( "supply", value, 0, 80 );
         state_.followSupply();
      } );
   addProperty(
      "budget", [this] { return watts( state_.power.budget ); },
      [this]( const std::string& value ) {
         auto number = numberIn( "budget", value, 0, 6553.5 );
         state_.power.budget = static_cast<unsigned>( std::lround( number * 10 ) );
         state_.followSupply();
      } );
   addProperty( "allocated", [this] { return watts( state_.power.allocated ); } );
   addProperty(
      "shutoff", [this] { return byte( state_.power.shutOff ); },
      [this]( const std::string& value ) {
         state_.power.shutOff = static_cast<uint8_t>( unsignedIn( "shutoff", value, 0, 0xFF ) );
         state_.followSupply();
      } );
   addProperty( "firmware", [this] { return state_.firmware.text(); } );
   addProperty( "r0x0a", [this] { return fmt::format( "0x{:02x}", fmt::join( state_.command0a, "" ) ); } );
   addProperty( "r0x17", [this] { return byte( state_.command17 ); } );
   addProperty( "crc_reset", [this] { return state_.resetsOnCrcFailure ? "1" : "0"; } );
}

void Bcm59121::addGroupProperties() {
   for ( size_t group = 0; group < state_.crcFailures.size(); ++group ) {
      auto name = fmt::format( "group{}.crc", group );
      addProperty(
         name, [this, group] { return byte( state_.crcFailures[group] ); },
         [this, group, name]( const std::string& value ) {
            state_.crcFailures[group] = static_cast<uint8_t>( unsignedIn( name, value, 0, 0xFF ) );
         } );
   }
}

void Bcm59121::addPortProperties( size_t index ) {
   auto& port = state_.ports[index];
   auto name = [&]( const char* end ) { return fmt::format( "port{}.{}", index + 1, end ); };
   addProperty(
      name( "device" ), [&port] { return bcm59121TypeWord( port.device().type ); },
      [&port]( const std::string& value ) {
         auto device = port.device();
         device.type = bcm59121TypeOf( value );
         port.plug( device );
      } );
   addProperty(
      name( "class" ), [&port] { return bcm59121ClassWord( port.device().pdClass ); },
      [&port]( const std::string& value ) {
         auto device = port.device();
         device.pdClass = bcm59121ClassOf( value );
         port.plug( device );
      } );
   addProperty(
      name( "draw" ), [&port] { return format( port.device().draw ); },
      [&port]( const std::string& value ) {
         auto device = port.device();
         device.draw = bcm59121DrawOf( value );
         port.plug( device );
      } );
   addProperty( name( "state" ), [&port] { return port.text(); } );
   addProperty( name( "power" ), [&port] { return format( port.watts() ); } );
}

void Bcm59121::addPortSettings( size_t index ) {
   auto& port = state_.ports[index];
   auto name = [&]( const char* end ) { return fmt::format( "port{}.{}", index + 1, end ); };
   addProperty( name( "enabled" ), [&port] { return port.settings().isEnabled ? "1" : "0"; } );
   addProperty( name( "detection" ), [&port] { return detectionText( port.settings().detectionType ); } );
   addProperty( name( "mode" ), [&port] { return modeText( port.settings().powerMode ); } );
   addProperty( name( "limit" ), [&port] { return limitText( port.settings() ); } );
   addProperty( name( "mpss" ), [&port] { return byte( port.settings().mpssMask ); } );
   addProperty( name( "r0x08" ), [&port] { return byte( port.settings().command08 ); } );
   addProperty( name( "r0x12" ), [&port] { return byte( port.settings().command12 ); } );
}

} // namespace Emulator
