#include "VirtualTime.h"

#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

VirtualTime* VirtualTime::current = nullptr;

VirtualTime::VirtualTime() { current = this; }

VirtualTime::~VirtualTime() { current = nullptr; }

namespace {

void wait( std::chrono::microseconds time ) {
   if ( VirtualTime::current ) {
      VirtualTime::current->waits.push_back( time );
      VirtualTime::current->advance( time );
      return;
   }
   auto seconds = std::chrono::duration_cast<std::chrono::seconds>( time );
   timespec left { seconds.count(), std::chrono::nanoseconds( time - seconds ).count() };
   nanosleep( &left, nullptr );
}

} // namespace

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
   if ( clock == CLOCK_MONOTONIC && VirtualTime::current ) {
      auto now = VirtualTime::current->now;
      auto seconds = std::chrono::duration_cast<std::chrono::seconds>( now );
      *time = { seconds.count(), ( now - seconds ).count() };
      return 0;
   }
   return static_cast<int>( syscall( SYS_clock_gettime, clock, time ) );
}
}
