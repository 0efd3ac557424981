#include "Check.h"

#include <fmt/format.h>

#include <map>

namespace Check {

using rapidjson::Value;

namespace {

/** A value that tells the objects of one driver on one device apart. */
struct Identity {
   const char* kind;
   const char* driver;
   const char* key;
};

constexpr Identity identities[] = {
   { "fan", "EMC2305", "fanId" },
   { "fan", "EMC2305", "registerOffset" },
   { "slot", "EMC2305", "fanId" },
   { "xcvr", "SelvaneXcvr", "id" },
   { "led", "SelvanePortLed", "ledReg" },
   { "led", "SelvaneSystemLed", "reg" },
   { "poe_port", "BCM59121", "portId" },
};

/** What a PoE controller takes from the first of its objects. */
constexpr const char* controllerKeys[] = { "numPorts", "numAtPorts", "firmwarePath", "firmwareDownloadSize",
   "resetReg", "outOfResetVal", "mpssValueZero" };

/** The text that the driver gets of a value; none for a value that is missing or null. */
std::string textFor( const Object& object, const char* key ) {
   auto values = member( *object.args, "driverArgs" );
   auto value = values && values->IsObject() ? member( *values, key ) : nullptr;
   if ( !value || value->IsNull() ) {
      return "";
   }
   return value->IsString() ? textOf( *value ) : compact( *value );
}

std::string placeOf( const Object& object, const char* key ) {
   return under( object.pointer, "args" ) + "/driverArgs/" + key;
}

class NeighbourCheck {
public:
   explicit NeighbourCheck( const Subject& subject ) : subject_( subject ) {}

   void add( const Object& object ) {
      for ( auto& identity : identities ) {
         if ( identity.kind == object.kind && identity.driver == object.driver ) {
            differs( object, identity.key );
         }
      }
      if ( object.driver == "BCM59121" ) {
         sameController( object );
      }
      registerFile( object );
   }

private:
   void differs( const Object& object, const char* key ) {
      auto text = textFor( object, key );
      if ( text.empty() ) {
         return;
      }
      auto id = fmt::format( "{} {} {} {}", object.kind, object.did, key, text );
      auto& first = *owners_.emplace( id, &object ).first->second;
      if ( &first != &object ) {
         subject_.warning(
            placeOf( object, key ), fmt::format( "{} before has the {} {} on the device {} too", first.name,
                                       key, text, object.did ) );
      }
   }

   void sameController( const Object& object ) {
      auto& first = *controllers_.emplace( object.did, &object ).first->second;
      for ( auto key : controllerKeys ) {
         auto text = textFor( first, key );
         if ( text != textFor( object, key ) ) {
            auto place = placeOf( object, key );
            subject_.warning( subject_.file().has( place ) ? place : under( object.pointer, "args" ),
               text.empty() ? fmt::format( "{} before has no {} for the device {}, and that counts",
                                 first.name, key, object.did )
                            : fmt::format( "{} before has the {} {} for the device {}, and that counts",
                                 first.name, key, text, object.did ) );
         }
      }
   }

   /** In simulation the file has the names of the driver and of the device, which may be none. */
   void registerFile( const Object& object ) {
      auto name = textIn( *object.args, "name" ).value_or( "" );
      auto file = object.driver + ( name.empty() ? "" : "-" + name );
      auto& first = *files_.emplace( file, &object ).first->second;
      if ( first.did != object.did ) {
         auto place = under( object.pointer, "args" );
         subject_.warning( name.empty() ? place : under( place, "name" ),
            fmt::format( "in simulation the devices {} and {} share the register file {}", first.did,
               object.did, file ),
            "give each a \"name\" of its own" );
      }
   }

   const Subject& subject_;
   // The first object of each.
   std::map<std::string, const Object*> owners_;
   std::map<uint32_t, const Object*> controllers_;
   std::map<std::string, const Object*> files_;
};

} // namespace

void neighbours( const Subject& subject, const std::vector<Object>& objects ) {
   NeighbourCheck check( subject );
   for ( auto& object : objects ) {
      check.add( object );
   }
}

} // namespace Check
