#ifndef SERVE_READER_H
#define SERVE_READER_H

#include "EventLoop.h"
#include "Host.h"
#include "ReaderProcess.h"

#include <vector>

namespace Serve {

/**
 * Reads the objects of a host again and again. Those that are quick have their turn whenever it is due; of
 * those that take long, such as PoE ports and whatever hangs, one goes between two such turns, so that nobody
 * waits for all of them.
 */
class Reader {
public:
   using Clock = EventLoop::Clock;

   Reader( Host& host, size_t count, Clock::duration interval, const Sender& sender )
      : host_( host ), interval_( interval ), sender_( sender ), turns_( count, { Clock::now(), true } ) {}

   /** Goes on until a time has come. */
   void runUntil( Clock::time_point end );

private:
   struct Turn {
      Clock::time_point due;
      /** As the last time; before the first one nobody knows. */
      bool takesLong;
   };

   bool readQuick();
   bool readOneOfLong();
   void read( size_t object );

   Host& host_;
   Clock::duration interval_;
   const Sender& sender_;
   std::vector<Turn> turns_;
};

} // namespace Serve

#endif
