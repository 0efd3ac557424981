#ifndef STRESS_BUSY_HOST_H
#define STRESS_BUSY_HOST_H

#include "Usage.h"

#include <chrono>
#include <cstdint>
#include <string>

#include <sys/types.h>

/**
 * A host in a process of its own that makes one request after the other through the library's register
 * access. Each leaves a number of its own on a chip and reads it back, with the mark of the server that it
 * talks to, so that no answer can pass for another's.
 */
class BusyHost {
public:
   using Clock = std::chrono::steady_clock;

   struct Seen {
      uint64_t right;
      /** Answers to another request, or of another server than the one that is there. */
      uint64_t wrong;
      /** Requests that failed while nobody looked. */
      uint64_t excused;
      /** Requests that began and failed while the server was there. */
      uint64_t unexcused;
      Clock::duration longest;
   };

   /** The emulated board of a server with this mark. */
   static std::string board( uint32_t mark );

   BusyHost( const std::string& socket, std::chrono::milliseconds limit );
   ~BusyHost();
   BusyHost( const BusyHost& ) = delete;
   BusyHost& operator=( const BusyHost& ) = delete;

   /** From now on the server with this mark is there, and a request that begins must not fail. */
   void look( uint32_t mark );
   /** From now on a request may fail. */
   void lookAway();

   /** Returns when it has stopped asking. */
   void pause();
   /** Lets it go on, with this server. */
   void resume( uint32_t mark );

   /** Waits, ten seconds at most, for a request that began after this and went well, or failed. */
   bool awaitSuccess() const;
   bool awaitFailure() const;

   Usage usage() const { return usageOf( process_ ); }

   /** Ends it. */
   Seen stop();

   /** What both processes see. */
   struct Shared;

private:
   Shared* shared_;
   pid_t process_;
};

#endif
