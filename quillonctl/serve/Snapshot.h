#ifndef SERVE_SNAPSHOT_H
#define SERVE_SNAPSHOT_H

#include "Message.h"
#include "Output.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Serve {

/** What is known of all objects, and how it came about. The counts go on when the library starts again. */
class Snapshot {
public:
   using Clock = std::chrono::steady_clock;

   struct Object {
      const ObjectEntry* entry;
      Reading reading;
      /** What an LED was set to, as the last reading tells. */
      std::string setting;
      /** When the last reading came, good or not; none before the first. */
      std::optional<Clock::time_point> answeredAt;
      /** Seconds since 1970 at the last good reading; none before the first. */
      std::optional<double> readAt;
      uint64_t reads = 0;
      uint64_t failures = 0;
      /** What all reads have taken together. */
      double seconds = 0;
   };

   /** What the library is at. */
   struct Busy {
      size_t object;
      Clock::time_point since;
   };

   /** @param oldAfter age from which a reading tells nothing any more */
   Snapshot( const std::vector<ObjectEntry>& objects, Clock::duration oldAfter );

   void take( const Message& message );

   const std::vector<Object>& objects() const { return objects_; }

   /** What can be said of an object now: its reading, or that there is none, or that it is old. */
   StatusLine lineOf( const Object& object ) const;
   /** What an LED is set to; empty where that is not known, or not any more. */
   std::string settingOf( const Object& object ) const;
   /** Whether the last reading was good, and is not old. */
   bool isUp( const Object& object ) const;

   const std::optional<Busy>& busy() const { return busy_; }

   /** How often the library was loaded. */
   unsigned starts() const { return starts_; }

   Clock::duration oldAfter() const { return oldAfter_; }

private:
   bool isOld( const Object& object ) const;
   void take( Object& object, const Reading& reading, double seconds );
   std::string whyOld() const;

   std::vector<Object> objects_;
   Clock::duration oldAfter_;
   std::optional<Busy> busy_;
   unsigned starts_ = 0;
};

/** Seconds since a time. */
double secondsSince( Snapshot::Clock::time_point time );

} // namespace Serve

#endif
