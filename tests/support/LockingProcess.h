#ifndef LOCKING_PROCESS_H
#define LOCKING_PROCESS_H

#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

/** Another process that locks one byte far behind a file's end, which only a lock of the whole file meets. */
class LockingProcess {
public:
   /**
    * Returns when the process has the lock, or knows that somebody else has it.
    * @param type F_RDLCK or F_WRLCK
    * @param work runs under the lock; the process ends with it
    */
   LockingProcess( const std::string& path, short type, const std::function<void()>& work ) {
      int ready[2];
      if ( pipe( ready ) != 0 ) {
         abort();
      }
      child_ = fork();
      if ( child_ == 0 ) {
         char success = lock( path, type );
         if ( write( ready[1], &success, 1 ) == 1 ) {
            work();
         }
         _exit( 0 );
      }
      close( ready[1] );
      char success = 0;
      hasLock = read( ready[0], &success, 1 ) == 1 && success;
      close( ready[0] );
   }

   ~LockingProcess() {
      kill( child_, SIGKILL );
      waitpid( child_, nullptr, 0 );
   }

   LockingProcess( const LockingProcess& ) = delete;
   LockingProcess& operator=( const LockingProcess& ) = delete;

   bool hasLock;

private:
   static bool lock( const std::string& path, short type ) {
      struct flock range {};

      range.l_type = type;
      range.l_whence = SEEK_SET;
      range.l_start = 1'000'000;
      range.l_len = 1;
      return fcntl( open( path.c_str(), O_RDWR ), F_SETLK, &range ) == 0;
   }

   pid_t child_;
};

#endif
