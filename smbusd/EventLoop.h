#ifndef SMBUSD_EVENT_LOOP_H
#define SMBUSD_EVENT_LOOP_H

#include "Descriptor.h"

#include <poll.h>
#include <sys/epoll.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace Smbusd {

/**
 * Waits for descriptors, timers and the results of other threads, and calls who asked for them, all in the
 * thread that runs the loop. Only `post` may be called from other threads.
 */
class EventLoop {
public:
   class Watcher {
   public:
      /** The descriptor has one of the events asked for, or POLLHUP or POLLERR, which come unasked. */
      virtual void ready( short events ) = 0;

   protected:
      ~Watcher() = default;
   };

   using Clock = std::chrono::steady_clock;
   using Task = std::function<void()>;
   /** The place of a descriptor among those that are watched. It stays until `unwatch`. */
   using Slot = uint32_t;

   /** Throws std::system_error. */
   EventLoop();

   /**
    * The watcher stays the caller's and must outlive the watch, and so must the descriptor. Throws
    * std::system_error.
    */
   Slot watch( int fd, short events, Watcher& watcher );

   /**
    * The same, but an event is told once, until more comes, or until `again` or a change of what is wanted.
    * The kernel need not look at the descriptor anew with each wait.
    */
   Slot watchChanges( int fd, short events, Watcher& watcher );

   /** Has the events that the descriptor still has told once more. */
   void again( Slot slot );

   void want( Slot slot, short events );

   void unwatch( Slot slot );

   void after( std::chrono::nanoseconds delay, Task task );
   /** Has the task run in the loop's thread, soon, but never before this call has returned. */
   void post( Task task );

   /** Until `stop`. Throws std::system_error when waiting is impossible. */
   void run();
   /** Waits once, and deals with all that is due. */
   void runOnce();

   void stop() { stopped_ = true; }

   /** When the last wait ended: the time of everything that is done before the next, at no cost. */
   Clock::time_point now() const { return now_; }

private:
   using Ready = std::array<epoll_event, 64>;

   struct Watch {
      int fd = -1;
      short events = 0;
      /** EPOLLET, or 0. */
      uint32_t mode = 0;
      /** How often the slot has been taken: what was ready for an earlier one is not for this one. */
      uint32_t turn = 0;
      Watcher* watcher = nullptr;
   };

   Slot add( int fd, short events, uint32_t mode, Watcher& watcher );
   void control( int operation, Slot slot );
   size_t wait( Ready& ready );
   void dispatch( const epoll_event& event );
   void runTimers();
   void runPosted();

   bool stopped_ = false;
   Clock::time_point now_ = Clock::now();
   Descriptor epoll_;
   std::vector<Watch> watches_;
   std::vector<Slot> freeSlots_;
   std::multimap<Clock::time_point, Task> timers_;

   Descriptor wakeup_;
   std::mutex mutex_;
   std::vector<Task> posted_;
};

} // namespace Smbusd

#endif
