#include "SchemaBundle.h"

#include "JsonFile.h"

#include <rapidjson/pointer.h>

#include <algorithm>
#include <cassert>

namespace Schema {

using rapidjson::Document;
using rapidjson::Value;

namespace {

const std::string root = "/definitions";

/**
 * Where in the bundle a reference leads from a file that stands at `place`: "#/x" is in that file,
 * "args.schema.json" and "args.schema.json#/x" are in another.
 */
std::string target( const std::string& reference, const std::string& place ) {
   auto hash = reference.find( '#' );
   auto file = reference.substr( 0, hash );
   auto path = hash == std::string::npos ? "" : reference.substr( hash + 1 );
   return ( file.empty() ? place : under( root, file.substr( 0, file.find( '.' ) ) ) ) + path;
}

} // namespace

Bundle::Bundle() {
   definitions_.SetObject();
   std::for_each( files.begin(), files.end(), [this]( auto& file ) { add( file ); } );
}

void Bundle::add( const File& file ) {
   Document document( &definitions_.GetAllocator() );
   document.Parse( file.text );
   assert( !document.HasParseError() );
   redirect( document, under( root, file.name ) );
   definitions_.AddMember( rapidjson::StringRef( file.name ), document, definitions_.GetAllocator() );
}

void Bundle::redirect( Value& schema, const std::string& place ) {
   if ( schema.IsArray() ) {
      for ( auto& element : schema.GetArray() ) {
         redirect( element, place );
      }
   } else if ( schema.IsObject() ) {
      std::for_each( schema.MemberBegin(), schema.MemberEnd(), [&]( auto& entry ) {
         if ( entry.name == "$ref" ) {
            auto reference = "#" + target( textOf( entry.value ), place );
            entry.value.SetString( reference.c_str(), definitions_.GetAllocator() );
         } else {
            redirect( entry.value, place );
         }
      } );
   }
}

Document Bundle::schemaOf( const std::string& place ) const {
   Document schema( rapidjson::kObjectType );
   auto& memory = schema.GetAllocator();
   schema.AddMember( "$ref", Value( ( "#" + place ).c_str(), memory ), memory );
   schema.AddMember( "definitions", Value( definitions_, memory ), memory );
   return schema;
}

const Value& Bundle::at( std::string& place ) const {
   auto path = place.substr( root.size() );
   auto found = rapidjson::Pointer( path.c_str(), path.size() ).Get( definitions_ );
   assert( found );
   if ( auto reference = member( *found, "$ref" ) ) {
      place = textOf( *reference ).substr( 1 );
      return at( place );
   }
   return *found;
}

const Bundle& bundle() {
   static const Bundle schemas;
   return schemas;
}

} // namespace Schema
