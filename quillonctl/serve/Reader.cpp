#include "Reader.h"

#include "LedSettings.h"
#include "Surroundings.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace Serve {

namespace {

/** What a first reading may take: nobody shall wait for all that might be slow. */
constexpr auto firstRead = 100ms;

/** An LED takes as many reads as its register has bits. */
constexpr auto ledIntervals = 2;

/** Another process has a PoE controller for as long as a command about a port takes. */
constexpr auto whileInUse = 20ms;

Reading readObject( void* record, const ObjectEntry& object ) { return object.kind->read( record, object ); }

} // namespace

Reader::Reader(
   Host& host, const std::vector<Subject>& subjects, Clock::duration interval, const Sender& sender )
   : host_( host ), interval_( interval ), sender_( sender ) {
   for ( auto& subject : subjects ) {
      turns_.push_back( { &subject, Clock::now(), firstRead } );
   }
}

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
      if ( waited >= waited.zero() && share > most ) {
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
   auto& subject = *turn.subject;
   auto setting = reading->failure ? "" : readSetting( subject, *reading );
   if ( reading->failure ) {
      lookForServer();
   }
   turn.took = Clock::now() - begin;
   turn.due = begin + ( subject.bits.empty() ? 1 : ledIntervals ) * interval_;
   sender_.send( Answered { object, std::chrono::duration<double>( turn.took ).count(), *reading, setting } );
}

std::string Reader::readSetting( const Subject& led, Reading& reading ) {
   unsigned code = 0;
   for ( size_t i = 0; i < led.bits.size(); ++i ) {
      auto bit = host_.tryWith( led.bits[i], readObject );
      if ( bit->failure ) {
         // A register file of the simulation has but some registers of a device.
         if ( !Surroundings::isSimulation() ) {
            reading = unreadable( *led.object, readObject, *bit->failure );
         }
         return "";
      }
      code |= static_cast<unsigned>( std::get<double>( bit->values.front() ) ) << i;
   }
   return led.bits.empty() ? "" : settingOfLed( *led.object, static_cast<uint8_t>( code ) );
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
