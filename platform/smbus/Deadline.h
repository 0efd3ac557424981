#ifndef DEADLINE_H
#define DEADLINE_H

#include <chrono>
#include <optional>

namespace QuillonLibrary {

/** When the time of a call is over. It begins to run where there first is something to wait for. */
class Deadline {
public:
   explicit Deadline( std::chrono::milliseconds limit ) : limit_( limit ) {}

   /** Rounded up to the unit asked for; never less than nothing. */
   template <typename Unit>
   Unit left() {
      auto now = std::chrono::steady_clock::now();
      if ( !end_ ) {
         end_ = now + limit_;
      }
      return *end_ > now ? std::chrono::ceil<Unit>( *end_ - now ) : Unit::zero();
   }

private:
   std::chrono::milliseconds limit_;
   std::optional<std::chrono::steady_clock::time_point> end_;
};

} // namespace QuillonLibrary

#endif
