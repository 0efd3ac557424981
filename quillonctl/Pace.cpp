#include "Pace.h"

#include "EventLoop.h"

#include <algorithm>

void Pace::repeat( unsigned& done, const std::function<void()>& round ) const {
   auto step =
      std::chrono::duration_cast<EventLoop::Clock::duration>( std::chrono::duration<double>( interval ) );
   auto next = EventLoop::Clock::now();
   for ( ;; ) {
      round();
      ++done;
      if ( done == count ) {
         return;
      }
      // From start to start, so that the time for reading doesn't add up.
      next = std::max( next + step, EventLoop::Clock::now() );
      if ( !eventLoop().runUntil( next ) ) {
         return;
      }
   }
}
