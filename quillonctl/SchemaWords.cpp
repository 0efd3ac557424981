#include "Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Schema {

using rapidjson::Value;

namespace {

/** "3", "true", "an object". */
std::string wordsFor( const Value& value ) {
   if ( value.IsObject() || value.IsArray() ) {
      return value.IsObject() ? "an object" : "an array";
   }
   auto text = compact( value );
   constexpr size_t longest = 40;
   // A character of several bytes is not cut.
   auto end = std::min( longest, text.size() );
   while ( end < text.size() && ( text[end] & 0xC0 ) == 0x80 ) {
      ++end;
   }
   return end == text.size() ? text : text.substr( 0, end ) + "...";
}

std::string wordsForType( const std::string& type, const Value& schema ) {
   auto words = type == "boolean"                                          ? "true or false"
                : type == "null"                                           ? "null"
                : type == "integer" || type == "object" || type == "array" ? "an " + type
                                                                           : "a " + type;
   auto minimum = member( schema, "minimum" );
   auto maximum = member( schema, "maximum" );
   if ( minimum && maximum && ( type == "integer" || type == "number" ) ) {
      words += fmt::format( " from {} to {}", compact( *minimum ), compact( *maximum ) );
   }
   return words;
}

/** What a schema asks for: its own words where it has a pattern, which is no reading for people. */
std::string wanted( const Value& schema ) {
   if ( schema.HasMember( "pattern" ) ) {
      return textOf( schema["description"] );
   }
   if ( auto values = member( schema, "enum" ) ) {
      std::vector<std::string> texts;
      for ( auto& value : values->GetArray() ) {
         texts.push_back( compact( value ) );
      }
      return oneOf( texts );
   }
   auto& type = schema["type"];
   if ( type.IsString() ) {
      return wordsForType( textOf( type ), schema );
   }
   std::vector<std::string> types;
   for ( auto& name : type.GetArray() ) {
      types.push_back( wordsForType( textOf( name ), schema ) );
   }
   return fmt::format( "{}", fmt::join( types, " or " ) );
}

} // namespace

std::string oneOf( const std::vector<std::string>& values ) {
   return ( values.size() > 1 ? "one of " : "" ) + fmt::format( "{}", fmt::join( values, ", " ) );
}

std::string mismatch( const std::string& wanted, const Value& value ) {
   return fmt::format( "must be {}, not {}", wanted, wordsFor( value ) );
}

std::string missing( const std::vector<std::string>& keys ) {
   return fmt::format( "lacks the key{} \"{}\"", keys.size() > 1 ? "s" : "", fmt::join( keys, "\", \"" ) );
}

std::string breach( const Value& schema, const std::string& keyword, const Value& value ) {
   if ( keyword == "required" ) {
      std::vector<std::string> keys;
      for ( auto& key : schema["required"].GetArray() ) {
         if ( !value.HasMember( key ) ) {
            keys.push_back( textOf( key ) );
         }
      }
      return missing( keys );
   }
   if ( keyword == "additionalProperties" ) {
      std::vector<std::string> keys;
      for ( auto& property : schema["properties"].GetObject() ) {
         keys.push_back( compact( property.name ) );
      }
      return fmt::format( "unknown key; the keys here are {}", fmt::join( keys, ", " ) );
   }
   return mismatch( wanted( schema ), value );
}

} // namespace Schema
