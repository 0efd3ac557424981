#ifndef JSON_FILE_H
#define JSON_FILE_H

#include <rapidjson/document.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/** A place in a text, counted from 1; columns are characters. */
struct Place {
   size_t line;
   size_t column;
};

/** A mistake in a document. */
struct Finding {
   std::string file;
   Place place;
   /** JSON pointer of the value, empty for the root and where there is no value. */
   std::string pointer;
   std::string reason;

   /** "FILE:LINE:COLUMN: /json/pointer: reason" */
   std::string text() const;
};

/** A JSON document that knows where in its file each value stands. */
class JsonFile {
public:
   /**
    * Reads and parses a file as strict JSON, nested 64 levels at most, each key once in an object.
    * @param findings receives the mistakes
    * @return null when the text could not be parsed
    */
   static std::unique_ptr<JsonFile> load( const std::filesystem::path& path, std::vector<Finding>& findings );

   const std::string& text() const { return text_; }

   const rapidjson::Document& document() const { return document_; }

   /** A finding at a value. */
   Finding at( const std::string& pointer, const std::string& reason ) const;
   /** A finding at the key of a value, for what's wrong with the key itself. */
   Finding atKey( const std::string& pointer, const std::string& reason ) const;

private:
   friend class Positions;

   /** Byte offsets; an array element has no key, and the offset of its value instead. */
   struct Position {
      size_t key;
      size_t value;
   };

   JsonFile( const std::string& name, std::string text ) : name_( name ), text_( std::move( text ) ) {}

   bool parse( std::vector<Finding>& findings );
   Place placeOf( size_t offset ) const;

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

#endif
