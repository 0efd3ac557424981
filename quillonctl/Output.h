#ifndef OUTPUT_H
#define OUTPUT_H

#include "Kind.h"

#include <string>
#include <vector>

/** An object with what was read of it. */
struct StatusLine {
   const ObjectEntry* object;
   /** What the values of the reading are. */
   std::span<const Field> fields;
   Reading reading;
};

/** Writes a text as a whole, so that no reader ever sees half of it. @throw std::system_error */
void write( const std::string& text );

/** A table for each kind that is there, for people. */
std::string asText( const std::vector<StatusLine>& lines, bool coloured );

/** What was read of one object: a single value as it is, several as a table, long texts behind it. */
std::string valuesAsText( const StatusLine& line );

/** One JSON document in one line. */
std::string asJson(
   const std::string& board, const std::vector<StatusLine>& lines, const std::vector<std::string>& errors );

#endif
