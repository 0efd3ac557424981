#ifndef SMBUSD_COMMAND_LINE_H
#define SMBUSD_COMMAND_LINE_H

#include "Log.h"

#include <string>
#include <variant>

namespace Smbusd {

struct Options {
   /** Directory with the board to emulate; empty for none. */
   std::string emulate;
   /** Map file of the kernel's adapters; empty for none. */
   std::string i2cMap;
   std::string socket = "/run/quillon/smbus.sock";
   /** Control socket of the emulated board; empty for none. */
   std::string control;
   Log::Level logLevel = Log::Level::Info;
};

/** Exit status for wrong usage and wrong documents. */
constexpr int usageError = 2;

/** The options; or, when the program is to end at once, its exit status, with all output done. */
std::variant<Options, int> parseCommandLine( int argc, const char* const* argv );

} // namespace Smbusd

#endif
