#ifndef JSON_WRITING_H
#define JSON_WRITING_H

#include "Output.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <functional>
#include <string_view>

/** The parts that the JSON documents of the commands have in common. */
namespace Json {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

/** A text with a "?" for what is no UTF-8: paths and words from elsewhere are not ours. */
void writeText( Writer& json, const std::string& text );
void writeKey( Writer& json, std::string_view key );
void writeMember( Writer& json, std::string_view key, const std::string& text );
/** The member "error": null, or an object with status, code and message. */
void writeError( Writer& json, const std::optional<Failure>& failure );
/** All that was read of an object. */
void writeObject( Writer& json, const StatusLine& line );

/** An object with the members that a function writes, in one line. */
std::string lineOf( const std::function<void( Writer& json )>& writeMembers );

} // namespace Json

#endif
