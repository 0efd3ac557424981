#include "Check.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>

namespace Check {

using rapidjson::Value;

namespace {

/** The drivers of the library. */
const std::vector<std::string> drivers = { "Dummy", "GpioDriver", "PCT2075", "SelvaneXcvr", "SelvanePortLed",
   "SelvaneSystemLed", "EMC2305", "BCM59121" };

/** A "uid" that stands for none. */
constexpr uint32_t noUid = 0xFFFFFFFF;

bool isKnownDriver( const Value& driver ) {
   return driver.IsString() && std::find( drivers.begin(), drivers.end(), textOf( driver ) ) != drivers.end();
}

bool isMultiDevice( const Value& args ) {
   auto value = member( args, "isMultiDevice" );
   return value && value->GetBool();
}

class ObjectCheck {
public:
   ObjectCheck( const JsonFile& file, const std::string& pointer, std::vector<Finding>& findings )
      : file_( file ), pointer_( pointer ), findings_( findings ) {}

   void thresholds( const Value& object ) {
      auto alert = member( object, "alert" );
      auto critical = member( object, "critical" );
      if ( alert && critical && critical->GetDouble() < alert->GetDouble() ) {
         find( "critical", fmt::format( "{} is below the alert threshold", compact( *critical ) ) );
      }
   }

   void device( const std::string& kind, const Value& args, const Inventory& topology ) {
      pointer_ = under( pointer_, "args" );
      place( args, topology );
      arguments( file_, pointer_, args, findings_ );
      if ( isKnownDriver( args["driver"] ) ) {
         driverArguments( file_, pointer_, kind, args, findings_ );
      }
      if ( args["driver"].IsNull() ) {
         find( "driver", "must name a driver" );
      }
      if ( isMultiDevice( args ) ) {
         find( "isMultiDevice", "must not be true: the library has no driver for a multi-device" );
      }
      if ( deniesHam( args ) ) {
         find( "provideHam", "must not be 0: no driver does without access to its device" );
      }
   }

   /** A device is made once, for the first of its objects. @param first the first driver of each device */
   void driverOfDevice( const Value& args, std::map<uint32_t, std::string>& first ) {
      auto did = args["did"].GetUint();
      auto driver = args["driver"].IsString() ? textOf( args["driver"] ) : "";
      auto& made = first.emplace( did, driver ).first->second;
      if ( made != driver ) {
         find( "driver", fmt::format( "an object before has the driver {} for the device {}", made, did ) );
      }
   }

private:
   void find( const char* key, const std::string& reason ) {
      findings_.push_back( file_.at( under( pointer_, key ), reason ) );
   }

   /** The library looks for the component if there is one, and for the device otherwise. */
   void place( const Value& args, const Inventory& topology ) {
      auto uid = member( args, "uid" );
      auto did = args["did"].GetUint();
      if ( uid && uid->GetUint() != noUid ) {
         if ( !topology.hasComponent( uid->GetUint() ) ) {
            find( "uid", fmt::format( "the topology has no component {}", uid->GetUint() ) );
         }
      } else if ( !topology.find( did ) ) {
         find( "did", fmt::format( "the topology has no device {}", did ) );
      }
   }

   const JsonFile& file_;
   std::string pointer_;
   std::vector<Finding>& findings_;
};

} // namespace

bool deniesHam( const Value& args ) {
   auto ham = member( args, "provideHam" );
   return ham && ham->GetUint() == 0;
}

void arguments(
   const JsonFile& file, const std::string& pointer, const Value& args, std::vector<Finding>& findings ) {
   auto& driver = args["driver"];
   if ( driver.IsString() && !isKnownDriver( driver ) ) {
      findings.push_back(
         file.at( under( pointer, "driver" ), fmt::format( "there is no driver {}; the drivers are {}",
                                                 compact( driver ), fmt::join( drivers, ", " ) ) ) );
   }
   if ( isMultiDevice( args ) ) {
      return; // its address is not looked at
   }
   // The field of the address word is 2 bits wide, and what it keeps of the number is what counts.
   auto size = member( args["address"], "addrSize" );
   auto kept = size ? size->GetUint() & 3 : 1;
   if ( kept != 1 && kept != 2 ) {
      findings.push_back( file.at( under( under( pointer, "address" ), "addrSize" ),
         fmt::format( "must be 1 or 2, not {}", size->GetUint() ) ) );
   }
}

void objects( const JsonFile& file, const Inventory& topology, std::vector<Finding>& findings ) {
   std::set<std::string> names;
   std::map<uint32_t, std::string> driversByDid;
   size_t index = 0;
   for ( auto& object : file.document()["objects"].GetArray() ) {
      auto pointer = under( "/objects", index++ );
      if ( !names.insert( textOf( object["name"] ) ).second ) {
         findings.push_back( file.at( under( pointer, "name" ), "an object before has this name" ) );
      }
      ObjectCheck check( file, pointer, findings );
      check.thresholds( object );
      if ( textOf( object["kind"] ) != "system" ) {
         check.device( textOf( object["kind"] ), object["args"], topology );
         check.driverOfDevice( object["args"], driversByDid );
      }
   }
}

} // namespace Check
