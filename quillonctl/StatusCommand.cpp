#include "StatusCommand.h"

#include "EventLoop.h"
#include "Names.h"
#include "Output.h"
#include "Session.h"
#include "States.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include <unistd.h>

namespace {

bool colourIsWelcome() {
   auto refusal = getenv( "NO_COLOR" );
   return isatty( STDOUT_FILENO ) && ( !refusal || !*refusal );
}

class StatusCommand {
public:
   StatusCommand( const Options& options, const StatusOptions& status )
      : options_( options )
      , status_( status )
      , board_( Board::load( options.board ) )
      , chosen_( choose( board_, status.names ) )
      , isBrief_( status.names.empty() ) {}

   int run() {
      return Session( options_, board_, chosen_ )
         .run( [this]( auto& host, auto& progress ) { return showRounds( host, progress ); },
            [this]( auto& error ) { return showNothing( error ); } );
   }

private:
   static Reading read( void* record, const ObjectEntry& object ) {
      return object.kind->read( record, object );
   }

   /** Objects that nobody has named, for people: those of some kinds are summed up. */
   static Reading readBriefly( void* record, const ObjectEntry& object ) {
      return object.kind->summary ? object.kind->summary->read( record, object ) : read( record, object );
   }

   std::vector<Reading> readAll( Host& host ) const {
      return host.doWithEach( isBrief_ && !options_.json ? readBriefly : read );
   }

   int showRounds( Host& host, Supervisor::Progress& progress ) {
      if ( !status_.interval ) {
         return showRound( readAll( host ), true );
      }
      eventLoop().catchStop();
      auto interval = std::chrono::duration_cast<EventLoop::Clock::duration>(
         std::chrono::duration<double>( *status_.interval ) );
      auto next = EventLoop::Clock::now();
      auto worst = exitGood;
      for ( ;; ) {
         worst = worseOf( worst, showRound( readAll( host ), progress.rounds == 0 ) );
         ++progress.rounds;
         if ( progress.rounds == status_.count ) {
            break;
         }
         // From start to start, so that the time for reading doesn't add up.
         next = std::max( next + interval, EventLoop::Clock::now() );
         if ( !eventLoop().runUntil( next ) ) {
            break;
         }
      }
      return worst;
   }

   /** What could not be read may be worse than what was: a failure outranks an alert. */
   static ExitStatus worseOf( ExitStatus one, ExitStatus other ) {
      return one == exitFailure || other == exitGood ? one : other;
   }

   ExitStatus showRound( const std::vector<Reading>& readings, bool isFirst ) {
      std::vector<StatusLine> lines;
      for ( size_t i = 0; i < readings.size(); ++i ) {
         lines.push_back( { chosen_[i], chosen_[i]->kind->fields, readings[i] } );
      }
      write( options_.json ? asJson( board_.name, lines, {} )
                           : ( isFirst ? "" : "\n" ) + asText( lines, colourIsWelcome(), isBrief_ ) );
      auto isAlert = std::any_of(
         readings.begin(), readings.end(), []( auto& reading ) { return States::isAlert( reading.state ); } );
      return !complainOf( lines ) ? exitFailure : status_.failOnAlert && isAlert ? exitAlert : exitGood;
   }

   /** Tells each failure when it comes up, not again in every round. @return whether there is none */
   bool complainOf( const std::vector<StatusLine>& lines ) {
      auto good = true;
      std::vector<const StatusLine*> failed;
      for ( auto& line : lines ) {
         auto& told = told_[line.object];
         auto& failure = line.reading.failure;
         auto message = failure ? failure->message : "";
         if ( failure && message != told ) {
            failed.push_back( &line );
         }
         told = message;
         good = good && !failure;
      }
      ::complainOf( failed );
      return good;
   }

   /** Without the library there are no readings, but a document all the same. */
   int showNothing( const HostError& error ) {
      complain( error.what() );
      if ( options_.json ) {
         std::vector<StatusLine> lines;
         for ( auto object : chosen_ ) {
            lines.push_back( { object, object->kind->fields,
               unreadable( *object, read, { error.status, error.what() } ) } );
         }
         write( asJson( board_.name, lines, {} ) );
      }
      return exitFailure;
   }

   const Options& options_;
   const StatusOptions& status_;
   const Board board_;
   const std::vector<const ObjectEntry*> chosen_;
   const bool isBrief_;
   std::map<const ObjectEntry*, std::string> told_;
};

} // namespace

int statusCommand( const Options& options, const StatusOptions& status ) {
   return StatusCommand( options, status ).run();
}
