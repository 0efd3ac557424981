#ifndef VIRTUAL_TIME_H
#define VIRTUAL_TIME_H

#include <chrono>
#include <vector>

/**
 * A clock of the test's own in front of sleep, usleep and CLOCK_MONOTONIC. While one exists, the library's
 * waits take no time and move the clock instead.
 */
class VirtualTime {
public:
   VirtualTime();
   ~VirtualTime();
   VirtualTime( const VirtualTime& ) = delete;
   VirtualTime& operator=( const VirtualTime& ) = delete;

   void advance( std::chrono::nanoseconds time ) { now += time; }

   /** Every wait, in order. */
   std::vector<std::chrono::microseconds> waits;
   std::chrono::nanoseconds now = std::chrono::seconds( 1000 );

   /** The clock in force, or null for the real one. */
   static VirtualTime* current;
};

#endif
