#ifndef SCHEMA_H
#define SCHEMA_H

#include "JsonFile.h"

#include <optional>
#include <string>
#include <vector>

/** Checks documents against the JSON Schemas that are compiled into the program. */
namespace Schema {

/** The first breach of a schema, "topology" or "objects", in a document, if any. */
std::optional<Finding> check( const std::string& name, const JsonFile& file );

/** In words, how a value breaks the rule `keyword` of a schema. */
std::string breach(
   const rapidjson::Value& schema, const std::string& keyword, const rapidjson::Value& value );

/** "must be ..., not ...", with what a value must be and what it is. */
std::string mismatch( const std::string& wanted, const rapidjson::Value& value );

/** Values to choose from, in words. */
std::string oneOf( const std::vector<std::string>& values );

std::string missing( const std::vector<std::string>& keys );

} // namespace Schema

#endif
