#ifndef JSON_H
#define JSON_H

#include <rapidjson/document.h>

#include <cstddef>
#include <cstring>
#include <string>

/** Small reading helpers over rapidjson, whose assertions guard every type. */
namespace Json {

/** An object whose reader knows its keys when it is compiled. Where a key occurs twice, the first counts. */
class Object {
public:
   explicit Object( const rapidjson::Value& value ) : value_( value ) {}

   bool IsObject() const { return value_.IsObject(); }

   template <size_t size>
   bool HasMember( const char ( &key )[size] ) const {
      return find( key );
   }

   /** The value under a key, or null when there is none. */
   template <size_t size>
   const rapidjson::Value* find( const char ( &key )[size] ) const {
      for ( auto member = value_.MemberBegin(); member != value_.MemberEnd(); ++member ) {
         auto& name = member->name;
         // With a length that the compiler knows, this is no call.
         if ( name.GetStringLength() == size - 1 && memcmp( name.GetString(), key, size - 1 ) == 0 ) {
            return &member->value;
         }
      }
      return nullptr;
   }

   /** The value under a key that is known to be there. */
   template <size_t size>
   const rapidjson::Value& operator[]( const char ( &key )[size] ) const {
      return *find( key );
   }

private:
   const rapidjson::Value& value_;
};

inline std::string text( const rapidjson::Value& value ) {
   return { value.GetString(), value.GetStringLength() };
}

} // namespace Json

#endif
