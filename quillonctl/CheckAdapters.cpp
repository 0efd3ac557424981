#include "Check.h"
#include "Schema.h"

#include <fmt/format.h>

#include <map>
#include <tuple>

namespace Check {

void adapters( const JsonFile& file, Findings& findings ) {
   Schema::check( "i2c-map", file, findings );
   Subject subject( file, findings );
   if ( !subject.isSound() ) {
      return;
   }
   auto numberAt = []( const rapidjson::Value& entry, const char* key ) {
      return unsignedIn( entry, key ).value_or( 0 );
   };
   std::map<std::tuple<std::string, uint32_t, uint32_t, uint32_t>, std::string> places;
   auto& busses = file.document()["busses"];
   for ( rapidjson::SizeType i = 0; i < busses.Size(); ++i ) {
      auto& entry = busses[i];
      auto place = under( "/busses", i );
      std::tuple key( textOf( entry["master"] ), numberAt( entry, "pci" ), numberAt( entry, "accelerator" ),
         numberAt( entry, "bus" ) );
      if ( auto [first, isNew] = places.emplace( key, place ); !isNew ) {
         subject.error( place, fmt::format( "this bus is mapped already, at {}", first->second ) );
      }
   }
}

} // namespace Check
