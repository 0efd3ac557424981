#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace Emulator {

namespace {

constexpr std::chrono::nanoseconds longestDuration = std::chrono::hours( 1 );

template <typename Number, typename... Base>
std::optional<Number> parseWhole( std::string_view text, Base... base ) {
   Number number {};
   auto [end, error] = std::from_chars( text.data(), text.data() + text.size(), number, base... );
   if ( error != std::errc() || end != text.data() + text.size() ) {
      return std::nullopt;
   }
   return number;
}

} // namespace

std::optional<double> parseNumber( std::string_view text ) {
   auto number = parseWhole<double>( text );
   return number && std::isfinite( *number ) ? number : std::nullopt;
}

std::optional<uint32_t> parseUnsigned( std::string_view text ) {
   if ( text.starts_with( "0x" ) ) {
      return parseWhole<uint32_t>( text.substr( 2 ), 16 );
   }
   return parseWhole<uint32_t>( text, 10 );
}

std::optional<std::chrono::nanoseconds> parseDuration( std::string_view text ) {
   if ( !text.ends_with( 's' ) ) {
      return std::nullopt;
   }
   bool milli = text.ends_with( "ms" );
   auto number = parseNumber( text.substr( 0, text.size() - ( milli ? 2 : 1 ) ) );
   if ( !number ) {
      return std::nullopt;
   }
   double nanoseconds = *number * ( milli ? 1e6 : 1e9 );
   if ( nanoseconds < 1 || nanoseconds > static_cast<double>( longestDuration.count() ) ) {
      return std::nullopt;
   }
   return std::chrono::nanoseconds( std::llround( nanoseconds ) );
}

std::string format( double number ) { return fmt::format( "{}", number ); }

std::string format( std::chrono::nanoseconds duration ) {
   auto seconds = std::chrono::duration_cast<std::chrono::seconds>( duration );
   if ( seconds == duration ) {
      return fmt::format( "{}s", seconds.count() );
   }
   return fmt::format( "{}ms", std::chrono::duration<double, std::milli>( duration ).count() );
}

std::string join( const std::vector<std::string>& texts, std::string_view separator ) {
   std::string result;
   for ( auto& text : texts ) {
      if ( !result.empty() ) {
         result += separator;
      }
      result += text;
   }
   return result;
}

std::string formatPlace( uint32_t bus, uint8_t address ) { return fmt::format( "{}/{:#04x}", bus, address ); }

std::string printable( std::string_view text, size_t longest ) {
   std::string result;
   for ( char c : text.substr( 0, longest ) ) {
      if ( c > ' ' && c <= '~' ) {
         result += c;
      } else {
         result += fmt::format( "\\x{:02x}", static_cast<unsigned char>( c ) );
      }
   }
   if ( text.size() > longest ) {
      result += "...";
   }
   return result.empty() ? "\"\"" : result;
}

namespace {

/** How many letters have to be put in, taken out or exchanged to make one word the other. */
size_t distance( std::string_view from, std::string_view to ) {
   std::vector<size_t> row( to.size() + 1 );
   std::iota( row.begin(), row.end(), size_t { 0 } );
   for ( size_t i = 0; i < from.size(); ++i ) {
      size_t diagonal = row[0];
      row[0] = i + 1;
      for ( size_t j = 0; j < to.size(); ++j ) {
         size_t exchanged = diagonal + ( from[i] == to[j] ? 0 : 1 );
         diagonal = row[j + 1];
         row[j + 1] = std::min( { exchanged, row[j] + 1, diagonal + 1 } );
      }
   }
   return row.back();
}

} // namespace

std::string suggestion( std::string_view word, const std::vector<std::string>& candidates ) {
   const std::string* closest = nullptr;
   size_t least = SIZE_MAX;
   for ( auto& candidate : candidates ) {
      // More than a third of the letters wrong is another word, and the lengths alone may tell.
      size_t limit = std::max<size_t>( 1, candidate.size() / 3 );
      if ( word.size() > candidate.size() + limit ) {
         continue;
      }
      size_t wrong = distance( word, candidate );
      if ( wrong <= limit && wrong <= least ) {
         closest = wrong < least ? &candidate : nullptr;
         least = wrong;
      }
   }
   return closest ? fmt::format( "; did you mean {}?", *closest ) : "";
}

} // namespace Emulator
