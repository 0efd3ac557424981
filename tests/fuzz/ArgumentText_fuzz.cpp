/*
 * The first line is a kind, and the rest an argument text for a new object of that kind on a small board:
 * no JSON gives no object, and what `quillonctl check` passes gives one that does what a host can ask for.
 */

#include "CheckedLibrary.h"
#include "Host.h"
#include "Objects.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <cassert>
#include <fstream>
#include <sstream>

namespace {

constexpr const char* kinds[] = { "temp_sensor", "fan", "slot", "led", "gpio", "xcvr", "poe_port", "system" };

const std::string& topology() {
   static const std::string text = [] {
      std::ostringstream content;
      content << std::ifstream( BOARD "/topology.json" ).rdbuf();
      return content.str();
   }();
   return text;
}

bool passes( const Object& object ) {
   auto thresholds = object.kind == "temp_sensor" ? R"("alert": 60, "critical": 70, )" : "";
   return checkPasses(
      topology(), fmt::format( R"({{ "objects": [ {{ "kind": "{}", "name": "any", {}"args": {} }} ] }})",
                     object.kind, thresholds, object.args ) );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   // The library takes a C string.
   std::string text = std::string( reinterpret_cast<const char*>( data ), size ).c_str();
   auto end = text.find( '\n' );
   if ( end == std::string::npos || std::ranges::count( kinds, text.substr( 0, end ) ) == 0 ||
        !isNestedShallowly( text ) ) {
      return -1;
   }
   Object object { text.substr( 0, end ), text.substr( end + 1 ) };
   rapidjson::Document document;
   document.Parse( object.args.c_str() );
   auto isJson = !document.HasParseError();
   if ( isJson && !passes( object ) ) {
      return 0;
   }
   forgetDevices();
   Host::Turn turn;
   auto status = ql_system_init( topology().c_str() );
   assert( status == QL_STATUS_OK );
   Objects objects( false );
   auto isAdded = objects.add( object );
   // The system reads no arguments.
   assert( isAdded == ( isJson || object.kind == "system" ) );
   for ( auto& action : objects.actions ) {
      action();
   }
   return 0;
}
