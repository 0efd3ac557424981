#include "Schema.h"

#include "Nearest.h"
#include "SchemaBundle.h"

#include <set>

namespace Schema {

using rapidjson::Value;

namespace {

/** A remark for readers, such as "$schema". */
bool isRemark( const std::string& key ) {
   return key.starts_with( '$' ) || key.starts_with( '_' ) || key.starts_with( "//" );
}

class UnreadKeys {
public:
   UnreadKeys( const JsonFile& file, Findings& findings ) : file_( file ), findings_( findings ) {}

   void run( const std::vector<std::string>& places, const Value& value, const std::string& pointer ) {
      if ( value.IsObject() ) {
         object( places, value, pointer );
      } else if ( value.IsArray() ) {
         size_t index = 0;
         for ( auto& element : value.GetArray() ) {
            run( below( places, "items" ), element, under( pointer, index++ ) );
         }
      }
   }

private:
   /** Where schemas have a schema for what is in a value. */
   static std::vector<std::string> below( const std::vector<std::string>& places, const std::string& path ) {
      std::vector<std::string> found;
      for ( auto place : places ) {
         if ( bundle().at( place ).HasMember( path.c_str() ) ) {
            found.push_back( under( place, path ) );
         }
      }
      return found;
   }

   void object( const std::vector<std::string>& places, const Value& value, const std::string& pointer ) {
      std::vector<std::string> properties;
      for ( auto& place : places ) {
         auto more = below( partsFor( place, value ), "properties" );
         properties.insert( properties.end(), more.begin(), more.end() );
      }
      if ( properties.empty() ) {
         return; // any key does
      }
      for ( auto& [name, inner] : value.GetObject() ) {
         auto key = textOf( name );
         if ( isRemark( key ) || isDoubled( value, name ) ) {
            continue;
         }
         auto schemas = below( properties, key );
         if ( schemas.empty() ) {
            findings_.push_back( file_.warningAtKey( under( pointer, key ), "the library does not read this",
               didYouMeanKey( key, missingIn( value, properties ) ) ) );
         } else {
            run( schemas, inner, under( pointer, key ) );
         }
      }
   }

   /** The keys that an object could have, and has not. */
   static std::vector<std::string> missingIn(
      const Value& object, const std::vector<std::string>& properties ) {
      std::set<std::string> keys;
      for ( auto place : properties ) {
         for ( auto& property : bundle().at( place ).GetObject() ) {
            if ( !object.HasMember( property.name ) ) {
               keys.insert( textOf( property.name ) );
            }
         }
      }
      return { keys.begin(), keys.end() };
   }

   const JsonFile& file_;
   Findings& findings_;
};

} // namespace

void findUnread( const std::string& place, const JsonFile& file, const Value& value,
   const std::string& pointer, Findings& findings ) {
   UnreadKeys( file, findings ).run( { place }, value, pointer );
}

} // namespace Schema
