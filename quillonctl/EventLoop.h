#ifndef EVENT_LOOP_H
#define EVENT_LOOP_H

#include "quillon/ql.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include <csignal>

/** A timer of the host, armed while it has a deadline. */
struct ql_timer {
   void ( *function )( void* );
   void* argument;
   std::optional<std::chrono::steady_clock::time_point> deadline;
};

/** The timers of the program's one thread. */
class EventLoop {
public:
   using Clock = std::chrono::steady_clock;

   ql_timer* add( void ( *function )( void* ), void* argument );
   void set( ql_timer* timer, std::chrono::milliseconds interval );
   void remove( ql_timer* timer );

   /** From now on SIGINT and SIGTERM no longer end the process but its next wait. */
   void catchStop();

   /** Lets timers fire until a time has come. @return false when the user asked for an end */
   bool runUntil( Clock::time_point end );

private:
   /** The armed timer that is due first, or null. */
   ql_timer* next() const;
   bool waitUntil( Clock::time_point time );

   std::vector<std::unique_ptr<ql_timer>> timers_;
   sigset_t stopSignals_ {};
};

/** The loop that the host services use. */
EventLoop& eventLoop();

#endif
