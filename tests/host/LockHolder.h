#ifndef HOST_LOCK_HOLDER_H
#define HOST_LOCK_HOLDER_H

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

/** Another process that works on a file while it holds an fcntl lock on the whole of it. */
class LockHolder {
public:
   /**
    * Returns once the lock is held.
    * @param type F_RDLCK or F_WRLCK
    * @param work what the process does with the file; tells whether it went well
    */
   LockHolder( const std::string& path, short type, const std::function<bool( int file )>& work ) {
      int ready[2];
      if ( pipe( ready ) != 0 || ( process_ = fork() ) < 0 ) {
         throw std::runtime_error( "no other process" );
      }
      if ( process_ == 0 ) {
         auto file = open( path.c_str(), O_RDWR );
         bool good = file >= 0 && lock( file, type ) && write( ready[1], "", 1 ) == 1 && work( file );
         _exit( good ? EXIT_SUCCESS : EXIT_FAILURE );
      }
      close( ready[1] );
      char byte;
      isHeld_ = read( ready[0], &byte, 1 ) == 1;
      close( ready[0] );
   }

   LockHolder( const LockHolder& ) = delete;
   LockHolder& operator=( const LockHolder& ) = delete;

   /** Waits for the process to end. @return whether it got its lock and its work went well */
   bool succeeded() {
      int status;
      return waitpid( process_, &status, 0 ) == process_ && isHeld_ && WIFEXITED( status ) &&
             WEXITSTATUS( status ) == EXIT_SUCCESS;
   }

private:
   static bool lock( int file, short type ) {
      struct flock whole {};

      whole.l_type = type;
      whole.l_whence = SEEK_SET;
      return fcntl( file, F_SETLKW, &whole ) == 0;
   }

   pid_t process_;
   bool isHeld_;
};

#endif
