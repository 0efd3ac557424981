#include "PingPong.h"

#include <csignal>
#include <cstdlib>
#include <vector>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool receiveAll( int fd, std::vector<char>& bytes ) {
   return recv( fd, bytes.data(), bytes.size(), MSG_WAITALL ) == static_cast<ssize_t>( bytes.size() );
}

bool sendAll( int fd, const std::vector<char>& bytes ) {
   return send( fd, bytes.data(), bytes.size(), MSG_NOSIGNAL ) == static_cast<ssize_t>( bytes.size() );
}

} // namespace

PingPong::PingPong( size_t requestBytes, size_t replyBytes )
   : requestBytes_( requestBytes ), replyBytes_( replyBytes ) {
   int ends[2];
   if ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ) != 0 ) {
      abort();
   }
   answerer_ = fork();
   if ( answerer_ == 0 ) {
      close( ends[0] );
      std::vector<char> request( requestBytes_ );
      std::vector<char> reply( replyBytes_ );
      while ( receiveAll( ends[1], request ) && sendAll( ends[1], reply ) ) {
      }
      _exit( 0 );
   }
   close( ends[1] );
   fd_ = ends[0];
}

PingPong::~PingPong() {
   close( fd_ );
   waitpid( answerer_, nullptr, 0 );
}

bool PingPong::ask() {
   std::vector<char> request( requestBytes_ );
   std::vector<char> reply( replyBytes_ );
   return sendAll( fd_, request ) && receiveAll( fd_, reply );
}
