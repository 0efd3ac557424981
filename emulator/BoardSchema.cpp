#include "BoardSchema.h"

#include "Text.h"

#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <string_view>
#include <vector>

namespace Emulator {

namespace {

using Pointer = rapidjson::SchemaDocument::PointerType;

std::string placeText( const Pointer& pointer ) {
   constexpr size_t longest = 200;
   rapidjson::StringBuffer text;
   pointer.Stringify( text );
   return text.GetSize() == 0 ? "/" : printable( { text.GetString(), text.GetSize() }, longest );
}

std::string missingKeys( const rapidjson::Value& schema, const rapidjson::Value& object ) {
   std::vector<std::string> missing;
   for ( auto& key : schema["required"].GetArray() ) {
      if ( !object.HasMember( key ) ) {
         missing.emplace_back( key.GetString() );
      }
   }
   return "lacks " + join( missing, ", " );
}

std::string unknownKey( const rapidjson::Value& schema, const Pointer& pointer ) {
   std::vector<std::string> known;
   for ( auto& member : schema["properties"].GetObject() ) {
      known.emplace_back( member.name.GetString() );
   }
   auto& last = pointer.GetTokens()[pointer.GetTokenCount() - 1];
   std::string_view key( last.name, last.length );
   return fmt::format( "no key {} is known here{}", printable( key ), suggestion( key, known ) );
}

} // namespace

std::optional<SchemaFailure> checkBoardSchema( const rapidjson::Document& document ) {
   rapidjson::Document text;
   text.Parse( boardSchemaText );
   rapidjson::SchemaDocument schema( text );
   rapidjson::SchemaValidator validator( schema );
   if ( document.Accept( validator ) ) {
      return std::nullopt;
   }
   auto pointer = validator.GetInvalidDocumentPointer();
   auto& broken = *validator.GetInvalidSchemaPointer().Get( text );
   std::string_view keyword = validator.GetInvalidSchemaKeyword();
   std::string reason;
   if ( keyword == "required" ) {
      reason = missingKeys( broken, *pointer.Get( document ) );
   } else if ( keyword == "additionalProperties" ) {
      reason = unknownKey( broken, pointer );
   } else {
      reason = fmt::format( "must be {}", broken["description"].GetString() );
   }
   return SchemaFailure { placeText( pointer ), reason };
}

} // namespace Emulator
