#ifndef SESSION_H
#define SESSION_H

#include "Board.h"
#include "Host.h"
#include "Options.h"

#include <functional>
#include <vector>

/** The use of the library by one command: in a supervised process, with the objects that it needs. */
class Session {
public:
   /** In the child process. @return exit status */
   using Work = std::function<int( Host& host, Supervisor::Progress& progress )>;
   /** What is left to do when the library can't be used at all. @return exit status */
   using WithoutLibrary = std::function<int( const HostError& error )>;

   Session( const Options& options, const Board& board, std::vector<const ObjectEntry*> objects )
      : options_( options ), board_( board ), objects_( std::move( objects ) ) {}

   /**
    * Does the work, again after each end of the library that was about an object, which has failed then. On
    * a terminal it is told what is waited for, if that takes long.
    * @return exit status
    */
   int run( const Work& work, const WithoutLibrary& withoutLibrary );

private:
   const Options& options_;
   const Board& board_;
   std::vector<const ObjectEntry*> objects_;
   KnownFailures crashes_;
};

#endif
