#include "VirtualTime.h"

#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

VirtualTime* VirtualTime::current = nullptr;

VirtualTime::VirtualTime() { current = this; }

VirtualTime::~VirtualTime() { current = nullptr; }

namespace {

/** @return what is left of the time after a signal */
std::chrono::nanoseconds wait( std::chrono::microseconds time ) {
   if ( VirtualTime::current ) {
      VirtualTime::current->waits.push_back( time );
      VirtualTime::current->advance( time );
      return {};
   }
   auto seconds = std::chrono::duration_cast<std::chrono::seconds>( time );
   timespec left { seconds.count(), std::chrono::nanoseconds( time - seconds ).count() };
   if ( nanosleep( &left, &left ) == 0 ) {
      return {};
   }
   return std::chrono::seconds( left.tv_sec ) + std::chrono::nanoseconds( left.tv_nsec );
}

} // namespace

extern "C" {

unsigned sleep( unsigned seconds ) {
   auto left = wait( std::chrono::seconds( seconds ) );
   return static_cast<unsigned>( std::chrono::ceil<std::chrono::seconds>( left ).count() );
}

int usleep( useconds_t time ) {
   return wait( std::chrono::microseconds( time ) ) == std::chrono::nanoseconds( 0 ) ? 0 : -1;
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
