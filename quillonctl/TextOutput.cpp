#include "Output.h"

#include "Statuses.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace {

/** Characters, of a text in UTF-8. */
size_t widthOf( const std::string& text ) {
   return static_cast<size_t>(
      std::count_if( text.begin(), text.end(), []( char c ) { return ( c & 0xC0 ) != 0x80; } ) );
}

std::string textOf( const std::optional<double>& value, const Field& field ) {
   if ( !value || !std::isfinite( *value ) ) {
      return "-";
   }
   // Halves go away from zero, as people round them; printf would make 0.25 a 0.2, and 0.75 a 0.8.
   auto scale = std::pow( 10, field.decimals );
   auto rounded = std::round( *value * scale ) / scale;
   return fmt::format( "{:.{}f} {}", rounded == 0 ? 0.0 : rounded, field.decimals, field.unit );
}

std::string statusOf( const Reading& reading ) {
   return reading.failure ? wordsOf( reading.failure->status ).name : std::string( reading.state );
}

const char* colourOf( const Reading& reading ) {
   constexpr auto red = "\033[1;31m";
   constexpr auto yellow = "\033[33m";
   constexpr auto green = "\033[32m";
   return reading.failure || reading.state == "critical" ? red : reading.state == "alert" ? yellow : green;
}

/** The cells of a line but for the status. */
using Row = std::vector<std::string>;

Row headingsOf( const Kind& kind ) {
   Row row { "NAME" };
   for ( auto& field : kind.fields ) {
      row.emplace_back( field.heading );
   }
   return row;
}

Row rowOf( const Kind& kind, const StatusLine& line ) {
   Row row { line.object->name };
   for ( size_t i = 0; i < kind.fields.size(); ++i ) {
      row.push_back( textOf( line.reading.values[i], kind.fields[i] ) );
   }
   return row;
}

/** Names to the left, values to the right, and room for the status. */
std::string aligned( const Row& row, const std::vector<size_t>& widths ) {
   std::string text;
   for ( size_t i = 0; i < row.size(); ++i ) {
      std::string padding( widths[i] - widthOf( row[i] ), ' ' );
      text += ( i == 0 ? row[i] + padding : padding + row[i] ) + "  ";
   }
   return text;
}

std::string tableOf( const Kind& kind, const std::vector<const StatusLine*>& lines, bool coloured ) {
   std::vector<Row> rows { headingsOf( kind ) };
   for ( auto line : lines ) {
      rows.push_back( rowOf( kind, *line ) );
   }
   std::vector<size_t> widths( rows.front().size() );
   for ( auto& row : rows ) {
      std::transform( row.begin(), row.end(), widths.begin(), widths.begin(),
         []( auto& cell, auto width ) { return std::max( width, widthOf( cell ) ); } );
   }

   auto table = fmt::format( "{}\n{}STATUS\n", kind.title, aligned( rows.front(), widths ) );
   for ( size_t i = 0; i < lines.size(); ++i ) {
      auto& reading = lines[i]->reading;
      table += aligned( rows[i + 1], widths );
      table += coloured ? fmt::format( "{}{}\033[0m\n", colourOf( reading ), statusOf( reading ) )
                        : statusOf( reading ) + '\n';
   }
   return table;
}

} // namespace

std::string asText( const std::vector<StatusLine>& lines, bool coloured ) {
   std::string text;
   for ( auto kind : kinds() ) {
      std::vector<const StatusLine*> ofKind;
      for ( auto& line : lines ) {
         if ( line.object->kind == kind ) {
            ofKind.push_back( &line );
         }
      }
      if ( !ofKind.empty() ) {
         text += ( text.empty() ? "" : "\n" ) + tableOf( *kind, ofKind, coloured );
      }
   }
   return text.empty() ? "The board has no objects.\n" : text;
}
