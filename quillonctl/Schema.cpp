#include "Schema.h"

#include "SchemaBundle.h"

#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <cassert>

namespace Schema {

using rapidjson::Value;

namespace {

const Bundle& bundle() {
   static const Bundle schemas;
   return schemas;
}

struct Breach {
   std::string pointer;
   std::string reason;
   bool atKey = false;
};

/** The property that tells the alternatives of a "oneOf" apart: the one with an enumeration, of one value. */
const Value::Member& selectorOf( const Value& alternative ) {
   auto properties = alternative["properties"].GetObject();
   auto selector = std::find_if( properties.begin(), properties.end(),
      []( auto& property ) { return property.value.HasMember( "enum" ); } );
   assert( selector != properties.end() );
   return *selector;
}

bool isRequired( const Value& schema, const Value& key ) {
   auto required = member( schema, "required" );
   return required && std::find( required->Begin(), required->End(), key ) != required->End();
}

bool isMeantFor( const Value& alternative, const Value& object ) {
   auto& selector = selectorOf( alternative );
   auto actual = object.FindMember( selector.name );
   return actual == object.MemberEnd() ? !isRequired( alternative, selector.name )
                                       : actual->value == selector.value["enum"][0];
}

/** Places of the schemas in the list under a keyword. */
std::vector<std::string> listed( const Value& schema, const std::string& place, const char* keyword ) {
   std::vector<std::string> places;
   for ( size_t i = 0; i < schema[keyword].Size(); ++i ) {
      places.push_back( under( under( place, keyword ), i ) );
   }
   return places;
}

/** For a breach of a rule that is made of other schemas, the places of those that have to be met. */
std::vector<std::string> parts(
   const Value& schema, const std::string& place, const std::string& keyword, const Value& value ) {
   std::vector<std::string> places;
   if ( keyword == "allOf" ) {
      places = listed( schema, place, "allOf" );
   } else if ( keyword == "oneOf" && value.IsObject() ) {
      places = listed( schema, place, "oneOf" );
      std::erase_if( places, [&]( std::string part ) { return !isMeantFor( bundle().at( part ), value ); } );
   } else if ( keyword == "dependencies" ) {
      for ( auto& dependency : schema["dependencies"].GetObject() ) {
         if ( value.HasMember( dependency.name ) ) {
            places.push_back( under( under( place, "dependencies" ), textOf( dependency.name ) ) );
         }
      }
   }
   return places;
}

/** The breach by a value that none of the alternatives is meant for. */
Breach noAlternative(
   const Value& schema, const std::string& place, const Value& value, const std::string& pointer ) {
   if ( !value.IsObject() ) {
      return { pointer, mismatch( "an object", value ) };
   }
   std::vector<std::string> values;
   std::string key;
   for ( auto& part : listed( schema, place, "oneOf" ) ) {
      auto& selector = selectorOf( bundle().at( part ) );
      key = textOf( selector.name );
      values.push_back( compact( selector.value["enum"][0] ) );
   }
   auto actual = member( value, key.c_str() );
   return actual ? Breach { under( pointer, key ), mismatch( oneOf( values ), *actual ) }
                 : Breach { pointer, missing( { key } ) };
}

std::string textOf( const rapidjson::Pointer& pointer ) {
   rapidjson::StringBuffer text;
   pointer.Stringify( text );
   return text.GetString();
}

/** The innermost breach of the schema at `place` by the value at `pointer`. */
std::optional<Breach> find( const std::string& place, const Value& value, const std::string& pointer ) {
   auto schema = bundle().schemaOf( place );
   rapidjson::SchemaDocument compiled( schema );
   rapidjson::SchemaValidator validator( compiled );
   if ( value.Accept( validator ) ) {
      return {};
   }
   auto badPath = validator.GetInvalidDocumentPointer();
   auto& bad = *badPath.Get( value );
   auto badPointer = pointer + textOf( badPath );
   std::string keyword = validator.GetInvalidSchemaKeyword();
   auto brokenPlace = textOf( validator.GetInvalidSchemaPointer() );
   auto& broken = bundle().at( brokenPlace );

   for ( auto& part : parts( broken, brokenPlace, keyword, bad ) ) {
      if ( auto inner = find( part, bad, badPointer ) ) {
         return inner;
      }
   }
   if ( keyword == "oneOf" ) {
      return noAlternative( broken, brokenPlace, bad, badPointer );
   }
   return Breach { badPointer, breach( broken, keyword, bad ), keyword == "additionalProperties" };
}

} // namespace

std::optional<Finding> check( const std::string& name, const JsonFile& file ) {
   auto breach = find( "/definitions/" + name, file.document(), "" );
   if ( !breach ) {
      return {};
   }
   return breach->atKey ? file.atKey( breach->pointer, breach->reason )
                        : file.at( breach->pointer, breach->reason );
}

} // namespace Schema
