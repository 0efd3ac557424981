#include "TextCells.h"

#include "Statuses.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace TextCells {

namespace {

std::string textOf( double number, const Field& field ) {
   if ( !std::isfinite( number ) ) {
      return "-";
   }
   // Halves go away from zero, as people round them; printf would make 0.25 a 0.2, and 0.75 a 0.8.
   auto scale = std::pow( 10, field.decimals );
   auto rounded = std::round( number * scale ) / scale;
   auto text = fmt::format( "{:.{}f}", rounded == 0 ? 0.0 : rounded, field.decimals );
   return field.unit.empty() ? text : fmt::format( "{} {}", text, field.unit );
}

} // namespace

size_t widthOf( const std::string& text ) {
   return static_cast<size_t>(
      std::count_if( text.begin(), text.end(), []( char c ) { return ( c & 0xC0 ) != 0x80; } ) );
}

std::string textOf( const Value& value, const Field& field ) {
   if ( auto number = std::get_if<double>( &value ) ) {
      return textOf( *number, field );
   }
   if ( auto flag = std::get_if<bool>( &value ) ) {
      return *flag ? "yes" : "no";
   }
   // Documents and the library's words may hold anything.
   auto text = std::get_if<std::string>( &value );
   return text ? printable( *text, field.heading.empty() ? "\n" : "" ) : "-";
}

std::string statusOf( const Reading& reading ) {
   return reading.failure ? wordsOf( reading.failure->status ).name : std::string( reading.state );
}

std::string printable( std::string text, std::string_view kept ) {
   std::replace_if(
      text.begin(), text.end(),
      [=]( char c ) {
         return ( static_cast<unsigned char>( c ) < ' ' || c == 0x7F ) && kept.find( c ) == kept.npos;
      },
      '?' );
   return text;
}

} // namespace TextCells
