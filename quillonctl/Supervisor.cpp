#include "Supervisor.h"

#include "Errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Supervisor {

namespace {

[[noreturn]] void failed( const char* what ) {
   throw std::system_error( errno, std::generic_category(), what );
}

struct Unmap {
   void operator()( Progress* progress ) const { munmap( progress, sizeof( *progress ) ); }
};

std::unique_ptr<Progress, Unmap> sharedProgress() {
   auto memory =
      mmap( nullptr, sizeof( Progress ), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0 );
   if ( memory == MAP_FAILED ) {
      failed( "mmap" );
   }
   return std::unique_ptr<Progress, Unmap>( new ( memory ) Progress { Progress::noObject, 0, {}, {}, {} } );
}

/** Holds back the signals that `run` waits for, as long as it exists. */
class HeldSignals {
public:
   HeldSignals() {
      sigemptyset( &held_ );
      for ( auto number : { SIGINT, SIGTERM, SIGCHLD } ) {
         sigaddset( &held_, number );
      }
      // An inherited "ignore" would make children vanish without a word.
      signal( SIGCHLD, SIG_DFL );
      sigprocmask( SIG_BLOCK, &held_, &before_ );
   }

   ~HeldSignals() { release(); }

   HeldSignals( const HeldSignals& ) = delete;
   HeldSignals& operator=( const HeldSignals& ) = delete;

   void release() { sigprocmask( SIG_SETMASK, &before_, nullptr ); }

   /** @return the number of a signal, or -1 when none came for a while */
   int wait() {
      constexpr timespec tick { .tv_sec = 0, .tv_nsec = 200'000'000 };
      return sigtimedwait( &held_, nullptr, &tick );
   }

private:
   sigset_t held_;
   sigset_t before_;
};

/** Waits for the end of the child. @return its wait status */
int waitFor( pid_t child, HeldSignals& signals, const std::function<void()>& onTick ) {
   for ( ;; ) {
      auto number = signals.wait();
      if ( number < 0 ) {
         onTick();
         continue;
      }
      if ( number != SIGCHLD ) {
         kill( child, number );
      }
      auto status = 0;
      auto ended = waitpid( child, &status, WNOHANG );
      if ( ended < 0 ) {
         failed( "waitpid" );
      }
      if ( ended == child ) {
         return status;
      }
   }
}

/** Whether a signal is a wish of the user rather than a failure of the child. */
bool isWish( int number ) {
   return number == SIGINT || number == SIGTERM || number == SIGHUP || number == SIGQUIT || number == SIGPIPE;
}

/** Ends this process as the child has ended, so that a shell sees why. */
[[noreturn]] void endBy( int number, HeldSignals& signals ) {
   signal( number, SIG_DFL );
   signals.release();
   raise( number );
   _exit( 128 + number );
}

std::string reasonOf( int number, const Progress& progress ) {
   auto reason = fmt::format( "the library ended its process ({})", strsignal( number ) );
   return *progress.line.text ? fmt::format( "{} after \"{}\"", reason, progress.line.text ) : reason;
}

} // namespace

int run( const std::function<int( Progress& )>& work, const std::function<void( const Crash& )>& onCrash,
   const std::function<void( Progress& )>& onTick ) {
   auto progress = sharedProgress();
   HeldSignals signals;
   auto parent = getpid();
   for ( ;; ) {
      progress->object = Progress::noObject;
      auto child = fork();
      if ( child < 0 ) {
         failed( "fork" );
      }
      if ( child == 0 ) {
         prctl( PR_SET_PDEATHSIG, SIGTERM );
         if ( getppid() != parent ) {
            _exit( exitFailure );
         }
         signals.release();
         exit( work( *progress ) );
      }
      auto status = waitFor( child, signals, [&] { onTick( *progress ); } );
      progress->shown.takeAway();
      if ( WIFEXITED( status ) ) {
         return WEXITSTATUS( status );
      }
      auto number = WTERMSIG( status );
      if ( isWish( number ) ) {
         endBy( number, signals );
      }
      auto reason = reasonOf( number, *progress );
      if ( progress->object == Progress::noObject ) {
         throw HostError( QL_STATUS_FAILED, reason );
      }
      onCrash( { progress->object, reason } );
   }
}

} // namespace Supervisor
