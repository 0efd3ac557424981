#ifndef OBJECT_COMMAND_H
#define OBJECT_COMMAND_H

#include "Kind.h"
#include "Options.h"

#include <string>
#include <vector>

/**
 * Does something with one object.
 * @param words what stands behind the word of the kind's commands
 * @return exit status
 * @throw InputError
 */
int objectCommand( const Options& options, const Kind& kind, const std::vector<std::string>& words );

#endif
