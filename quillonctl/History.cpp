#include "History.h"

#include <algorithm>
#include <cmath>

namespace {

/** More than a terminal has columns. */
constexpr size_t capacity = 500;

constexpr const char* blocks[] = { "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█" };
constexpr const char* signs[] = { "_", ".", ",", "-", "=", "+", "*", "#" };
/** Index of the greatest height. */
constexpr auto top = std::size( blocks ) - 1;

struct Range {
   double low;
   double span;
};

template <typename Values>
Range rangeOf( const Values& begin, const Values& end ) {
   auto low = HUGE_VAL, high = -HUGE_VAL;
   for ( auto value = begin; value != end; ++value ) {
      low = std::min( low, value->value_or( low ) );
      high = std::max( high, value->value_or( high ) );
   }
   auto least = std::max( 0.1 * std::max( std::abs( low ), std::abs( high ) ), 1e-3 );
   auto span = std::max( high - low, least );
   return { ( low + high - span ) / 2, span };
}

} // namespace

void History::add( std::optional<double> value ) {
   values_.push_back( value );
   if ( values_.size() > capacity ) {
      values_.pop_front();
   }
}

std::string History::line( size_t width, bool isUnicode ) const {
   auto count = std::min( width, values_.size() );
   auto begin = values_.end() - static_cast<ptrdiff_t>( count );
   auto [low, span] = rangeOf( begin, values_.end() );
   std::string line;
   for ( auto value = begin; value != values_.end(); ++value ) {
      if ( !*value ) {
         line += ' ';
         continue;
      }
      // Halves go up, whatever rounding has made of them.
      auto height = std::lround( ( **value - low ) / span * top + 1e-6 );
      line += ( isUnicode ? blocks : signs )[height];
   }
   return line;
}
