#include "Host.h"

#include "HostServices.h"
#include "Inventory.h"
#include "Statuses.h"
#include "Surroundings.h"

#include <fmt/format.h>

#include <algorithm>

Host::Host( const std::string& pluginPath, const Board& board, const std::vector<const ObjectEntry*>& objects,
   const KnownFailures& known, Supervisor::Progress& progress )
   : plugin_( pluginPath ), count_( objects.size() ), cpld_( board.cpld ), progress_( progress ) {
   for ( auto entry : objects ) {
      objects_.push_back( { entry, nullptr, {} } );
   }
   appendHelper( board );
   for ( auto& [index, failure] : known ) {
      objects_[index].failure = failure;
   }
   HostServices::recordIn( progress_.line );
   HostServices::listen( [&progress]( auto& line ) {
      if ( auto step = findStep( line ) ) {
         progress.step = step;
      }
   } );
   init( board.topology );
   for ( auto& object : objects_ ) {
      if ( !object.failure ) {
         add( object );
      }
   }
}

std::vector<Reading> Host::doWithEach( const Action& action ) {
   std::vector<Reading> readings;
   for ( size_t i = 0; i < count_; ++i ) {
      readings.push_back( *doWith( objects_[i], action, SoleUse::Mode::Wait ) );
   }
   progress_.shown.end();
   nameMissingServer( readings );
   return readings;
}

void Host::nameMissingServer( std::vector<Reading>& readings ) const {
   std::vector<Reading*> failed;
   for ( size_t i = 0; i < count_; ++i ) {
      if ( readings[i].failure && !objects_[i].failure ) {
         failed.push_back( &readings[i] );
      }
   }
   if ( failed.empty() || Surroundings::isSimulation() ) {
      return;
   }
   try {
      Surroundings::requireServer();
   } catch ( const HostError& error ) {
      for ( auto reading : failed ) {
         reading->failure = Failure { error.status, error.what() };
      }
   }
}

std::optional<Reading> Host::tryWith( size_t index, const Action& action ) {
   return doWith( objects_[index], action, SoleUse::Mode::Try );
}

bool Host::isComplete() const {
   return std::none_of(
      objects_.begin(), objects_.end(), []( auto& object ) { return object.failure.has_value(); } );
}

void Host::appendHelper( const Board& board ) {
   // In simulation the library can't make a device that it first reaches by its label: it looks for a name in
   // the device's argument text, and there is none. Any object on the device makes it before.
   auto onCpld = [&]( auto& entry ) { return entry.did == board.cpld; };
   auto isNeeded =
      Surroundings::isSimulation() && std::any_of( objects_.begin(), objects_.end(),
                                         []( auto& object ) { return object.entry->kind->usesCpld; } );
   auto isThere = std::any_of(
      objects_.begin(), objects_.end(), [&]( auto& object ) { return onCpld( *object.entry ); } );
   auto helper = std::find_if( board.objects.begin(), board.objects.end(), onCpld );
   if ( isNeeded && !isThere && helper != board.objects.end() ) {
      objects_.push_back( { &*helper, nullptr, {} } );
   }
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

/** @return nothing if the sole use was tried for and refused */
std::optional<Reading> Host::doWith( const Object& object, const Action& action, SoleUse::Mode mode ) {
   SoleUse use( object.entry->kind->needsSoleUse ? mode : SoleUse::Mode::None );
   if ( use.isRefused() ) {
      return {};
   }
   return doAlone( object, action );
}

Reading Host::doAlone( const Object& object, const Action& action ) {
   if ( auto failure = obstacle( object ) ) {
      return unreadable( *object.entry, action, *failure );
   }
   Reading reading;
   auto thrown = attempt( object, [&] { reading = action( object.record, *object.entry ); } );
   if ( thrown ) {
      return unreadable(
         *object.entry, action, { QL_STATUS_FAILED, fmt::format( "the library threw: {}", *thrown ) } );
   }
   if ( reading.failure ) {
      reading.state = "failed";
   }
   return reading;
}

std::optional<Failure> Host::obstacle( const Object& object ) const {
   if ( object.failure || !object.entry->kind->usesCpld || !Surroundings::isSimulation() ) {
      return object.failure;
   }
   const Object* failed = nullptr;
   for ( auto& other : objects_ ) {
      if ( other.entry->did == cpld_ ) {
         if ( !other.failure ) {
            return {};
         }
         failed = &other;
      }
   }
   if ( failed ) {
      return Failure { failed->failure->status,
         fmt::format( "needs {}, which failed: {}", failed->entry->name, failed->failure->message ) };
   }
   return Failure { QL_STATUS_FAILED,
      fmt::format( "in simulation objects.json must have an object on the device {}, \"{}\", such as a gpio",
         cpld_, cpldLabel ) };
}

std::optional<std::string> Host::attempt( const Object& object, const std::function<void()>& call ) {
   HostServices::forgetLine();
   progress_.object = static_cast<size_t>( &object - objects_.data() );
   progress_.step = nullptr;
   std::optional<std::string> thrown;
   try {
      call();
   } catch ( const std::exception& exception ) {
      thrown = exception.what();
   }
   progress_.object = Supervisor::Progress::noObject;
   return thrown;
}

Reading unreadable( const ObjectEntry& object, const Action& action, const Failure& failure ) {
   auto reading = action( nullptr, object );
   reading.state = "failed";
   reading.failure = failure;
   return reading;
}
