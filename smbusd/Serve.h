#ifndef SMBUSD_SERVE_H
#define SMBUSD_SERVE_H

#include "CommandLine.h"

namespace Smbusd {

/**
 * Serves until SIGTERM or SIGINT, and tells the service manager when it has begun and ends.
 *
 * @return the exit status: 0; 1 for a failure at run time; 2 for a document that is wrong
 */
int serve( const Options& options );

} // namespace Smbusd

#endif
