#ifndef JSON_REPAIR_H
#define JSON_REPAIR_H

#include <rapidjson/error/error.h>

#include <cstddef>
#include <string>
#include <string_view>

/** Whether a text begins with the byte order mark of UTF-8 or of a form of UTF-16. */
bool hasByteOrderMark( std::string_view text );

/** What to do about a mistake of syntax, where the text at its place tells; else nothing. */
std::string repairOfSyntax( rapidjson::ParseErrorCode code, std::string_view text, size_t offset );

#endif
