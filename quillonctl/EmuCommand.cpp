#include "EmuCommand.h"

#include "Errors.h"
#include "JsonWriting.h"
#include "Unreachable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/** The board answers at once; a minute means that nobody is there. */
constexpr timeval patience = { .tv_sec = 60, .tv_usec = 0 };

HostError noBoard( const std::string& control, int error ) {
   return { QL_STATUS_IO_ERROR,
      unreachable( "emulated board", control, error,
         "start quillon-smbusd with --emulate and --control, and give the same path here with --control" ) };
}

/** A connection to the control socket. */
class ControlSocket {
public:
   explicit ControlSocket( const std::string& path )
      : path_( path ), fd_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      if ( path.size() >= sizeof( address.sun_path ) ) {
         fail( ENAMETOOLONG );
      }
      memcpy( address.sun_path, path.data(), path.size() );
      setsockopt( fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof( patience ) );
      if ( connect( fd_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ) != 0 ) {
         fail( errno );
      }
   }

   ~ControlSocket() { close( fd_ ); }

   ControlSocket( const ControlSocket& ) = delete;
   ControlSocket& operator=( const ControlSocket& ) = delete;

   std::string ask( const std::string& line ) {
      auto text = line + "\n";
      if ( send( fd_, text.data(), text.size(), MSG_NOSIGNAL ) != static_cast<ssize_t>( text.size() ) ) {
         throw noBoard( path_, errno );
      }
      std::string answer;
      char byte = 0;
      for ( ;; ) {
         auto received = recv( fd_, &byte, 1, 0 );
         if ( received != 1 ) {
            throw noBoard( path_, received == 0 ? ECONNRESET : errno );
         }
         if ( byte == '\n' ) {
            return answer;
         }
         answer += byte;
      }
   }

private:
   /** The destructor of an object that was never made does not run. */
   [[noreturn]] void fail( int error ) {
      close( fd_ );
      throw noBoard( path_, error );
   }

   std::string path_;
   int fd_;
};

struct Answer {
   /** What a good answer says. */
   std::string text;
   std::optional<Failure> failure;
};

std::string asJson( const Answer& answer ) {
   return Json::lineOf( [&]( auto& json ) {
      Json::writeKey( json, "answer" );
      if ( answer.failure ) {
         json.Null();
      } else {
         Json::writeText( json, answer.text );
      }
      Json::writeError( json, answer.failure );
   } );
}

/** What stands behind the first word. */
std::string rest( const std::string& answer ) {
   auto blank = answer.find( ' ' );
   return blank == std::string::npos ? "" : answer.substr( blank + 1 );
}

Answer ask( const std::string& control, const std::string& line ) {
   try {
      auto answer = ControlSocket( control ).ask( line );
      if ( answer == "ok" || answer.starts_with( "ok " ) ) {
         return { rest( answer ), {} };
      }
      return { {}, Failure { QL_STATUS_INVALID_ARGUMENT, rest( answer ) } };
   } catch ( const HostError& error ) {
      return { {}, Failure { error.status, error.what() } };
   }
}

} // namespace

int emuCommand( const std::string& control, const std::vector<std::string>& words, bool json ) {
   auto line = words.empty() ? "help" : fmt::format( "{}", fmt::join( words, " " ) );
   if ( line.find( '\n' ) != std::string::npos ) {
      throw InputError( { "a line for the emulated board has no line end in it" } );
   }
   auto answer = ask( control, line );
   if ( json ) {
      write( asJson( answer ) );
   } else if ( !answer.text.empty() ) {
      write( answer.text + '\n' );
   }
   if ( answer.failure ) {
      complain( answer.failure->message );
   }
   return answer.failure ? exitFailure : exitGood;
}
