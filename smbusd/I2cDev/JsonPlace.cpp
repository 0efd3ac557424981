#include "JsonPlace.h"

#include "MapFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace Smbusd::I2cDev {

JsonPlace::JsonPlace( const std::string& file, std::string path, const rapidjson::Value& value )
   : file_( file ), path_( std::move( path ) ), value_( value ) {}

void JsonPlace::refuse( const std::string& reason ) const {
   throw MapFileError( fmt::format( "{}: {}: {}", file_, path_.empty() ? "/" : path_, reason ) );
}

void JsonPlace::requireKeys( std::initializer_list<std::string_view> known ) const {
   if ( !value_.IsObject() ) {
      refuse( "must be an object" );
   }
   std::set<std::string_view> seen;
   for ( auto& member : value_.GetObject() ) {
      std::string_view key( member.name.GetString(), member.name.GetStringLength() );
      if ( std::ranges::find( known, key ) == known.end() ) {
         refuse( fmt::format( "no key {:?} is known here", key ) );
      }
      if ( !seen.insert( key ).second ) {
         refuse( fmt::format( "has {} twice", key ) );
      }
   }
}

std::optional<JsonPlace> JsonPlace::member( const char* key ) const {
   auto found = value_.FindMember( key );
   if ( found == value_.MemberEnd() ) {
      return std::nullopt;
   }
   return JsonPlace( file_, fmt::format( "{}/{}", path_, key ), found->value );
}

JsonPlace JsonPlace::required( const char* key ) const {
   auto found = member( key );
   if ( !found ) {
      refuse( fmt::format( "lacks {}", key ) );
   }
   return *found;
}

std::vector<JsonPlace> JsonPlace::elements() const {
   if ( !value_.IsArray() ) {
      refuse( "must be an array" );
   }
   std::vector<JsonPlace> places;
   for ( auto& element : value_.GetArray() ) {
      places.emplace_back( file_, fmt::format( "{}/{}", path_, places.size() ), element );
   }
   return places;
}

uint32_t JsonPlace::number( uint32_t most ) const {
   if ( !value_.IsUint() || value_.GetUint() > most ) {
      refuse( fmt::format( "must be a number from 0 to {}", most ) );
   }
   return value_.GetUint();
}

std::string JsonPlace::text() const {
   if ( !value_.IsString() || value_.GetStringLength() == 0 ) {
      refuse( "must be a text that isn't empty" );
   }
   return { value_.GetString(), value_.GetStringLength() };
}

} // namespace Smbusd::I2cDev
