#include "Bcm59121Device.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace Emulator {

namespace {

using Kind = Bcm59121Device::Kind;

struct Word {
   Kind kind;
   const char* text;
};

constexpr Word words[] = {
   { Kind::None, "none" },
   { Kind::Single, "single" },
   { Kind::Dual, "dual" },
   { Kind::Legacy, "legacy" },
   { Kind::Short, "short" },
   { Kind::LowResistance, "low-resistance" },
   { Kind::HighResistance, "high-resistance" },
   { Kind::Open, "open" },
};

constexpr uint8_t highestClass = 8;

Kind kindOf( std::string_view text ) {
   auto found = std::ranges::find( words, text, &Word::text );
   if ( found == std::end( words ) ) {
      std::vector<std::string> texts;
      std::ranges::transform( words, std::back_inserter( texts ), &Word::text );
      throw std::invalid_argument(
         fmt::format( "no type {}; there are {}", printable( text ), join( texts, ", " ) ) );
   }
   return found->kind;
}

const char* wordOf( Kind kind ) { return std::ranges::find( words, kind, &Word::kind )->text; }

bool isClass( uint8_t pdClass ) { return pdClass <= highestClass || pdClass >= classMismatch; }

} // namespace

Bcm59121Device::Type bcm59121TypeOf( std::string_view word ) {
   auto slash = word.find( '/' );
   auto primary = kindOf( word.substr( 0, slash ) );
   return { primary, slash == word.npos ? primary : kindOf( word.substr( slash + 1 ) ) };
}

std::string bcm59121TypeWord( const Bcm59121Device::Type& type ) {
   auto [primary, alternative] = type;
   return alternative == primary ? wordOf( primary )
                                 : fmt::format( "{}/{}", wordOf( primary ), wordOf( alternative ) );
}

uint8_t bcm59121ClassOf( std::string_view word ) {
   for ( unsigned number = 0; number <= classOverCurrent; ++number ) {
      auto pdClass = static_cast<uint8_t>( number );
      if ( isClass( pdClass ) && word == bcm59121ClassWord( pdClass ) ) {
         return pdClass;
      }
   }
   throw std::invalid_argument( fmt::format(
      "class must be a whole number from 0 to 8, mismatch or over-current, not {}", printable( word ) ) );
}

std::string bcm59121ClassWord( uint8_t pdClass ) {
   if ( pdClass == classMismatch ) {
      return "mismatch";
   }
   return pdClass == classOverCurrent ? "over-current" : fmt::format( "{}", pdClass );
}

double bcm59121DrawOf( std::string_view word ) {
   auto number = parseNumber( word );
   if ( !number || *number < 0 || *number > 200 ) {
      throw std::invalid_argument(
         fmt::format( "draw must be a number from 0 to 200, not {}", printable( word ) ) );
   }
   return *number;
}

double bcm59121UsualDraw( const Bcm59121Device& device ) {
   if ( device.pdClass > highestClass ) {
      return 0;
   }
   auto signatures = std::max<ptrdiff_t>( 1, std::ranges::count( device.type, Kind::Dual ) );
   return bcm59121ClassPower( device.pdClass ) * static_cast<double>( signatures ) / 20;
}

unsigned bcm59121ClassPower( uint8_t pdClass ) {
   // IEEE 802.3.
   constexpr std::array<unsigned, 9> tenths = { 154, 40, 70, 154, 300, 450, 600, 750, 900 };
   return tenths.at( pdClass );
}

} // namespace Emulator
