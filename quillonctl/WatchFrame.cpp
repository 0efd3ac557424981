#include "WatchFrame.h"

#include "States.h"
#include "TextCells.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>

using TextCells::statusOf;
using TextCells::textOf;
using TextCells::widthOf;

namespace {

constexpr const char* bold = "\033[1m";
constexpr const char* reverse = "\033[7m";
constexpr size_t gap = 2;
/** As wide as most, so that columns stand below each other, and stay there when something fails. */
constexpr size_t leastNameWidth = 8;
constexpr size_t leastStatusWidth = 12;
constexpr size_t leastHistoryWidth = 8;
constexpr size_t mostHistoryWidth = 60;

/** What moves comes first, since the rest may not fit. */
std::vector<const Kind*> kindsInOrder() {
   std::vector<const Kind*> order = { &tempSensorKind, &fanKind, &xcvrKind, &poePortKind };
   for ( auto kind : kinds() ) {
      if ( std::find( order.begin(), order.end(), kind ) == order.end() ) {
         order.push_back( kind );
      }
   }
   return order;
}

/** A column of values: those of a field, or the history of one. */
struct Column {
   size_t field;
   bool isHistory;
   bool isRight;
   size_t begin;
   size_t width;
};

/** A name and a status in every row, and columns of values behind them. */
struct Layout {
   size_t statusBegin;
   std::vector<Column> columns;
};

class Frame {
public:
   Frame( const WatchContent& content, const Look& look ) : content_( content ), look_( look ) {}

   std::vector<StyledLine> body() const {
      std::vector<StyledLine> body;
      for ( auto kind : kindsInOrder() ) {
         std::vector<size_t> members;
         for ( size_t i = 0; i < lines().size(); ++i ) {
            if ( lines()[i].object->kind == kind ) {
               members.push_back( i );
            }
         }
         if ( !members.empty() ) {
            auto part = isSummed( *kind ) ? summary( *kind ) : table( *kind, members );
            body.insert( body.end(), part.begin(), part.end() );
            body.emplace_back();
         }
      }
      return body;
   }

private:
   const std::vector<StatusLine>& lines() const { return content_.round->lines; }

   const Reading* before( size_t index ) const {
      auto& before = content_.round->before;
      return before.empty() ? nullptr : &before[index];
   }

   bool isSummed( const Kind& kind ) const { return content_.isBrief && kind.summary; }

   static std::string changed( bool isChanged ) { return isChanged ? reverse : ""; }

   std::vector<StyledLine> summary( const Kind& kind ) const {
      auto text = summaryOf( kind, lines() );
      text.pop_back(); // its line end
      std::vector<StatusLine> earlier;
      for ( size_t i = 0; before( i ) && i < lines().size(); ++i ) {
         earlier.push_back( { lines()[i].object, lines()[i].fields, *before( i ) } );
      }
      StyledLine line;
      line.add( std::string( kind.title ), bold );
      line.moveTo( leastNameWidth + gap + leastStatusWidth + gap );
      line.add( text, changed( !earlier.empty() && summaryOf( kind, earlier ) != text + '\n' ) );
      return { line };
   }

   std::vector<StyledLine> table( const Kind& kind, const std::vector<size_t>& members ) const {
      auto layout = layoutOf( kind, members );
      StyledLine header;
      header.add( std::string( kind.title ), bold );
      for ( auto& column : layout.columns ) {
         put( header, column, column.isHistory ? "" : std::string( kind.fields[column.field].heading ) );
      }
      std::vector<StyledLine> table = { header };
      for ( auto index : members ) {
         table.push_back( row( index, layout ) );
      }
      return table;
   }

   Layout layoutOf( const Kind& kind, const std::vector<size_t>& members ) const {
      auto name = leastNameWidth, status = leastStatusWidth;
      for ( auto index : members ) {
         name = std::max( name, widthOf( lines()[index].object->name ) );
         status = std::max( status, widthOf( statusOf( lines()[index].reading ) ) );
      }
      Layout layout { name + gap, {} };
      auto begin = layout.statusBegin + status + gap;
      auto history = historyField( kind );
      for ( size_t field = 0; field < kind.fields.size(); ++field ) {
         auto& [key, heading, unit, decimals] = kind.fields[field];
         if ( !heading.empty() ) {
            auto width = widthOf( std::string( heading ) );
            for ( auto index : members ) {
               auto& value = lines()[index].reading.values[field];
               width = std::max( width, widthOf( textOf( value, kind.fields[field] ) ) );
            }
            layout.columns.push_back( { field, false, !unit.empty(), begin, width } );
            begin += width + gap;
         }
         if ( field == history ) {
            layout.columns.push_back( { field, true, false, begin, 0 } );
         }
      }
      widenHistory( layout.columns, begin );
      return layout;
   }

   /** What the other columns leave goes to the history. @param end where they end */
   void widenHistory( std::vector<Column>& columns, size_t end ) const {
      auto history =
         std::find_if( columns.begin(), columns.end(), []( auto& column ) { return column.isHistory; } );
      if ( history == columns.end() ) {
         return;
      }
      auto room = look_.columns - std::min( look_.columns, end );
      history->width = std::clamp( room, leastHistoryWidth, mostHistoryWidth );
      for ( auto column = history + 1; column != columns.end(); ++column ) {
         column->begin += history->width + gap;
      }
   }

   StyledLine row( size_t index, const Layout& layout ) const {
      auto& [object, fields, reading] = lines()[index];
      auto earlier = before( index );
      auto status = statusOf( reading );
      StyledLine row;
      row.add( object->name );
      row.moveTo( layout.statusBegin );
      row.add( status, ( look_.isColoured ? States::colourOf( reading.state ) : "" ) +
                          changed( earlier && statusOf( *earlier ) != status ) );
      for ( auto& column : layout.columns ) {
         auto& field = fields[column.field];
         auto text = textOf( reading.values[column.field], field );
         auto isChanged = earlier && textOf( earlier->values[column.field], field ) != text;
         if ( column.isHistory ) {
            put( row, column, content_.histories[index].line( column.width, look_.isUnicode ) );
         } else {
            put( row, column, text, changed( isChanged ) );
         }
      }
      return row;
   }

   static void put(
      StyledLine& line, const Column& column, const std::string& text, const std::string& style = "" ) {
      line.moveTo( column.isRight ? column.begin + column.width - widthOf( text ) : column.begin );
      line.add( text, style );
   }

   const WatchContent& content_;
   const Look& look_;
};

/** As many lines as there is room for, the last one telling how many more there are. */
std::vector<StyledLine> fitted( std::vector<StyledLine> lines, size_t room, bool isUnicode ) {
   if ( lines.size() > room ) {
      auto hidden = lines.size() - room + 1;
      lines.resize( room );
      if ( room > 0 ) {
         lines.back() = {};
         lines.back().add( fmt::format( "{} {} more lines", isUnicode ? "…" : "...", hidden ) );
      }
   }
   return lines;
}

StyledLine titleOf( const WatchContent& content ) {
   StyledLine title;
   title.add( content.board, bold );
   auto time = content.round
                  ? fmt::format( "{:%H:%M:%S}",
                       fmt::localtime( std::chrono::system_clock::to_time_t( content.round->time ) ) )
                  : "reading";
   title.add( fmt::format( "  {}, {}", time, content.pace ) );
   if ( !content.age.empty() ) {
      title.add( "  " );
      title.add( content.age, reverse );
   }
   return title;
}

} // namespace

std::optional<size_t> historyField( const Kind& kind ) {
   auto field = std::find_if( kind.fields.begin(), kind.fields.end(),
      []( auto& candidate ) { return !candidate.unit.empty() && !candidate.heading.empty(); } );
   return field == kind.fields.end() ? std::nullopt : std::optional<size_t>( field - kind.fields.begin() );
}

std::string frameOf( const WatchContent& content, const Look& look ) {
   std::vector<StyledLine> messages;
   for ( auto& message : content.messages ) {
      messages.emplace_back().add( TextCells::printable( message ) );
   }
   // Messages take a quarter of the screen at most, and nothing of one that has hardly room for the title.
   messages = fitted( messages, std::min( messages.size(), look.rows / 4 ), look.isUnicode );
   auto room = look.rows - 1 - messages.size();
   auto body = content.round ? Frame( content, look ).body() : std::vector<StyledLine> {};
   if ( body.size() > room + 1 ) {
      std::erase_if( body, []( auto& line ) { return line.isEmpty(); } );
   } else if ( !body.empty() ) {
      body.pop_back();
   }
   body = fitted( body, room, look.isUnicode );
   body.resize( room );

   std::string frame = "\033[H" + titleOf( content ).rendered( look );
   for ( auto part : { &body, &messages } ) {
      for ( auto& line : *part ) {
         frame += "\r\n" + line.rendered( look );
      }
   }
   return frame;
}
