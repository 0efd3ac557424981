#include "Table.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>

namespace {

struct Unit {
   const char* name;
   double size;
};

/** Three digits in the largest of the units that is not larger than the value. */
std::string inUnits( double value, const std::vector<Unit>& units ) {
   size_t best = 0;
   while ( best + 1 < units.size() && std::fabs( value ) < units[best].size ) {
      ++best;
   }
   return fmt::format( "{:#.3g} {}", value / units[best].size, units[best].name );
}

/** What is judged: the ratio, or without a baseline the value itself. */
std::optional<double> judgedOf( const Row& row ) {
   if ( !row.baseline ) {
      return row.figure.value;
   }
   return row.baseline->value > 0 ? std::optional( row.figure.value / row.baseline->value ) : std::nullopt;
}

std::string verdictOf( const Row& row ) {
   auto judged = judgedOf( row );
   if ( !judged || !row.wanted ) {
      return "-";
   }
   return *judged <= *row.wanted ? "good" : "missed";
}

} // namespace

Figure notInstalled() { return { 0, "not installed" }; }

Figure inSeconds( double value ) {
   return { value, inUnits( value, { { "s", 1 }, { "ms", 1e-3 }, { "us", 1e-6 }, { "ns", 1e-9 } } ) };
}

Figure inInstructions( double value ) { return { value, fmt::format( "{:.0f} instr", value ) }; }

Figure inBytes( double value ) { return { value, fmt::format( "{:.1f} MiB", value / ( 1 << 20 ) ) }; }

Figure perSecond( double value ) { return { value, fmt::format( "{:.0f} /s", value ) }; }

void printTable( const std::vector<Row>& rows ) {
   constexpr auto form = "{:<56}{:>10}{:>15}{:>8}{:>8}  {}\n";
   fmt::print( form, "name", "measured", "baseline", "ratio", "wanted", "verdict" );
   for ( auto& row : rows ) {
      auto ratio = row.baseline ? judgedOf( row ) : std::nullopt;
      fmt::print( form, row.name, row.figure.text, row.baseline ? row.baseline->text : "-",
         ratio ? fmt::format( "{:.2f}", *ratio ) : "-",
         row.wanted ? fmt::format( "{:.4g}", *row.wanted ) : "-", verdictOf( row ) );
   }
}
