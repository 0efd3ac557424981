/*
 * The documents of a board, topology.json and objects.json with a line "---" between: `quillonctl check` says
 * what is wrong with them, or the library takes them, makes every object, and does with it what a host can
 * ask for.
 */

#include "CheckedLibrary.h"
#include "Host.h"
#include "Objects.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cassert>
#include <string_view>

namespace {

constexpr std::string_view separator = "\n---\n";

std::string textOf( const rapidjson::Value& value ) {
   rapidjson::StringBuffer text;
   rapidjson::Writer writer( text );
   value.Accept( writer );
   return text.GetString();
}

void addAll( Objects& objects, const std::string& text ) {
   rapidjson::Document document;
   document.Parse( text.c_str() );
   for ( auto& json : document["objects"].GetArray() ) {
      Object object { json["kind"].GetString(), json.HasMember( "args" ) ? textOf( json["args"] ) : "" };
      if ( object.kind == "temp_sensor" ) {
         object.alert = json["alert"].GetFloat();
         object.critical = json["critical"].GetFloat();
      }
      auto isAdded = objects.add( object );
      assert( isAdded );
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   std::string_view text( reinterpret_cast<const char*>( data ), size );
   auto end = text.find( separator );
   if ( end == std::string_view::npos ) {
      return -1;
   }
   std::string topology( text.substr( 0, end ) );
   std::string objects( text.substr( end + separator.size() ) );
   if ( !checkPasses( topology, objects ) ) {
      return 0;
   }
   forgetDevices();
   Host::Turn turn;
   auto status = ql_system_init( topology.c_str() );
   assert( status == QL_STATUS_OK );
   Objects all( false );
   addAll( all, objects );
   for ( auto& action : all.actions ) {
      action();
   }
   return 0;
}
