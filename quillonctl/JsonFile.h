#ifndef JSON_FILE_H
#define JSON_FILE_H

#include "Finding.h"

#include <rapidjson/document.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** A JSON document that knows where in its file each value stands. */
class JsonFile {
public:
   /**
    * Reads and parses a file as strict JSON, nested 64 levels at most, each key once in an object.
    * @param findings receives the mistakes
    * @return null when the file could not be read or parsed
    */
   static std::unique_ptr<JsonFile> load( const std::filesystem::path& path, Findings& findings );
   /** The same for a text that comes from the file `name`. */
   static std::unique_ptr<JsonFile> parse( const std::string& name, std::string text, Findings& findings );

   const std::string& name() const { return name_; }

   const std::string& text() const { return text_; }

   const rapidjson::Document& document() const { return document_; }

   bool has( const std::string& pointer ) const { return positions_.contains( pointer ); }

   /** An error at a value. */
   Finding error(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   /** An error at the key of a value, for what's wrong with the key itself. */
   Finding errorAtKey(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   Finding warning(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   Finding warningAtKey(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;

private:
   friend class Positions;

   /** Byte offsets; an array element has no key, and the offset of its value instead. */
   struct Position {
      size_t key;
      size_t value;
   };

   JsonFile( const std::string& name, std::string text ) : name_( name ), text_( std::move( text ) ) {}

   bool parse( Findings& findings );
   Place placeOf( size_t offset ) const;
   /** Of a value that is not there, the position of the one that it would be in. */
   Position positionOf( const std::string& pointer ) const;

   std::string name_;
   std::string text_;
   rapidjson::Document document_;
   std::map<std::string, Position, std::less<>> positions_;
};

/** The member of an object under a key, or null. */
const rapidjson::Value* member( const rapidjson::Value& object, const char* key );

/** A JSON string as text. */
std::string textOf( const rapidjson::Value& string );

/** The JSON pointer of a member or element of the value at `pointer`. */
std::string under( const std::string& pointer, std::string_view token );
std::string under( const std::string& pointer, size_t index );

/** The JSON text of a value, without white space. */
std::string compact( const rapidjson::Value& value );

/** The member of an object under a key, if it is there and a string, or an integer from 0 to 4294967295. */
std::optional<std::string> textIn( const rapidjson::Value& object, const char* key );
std::optional<uint32_t> unsignedIn( const rapidjson::Value& object, const char* key );

#endif
