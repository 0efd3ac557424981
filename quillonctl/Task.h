#ifndef TASK_H
#define TASK_H

#include "Board.h"
#include "Command.h"

#include <string>
#include <vector>

/** A command as it was given: what to do with which objects. */
struct Task {
   /** At least one. */
   std::vector<const ObjectEntry*> objects;
   const Command* command;
   Arguments arguments;
};

/**
 * The task that some words behind the word of a kind's commands stand for.
 * @throw InputError when they make no sense, with the words that would
 */
Task taskOf( const Board& board, const Kind& kind, const std::vector<std::string>& words );

/** How a command is written: "fan NAME rpm RPM". */
std::string formOf( const Kind& kind, const Command& command );

/** The words of a kind's commands that are flags on the command line: "--all". */
std::vector<std::string> flagsOf( const Kind& kind );

/** What may follow some words behind the word of a kind's commands. */
std::vector<std::string> nextWords(
   const Board& board, const Kind& kind, const std::vector<std::string>& words );

#endif
