#ifndef SMBUSD_I2C_DEV_JSON_PLACE_H
#define SMBUSD_I2C_DEV_JSON_PLACE_H

#include <rapidjson/document.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Smbusd::I2cDev {

/**
 * A value in a JSON document and where it stands there. What it is not, but is taken for, it refuses by
 * MapFileError: "FILE: place: reason". File and document must stay.
 */
class JsonPlace {
public:
   JsonPlace( const std::string& file, std::string path, const rapidjson::Value& value );

   [[noreturn]] void refuse( const std::string& reason ) const;

   const std::string& path() const { return path_; }

   /** Refuses what isn't an object, has other keys than these, or one of them twice. */
   void requireKeys( std::initializer_list<std::string_view> known ) const;
   std::optional<JsonPlace> member( const char* key ) const;
   JsonPlace required( const char* key ) const;

   std::vector<JsonPlace> elements() const;
   /** A number from 0 to `most`. */
   uint32_t number( uint32_t most ) const;

   bool isText() const { return value_.IsString(); }

   /** A string that isn't empty. */
   std::string text() const;

private:
   const std::string& file_;
   const std::string path_;
   const rapidjson::Value& value_;
};

} // namespace Smbusd::I2cDev

#endif
