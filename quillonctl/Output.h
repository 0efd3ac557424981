#ifndef OUTPUT_H
#define OUTPUT_H

#include "Kind.h"

#include <map>
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

/** Whether stdout is a terminal, and nobody has set NO_COLOR. */
bool colourIsWelcome();

/**
 * A table for each kind that is there, for people.
 * @param isBrief a kind that has a summary gets that instead
 */
std::string asText( const std::vector<StatusLine>& lines, bool coloured, bool isBrief );

/** The objects of a kind summed up, if there are some among the lines and the kind has a summary. */
std::string summaryOf( const Kind& kind, const std::vector<StatusLine>& lines );

/**
 * What was read of objects with the same fields: the single value of a single object as it is, everything
 * else as a table, long texts behind it.
 */
std::string valuesAsText( const std::vector<StatusLine>& lines );

/** The texts that are too long for a table, with an empty line between them. */
std::string longTextsOf( const std::vector<StatusLine>& lines );

/** Says which objects failed, and why; those that failed alike in one sentence, where they are many. */
void complainOf( const std::vector<const StatusLine*>& failed );

/** The same in sentences. */
std::vector<std::string> complaintsOf( const std::vector<const StatusLine*>& failed );

/** Complains in rounds: of each failure when it comes up, not again in every round. */
class Complaints {
public:
   /** @return whether there is no failure, told or not */
   bool tell( const std::vector<StatusLine>& lines );

private:
   std::map<const ObjectEntry*, std::string> told_;
};

/** One JSON document in one line. @param errors why nothing could be done, if that is so */
std::string asJson(
   const std::string& board, const std::vector<StatusLine>& lines, const std::vector<std::string>& errors );

#endif
