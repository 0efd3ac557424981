#include "MapFile.h"

#include "JsonPlace.h"

#include "common/TextFile.h"
#include "smbusd/Log.h"

#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace Smbusd::I2cDev {

namespace {

std::string readFile( const std::string& file ) {
   try {
      return Common::readTextFile( file );
   } catch ( const Common::TextFileError& error ) {
      throw MapFileError( fmt::format( "{}: cannot be read: {}", file, error.what() ) );
   }
}

rapidjson::Document parseJson( const std::string& file, std::string_view text ) {
   rapidjson::Document document;
   // Iterative, so that deep nesting does not overflow the stack.
   document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(
      text.data(), text.size() );
   if ( document.HasParseError() ) {
      auto before = text.substr( 0, document.GetErrorOffset() );
      auto line = 1 + std::ranges::count( before, '\n' );
      auto column = before.size() - before.rfind( '\n' );
      throw MapFileError( fmt::format(
         "{}:{}:{}: {}", file, line, column, rapidjson::GetParseError_En( document.GetParseError() ) ) );
   }
   return document;
}

/** Fields of the address word have 7 bits. */
constexpr uint32_t maxField = 127;

Smbus::MasterType masterOf( const JsonPlace& place ) {
   Smbus::MasterType master;
   if ( Smbus::MasterType_Parse( place.text(), &master ) ) {
      return master;
   }
   std::vector<std::string> names;
   for ( int i = Smbus::MasterType_MIN; i <= Smbus::MasterType_MAX; ++i ) {
      names.push_back( Smbus::MasterType_Name( i ) );
   }
   place.refuse( fmt::format( "must be one of {}", fmt::join( names, ", " ) ) );
}

uint32_t optionalNumber( const JsonPlace& entry, const char* key, uint32_t most ) {
   auto place = entry.member( key );
   return place ? place->number( most ) : 0;
}

BusKey keyOf( const JsonPlace& entry ) {
   return { masterOf( entry.required( "master" ) ),
      optionalNumber( entry, "pci", std::numeric_limits<uint32_t>::max() ),
      static_cast<uint8_t>( optionalNumber( entry, "accelerator", maxField ) ),
      static_cast<uint8_t>( entry.required( "bus" ).number( maxField ) ) };
}

AdapterReference adapterOf( const JsonPlace& place, const std::filesystem::path& devices ) {
   if ( !place.isText() ) {
      return place.number( std::numeric_limits<uint32_t>::max() );
   }
   auto name = place.text();
   auto numbers = findAdapters( name, devices );
   if ( numbers.size() > 1 ) {
      place.refuse(
         fmt::format( "several adapters have this name: {}; give a number", listAdapters( numbers ) ) );
   }
   if ( numbers.empty() ) {
      Log::warning( "no adapter is called {} as yet; load its driver, or correct the map", name );
   }
   return name;
}

} // namespace

BusMap loadMap( const std::string& file, const std::filesystem::path& devices ) {
   return parseMap( file, readFile( file ), devices );
}

BusMap parseMap( const std::string& file, std::string_view text, const std::filesystem::path& devices ) {
   auto document = parseJson( file, text );
   JsonPlace root( file, "", document );
   root.requireKeys( { "$schema", "busses" } );
   BusMap map;
   std::map<BusKey, std::string> places;
   for ( auto& entry : root.required( "busses" ).elements() ) {
      entry.requireKeys( { "master", "pci", "accelerator", "bus", "adapter" } );
      auto key = keyOf( entry );
      if ( auto [other, isNew] = places.emplace( key, entry.path() ); !isNew ) {
         entry.refuse( fmt::format( "{} is mapped already, at {}", describe( key ), other->second ) );
      }
      map.emplace( key, adapterOf( entry.required( "adapter" ), devices ) );
   }
   return map;
}

} // namespace Smbusd::I2cDev
