#include "EventLoop.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

ql_timer* EventLoop::add( void ( *function )( void* ), void* argument ) {
   timers_.push_back( std::make_unique<ql_timer>( ql_timer { function, argument, {} } ) );
   return timers_.back().get();
}

void EventLoop::set( ql_timer* timer, std::chrono::milliseconds interval ) {
   timer->deadline = Clock::now() + interval;
}

void EventLoop::remove( ql_timer* timer ) {
   std::erase_if( timers_, [=]( auto& owned ) { return owned.get() == timer; } );
}

void EventLoop::catchStop() {
   sigemptyset( &stopSignals_ );
   sigaddset( &stopSignals_, SIGINT );
   sigaddset( &stopSignals_, SIGTERM );
   sigprocmask( SIG_BLOCK, &stopSignals_, nullptr );
}

bool EventLoop::runUntil( Clock::time_point end ) {
   for ( ;; ) {
      auto timer = next();
      if ( !timer || *timer->deadline >= end ) {
         return waitUntil( end );
      }
      if ( !waitUntil( *timer->deadline ) ) {
         return false;
      }
      // Disarmed first: the function may arm or delete its own timer.
      timer->deadline.reset();
      timer->function( timer->argument );
   }
}

ql_timer* EventLoop::next() const {
   ql_timer* first = nullptr;
   for ( auto& timer : timers_ ) {
      if ( timer->deadline && ( !first || *timer->deadline < *first->deadline ) ) {
         first = timer.get();
      }
   }
   return first;
}

bool EventLoop::waitUntil( Clock::time_point time ) {
   using std::chrono::duration_cast;
   using std::chrono::nanoseconds;
   using std::chrono::seconds;
   for ( ;; ) {
      auto left = std::max( duration_cast<nanoseconds>( time - Clock::now() ), nanoseconds( 0 ) );
      auto whole = duration_cast<seconds>( left );
      timespec timeout { whole.count(), ( left - whole ).count() };
      if ( sigtimedwait( &stopSignals_, nullptr, &timeout ) >= 0 ) {
         return false;
      }
      if ( errno != EINTR ) { // EAGAIN: the time has come
         return true;
      }
   }
}

EventLoop& eventLoop() {
   static EventLoop loop;
   return loop;
}
