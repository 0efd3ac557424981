#include "Output.h"

#include "States.h"
#include "TextCells.h"

#include <fmt/format.h>

#include <algorithm>

using TextCells::statusOf;
using TextCells::textOf;
using TextCells::widthOf;

namespace {

/** The cells of a line but for the status. */
using Row = std::vector<std::string>;

using Fields = std::span<const Field>;

/** The fields that have a column. */
std::vector<size_t> columnsOf( Fields fields ) {
   std::vector<size_t> columns;
   for ( size_t i = 0; i < fields.size(); ++i ) {
      if ( !fields[i].heading.empty() ) {
         columns.push_back( i );
      }
   }
   return columns;
}

Row headingsOf( Fields fields ) {
   Row row { "NAME" };
   for ( auto column : columnsOf( fields ) ) {
      row.emplace_back( fields[column].heading );
   }
   return row;
}

Row rowOf( const StatusLine& line ) {
   Row row { line.object->name };
   for ( auto column : columnsOf( line.fields ) ) {
      row.push_back( textOf( line.reading.values[column], line.fields[column] ) );
   }
   return row;
}

/** Names and words to the left, measured values to the right, and room for the status. */
std::string aligned( Fields fields, const Row& row, const std::vector<size_t>& widths ) {
   auto columns = columnsOf( fields );
   std::string text;
   for ( size_t i = 0; i < row.size(); ++i ) {
      std::string padding( widths[i] - widthOf( row[i] ), ' ' );
      auto isLeft = i == 0 || fields[columns[i - 1]].unit.empty();
      text += ( isLeft ? row[i] + padding : padding + row[i] ) + "  ";
   }
   return text;
}

/** A table of lines with the same fields. */
std::string tableOf( const std::vector<const StatusLine*>& lines, bool coloured ) {
   auto fields = lines.front()->fields;
   std::vector<Row> rows { headingsOf( fields ) };
   for ( auto line : lines ) {
      rows.push_back( rowOf( *line ) );
   }
   std::vector<size_t> widths( rows.front().size() );
   for ( auto& row : rows ) {
      std::transform( row.begin(), row.end(), widths.begin(), widths.begin(),
         []( auto& cell, auto width ) { return std::max( width, widthOf( cell ) ); } );
   }

   auto table = fmt::format( "{}STATUS\n", aligned( fields, rows.front(), widths ) );
   for ( size_t i = 0; i < lines.size(); ++i ) {
      auto& reading = lines[i]->reading;
      table += aligned( fields, rows[i + 1], widths );
      table += coloured
                  ? fmt::format( "{}{}\033[0m\n", States::colourOf( reading.state ), statusOf( reading ) )
                  : statusOf( reading ) + '\n';
   }
   return table;
}

} // namespace

std::string asText( const std::vector<StatusLine>& lines, bool coloured, bool isBrief ) {
   std::string text;
   for ( auto kind : kinds() ) {
      std::vector<const StatusLine*> ofKind;
      for ( auto& line : lines ) {
         if ( line.object->kind == kind ) {
            ofKind.push_back( &line );
         }
      }
      if ( !ofKind.empty() ) {
         text += fmt::format( "{}{}\n{}", text.empty() ? "" : "\n", kind->title,
            isBrief && kind->summary ? summaryOf( *kind, lines ) : tableOf( ofKind, coloured ) );
      }
   }
   return text.empty() ? "The board has no objects.\n" : text;
}

std::string summaryOf( const Kind& kind, const std::vector<StatusLine>& lines ) {
   std::vector<const Reading*> readings;
   for ( auto& line : lines ) {
      if ( line.object->kind == &kind ) {
         readings.push_back( &line.reading );
      }
   }
   return kind.summary && !readings.empty() ? kind.summary->text( readings ) : "";
}

std::string valuesAsText( const std::vector<StatusLine>& lines ) {
   auto fields = lines.front().fields;
   if ( lines.size() == 1 && fields.size() == 1 ) {
      return textOf( lines.front().reading.values.front(), fields.front() ) + '\n';
   }
   std::vector<const StatusLine*> rows;
   for ( auto& line : lines ) {
      rows.push_back( &line );
   }
   auto texts = longTextsOf( lines );
   if ( columnsOf( fields ).empty() ) {
      return texts;
   }
   return tableOf( rows, false ) + ( texts.empty() ? "" : "\n" + texts );
}

std::string longTextsOf( const std::vector<StatusLine>& lines ) {
   std::string texts;
   for ( auto& [object, fields, reading] : lines ) {
      for ( size_t i = 0; i < fields.size(); ++i ) {
         if ( fields[i].heading.empty() && std::holds_alternative<std::string>( reading.values[i] ) ) {
            auto text = textOf( reading.values[i], fields[i] );
            texts += ( texts.empty() ? "" : "\n" ) + text + ( text.ends_with( '\n' ) ? "" : "\n" );
         }
      }
   }
   return texts;
}
