#include "Host.h"

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

struct ql_timer {
   void ( *function )( void* );
   void* argument;
   bool isArmed = false;
};

namespace {

std::vector<std::unique_ptr<ql_timer>> timers;
thread_local bool isHost = false;

void wait( std::chrono::nanoseconds time ) {
   if ( isHost ) {
      Host::now += time;
   } else {
      auto seconds = std::chrono::floor<std::chrono::seconds>( time );
      timespec real { seconds.count(), ( time - seconds ).count() };
      nanosleep( &real, nullptr );
   }
}

} // namespace

namespace Host {

std::chrono::nanoseconds now = std::chrono::seconds( 1000 );

Turn::Turn() { isHost = true; }

Turn::~Turn() { isHost = false; }

void fireTimers() {
   for ( auto& timer : timers ) {
      if ( std::exchange( timer->isArmed, false ) ) {
         timer->function( timer->argument );
      }
   }
}

} // namespace Host

extern "C" {

unsigned sleep( unsigned seconds ) {
   wait( std::chrono::seconds( seconds ) );
   return 0;
}

int usleep( useconds_t time ) {
   wait( std::chrono::microseconds( time ) );
   return 0;
}

int clock_gettime( clockid_t clock, timespec* time ) {
   if ( clock != CLOCK_MONOTONIC || !isHost ) {
      return static_cast<int>( syscall( SYS_clock_gettime, clock, time ) );
   }
   auto seconds = std::chrono::floor<std::chrono::seconds>( Host::now );
   *time = { seconds.count(), ( Host::now - seconds ).count() };
   return 0;
}
}

void ql_trace( int, const char* format, ... ) {
   // Formatted, so that what the library gives is looked at.
   char line[512];
   va_list arguments;
   va_start( arguments, format );
   vsnprintf( line, sizeof line, format, arguments );
   va_end( arguments );
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   timers.emplace_back( new ql_timer { function, argument } );
   return timers.back().get();
}

int ql_timer_set( ql_timer* timer, uint32_t ) {
   timer->isArmed = true;
   return 0;
}

void ql_timer_delete( ql_timer* timer ) { timer->isArmed = false; }
