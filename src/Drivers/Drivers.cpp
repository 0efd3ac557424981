#include "Drivers/Drivers.h"

#include "Json.h"
#include "Topology.h"

#include "quillon/ql.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>

#include <cassert>

namespace Drivers {

bool DriverArgs::parseJSON( const char* text ) {
   rapidjson::Document document;
   document.Parse( text );
   if ( document.HasParseError() ) {
      ql_trace( 0, "failed to load device from json: %s offset %zd",
         rapidjson::GetParseError_En( document.GetParseError() ), document.GetErrorOffset() );
      return false;
   }
   jsonText = text;
   parseJSON( document );
   return true;
}

namespace {

/** Text form of a driver's value. Integers beyond 32 bits, objects and arrays have none and give "". */
std::string flatten( const rapidjson::Value& value ) {
   if ( value.IsInt() ) {
      return std::to_string( value.GetInt() );
   }
   if ( value.IsUint() ) {
      return std::to_string( value.GetUint() );
   }
   if ( value.IsString() ) {
      return Json::text( value );
   }
   if ( value.IsDouble() ) {
      return fmt::format( "{:g}", value.GetDouble() );
   }
   if ( value.IsBool() ) {
      return value.GetBool() ? "true" : "false";
   }
   return "";
}

} // namespace

void DriverArgs::parseJSON( const rapidjson::Value& object ) {
   Json::Object json( object );
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   assert( json.HasMember( "driver" ) );

   auto multiDevice = json.find( "isMultiDevice" );
   isMultiDevice = multiDevice && multiDevice->GetBool();
   if ( isMultiDevice ) {
      assert( json.HasMember( "multiDeviceArgs" ) );
   } else {
      assert( json.HasMember( "address" ) );
      Topology::fillAddressFromJSON( json["address"], address );
   }

   auto wantsHam = json.find( "provideHam" );
   provideHam = !wantsHam || wantsHam->GetUint() != 0;
   auto component = json.find( "uid" );
   uid = component ? component->GetUint() : noUid;
   did = json["did"].GetUint();
   if ( auto& name = json["driver"]; !name.IsNull() ) {
      driver = Json::text( name );
   }

   if ( auto values = json.find( "driverArgs" ); values && !values->IsNull() ) {
      for ( auto& [key, value] : values->GetObject() ) {
         if ( !value.IsNull() ) {
            driverArgs.insert_or_assign( Json::text( key ), flatten( value ) );
         }
      }
   }
   if ( isMultiDevice ) {
      for ( auto& [key, value] : json["multiDeviceArgs"].GetObject() ) {
         assert( value.IsString() );
         multiDeviceArgs[Json::text( key )] = Json::text( value );
      }
   }
}

std::shared_ptr<DriverArgs> DriverArgs::fromJSON( const rapidjson::Value& json ) {
   auto args = std::make_shared<DriverArgs>();
   args->parseJSON( json );
   return args;
}

} // namespace Drivers
