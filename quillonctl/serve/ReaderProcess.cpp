#include "ReaderProcess.h"

#include "Errors.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Serve {

namespace {

/** No message comes near it. */
constexpr size_t longestMessage = 1 << 18;

[[noreturn]] void failed( const char* what ) {
   throw std::system_error( errno, std::generic_category(), what );
}

} // namespace

void Sender::send( const Message& message ) const {
   auto bytes = encode( message );
   if ( ::send( socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL ) < 0 ) {
      failed( "send" );
   }
}

ReaderProcess::ReaderProcess( const Work& work ) : buffer_( longestMessage ) {
   int ends[2];
   if ( socketpair( AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends ) < 0 ) {
      failed( "socketpair" );
   }
   auto parent = getpid();
   pid_ = fork();
   if ( pid_ < 0 ) {
      failed( "fork" );
   }
   if ( pid_ == 0 ) {
      prctl( PR_SET_PDEATHSIG, SIGTERM );
      if ( getppid() != parent ) {
         _exit( exitFailure );
      }
      run( work, ends[1] );
   }
   close( ends[1] );
   socket_ = ends[0];
   // Here too, so that the group is there when it is to be ended.
   setpgid( pid_, pid_ );
}

ReaderProcess::~ReaderProcess() {
   if ( pid_ > 0 ) {
      kill( -pid_, SIGTERM );
      kill( -pid_, SIGCONT ); // one that was stopped would not see its end
      waitpid( pid_, nullptr, 0 );
   }
   close( socket_ );
}

std::optional<Message> ReaderProcess::receive() {
   auto size = recv( socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT );
   if ( size <= 0 ) {
      return {};
   }
   return decode( std::string( buffer_.data(), static_cast<size_t>( size ) ) );
}

std::optional<int> ReaderProcess::ended() {
   auto status = 0;
   if ( pid_ <= 0 || waitpid( pid_, &status, WNOHANG ) != pid_ ) {
      return {};
   }
   // Nobody of its group is left behind.
   kill( -pid_, SIGTERM );
   pid_ = 0;
   return WIFEXITED( status ) ? WEXITSTATUS( status ) : -1;
}

void ReaderProcess::run( const Work& work, int socket ) {
   setpgid( 0, 0 );
   // Connections of clients would else stay open for as long as this process lives.
   constexpr int own = STDERR_FILENO + 1;
   dup2( socket, own );
   close_range( own + 1, ~0U, 0 );
   sigset_t none;
   sigemptyset( &none );
   sigprocmask( SIG_SETMASK, &none, nullptr );
   auto status = static_cast<int>( exitFailure );
   try {
      status = work( Sender( own ) );
   } catch ( const std::exception& error ) {
      complain( error.what() );
   }
   exit( status );
}

} // namespace Serve
