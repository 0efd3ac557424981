#include "Schema.h"

#include "Nearest.h"

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

/** "a", "one of a, b". */
std::string oneOf( const std::vector<std::string>& values ) {
   return ( values.size() > 1 ? "one of " : "" ) + fmt::format( "{}", fmt::join( values, ", " ) );
}

std::vector<std::string> compactAll( const Value& values ) {
   std::vector<std::string> texts;
   for ( auto& value : values.GetArray() ) {
      texts.push_back( compact( value ) );
   }
   return texts;
}

} // namespace

std::string wanted( const Value& schema ) {
   // The title of a whole file is not what a value must be.
   if ( auto title = textIn( schema, "title" ); title && !schema.HasMember( "$schema" ) ) {
      return *title;
   }
   if ( auto values = member( schema, "enum" ) ) {
      return oneOf( compactAll( *values ) );
   }
   auto type = member( schema, "type" );
   if ( !type || schema.HasMember( "pattern" ) || schema.HasMember( "minLength" ) ) {
      return textOf( schema["description"] );
   }
   if ( type->IsString() ) {
      return wordsForType( textOf( *type ), schema );
   }
   std::vector<std::string> types;
   for ( auto& name : type->GetArray() ) {
      types.push_back( wordsForType( textOf( name ), schema ) );
   }
   return fmt::format( "{}", fmt::join( types, " or " ) );
}

Words noneOf( const std::vector<std::string>& values, const Value& value ) {
   return { mismatch( oneOf( values ), value ),
      value.IsString() ? didYouMean( compact( value ), values ) : "" };
}

std::string mismatch( const std::string& wanted, const Value& value ) {
   return fmt::format( "must be {}, not {}", wanted, wordsFor( value ) );
}

std::string missing( const std::vector<std::string>& keys ) {
   return fmt::format( "lacks the key{} \"{}\"", keys.size() > 1 ? "s" : "", fmt::join( keys, "\", \"" ) );
}

Words breach( const Value& schema, const std::string& keyword, const Value& value ) {
   if ( keyword == "enum" && !schema.HasMember( "title" ) ) {
      return noneOf( compactAll( schema["enum"] ), value );
   }
   return { mismatch( wanted( schema ), value ) };
}

} // namespace Schema
