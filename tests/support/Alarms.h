#ifndef ALARMS_H
#define ALARMS_H

#include <chrono>
#include <csignal>

#include <sys/time.h>

/** Each of them raises SIGALRM, whose handler lets no system call restart. */
class Alarms {
public:
   explicit Alarms( std::chrono::milliseconds interval ) {
      count = 0;

      struct sigaction action {};

      action.sa_handler = []( int ) { count = count + 1; };
      sigaction( SIGALRM, &action, &before_ );
      auto time = std::chrono::microseconds( interval ).count();
      itimerval timer { { 0, time }, { 0, time } };
      setitimer( ITIMER_REAL, &timer, nullptr );
   }

   ~Alarms() {
      itimerval off {};
      setitimer( ITIMER_REAL, &off, nullptr );
      sigaction( SIGALRM, &before_, nullptr );
   }

   Alarms( const Alarms& ) = delete;
   Alarms& operator=( const Alarms& ) = delete;

   static inline volatile sig_atomic_t count = 0;

private:
   struct sigaction before_ {};
};

#endif
