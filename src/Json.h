#ifndef JSON_H
#define JSON_H

#include <rapidjson/document.h>

#include <string>

/** Small reading helpers over rapidjson, whose assertions guard every type. */
namespace Json {

/** The value under `key`, or null when the object has no such key. */
inline const rapidjson::Value* find( const rapidjson::Value& object, const char* key ) {
   auto member = object.FindMember( key );
   return member == object.MemberEnd() ? nullptr : &member->value;
}

inline std::string text( const rapidjson::Value& value ) {
   return { value.GetString(), value.GetStringLength() };
}

} // namespace Json

#endif
