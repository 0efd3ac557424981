#ifndef OPTIONS_H
#define OPTIONS_H

#include <string>

/** The options that hold for every command. */
struct Options {
   std::string board;
   std::string plugin;
   std::string socket;
   bool simulation = false;
   bool json = false;
   int traceLevel = -1;
};

#endif
