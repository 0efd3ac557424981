#include "Programs.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

void become( Words words ) {
   std::vector<char*> arguments;
   std::transform(
      words.begin(), words.end(), std::back_inserter( arguments ), []( auto& word ) { return word.data(); } );
   arguments.push_back( nullptr );
   execvp( arguments.front(), arguments.data() );
   _exit( 127 );
}

double processorTimeOf( pid_t process ) {
   clockid_t clock {};
   timespec time {};
   if ( clock_getcpuclockid( process, &clock ) != 0 || clock_gettime( clock, &time ) != 0 ) {
      abort();
   }
   return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1e-9;
}

Server::Server( const std::string& board ) {
   auto socket = folder_.path() + "/smbus.sock";
   setenv( "QUILLON_SMBUS_SOCKET", socket.c_str(), 1 );
   process_ = fork();
   if ( process_ == 0 ) {
      become( { SMBUSD, "--emulate", board, "--log-level", "error" } );
   }
   for ( int i = 0; i < 2000 && !std::filesystem::exists( socket ); ++i ) {
      usleep( 1000 );
   }
}

Server::~Server() {
   kill( process_, SIGTERM );
   waitpid( process_, nullptr, 0 );
}
