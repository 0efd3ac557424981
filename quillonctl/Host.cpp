#include "Host.h"

#include "HostServices.h"
#include "Statuses.h"
#include "Surroundings.h"

#include <fmt/format.h>

#include <algorithm>

Host::Host( const std::string& pluginPath, const Board& board, const std::vector<const ObjectEntry*>& objects,
   const KnownFailures& known, Supervisor::Progress& progress )
   : plugin_( pluginPath ), progress_( progress ) {
   for ( auto entry : objects ) {
      objects_.push_back( { entry, nullptr, {} } );
   }
   for ( auto& [index, failure] : known ) {
      objects_[index].failure = failure;
   }
   HostServices::recordIn( progress_.line );
   init( board.topology );
   for ( auto& object : objects_ ) {
      if ( !object.failure ) {
         add( object );
      }
   }
}

std::vector<Reading> Host::read() {
   std::vector<Reading> readings;
   for ( auto& object : objects_ ) {
      readings.push_back( read( object ) );
   }
   return readings;
}

void Host::init( const std::string& topology ) {
   std::vector<const Kind*> used;
   std::copy_if( kinds().begin(), kinds().end(), std::back_inserter( used ), [&]( auto kind ) {
      return std::any_of(
         objects_.begin(), objects_.end(), [=]( auto& object ) { return object.entry->kind == kind; } );
   } );
   for ( auto kind : used ) {
      plugin_.require( kind->name );
   }
   if ( Surroundings::isSimulation() ) {
      Surroundings::requireSimulationFolder();
   } else {
      Surroundings::requireServer();
   }
   for ( auto kind : used ) {
      initKind( kind->name, topology );
   }
}

void Host::initKind( std::string_view kind, const std::string& topology ) {
   HostServices::forgetLine();
   auto status = QL_STATUS_FAILED;
   std::string reason;
   try {
      status = plugin_.init( kind, topology );
      reason = HostServices::lastLine();
   } catch ( const std::exception& exception ) {
      reason = exception.what();
   }
   if ( status != QL_STATUS_OK ) {
      throw HostError( status,
         fmt::format( "ql_{}_init failed: {}", kind, reason.empty() ? wordsOf( status ).meaning : reason ) );
   }
}

void Host::add( Object& object ) {
   auto thrown =
      attempt( object, [&] { object.record = object.entry->kind->add( plugin_, *object.entry ); } );
   if ( object.record ) {
      return;
   }
   auto reason = thrown.value_or( HostServices::lastLine() );
   object.failure = Failure { QL_STATUS_FAILED,
      fmt::format( "not created: {}", reason.empty() ? "the library gave no reason" : reason ) };
}

Reading Host::read( const Object& object ) {
   Reading reading;
   auto thrown =
      attempt( object, [&] { reading = object.entry->kind->read( object.record, *object.entry ); } );
   if ( thrown ) {
      reading = object.entry->kind->read( nullptr, *object.entry );
      reading.failure = Failure { QL_STATUS_FAILED, fmt::format( "not read: {}", *thrown ) };
   }
   if ( object.failure ) {
      reading.failure = object.failure;
   }
   if ( reading.failure ) {
      reading.state = "failed";
   }
   return reading;
}

std::optional<std::string> Host::attempt( const Object& object, const std::function<void()>& call ) {
   HostServices::forgetLine();
   progress_.object = static_cast<size_t>( &object - objects_.data() );
   std::optional<std::string> thrown;
   try {
      call();
   } catch ( const std::exception& exception ) {
      thrown = exception.what();
   }
   progress_.object = Supervisor::Progress::noObject;
   return thrown;
}
