#ifndef SMBUSD_EVENT_LOOP_H
#define SMBUSD_EVENT_LOOP_H

#include "Descriptor.h"

#include <poll.h>

#include <chrono>
#include <cstddef>
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

   using Task = std::function<void()>;
   /** The place of a descriptor in the poll set. It stays until `unwatch`. */
   using Slot = size_t;

   /** Throws std::system_error. */
   EventLoop();

   /** The watcher stays the caller's and must outlive the watch. */
   Slot watch( int fd, short events, Watcher& watcher );

   void want( Slot slot, short events ) { polled_[slot].events = events; }

   void unwatch( Slot slot );

   void after( std::chrono::nanoseconds delay, Task task );
   /** Has the task run in the loop's thread, soon, but never before this call has returned. */
   void post( Task task );

   /** Until `stop`. Throws std::system_error when waiting is impossible. */
   void run();
   /** Waits once, and deals with all that is due. */
   void runOnce();

   void stop() { stopped_ = true; }

private:
   using Clock = std::chrono::steady_clock;

   int wait();
   void dispatch( int ready );
   void runTimers();
   void runPosted();

   bool stopped_ = false;
   std::vector<pollfd> polled_;
   std::vector<Watcher*> watchers_;
   std::vector<Slot> freeSlots_;
   std::multimap<Clock::time_point, Task> timers_;

   Descriptor wakeup_;
   std::mutex mutex_;
   std::vector<Task> posted_;
};

} // namespace Smbusd

#endif
