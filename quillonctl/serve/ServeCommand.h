#ifndef SERVE_COMMAND_H
#define SERVE_COMMAND_H

#include "Options.h"

#include <string>

struct ServeOptions {
   /** Address and port. */
   std::string listen = "127.0.0.1:9633";
   /** Seconds from one reading of an object to the next. */
   double interval = 5;
};

/**
 * Answers HTTP with metrics of the board's objects, and with a page, until SIGINT or SIGTERM.
 * @return exit status
 * @throw InputError, std::runtime_error when the address can't be listened on
 */
int serveCommand( const Options& options, const ServeOptions& serve );

#endif
