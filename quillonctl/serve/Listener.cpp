#include "Listener.h"

#include "Errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Serve {

namespace {

struct Place {
   std::string host;
   std::string port;
};

bool isPort( const std::string& text ) {
   unsigned port = 0;
   auto end = text.data() + text.size();
   auto [stop, error] = std::from_chars( text.data(), end, port );
   return error == std::errc() && stop == end && port <= 65535;
}

Place placeOf( const std::string& address ) {
   auto colon = address.rfind( ':' );
   auto host = address.substr( 0, colon );
   auto isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
   if ( isBracketed ) {
      host = host.substr( 1, host.size() - 2 );
   }
   auto isHost = !host.empty() && ( isBracketed || host.find( ':' ) == std::string::npos );
   if ( colon == std::string::npos || !isHost || !isPort( address.substr( colon + 1 ) ) ) {
      throw InputError( { fmt::format(
         "--listen must be ADDRESS:PORT, such as 127.0.0.1:9633, or 0.0.0.0:9633 for everybody, not {}",
         address ) } );
   }
   return { host, address.substr( colon + 1 ) };
}

using AddressInfo = std::unique_ptr<addrinfo, decltype( &freeaddrinfo )>;

AddressInfo lookUp( const Place& place, const std::string& address ) {
   addrinfo hints {};
   hints.ai_socktype = SOCK_STREAM;
   hints.ai_flags = AI_NUMERICSERV;
   addrinfo* found = nullptr;
   auto error = getaddrinfo( place.host.c_str(), place.port.c_str(), &hints, &found );
   if ( error ) {
      throw InputError(
         { fmt::format( "--listen {}: {} is no address: {}", address, place.host, gai_strerror( error ) ) } );
   }
   return { found, freeaddrinfo };
}

[[noreturn]] void cannotListen( const std::string& address ) {
   auto advice = errno == EADDRINUSE ? "; another program listens there, quillonctl serve perhaps: end that, "
                                       "or take another port with --listen ADDRESS:PORT"
                 : errno == EACCES   ? "; take a port from 1024 with --listen ADDRESS:PORT"
                 : errno == EADDRNOTAVAIL ? "; --listen takes an address that this machine has"
                                          : "";
   throw std::runtime_error( fmt::format( "cannot listen on {}: {}{}", address, strerror( errno ), advice ) );
}

unsigned portOf( int socket ) {
   sockaddr_storage name {};
   socklen_t size = sizeof( name );
   getsockname( socket, reinterpret_cast<sockaddr*>( &name ), &size );
   // IPv6 has its port in the same place.
   return ntohs( reinterpret_cast<const sockaddr_in*>( &name )->sin_port );
}

} // namespace

Listener::Listener( const std::string& address ) {
   auto place = placeOf( address );
   auto info = lookUp( place, address );
   socket_ = socket( info->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 );
   auto on = 1;
   // The connections of one that has just ended keep nobody from the port.
   setsockopt( socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof( on ) );
   if ( socket_ < 0 || bind( socket_, info->ai_addr, info->ai_addrlen ) < 0 ||
        listen( socket_, SOMAXCONN ) < 0 ) {
      auto error = errno;
      close( socket_ );
      errno = error;
      cannotListen( address );
   }
   address_ = fmt::format( "{}{}", address.substr( 0, address.rfind( ':' ) + 1 ), portOf( socket_ ) );
}

Listener::~Listener() {
   if ( socket_ >= 0 ) {
      close( socket_ );
   }
}

int Listener::release() { return std::exchange( socket_, -1 ); }

} // namespace Serve
