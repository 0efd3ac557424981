#include "ChipFactory.h"

#include "Bcm59121.h"
#include "Cpld.h"
#include "Emc2305.h"
#include "GenericRegisters.h"
#include "Pct2075.h"
#include "Text.h"

#include <fmt/format.h>

#include <stdexcept>

namespace Emulator {

namespace {

template <typename Part>
std::unique_ptr<Chip> make( const Options& options ) {
   if constexpr ( std::is_constructible_v<Part, const Options&> ) {
      return std::make_unique<Part>( options );
   } else {
      if ( !options.empty() ) {
         throw std::invalid_argument( fmt::format( "no option {}", printable( options.begin()->first ) ) );
      }
      return std::make_unique<Part>();
   }
}

struct Row {
   const char* part;
   std::unique_ptr<Chip> ( *make )( const Options& options );
};

constexpr Row rows[] = {
   { "bcm59121", make<Bcm59121> },
   { "cpld", make<Cpld> },
   { "emc2305", make<Emc2305> },
   { "pct2075", make<Pct2075> },
   { "registers", make<GenericRegisters> },
};

} // namespace

std::unique_ptr<Chip> makeChip( const std::string& part, const Options& options ) {
   for ( auto& row : rows ) {
      if ( part == row.part ) {
         return row.make( options );
      }
   }
   throw std::invalid_argument(
      fmt::format( "no part {}{}", printable( part ), suggestion( part, parts() ) ) );
}

std::vector<std::string> parts() {
   std::vector<std::string> names;
   for ( auto& row : rows ) {
      names.push_back( row.part );
   }
   return names;
}

} // namespace Emulator
