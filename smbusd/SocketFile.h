#ifndef SMBUSD_SOCKET_FILE_H
#define SMBUSD_SOCKET_FILE_H

#include "Descriptor.h"

#include <sys/types.h>

#include <string>

namespace Smbusd {

/**
 * A listening Unix-domain stream socket in the file system, mode 0660. A socket that a server has left behind
 * is taken over; one that is served is not. The file is removed at the end, unless somebody has put another
 * in its place.
 */
class SocketFile {
public:
   /** Throws std::runtime_error, with words for a person. */
   explicit SocketFile( const std::string& path );
   ~SocketFile();
   SocketFile( const SocketFile& ) = delete;
   SocketFile& operator=( const SocketFile& ) = delete;

   int descriptor() const { return descriptor_.get(); }

private:
   const std::string path_;
   Descriptor descriptor_;
   dev_t device_;
   ino_t inode_;
};

} // namespace Smbusd

#endif
