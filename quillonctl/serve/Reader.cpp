#include "Reader.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace Serve {

namespace {

/** A sensor takes less than a millisecond, a PoE port about 20. */
constexpr auto longRead = 5ms;

/** Another process has a PoE controller for as long as a command about a port takes. */
constexpr auto whileInUse = 20ms;

Reading readObject( void* record, const ObjectEntry& object ) { return object.kind->read( record, object ); }

} // namespace

void Reader::runUntil( Clock::time_point end ) {
   for ( ;; ) {
      auto isIdle = !readQuick();
      isIdle = !readOneOfLong() && isIdle;
      if ( Clock::now() >= end ) {
         return;
      }
      if ( isIdle ) {
         auto next = std::min_element(
            turns_.begin(), turns_.end(), []( auto& one, auto& other ) { return one.due < other.due; } );
         eventLoop().runUntil( std::min( next->due, end ) );
      }
   }
}

/** Reads all that is quick and due. @return whether there was any */
bool Reader::readQuick() {
   auto hasRead = false;
   for ( size_t i = 0; i < turns_.size(); ++i ) {
      if ( !turns_[i].takesLong && turns_[i].due <= Clock::now() ) {
         read( i );
         hasRead = true;
      }
   }
   return hasRead;
}

/** Reads the one that has been due for the longest time, of those that take long. @return whether one was */
bool Reader::readOneOfLong() {
   auto now = Clock::now();
   auto first = turns_.end();
   for ( auto turn = turns_.begin(); turn != turns_.end(); ++turn ) {
      if ( turn->takesLong && turn->due <= now && ( first == turns_.end() || turn->due < first->due ) ) {
         first = turn;
      }
   }
   if ( first == turns_.end() ) {
      return false;
   }
   read( static_cast<size_t>( first - turns_.begin() ) );
   return true;
}

void Reader::read( size_t object ) {
   auto begin = Clock::now();
   sender_.send( Asked { object } );
   auto reading = host_.tryWith( object, readObject );
   auto took = Clock::now() - begin;
   if ( reading ) {
      sender_.send( Answered { object, std::chrono::duration<double>( took ).count(), *reading } );
      turns_[object] = { begin + interval_, took >= longRead };
   } else {
      turns_[object].due = begin + whileInUse;
   }
   // The library's timers have their turn between two reads.
   eventLoop().runUntil( Clock::now() );
}

} // namespace Serve
