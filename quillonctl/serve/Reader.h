#ifndef SERVE_READER_H
#define SERVE_READER_H

#include "EventLoop.h"
#include "Host.h"
#include "ReaderProcess.h"

#include <string>
#include <vector>

namespace Serve {

/**
 * Reads the objects of a host again and again. Of those that are due it takes the one that has waited longest
 * against what its last reading took. So a sensor does not wait for all PoE ports, nor anybody for all that
 * hangs, and each has its turn at last.
 */
class Reader {
public:
   using Clock = EventLoop::Clock;

   /** An object to be read, at its place among those of the host. */
   struct Subject {
      const ObjectEntry* object;
      /** Places of the bits that an LED is read by, bit 0 first. */
      std::vector<size_t> bits = {};
   };

   Reader( Host& host, const std::vector<Subject>& subjects, Clock::duration interval, const Sender& sender );

   /** Goes on until a time has come. @throw HostError when the SMBus server has gone */
   void runUntil( Clock::time_point end );

private:
   struct Turn {
      const Subject* subject;
      Clock::time_point due;
      /** The last reading. */
      Clock::duration took;
   };

   /** The one to be read next of those that are due, or none. */
   Turn* next();
   void read( Turn& turn );
   /** Reads what an LED was set to, if that can be known. What fails there is a failure of the LED. */
   std::string readSetting( const Subject& led, Reading& reading );
   /** Where readings fail, looks once in an interval whether the reason is that. @throw HostError */
   void lookForServer();
   /** When another is due. */
   Clock::time_point nextDue() const;

   Host& host_;
   Clock::duration interval_;
   const Sender& sender_;
   std::vector<Turn> turns_;
   /** When the server may be looked for again. */
   Clock::time_point nextLook_;
};

} // namespace Serve

#endif
