#ifndef COMMON_STANDARD_STREAMS_H
#define COMMON_STANDARD_STREAMS_H

namespace Common {

/**
 * Takes the place of standard streams that are closed, before a file or a socket can, which would get what is
 * written to stdout or stderr. Writing to them fails still, with EBADF. To be called first in main.
 */
void holdStandardStreams();

} // namespace Common

#endif
