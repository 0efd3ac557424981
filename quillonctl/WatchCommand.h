#ifndef WATCH_COMMAND_H
#define WATCH_COMMAND_H

#include "Options.h"
#include "Pace.h"

#include <string>
#include <vector>

struct WatchOptions {
   /** Names or patterns of objects; none for all. */
   std::vector<std::string> names;
   Pace pace = { 2 };
};

/**
 * Shows what changes of the objects: on a terminal as a screen that is kept up to date, else in lines.
 * @return exit status
 * @throw InputError
 */
int watchCommand( const Options& options, const WatchOptions& watch );

#endif
