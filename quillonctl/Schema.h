#ifndef SCHEMA_H
#define SCHEMA_H

#include "JsonFile.h"

#include <string>
#include <vector>

/** Checks documents against the JSON Schemas that are compiled into the program. */
namespace Schema {

/** Finds every breach of a schema, such as "topology" or "objects", in a document. */
void check( const std::string& name, const JsonFile& file, Findings& findings );

/** The keys of the schema at a place, such as "/definitions/driver-EMC2305/definitions/fan". */
std::vector<std::string> keysAt( const std::string& place );

/**
 * Finds the keys in a value and below it that the schema at a place does not have, which is no breach of a
 * schema that allows further keys. A key that begins with "$", "_" or "//" is a remark.
 */
void findUnread( const std::string& place, const JsonFile& file, const rapidjson::Value& value,
   const std::string& pointer, Findings& findings );

/**
 * The places of all schemas that an object has to keep, with the one at `place`. Of alternatives it is the
 * one that the object is meant for, or each where that is not to be told.
 */
std::vector<std::string> partsFor( std::string place, const rapidjson::Value& object );

/** Whether a key comes more than once, which is a mistake by itself, and leaves open what value was meant. */
bool isDoubled( const rapidjson::Value& object, const rapidjson::Value& name );

/** What is wrong, and what to do about it if that can be said. */
struct Words {
   std::string reason;
   std::string repair = {};
};

/** How a value breaks the rule `keyword` of a schema. */
Words breach( const rapidjson::Value& schema, const std::string& keyword, const rapidjson::Value& value );

/** How a value differs from all those that there are to choose from, given as JSON. */
Words noneOf( const std::vector<std::string>& values, const rapidjson::Value& value );

/** "must be ..., not ...", with what a value must be and what it is. */
std::string mismatch( const std::string& wanted, const rapidjson::Value& value );

/** What a schema asks for: its title where it has one, "an integer from 0 to 255" and the like else. */
std::string wanted( const rapidjson::Value& schema );

std::string missing( const std::vector<std::string>& keys );

} // namespace Schema

#endif
