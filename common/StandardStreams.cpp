#include "StandardStreams.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace Common {

void holdStandardStreams() {
   for ( auto stream : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO } ) {
      if ( fcntl( stream, F_GETFD ) < 0 ) {
         // The lowest free descriptor is this one, as those below it are open.
         open( "/dev/null", O_RDONLY );
      }
   }
}

} // namespace Common
