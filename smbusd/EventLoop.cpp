#include "EventLoop.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace Smbusd {

EventLoop::EventLoop() : wakeup_( eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK ) ) {
   if ( !wakeup_ ) {
      throw std::system_error( errno, std::generic_category(), "event loop" );
   }
   // Slot 0 is the loop's own.
   polled_.push_back( { wakeup_.get(), POLLIN, 0 } );
   watchers_.push_back( nullptr );
}

EventLoop::Slot EventLoop::watch( int fd, short events, Watcher& watcher ) {
   if ( freeSlots_.empty() ) {
      freeSlots_.push_back( polled_.size() );
      polled_.emplace_back();
      watchers_.emplace_back();
   }
   auto slot = freeSlots_.back();
   freeSlots_.pop_back();
   polled_[slot] = { fd, events, 0 };
   watchers_[slot] = &watcher;
   return slot;
}

void EventLoop::unwatch( Slot slot ) {
   // poll passes over negative descriptors.
   polled_[slot] = { -1, 0, 0 };
   watchers_[slot] = nullptr;
   freeSlots_.push_back( slot );
}

void EventLoop::after( std::chrono::nanoseconds delay, Task task ) {
   timers_.emplace( Clock::now() + delay, std::move( task ) );
}

void EventLoop::post( Task task ) {
   {
      std::lock_guard lock( mutex_ );
      posted_.push_back( std::move( task ) );
   }
   eventfd_write( wakeup_.get(), 1 );
}

void EventLoop::run() {
   stopped_ = false;
   while ( !stopped_ ) {
      runOnce();
   }
}

void EventLoop::runOnce() {
   dispatch( wait() );
   runTimers();
}

int EventLoop::wait() {
   timespec timeout {};
   if ( !timers_.empty() ) {
      auto left = std::max( timers_.begin()->first - Clock::now(), Clock::duration::zero() );
      auto seconds = std::chrono::floor<std::chrono::seconds>( left );
      timeout = { seconds.count(), ( left - seconds ).count() };
   }
   auto ready = ppoll( polled_.data(), polled_.size(), timers_.empty() ? nullptr : &timeout, nullptr );
   if ( ready < 0 && errno != EINTR ) {
      throw std::system_error( errno, std::generic_category(), "event loop" );
   }
   return ready;
}

void EventLoop::dispatch( int ready ) {
   // A watcher may watch and unwatch others meanwhile: slots never move, and a slot taken anew has no events
   // yet.
   for ( Slot slot = 0; ready > 0 && slot < polled_.size(); ++slot ) {
      auto events = std::exchange( polled_[slot].revents, static_cast<short>( 0 ) );
      if ( events == 0 ) {
         continue;
      }
      --ready;
      if ( slot == 0 ) {
         runPosted();
      } else {
         watchers_[slot]->ready( events );
      }
   }
}

void EventLoop::runTimers() {
   if ( timers_.empty() ) {
      return;
   }
   // What is started anew here waits for the next round.
   auto now = Clock::now();
   while ( !timers_.empty() && timers_.begin()->first <= now ) {
      timers_.extract( timers_.begin() ).mapped()();
   }
}

void EventLoop::runPosted() {
   eventfd_t count;
   eventfd_read( wakeup_.get(), &count );
   std::vector<Task> tasks;
   {
      std::lock_guard lock( mutex_ );
      tasks.swap( posted_ );
   }
   for ( auto& task : tasks ) {
      task();
   }
}

} // namespace Smbusd
