#include "ProgressLine.h"

#include "Errors.h"

#include <sched.h>

static_assert( std::atomic<int>::is_always_lock_free, "processes share no locks" );

namespace {

/** Back to the first column, and away with what stands there. */
constexpr const char* blank = "\r\033[K";

} // namespace

void ProgressLine::show( const std::string& text ) {
   auto expected = Idle;
   if ( state_.compare_exchange_strong( expected, Writing ) ) {
      writeToErrors( blank + text );
      isVisible_ = true;
      state_ = Idle;
   }
}

void ProgressLine::end() {
   auto expected = Idle;
   while ( !state_.compare_exchange_weak( expected, Ended ) && expected != Ended ) {
      expected = Idle;
      sched_yield();
   }
   erase();
}

void ProgressLine::takeAway() {
   erase();
   state_ = Idle;
}

void ProgressLine::erase() {
   if ( isVisible_.exchange( false ) ) {
      writeToErrors( blank );
   }
}
