#include "Bcm59121.h"

#include "Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

namespace {

using Words = std::span<const std::string_view>;

constexpr const char* channels[] = { "primary", "alternative" };

template <typename... Arguments>
std::invalid_argument failure( fmt::format_string<Arguments...> text, Arguments&&... arguments ) {
   return std::invalid_argument( fmt::format( text, std::forward<Arguments>( arguments )... ) );
}

void expectCount( Words words, size_t most, std::string_view name ) {
   if ( words.size() > most ) {
      throw failure( "{} behind {}", printable( words[most] ), name );
   }
}

size_t numberOf( std::string_view what, std::string_view word, size_t first, size_t count ) {
   auto number = parseUnsigned( word );
   if ( !number || *number < first || *number - first >= count ) {
      throw failure( "no {} {}; there are {} to {}", what, printable( word ), first, first + count - 1 );
   }
   return *number - first;
}

/** The device of words such as "type=dual", "class=4" and "draw=22.5". */
Bcm59121Device deviceOf( Words words ) {
   Bcm59121Device device { bcm59121TypeOf( "single" ) };
   std::optional<double> draw;
   for ( auto word : words ) {
      auto equals = std::min( word.find( '=' ), word.size() );
      auto key = word.substr( 0, equals );
      auto value = word.substr( std::min( equals + 1, word.size() ) );
      if ( key == "type" ) {
         device.type = bcm59121TypeOf( value );
      } else if ( key == "class" ) {
         device.pdClass = bcm59121ClassOf( value );
      } else if ( key == "draw" ) {
         draw = bcm59121DrawOf( value );
      } else {
         throw failure( "attach takes type=, class= and draw=, not {}", printable( word ) );
      }
   }
   device.draw = draw ? *draw : bcm59121UsualDraw( device );
   return device;
}

void attach( Bcm59121Port& port, std::string_view number, Words words ) {
   auto device = deviceOf( words );
   if ( port.device().type != Bcm59121Device::Type {} ) {
      throw failure( "port {} has a device; detach it first", number );
   }
   port.plug( device );
}

void trip( Bcm59121Port& port, std::string_view number, const Bcm59121Fault& fault, Words channel ) {
   if ( channel.empty() ) {
      if ( !port.trip( fault ) ) {
         throw failure( "port {} has no power", number );
      }
      return;
   }
   auto found = std::ranges::find( channels, channel[0] );
   if ( found == std::end( channels ) ) {
      throw failure( "no channel {}; there are {}", printable( channel[0] ), fmt::join( channels, " and " ) );
   }
   if ( !port.trip( fault, static_cast<size_t>( found - channels ) ) ) {
      throw failure( "port {} has no power on its {} channel", number, *found );
   }
}

void actOnPort( Bcm59121Port& port, std::string_view number, Words words ) {
   auto action = words[0];
   if ( action == "attach" ) {
      return attach( port, number, words.subspan( 1 ) );
   }
   if ( action == "detach" ) {
      expectCount( words, 1, action );
      return port.plug( {} );
   }
   auto fault = bcm59121FaultAction( action );
   if ( !fault ) {
      throw failure( "no action {}{}", printable( action ),
         suggestion( action, { "attach", "detach", "overload", "short", "startup", "thermal" } ) );
   }
   expectCount( words, 2, action );
   trip( port, number, *fault, words.subspan( 1 ) );
}

void actOnChip( Bcm59121State& state, Words words ) {
   auto action = words[0];
   if ( action == "lose-firmware" ) {
      expectCount( words, 1, action );
      state.loseFirmware();
   } else if ( action == "crc" ) {
      expectCount( words, 2, action );
      auto group = words.size() == 2 ? numberOf( "group", words[1], 0, state.crcFailures.size() ) : 0;
      state.crcFailures[group] = 1;
   } else {
      throw failure(
         "no action {}{}", printable( action ), suggestion( action, { "lose-firmware", "crc" } ) );
   }
}

} // namespace

std::string Bcm59121::actions() const {
   return "PORT attach [type=TYPE] [class=CLASS] [draw=WATTS]; PORT detach; "
          "PORT overload, short, startup or thermal [CHANNEL]; chip lose-firmware; chip crc [GROUP]";
}

void Bcm59121::act( std::span<const std::string_view> words ) {
   bool isChip = words[0] == "chip";
   auto port = isChip ? 0 : numberOf( "port", words[0], 1, state_.map.rows().size() );
   if ( words.size() < 2 ) {
      throw failure( "actions: {}", actions() );
   }
   auto rest = words.subspan( 1 );
   return isChip ? actOnChip( state_, rest ) : actOnPort( state_.ports[port], words[0], rest );
}

} // namespace Emulator
