#ifndef PACE_H
#define PACE_H

#include <functional>
#include <optional>

/** How often something is done. */
struct Pace {
   /** Seconds from the start of one round to that of the next. */
   double interval;
   /** Rounds; none for no end. */
   std::optional<unsigned> count = {};

   /**
    * Does it, with timers of the library between the rounds, until the count is reached or the user asks for
    * an end.
    * @param done rounds that are complete, also before this call
    */
   void repeat( unsigned& done, const std::function<void()>& round ) const;
};

#endif
