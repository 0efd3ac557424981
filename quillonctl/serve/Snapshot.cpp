#include "Snapshot.h"

#include "Host.h"

#include <fmt/format.h>

namespace Serve {

namespace {

Reading readObject( void* record, const ObjectEntry& object ) { return object.kind->read( record, object ); }

double secondsSince1970() {
   auto now = std::chrono::system_clock::now().time_since_epoch();
   return std::chrono::duration<double>( now ).count();
}

} // namespace

double secondsSince( Snapshot::Clock::time_point time ) {
   return std::chrono::duration<double>( Snapshot::Clock::now() - time ).count();
}

Snapshot::Snapshot( const std::vector<ObjectEntry>& objects, Clock::duration oldAfter )
   : oldAfter_( oldAfter ) {
   for ( auto& entry : objects ) {
      objects_.push_back( { &entry, {}, {}, {}, {} } );
   }
}

void Snapshot::take( const Message& message ) {
   busy_.reset();
   if ( std::holds_alternative<Started>( message ) ) {
      ++starts_;
   } else if ( auto asked = std::get_if<Asked>( &message ) ) {
      busy_ = { asked->object, Clock::now() };
   } else if ( auto answered = std::get_if<Answered>( &message ) ) {
      auto& object = objects_[answered->object];
      take( object, answered->reading, answered->seconds );
      object.setting = answered->setting;
   } else {
      for ( auto& object : objects_ ) {
         auto& failure = std::get<Unusable>( message ).failure;
         take( object, unreadable( *object.entry, readObject, failure ), 0 );
      }
   }
}

StatusLine Snapshot::lineOf( const Object& object ) const {
   auto line = [&]( const Reading& reading ) {
      return StatusLine { object.entry, object.entry->kind->fields, reading };
   };
   auto unknown = [&]( const std::string& reason ) {
      return line( unreadable( *object.entry, readObject, { QL_STATUS_FAILED, reason } ) );
   };
   if ( !object.answeredAt ) {
      return unknown( "not read yet" );
   }
   return isOld( object ) ? unknown( whyOld() ) : line( object.reading );
}

std::string Snapshot::settingOf( const Object& object ) const { return isUp( object ) ? object.setting : ""; }

bool Snapshot::isUp( const Object& object ) const {
   return object.answeredAt && !object.reading.failure && !isOld( object );
}

bool Snapshot::isOld( const Object& object ) const { return Clock::now() - *object.answeredAt >= oldAfter_; }

void Snapshot::take( Object& object, const Reading& reading, double seconds ) {
   object.reading = reading;
   object.answeredAt = Clock::now();
   ++object.reads;
   object.seconds += seconds;
   if ( reading.failure ) {
      ++object.failures;
   } else {
      object.readAt = secondsSince1970();
   }
}

std::string Snapshot::whyOld() const {
   auto text =
      fmt::format( "no reading for more than {:g} s", std::chrono::duration<double>( oldAfter_ ).count() );
   return busy_ ? fmt::format( "{}; the library is busy with {}", text, objects_[busy_->object].entry->name )
                : text;
}

} // namespace Serve
