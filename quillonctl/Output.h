#ifndef OUTPUT_H
#define OUTPUT_H

#include "Kind.h"

#include <stdexcept>
#include <string>
#include <vector>

/** An object with what was read of it. */
struct StatusLine {
   const ObjectEntry* object;
   /** What the values of the reading are. */
   std::span<const Field> fields;
   Reading reading;
};

/** Nobody takes what the program writes: a full disk, a closed stdout. */
class OutputError : public std::runtime_error {
   using std::runtime_error::runtime_error;
};

/** Writes a text as a whole, so that no reader ever sees half of it. @throw OutputError */
void write( const std::string& text );

/**
 * A table for each kind that is there, for people.
 * @param isBrief a kind that has a summary gets that instead
 */
std::string asText( const std::vector<StatusLine>& lines, bool coloured, bool isBrief );

/**
 * What was read of objects with the same fields: the single value of a single object as it is, everything
 * else as a table, long texts behind it.
 */
std::string valuesAsText( const std::vector<StatusLine>& lines );

/** The texts that are too long for a table, with an empty line between them. */
std::string longTextsOf( const std::vector<StatusLine>& lines );

/** Says which objects failed, and why; those that failed alike in one sentence, where they are many. */
void complainOf( const std::vector<const StatusLine*>& failed );

/** One JSON document in one line. @param errors why nothing could be done, if that is so */
std::string asJson(
   const std::string& board, const std::vector<StatusLine>& lines, const std::vector<std::string>& errors );

#endif
