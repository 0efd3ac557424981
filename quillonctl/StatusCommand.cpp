#include "StatusCommand.h"

#include "EventLoop.h"
#include "Names.h"
#include "Output.h"
#include "Pace.h"
#include "Session.h"
#include "States.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

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
      auto worst = exitGood;
      Pace pace { *status_.interval, status_.count };
      pace.repeat( progress.rounds,
         [&] { worst = worseOf( worst, showRound( readAll( host ), progress.rounds == 0 ) ); } );
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
      return !complaints_.tell( lines ) ? exitFailure : status_.failOnAlert && isAlert ? exitAlert : exitGood;
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
   Complaints complaints_;
};

} // namespace

int statusCommand( const Options& options, const StatusOptions& status ) {
   return StatusCommand( options, status ).run();
}
