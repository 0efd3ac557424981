#include "PingPong.h"

#include <csignal>
#include <cstdlib>

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
   : request_( requestBytes ), reply_( replyBytes ) {
   int ends[2];
   if ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ) != 0 ) {
      abort();
   }
   answerer_ = fork();
   if ( answerer_ == 0 ) {
      close( ends[0] );
      while ( receiveAll( ends[1], request_ ) && sendAll( ends[1], reply_ ) ) {
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

bool PingPong::ask() { return sendAll( fd_, request_ ) && receiveAll( fd_, reply_ ); }
