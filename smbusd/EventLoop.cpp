#include "EventLoop.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>
#include <utility>

namespace Smbusd {

namespace {

[[noreturn]] void fail() { throw std::system_error( errno, std::generic_category(), "event loop" ); }

constexpr EventLoop::Slot wakeupSlot = 0;

} // namespace

// Events are asked for and told in poll's bits; epoll's are the same.

EventLoop::EventLoop()
   : epoll_( epoll_create1( EPOLL_CLOEXEC ) ), wakeup_( eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK ) ) {
   if ( !epoll_ || !wakeup_ ) {
      fail();
   }
   watches_.push_back( { wakeup_.get(), POLLIN } );
   control( EPOLL_CTL_ADD, wakeupSlot );
}

EventLoop::Slot EventLoop::watch( int fd, short events, Watcher& watcher ) {
   return add( fd, events, 0, watcher );
}

EventLoop::Slot EventLoop::watchChanges( int fd, short events, Watcher& watcher ) {
   return add( fd, events, EPOLLET, watcher );
}

EventLoop::Slot EventLoop::add( int fd, short events, uint32_t mode, Watcher& watcher ) {
   if ( freeSlots_.empty() ) {
      freeSlots_.push_back( static_cast<Slot>( watches_.size() ) );
      watches_.emplace_back();
   }
   auto slot = freeSlots_.back();
   watches_[slot] = { fd, events, mode, watches_[slot].turn + 1, &watcher };
   control( EPOLL_CTL_ADD, slot );
   freeSlots_.pop_back();
   return slot;
}

void EventLoop::again( Slot slot ) { control( EPOLL_CTL_MOD, slot ); }

void EventLoop::want( Slot slot, short events ) {
   if ( watches_[slot].events != events ) {
      watches_[slot].events = events;
      control( EPOLL_CTL_MOD, slot );
   }
}

void EventLoop::unwatch( Slot slot ) {
   control( EPOLL_CTL_DEL, slot );
   watches_[slot].watcher = nullptr;
   freeSlots_.push_back( slot );
}

void EventLoop::control( int operation, Slot slot ) {
   auto& watch = watches_[slot];
   epoll_event event {};
   event.events = static_cast<uint16_t>( watch.events ) | watch.mode;
   event.data.u64 = uint64_t { watch.turn } << 32 | slot;
   if ( epoll_ctl( epoll_.get(), operation, watch.fd, &event ) < 0 ) {
      fail();
   }
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
   Ready ready;
   auto count = wait( ready );
   for ( auto& event : std::span( ready ).first( count ) ) {
      dispatch( event );
   }
   runTimers();
}

size_t EventLoop::wait( Ready& ready ) {
   timespec timeout {};
   if ( !timers_.empty() ) {
      auto left = std::max( timers_.begin()->first - Clock::now(), Clock::duration::zero() );
      auto seconds = std::chrono::floor<std::chrono::seconds>( left );
      timeout = { seconds.count(), ( left - seconds ).count() };
   }
   auto count = epoll_pwait2( epoll_.get(), ready.data(), static_cast<int>( ready.size() ),
      timers_.empty() ? nullptr : &timeout, nullptr );
   if ( count < 0 && errno != EINTR ) {
      fail();
   }
   now_ = Clock::now();
   return static_cast<size_t>( std::max( count, 0 ) );
}

void EventLoop::dispatch( const epoll_event& event ) {
   auto slot = static_cast<Slot>( event.data.u64 );
   // One that came before may have unwatched it, and watched another in its place.
   if ( slot == wakeupSlot ) {
      runPosted();
   } else if ( auto& watch = watches_[slot]; watch.watcher && watch.turn == event.data.u64 >> 32 ) {
      watch.watcher->ready( static_cast<short>( event.events ) );
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
