#ifndef SCHEMA_BUNDLE_H
#define SCHEMA_BUNDLE_H

#include <rapidjson/document.h>

#include <span>
#include <string>

namespace Schema {

/** A schema file: its name before ".schema.json", and its text. */
struct File {
   const char* name;
   const char* text;
};

/** All files of the folder schemas/, as they stood when the program was built. */
extern const std::span<const File> files;

/**
 * All schemas as the definitions of a single one, with their references made to match: the validator follows
 * a reference within one document only.
 */
class Bundle {
public:
   Bundle();

   /** A schema that is the one at `place`, such as "/definitions/topology". */
   rapidjson::Document schemaOf( const std::string& place ) const;

   /** The schema at `place`; a reference is followed, and `place` then names its target. */
   const rapidjson::Value& at( std::string& place ) const;

private:
   void add( const File& file );
   void redirect( rapidjson::Value& schema, const std::string& place );

   rapidjson::Document definitions_;
};

/** The one of the program. */
const Bundle& bundle();

} // namespace Schema

#endif
