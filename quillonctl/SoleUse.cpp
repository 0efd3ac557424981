#include "SoleUse.h"

#include "Surroundings.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

SoleUse::SoleUse( Mode mode ) {
   if ( mode == Mode::None || Surroundings::isSimulation() ) {
      return;
   }
   // A lock on the folder of the socket needs no file, and goes with the process, however that ends.
   folder_ = open( Surroundings::serverSocket().parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC );
   isRefused_ = folder_ >= 0 && flock( folder_, LOCK_EX | ( mode == Mode::Try ? LOCK_NB : 0 ) ) != 0 &&
                errno == EWOULDBLOCK;
}

SoleUse::~SoleUse() {
   if ( folder_ >= 0 ) {
      close( folder_ );
   }
}
