#ifndef SCHEMA_BUNDLE_H
#define SCHEMA_BUNDLE_H

#include <rapidjson/document.h>

#include <string>

namespace Schema {

/** The texts of the schema files. */
extern const char* const argsText;
extern const char* const topologyText;
extern const char* const objectsText;

/**
 * All schemas as the definitions of a single one, with their references made to match: the validator tells a
 * place in a schema within one document only.
 */
class Bundle {
public:
   Bundle();

   /** A schema that is the one at `place`, such as "/definitions/topology". */
   rapidjson::Document schemaOf( const std::string& place ) const;

   /** The schema at `place`; a reference is followed, and `place` then names its target. */
   const rapidjson::Value& at( std::string& place ) const;

private:
   void add( const char* name, const char* text );
   void redirect( rapidjson::Value& schema, const std::string& place );

   rapidjson::Document definitions_;
};

} // namespace Schema

#endif
