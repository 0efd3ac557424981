#include "StopSignals.h"

#include "Log.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace Smbusd {

namespace {

Descriptor openSignals() {
   sigset_t signals;
   sigemptyset( &signals );
   sigaddset( &signals, SIGTERM );
   sigaddset( &signals, SIGINT );
   sigprocmask( SIG_BLOCK, &signals, nullptr );
   Descriptor descriptor( signalfd( -1, &signals, SFD_CLOEXEC | SFD_NONBLOCK ) );
   if ( !descriptor ) {
      throw std::system_error( errno, std::generic_category(), "signals" );
   }
   return descriptor;
}

} // namespace

StopSignals::StopSignals( EventLoop& loop )
   : loop_( loop ), descriptor_( openSignals() ), slot_( loop.watch( descriptor_.get(), POLLIN, *this ) ) {}

StopSignals::~StopSignals() { loop_.unwatch( slot_ ); }

void StopSignals::ready( short ) {
   signalfd_siginfo signal;
   if ( read( descriptor_.get(), &signal, sizeof( signal ) ) == sizeof( signal ) ) {
      Log::info( "{}, ending", signal.ssi_signo == SIGTERM ? "SIGTERM" : "SIGINT" );
      loop_.stop();
   }
}

} // namespace Smbusd
