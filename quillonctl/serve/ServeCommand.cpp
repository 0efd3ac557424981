#include "ServeCommand.h"

#include "FrontPanel.h"
#include "HttpServer.h"
#include "JsonWriting.h"
#include "LedSettings.h"
#include "Metrics.h"
#include "Output.h"
#include "Reader.h"
#include "ReaderProcess.h"
#include "Session.h"
#include "Snapshot.h"
#include "StatusDocument.h"

#include <fmt/format.h>
#include <systemd/sd-daemon.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace Serve {

namespace {

using Clock = Snapshot::Clock;

/** Intervals after which an object is tried anew that could not be made or has ended the library. */
constexpr auto retryIntervals = 12;

/** Intervals after which a reading is old; below the second one, the bus may have to time out first. */
constexpr auto oldIntervals = 3;
constexpr auto leastOldAfter = 15s;

/** SIGINT and SIGTERM, from a descriptor. */
class StopSignals {
public:
   StopSignals() {
      sigset_t stop;
      sigemptyset( &stop );
      sigaddset( &stop, SIGINT );
      sigaddset( &stop, SIGTERM );
      sigprocmask( SIG_BLOCK, &stop, nullptr );
      descriptor_ = signalfd( -1, &stop, SFD_CLOEXEC );
   }

   ~StopSignals() { close( descriptor_ ); }

   StopSignals( const StopSignals& ) = delete;
   StopSignals& operator=( const StopSignals& ) = delete;

   int descriptor() const { return descriptor_; }

private:
   int descriptor_;
};

/** What is asked of the library: the objects of a board, and behind them the bits of its LEDs. */
struct Wanted {
   explicit Wanted( const Board& board ) {
      auto next = board.objects.size();
      for ( auto& object : board.objects ) {
         subjects.push_back( { &object } );
         for ( auto& bit : bitsOfLed( object ) ) {
            bits.push_back( bit );
            subjects.back().bits.push_back( next++ );
         }
      }
   }

   std::vector<const ObjectEntry*> objects() const {
      std::vector<const ObjectEntry*> all;
      for ( auto& subject : subjects ) {
         all.push_back( subject.object );
      }
      for ( auto& bit : bits ) {
         all.push_back( &bit );
      }
      return all;
   }

   std::vector<Reader::Subject> subjects;
   std::vector<ObjectEntry> bits;
};

/**
 * One thread answers HTTP from the snapshot; another process has the library and fills it. Whatever becomes
 * of that one, it is started again.
 */
class ServeCommand {
public:
   ServeCommand( const Options& options, const ServeOptions& serve )
      : options_( options )
      , interval_(
           std::chrono::duration_cast<Clock::duration>( std::chrono::duration<double>( serve.interval ) ) )
      , board_( Board::load( options.board ) )
      , snapshot_( board_.objects, std::max<Clock::duration>( oldIntervals * interval_, leastOldAfter ) )
      , listener_( serve.listen )
      , http_( listener_, [this]( auto path ) { return pageOf( path ); } ) {
      // Clients and whoever reads the output may go away.
      signal( SIGPIPE, SIG_IGN );
   }

   int run() {
      write( announcement() );
      sd_notifyf( 0, "READY=1\nSTATUS=Serving %s", listener_.address().c_str() );
      while ( wait() ) {
         http_.run();
         takeMessages();
      }
      sd_notify( 0, "STOPPING=1" );
      return exitGood;
   }

private:
   /** Where it answers. */
   std::string announcement() const {
      auto url = fmt::format( "http://{}/", listener_.address() );
      if ( !options_.json ) {
         return fmt::format( "Serving {0} and {0}metrics\n", url );
      }
      return Json::lineOf( [&]( auto& json ) {
         Json::writeMember( json, "board", board_.name );
         Json::writeMember( json, "url", url );
         json.Key( "errors" );
         json.StartArray();
         json.EndArray();
      } );
   }

   std::optional<Page> pageOf( std::string_view path ) const {
      if ( path == "/" ) {
         return Page { "text/html; charset=utf-8", frontPanel };
      }
      if ( path == "/metrics" ) {
         return Page { metricsType, metricsOf( snapshot_, board_.name ) };
      }
      if ( path == "/status.json" ) {
         return Page { "application/json", statusDocument( snapshot_, board_.name, interval_ ) };
      }
      return {};
   }

   /** @return false when the user has asked for an end */
   bool wait() {
      keepReading();
      auto timeout = http_.timeout();
      if ( !reader_ ) {
         auto left = std::chrono::ceil<std::chrono::milliseconds>( startAt_ - Clock::now() );
         auto milliseconds = static_cast<int>( std::max( left, 0ms ).count() );
         timeout = timeout < 0 ? milliseconds : std::min( timeout, milliseconds );
      }
      pollfd files[] = { { signals_.descriptor(), POLLIN, 0 }, { http_.descriptor(), POLLIN, 0 },
         { reader_ ? reader_->descriptor() : -1, POLLIN, 0 } };
      poll( files, std::size( files ), timeout );
      return files[0].revents == 0;
   }

   void keepReading() {
      if ( !reader_ && Clock::now() >= startAt_ ) {
         reader_ = std::make_unique<ReaderProcess>( [this]( auto& sender ) { return read( sender ); } );
      }
   }

   void takeMessages() {
      if ( !reader_ ) {
         return;
      }
      while ( auto message = reader_->receive() ) {
         snapshot_.take( *message );
         tell( *message );
      }
      if ( auto status = reader_->ended() ) {
         // One that comes to its good end only wants a new start.
         startAt_ = *status == exitGood ? Clock::now() : Clock::now() + interval_;
         reader_.reset();
      }
   }

   /** Says why the library can't be used, once, and when it can be used then. */
   void tell( const Message& message ) {
      if ( auto unusable = std::get_if<Unusable>( &message ) ) {
         if ( unusable->failure.message != told_ ) {
            told_ = unusable->failure.message;
            complain( told_ );
         }
      } else if ( std::holds_alternative<Started>( message ) && !told_.empty() ) {
         told_.clear();
         complain( "the library is loaded, and objects are read now" );
      }
   }

   /** In the process that has the library. */
   int read( const Sender& sender ) const {
      Wanted wanted( board_ );
      auto work = [&]( Host& host, Supervisor::Progress& progress ) {
         progress.shown.end();
         sender.send( Started {} );
         auto end = host.isComplete() ? Clock::time_point::max() : Clock::now() + retryIntervals * interval_;
         Reader( host, wanted.subjects, interval_, sender ).runUntil( end );
         return exitGood;
      };
      auto withoutLibrary = [&]( const HostError& error ) {
         sender.send( Unusable { { error.status, error.what() } } );
         return exitFailure;
      };
      return Session( options_, board_, wanted.objects() ).run( work, withoutLibrary );
   }

   const Options& options_;
   const Clock::duration interval_;
   const Board board_;
   Snapshot snapshot_;
   StopSignals signals_;
   Listener listener_;
   HttpServer http_;
   std::unique_ptr<ReaderProcess> reader_;
   Clock::time_point startAt_;
   std::string told_;
};

} // namespace

} // namespace Serve

int serveCommand( const Options& options, const ServeOptions& serve ) {
   return Serve::ServeCommand( options, serve ).run();
}
