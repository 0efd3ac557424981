#ifndef BENCH_PLACEMENT_H
#define BENCH_PLACEMENT_H

#include <sched.h>
#include <sys/types.h>

/** Where two processes that wait for each other run. */
enum class Placed {
   /** One processor: nothing overlaps, and a time is the sum of the work of both. */
   Together,
   /** A processor each: every message has to wake a processor that has nothing else to do. */
   Apart
};

/** Whether this machine has processors for it. */
bool isPossible( Placed placed );

/**
 * Keeps this process and another one where they are placed, while it lives. Where the kernel puts them
 * changes from run to run, and with it the time of an exchange by a factor of two.
 */
class Placement {
public:
   Placement( pid_t other, Placed placed );
   ~Placement();
   Placement( const Placement& ) = delete;
   Placement& operator=( const Placement& ) = delete;

private:
   pid_t other_;
   cpu_set_t all_ {};
};

#endif
