#include "ObjectCommand.h"

#include "Output.h"
#include "Session.h"
#include "Task.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>

namespace {

/** What a command that went well has to say. */
std::string answerOf( const Task& task, const StatusLine& line ) {
   return fmt::format(
             fmt::runtime( task.command->done ), line.object->name, fmt::join( task.arguments, " " ) ) +
          '\n';
}

/** A table, of several objects with those that failed; when all have, there is no more to see than that. */
std::string tableOf( const Task& task, const Kind& kind, const std::vector<StatusLine>& lines ) {
   auto isWorthARow = task.command->isWorthARow;
   auto hasFailed = []( auto& line ) { return line.reading.failure.has_value(); };
   auto rows = lines;
   if ( isWorthARow && std::all_of( lines.begin(), lines.end(), hasFailed ) ) {
      rows.clear();
   } else if ( isWorthARow ) {
      std::erase_if( rows, [&]( auto& line ) { return !hasFailed( line ) && !isWorthARow( line.reading ); } );
   }
   auto text = rows.empty() ? "" : valuesAsText( rows );
   if ( task.command->scope == Scope::All && kind.summary ) {
      std::vector<const Reading*> readings;
      std::transform( lines.begin(), lines.end(), std::back_inserter( readings ),
         []( auto& line ) { return &line.reading; } );
      text += kind.summary->text( readings );
   }
   return text;
}

std::string asText( const Task& task, const Kind& kind, const std::vector<StatusLine>& lines ) {
   auto isOne = task.command->scope != Scope::All && lines.size() == 1;
   if ( task.command->done.empty() ) {
      return isOne && lines.front().reading.failure ? longTextsOf( lines ) : tableOf( task, kind, lines );
   }
   std::string text;
   for ( auto& line : lines ) {
      text += line.reading.failure ? "" : answerOf( task, line );
   }
   return text;
}

int show( const Options& options, const Board& board, const Task& task, const Kind& kind,
   const std::vector<Reading>& readings ) {
   std::vector<StatusLine> lines;
   for ( size_t i = 0; i < readings.size(); ++i ) {
      lines.push_back( { task.objects[i], task.command->fields, readings[i] } );
   }
   std::vector<const StatusLine*> failed;
   for ( auto& line : lines ) {
      if ( line.reading.failure ) {
         failed.push_back( &line );
      }
   }
   write( options.json ? asJson( board.name, lines, {} ) : asText( task, kind, lines ) );
   complainOf( failed );
   return failed.empty() ? exitGood : exitFailure;
}

} // namespace

int objectCommand( const Options& options, const Kind& kind, const std::vector<std::string>& words ) {
   auto board = Board::load( options.board );
   auto task = taskOf( board, kind, words );
   auto action = [&]( void* record, const ObjectEntry& object ) {
      auto reading = record ? task.command->run( record, object, task.arguments ) : Reading {};
      reading.values.resize( task.command->fields.size() );
      return reading;
   };
   auto withoutLibrary = [&]( const HostError& error ) {
      std::vector<Reading> readings;
      for ( auto object : task.objects ) {
         readings.push_back( unreadable( *object, action, { error.status, error.what() } ) );
      }
      return show( options, board, task, kind, readings );
   };
   return Session( options, board, task.objects )
      .run(
         [&]( auto& host, auto& ) { return show( options, board, task, kind, host.doWithEach( action ) ); },
         withoutLibrary );
}
