#include "OutputSchema.h"

#include <fmt/format.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

using rapidjson::Document;
using rapidjson::Value;

namespace {

Document load( const std::string& name ) {
   std::ifstream file( OUTPUT_SCHEMAS "/" + name );
   rapidjson::IStreamWrapper stream( file );
   Document document;
   if ( document.ParseStream( stream ).HasParseError() ) {
      throw std::runtime_error( "no schema " + name );
   }
   return document;
}

/** Finds the files that schemas refer to, which lie in the same folder. */
class Neighbours : public rapidjson::IRemoteSchemaDocumentProvider {
public:
   const rapidjson::SchemaDocument* GetRemoteDocument( const char* reference, rapidjson::SizeType ) override {
      std::string text = reference;
      auto name = text.substr( 0, text.find( '#' ) );
      auto& schema = schemas_[name];
      if ( !schema ) {
         schema = std::make_unique<rapidjson::SchemaDocument>( load( name ), this );
      }
      return schema.get();
   }

private:
   std::map<std::string, std::unique_ptr<rapidjson::SchemaDocument>> schemas_;
};

} // namespace

struct OutputSchema::Schemas {
   Neighbours files;
   std::unique_ptr<rapidjson::SchemaDocument> own;
};

OutputSchema::OutputSchema( const std::string& command, const std::string& row )
   : schemas_( std::make_unique<Schemas>() ) {
   auto rows = row.empty() ? "" : fmt::format( R"("objects": {{ "items": {{ "$ref": "{}" }} }})", row );
   Document schema;
   schema.Parse( fmt::format(
      R"({{ "allOf": [ {{ "$ref": "{}.schema.json#" }} ], "properties": {{ {} }} }})", command, rows )
                    .c_str() );
   schemas_->own = std::make_unique<rapidjson::SchemaDocument>( schema, &schemas_->files );
}

OutputSchema::~OutputSchema() = default;

bool OutputSchema::accepts( const Value& document ) const {
   rapidjson::SchemaValidator validator( *schemas_->own );
   return document.Accept( validator );
}

std::string OutputSchema::complaint( const std::string& line ) const {
   Document document;
   if ( document.Parse( line.c_str() ).HasParseError() || !document.IsObject() ) {
      return "no JSON object: " + line;
   }
   if ( !accepts( document ) ) {
      return "not as the schema says: " + line;
   }
   auto& allocator = document.GetAllocator();
   std::string complaint;
   auto refuses = [&]( const std::string& change ) {
      if ( complaint.empty() && accepts( document ) ) {
         complaint = fmt::format( "the schema accepts {} in {}", change, line );
      }
   };
   auto alter = [&]( auto&& self, Value& value ) -> void {
      if ( value.IsArray() ) {
         for ( auto& element : value.GetArray() ) {
            self( self, element );
         }
      }
      if ( !value.IsObject() ) {
         return;
      }
      // Iterators of what is not const can't be compared in C++20 without an ambiguity.
      for ( auto& member : std::as_const( value ).GetObject() ) {
         auto& inner = value[member.name];
         self( self, inner );
         Value kept( inner, allocator );
         inner.SetObject().AddMember( "odd", 1, allocator );
         refuses( fmt::format( "an object as {}", member.name.GetString() ) );
         inner = kept;
      }
      Value whole( value, allocator );
      value.AddMember( "surprise", 1, allocator );
      refuses( "a member more" );
      for ( auto& member : std::as_const( whole ).GetObject() ) {
         value.CopyFrom( whole, allocator );
         value.RemoveMember( member.name );
         refuses( fmt::format( "no {}", member.name.GetString() ) );
      }
      value = whole;
   };
   alter( alter, document );
   return complaint;
}
