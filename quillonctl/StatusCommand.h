#ifndef STATUS_COMMAND_H
#define STATUS_COMMAND_H

#include "Options.h"

#include <optional>
#include <string>
#include <vector>

struct StatusOptions {
   /** Names or patterns of objects; none for all. */
   std::vector<std::string> names;
   /** Seconds from one round to the next; none for a single round. */
   std::optional<double> interval;
   /** Rounds; none for no end. */
   std::optional<unsigned> count;
   /** Whether an exit status of its own tells that something is past a limit. */
   bool failOnAlert = false;
};

/**
 * Shows the objects of the board, in rounds.
 * @return exit status
 * @throw InputError
 */
int statusCommand( const Options& options, const StatusOptions& status );

#endif
