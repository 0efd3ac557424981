#include "ObjectCommand.h"

#include "Output.h"
#include "Session.h"
#include "Task.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace {

/** What a command that went well has to say. */
std::string answerOf( const Task& task, const StatusLine& line ) {
   auto& done = task.command->done;
   return done.empty()
             ? valuesAsText( line )
             : fmt::format( fmt::runtime( done ), task.object->name, fmt::join( task.arguments, " " ) ) +
                  '\n';
}

int show( const Options& options, const Board& board, const Task& task, const Reading& reading ) {
   StatusLine line { task.object, task.command->fields, reading };
   if ( options.json ) {
      write( asJson( board.name, { line }, {} ) );
   } else if ( !reading.failure ) {
      write( answerOf( task, line ) );
   }
   if ( reading.failure ) {
      complain( fmt::format( "{}: {}", task.object->name, reading.failure->message ) );
   }
   return reading.failure ? exitFailure : exitGood;
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
   return Session( options, board, { task.object } )
      .run(
         [&]( auto& host, auto& ) { return show( options, board, task, host.doWithEach( action ).front() ); },
         [&]( auto& error ) {
            return show(
               options, board, task, unreadable( *task.object, action, { error.status, error.what() } ) );
         } );
}
