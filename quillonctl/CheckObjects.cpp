#include "Check.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>

namespace Check {

using rapidjson::Value;

namespace {

/** A "uid" that stands for none. */
constexpr uint32_t noUid = 0xFFFFFFFF;

class ObjectCheck {
public:
   ObjectCheck( const Subject& subject, const Inventory* topology )
      : subject_( subject ), topology_( topology ) {}

   std::vector<Object> run() {
      auto& root = subject_.file().document();
      auto array = root.IsObject() ? member( root, "objects" ) : nullptr;
      if ( !array || !array->IsArray() ) {
         return {};
      }
      for ( rapidjson::SizeType i = 0; i < array->Size(); ++i ) {
         auto pointer = under( "/objects", i );
         if ( ( *array )[i].IsObject() ) {
            object( pointer, ( *array )[i] );
         }
      }
      needsCpld();
      return objects_;
   }

private:
   void object( const std::string& pointer, const Value& json ) {
      auto name = textIn( json, "name" ).value_or( "" );
      if ( !name.empty() && !names_.insert( name ).second ) {
         subject_.error( under( pointer, "name" ), "an object before has this name" );
      }
      thresholds( pointer, json );
      auto kind = textIn( json, "kind" ).value_or( "" );
      if ( kind == "psu" ) {
         subject_.error( under( pointer, "kind" ), "the library has no driver that makes a psu" );
      }
      if ( kind == "system" ) {
         system_ = pointer;
         return;
      }
      auto args = member( json, "args" );
      auto isObject = args && args->IsObject();
      if ( isObject ) {
         subject_.unread( "/definitions/objects/definitions/args", *args, under( pointer, "args" ) );
      }
      auto did = isObject ? unsignedIn( *args, "did" ) : std::nullopt;
      if ( did ) {
         objects_.push_back( { pointer, kind, name, args, *did, textIn( *args, "driver" ).value_or( "" ) } );
         device( objects_.back() );
      }
   }

   void thresholds( const std::string& pointer, const Value& json ) {
      auto alert = member( json, "alert" );
      auto critical = member( json, "critical" );
      if ( alert && critical && alert->IsNumber() && critical->IsNumber() &&
           critical->GetDouble() < alert->GetDouble() ) {
         subject_.error( under( pointer, "critical" ),
            fmt::format( "{} is below the alert threshold", compact( *critical ) ) );
      }
   }

   void device( const Object& object ) {
      auto& args = *object.args;
      auto pointer = under( object.pointer, "args" );
      if ( topology_ ) {
         place( object, pointer );
      }
      arguments( subject_, pointer, args );
      if ( !object.kind.empty() && subject_.isSound( under( object.pointer, "kind" ) ) ) {
         driverArguments( subject_, object );
      }
      if ( isMultiDevice( args ) ) {
         subject_.error( under( pointer, "isMultiDevice" ),
            "must not be true: the library has no driver for a multi-device" );
      }
      if ( deniesHam( args ) ) {
         subject_.error(
            under( pointer, "provideHam" ), "must not be 0: no driver does without access to its device" );
      }
      sameDevice( object, pointer );
   }

   /** The library looks for the component if there is one, and for the device otherwise. */
   void place( const Object& object, const std::string& pointer ) {
      auto uid = unsignedIn( *object.args, "uid" ).value_or( noUid );
      auto isComponent = uid != noUid;
      auto key = under( pointer, isComponent ? "uid" : "did" );
      auto device = isComponent ? topology_->holderOf( uid ) : topology_->find( object.did );
      if ( !device ) {
         auto number = isComponent ? uid : object.did;
         subject_.error( key,
            fmt::format( "the topology has no {} {}", isComponent ? "component" : "device", number ),
            isComponent ? choices( topology_->components, &Inventory::Component::uid )
                        : choices( topology_->devices, &Inventory::Device::did ) );
         return;
      }
      if ( reached_.insert( device->did ).second ) {
         reach( subject_, key, *device );
      }
      sameAsInTopology( object, pointer, *device );
   }

   template <typename Part>
   static std::string choices( const std::vector<Part>& parts, uint32_t Part::*id ) {
      constexpr size_t listable = 20;
      std::set<uint32_t> ids;
      for ( auto& part : parts ) {
         ids.insert( part.*id );
      }
      if ( ids.empty() || ids.size() > listable ) {
         return "";
      }
      return fmt::format( "there {} {}", ids.size() == 1 ? "is" : "are", fmt::join( ids, ", " ) );
   }

   static std::optional<uint32_t> addressIn( const Value& args ) {
      auto address = member( args, "address" );
      return address && address->IsObject() ? unsignedIn( *address, "address" ) : std::nullopt;
   }

   /** The device is talked to as the object says, whatever the topology says of it. */
   void sameAsInTopology(
      const Object& object, const std::string& pointer, const Inventory::Device& device ) {
      auto driver = textIn( *device.json, "driver" );
      if ( driver && *driver != object.driver ) {
         subject_.warning( under( pointer, "driver" ),
            fmt::format( "the topology gives device {} the driver {}", device.did, *driver ) );
      }
      if ( !device.json->HasMember( "driver" ) ) {
         return;
      }
      auto there = addressIn( *device.json );
      auto here = addressIn( *object.args );
      if ( there && here && *there != *here ) {
         subject_.warning( under( under( pointer, "address" ), "address" ),
            fmt::format( "the topology gives device {} the address {}", device.did, *there ) );
      }
   }

   /** A device is made once, for the first of its objects. */
   void sameDevice( const Object& object, const std::string& pointer ) {
      auto& first = objects_[first_.emplace( object.did, objects_.size() - 1 ).first->second];
      if ( !first.driver.empty() && !object.driver.empty() && first.driver != object.driver ) {
         subject_.error( under( pointer, "driver" ),
            fmt::format( "an object before has the driver {} for the device {}", first.driver, object.did ) );
      }
      auto there = addressIn( *first.args );
      auto here = addressIn( *object.args );
      if ( there && here && *there != *here ) {
         subject_.warning( under( under( pointer, "address" ), "address" ),
            fmt::format( "{} before has the address {} for the device {}, and that counts", first.name,
               *there, object.did ) );
      }
   }

   /** In simulation the library cannot make a device that it reaches by its label. */
   void needsCpld() {
      auto cpld = topology_ ? topology_->cpld() : nullptr;
      auto isOnCpld = [&]( auto& object ) { return object.did == cpld->did; };
      if ( system_ && cpld && std::none_of( objects_.begin(), objects_.end(), isOnCpld ) ) {
         subject_.warning( *system_,
            fmt::format( "works in simulation only with another object on the device {}, \"{}\"", cpld->did,
               cpldLabel ),
            "add a gpio of that device" );
      }
   }

   const Subject& subject_;
   const Inventory* topology_;
   std::vector<Object> objects_;
   std::set<std::string> names_;
   /** Where a system object is. */
   std::optional<std::string> system_;
   std::set<uint32_t> reached_;
   /** The first object of each device. */
   std::map<uint32_t, size_t> first_;
};

} // namespace

std::vector<Object> objects( const Subject& subject, const Inventory* topology ) {
   return ObjectCheck( subject, topology ).run();
}

} // namespace Check
