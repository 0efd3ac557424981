#ifndef SERVE_MESSAGE_H
#define SERVE_MESSAGE_H

#include "Kind.h"

#include <cstddef>
#include <string>
#include <variant>

/** What the process that has the library tells the one that answers HTTP. */
namespace Serve {

/** The library is loaded, and its objects are made as far as that went. */
struct Started {};

/** The library can't be used at all. */
struct Unusable {
   Failure failure;
};

/** The library is asked for an object now. */
struct Asked {
   size_t object;
};

/** What came of it. */
struct Answered {
   size_t object;
   double seconds;
   Reading reading;
   /** What an LED was set to; empty where that is not known. */
   std::string setting;
};

using Message = std::variant<Started, Unusable, Asked, Answered>;

/** A message as bytes; both processes are the same program. */
std::string encode( const Message& message );
Message decode( const std::string& bytes );

} // namespace Serve

#endif
