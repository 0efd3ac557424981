#ifndef COMPLETE_COMMAND_H
#define COMPLETE_COMMAND_H

#include "Options.h"

#include <string>
#include <vector>

/**
 * Writes what a word of a command line may become, a line each. The library is not loaded.
 * @param commands the words that may come first
 * @param flags the options that may stand there
 * @param words the place of the word among those behind it, from 0; then the words, without options before it
 * @return exit status
 * @throw InputError
 */
int completeCommand( const Options& options, const std::vector<std::string>& commands,
   const std::vector<std::string>& flags, const std::vector<std::string>& words );

#endif
