#include "WatchCommand.h"

#include "Names.h"
#include "WatchReader.h"
#include "WatchScreen.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <system_error>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

/** Makes a descriptor of the signals that a watch lives with, as long as it exists. */
class Signals {
public:
   Signals() {
      sigset_t set;
      sigemptyset( &set );
      for ( auto number : { SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGWINCH } ) {
         sigaddset( &set, number );
      }
      sigprocmask( SIG_BLOCK, &set, &before_ );
      descriptor_ = signalfd( -1, &set, SFD_CLOEXEC );
      if ( descriptor_ < 0 ) {
         throw std::system_error( errno, std::generic_category(), "signalfd" );
      }
   }

   ~Signals() {
      close( descriptor_ );
      release();
   }

   Signals( const Signals& ) = delete;
   Signals& operator=( const Signals& ) = delete;

   int descriptor() const { return descriptor_; }

   /** @return number of the signal that came */
   int take() const {
      signalfd_siginfo signal {};
      return read( descriptor_, &signal, sizeof( signal ) ) > 0 ? static_cast<int>( signal.ssi_signo ) : 0;
   }

   void release() const { sigprocmask( SIG_SETMASK, &before_, nullptr ); }

private:
   sigset_t before_;
   int descriptor_;
};

class Watch {
public:
   Watch( const Options& options, const WatchOptions& watch )
      : board_( Board::load( options.board ) )
      , objects_( choose( board_, watch.names ) )
      , isBrief_( watch.names.empty() )
      , hasScreen_( !options.json && Terminal::isThere() )
      , ownsErrors_( hasScreen_ && isatty( STDERR_FILENO ) )
      , reader_( { options, board_, objects_, watch.pace, isBrief_, ownsErrors_ },
           [this] { signals_.release(); } ) {
      if ( hasScreen_ ) {
         auto screen = std::make_unique<WatchScreen>( board_.name, watch.pace.interval, isBrief_ );
         screen_ = screen.get();
         view_ = std::move( screen );
      } else {
         view_ = options.json ? watchAsJson( board_.name ) : watchAsText( isBrief_ );
      }
   }

   int run() {
      while ( !isOver_ ) {
         waitAndAct();
      }
      view_.reset();
      if ( ownsErrors_ ) {
         // What the screen has told is gone with it.
         Complaints().tell( round_.lines );
      }
      return isGood_ ? exitGood : exitFailure;
   }

private:
   void waitAndAct() {
      enum { fromSignals, fromRounds, fromErrors, fromKeys, fromOutput };

      pollfd files[] = { { signals_.descriptor(), POLLIN, 0 }, { reader_.rounds.descriptor(), POLLIN, 0 },
         { hasErrors_ ? reader_.errors.descriptor() : -1, POLLIN, 0 },
         { hasKeys_ ? STDIN_FILENO : -1, POLLIN, 0 }, { STDOUT_FILENO, 0, 0 } };
      // A screen tells every second how old it is, where that should not be.
      auto count = poll( files, std::size( files ), hasScreen_ ? 1000 : -1 );
      if ( count == 0 ) {
         screen_->draw();
      }
      if ( files[fromSignals].revents ) {
         obey( signals_.take() );
      }
      if ( files[fromErrors].revents ) {
         takeErrors();
      }
      if ( files[fromRounds].revents && !isOver_ ) {
         takeRounds();
      }
      if ( files[fromKeys].revents ) {
         takeKeys();
      }
      // Nobody reads any more; there may be nothing to write for long.
      isOver_ = isOver_ || files[fromOutput].revents;
   }

   void obey( int signal ) {
      if ( signal == SIGWINCH ) {
         redraw();
      } else if ( signal == SIGTSTP && screen_ ) {
         screen_->suspend();
      } else if ( signal == SIGTSTP ) {
         raise( SIGSTOP );
      } else {
         isOver_ = true;
      }
   }

   void takeRounds() {
      auto lines = reader_.rounds.read();
      if ( !lines ) {
         isOver_ = true;
         isGood_ = reader_.wait() == exitGood && isGood_;
         return;
      }
      for ( auto& line : *lines ) {
         if ( auto readings = readingsOf( line, objects_ ) ) {
            takeRound( *readings );
         }
      }
   }

   void takeRound( const std::vector<Reading>& readings ) {
      Round round { std::chrono::system_clock::now(), {} };
      for ( size_t i = 0; i < readings.size(); ++i ) {
         round.lines.push_back( { objects_[i], objects_[i]->kind->fields, readings[i] } );
      }
      for ( auto& line : round_.lines ) {
         round.before.push_back( line.reading );
      }
      round_ = std::move( round );
      view_->show( round_ );
      auto hasFailed = []( auto& line ) { return line.reading.failure.has_value(); };
      isGood_ = isGood_ && std::none_of( round_.lines.begin(), round_.lines.end(), hasFailed );
      if ( !ownsErrors_ ) {
         complaints_.tell( round_.lines );
      }
   }

   void takeErrors() {
      auto lines = reader_.errors.read();
      if ( !lines ) {
         hasErrors_ = false;
         return;
      }
      for ( auto& line : *lines ) {
         screen_->tell( line );
      }
      redraw();
   }

   void takeKeys() {
      char key = 0;
      hasKeys_ = read( STDIN_FILENO, &key, 1 ) == 1;
      isOver_ = isOver_ || ( hasKeys_ && key == 'q' );
   }

   void redraw() const {
      if ( screen_ ) {
         screen_->draw();
      }
   }

   const Board board_;
   const std::vector<const ObjectEntry*> objects_;
   const bool isBrief_;
   const bool hasScreen_;
   /** Whether stderr would go to the screen. */
   const bool ownsErrors_;
   bool hasErrors_ = ownsErrors_;
   bool hasKeys_ = hasScreen_ && isatty( STDIN_FILENO );
   Signals signals_;
   WatchReader reader_;
   std::unique_ptr<WatchView> view_;
   WatchScreen* screen_ = nullptr;
   Round round_;
   Complaints complaints_;
   bool isOver_ = false;
   bool isGood_ = true;
};

} // namespace

int watchCommand( const Options& options, const WatchOptions& watch ) {
   return Watch( options, watch ).run();
}
