#include "Reader.h"

#include "Surroundings.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace Serve {

namespace {

/** What a first reading may take: nobody shall wait for all that might be slow. */
constexpr auto firstRead = 100ms;

/** Another process has a PoE controller for as long as a command about a port takes. */
constexpr auto whileInUse = 20ms;

Reading readObject( void* record, const ObjectEntry& object ) { return object.kind->read( record, object ); }

} // namespace

Reader::Reader( Host& host, size_t count, Clock::duration interval, const Sender& sender )
   : host_( host ), interval_( interval ), sender_( sender ), turns_( count, { Clock::now(), firstRead } ) {}

void Reader::runUntil( Clock::time_point end ) {
   while ( Clock::now() < end ) {
      if ( auto turn = next() ) {
         read( *turn );
      }
      // The library's timers have their turn between two reads, also where the next one is overdue.
      eventLoop().runUntil( std::max( std::min( nextDue(), end ), Clock::now() ) );
   }
}

Reader::Turn* Reader::next() {
   auto now = Clock::now();
   Turn* first = nullptr;
   auto most = -1.0;
   for ( auto& turn : turns_ ) {
      std::chrono::duration<double> waited = now - turn.due;
      auto share = waited / std::max<Clock::duration>( turn.took, 1us );
      if ( waited >= 0s && share > most ) {
         first = &turn;
         most = share;
      }
   }
   return first;
}

void Reader::read( Turn& turn ) {
   auto object = static_cast<size_t>( &turn - turns_.data() );
   auto begin = Clock::now();
   sender_.send( Asked { object } );
   auto reading = host_.tryWith( object, readObject );
   if ( !reading ) {
      turn.due = begin + whileInUse;
      return;
   }
   if ( reading->failure ) {
      lookForServer();
   }
   auto took = Clock::now() - begin;
   sender_.send( Answered { object, std::chrono::duration<double>( took ).count(), *reading } );
   turn = { begin + interval_, took };
}

void Reader::lookForServer() {
   auto now = Clock::now();
   if ( now >= nextLook_ && !Surroundings::isSimulation() ) {
      nextLook_ = now + interval_;
      Surroundings::requireServer();
   }
}

Reader::Clock::time_point Reader::nextDue() const {
   auto next = std::min_element(
      turns_.begin(), turns_.end(), []( auto& one, auto& other ) { return one.due < other.due; } );
   return next == turns_.end() ? Clock::time_point::max() : next->due;
}

} // namespace Serve
