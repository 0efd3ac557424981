#ifndef JSON_H
#define JSON_H

#include <rapidjson/document.h>

#include <cstddef>
#include <cstring>
#include <string>

/** Small reading helpers over rapidjson, whose assertions guard every type. */
namespace Json {

/** The first value under `key`, or null when the object has none such. */
template <size_t size>
const rapidjson::Value* find( const rapidjson::Value& object, const char ( &key )[size] ) {
   for ( auto member = object.MemberBegin(); member != object.MemberEnd(); ++member ) {
      auto& name = member->name;
      if ( name.GetStringLength() == size - 1 && memcmp( name.GetString(), key, size - 1 ) == 0 ) {
         return &member->value;
      }
   }
   return nullptr;
}

/** The value under a key that is known to be there. */
template <size_t size>
const rapidjson::Value& at( const rapidjson::Value& object, const char ( &key )[size] ) {
   return *find( object, key );
}

inline std::string text( const rapidjson::Value& value ) {
   return { value.GetString(), value.GetStringLength() };
}

} // namespace Json

#endif
