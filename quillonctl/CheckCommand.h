#ifndef CHECK_COMMAND_H
#define CHECK_COMMAND_H

#include "Options.h"

/**
 * Checks all documents of the board, and writes what it finds and a line with the counts, or a JSON document.
 * The library is not loaded.
 * @return exit status
 */
int checkCommand( const Options& options );

#endif
