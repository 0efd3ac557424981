#include "Report.h"

#include <fmt/format.h>

namespace {

std::string inMicroseconds( const double* seconds ) {
   return seconds ? fmt::format( "{:.1f} us", *seconds * 1e6 ) : "-";
}

} // namespace

void printTable( const std::vector<Comparison>& comparisons, const Times& times ) {
   constexpr auto row = "{:<36}{:>14}{:>14}{:>8}{:>8}  {}\n";
   fmt::print( "\n" );
   fmt::print( row, "name", "time", "baseline", "ratio", "wanted", "verdict" );
   for ( auto& comparison : comparisons ) {
      auto time = times.secondsOf( comparison.name );
      if ( !time ) {
         continue;
      }
      auto baseline = times.secondsOf( comparison.baseline );
      std::string ratio = "-", wanted = "-", verdict = "-";
      if ( baseline ) {
         ratio = fmt::format( "{:.2f}", *time / *baseline );
      }
      if ( baseline && comparison.wanted ) {
         wanted = fmt::format( "{:.2f}", *comparison.wanted );
         verdict = *time / *baseline <= *comparison.wanted ? "good" : "too slow";
      }
      fmt::print(
         row, comparison.name, inMicroseconds( time ), inMicroseconds( baseline ), ratio, wanted, verdict );
   }
}
