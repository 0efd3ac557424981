#include "SocketServer.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail( const char* action ) {
   throw std::system_error( errno, std::generic_category(), action );
}

int listenAt( const std::string& path ) {
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   if ( path.size() >= sizeof( address.sun_path ) ) {
      throw std::length_error( path );
   }
   path.copy( address.sun_path, path.size() );
   auto fd = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   if ( fd < 0 ) {
      fail( "socket" );
   }
   if ( bind( fd, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ) < 0 ) {
      fail( "bind" );
   }
   if ( listen( fd, SOMAXCONN ) < 0 ) {
      fail( "listen" );
   }
   return fd;
}

} // namespace

std::optional<std::string> SocketServer::Connection::receive() {
   uint32_t length;
   auto header = receiveBytes( sizeof( length ) );
   if ( header.copy( reinterpret_cast<char*>( &length ), sizeof( length ) ) < sizeof( length ) ) {
      return std::nullopt;
   }
   length = ntohl( length );
   auto payload = receiveBytes( length );
   if ( payload.size() < length ) {
      return std::nullopt;
   }
   Smbus::TransactionRequest request;
   if ( request.ParseFromString( payload ) ) {
      std::lock_guard lock( server_.mutex_ );
      server_.requests_.push_back( request );
   }
   return payload;
}

std::string SocketServer::Connection::receiveBytes( size_t count ) {
   // A recv of nothing would wait for something.
   if ( count == 0 ) {
      return {};
   }
   std::string bytes( count, '\0' );
   auto received = recv( fd_, bytes.data(), count, MSG_WAITALL );
   bytes.resize( static_cast<size_t>( std::max<ssize_t>( received, 0 ) ) );
   return bytes;
}

void SocketServer::Connection::send( const std::string& payload ) { sendBytes( frame( payload ) ); }

void SocketServer::Connection::sendBytes( std::string_view bytes ) {
   // A blocking send on a stream takes everything or finds the client gone.
   [[maybe_unused]] auto sent = ::send( fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL );
}

void SocketServer::Connection::stopReceiving() { shutdown( fd_, SHUT_RD ); }

bool SocketServer::Connection::waitForClose( std::chrono::milliseconds time ) {
   pollfd entry { fd_, POLLRDHUP, 0 };
   return poll( &entry, 1, static_cast<int>( time.count() ) ) > 0;
}

SocketServer::Script SocketServer::answering( Answer answer ) {
   return [answer]( Connection& connection ) {
      while ( auto payload = connection.receive() ) {
         Smbus::TransactionRequest request;
         if ( !request.ParseFromString( *payload ) ) {
            return;
         }
         connection.send( answer( request ).SerializeAsString() );
      }
   };
}

std::string SocketServer::frame( const std::string& payload ) {
   auto length = htonl( static_cast<uint32_t>( payload.size() ) );
   return std::string( reinterpret_cast<const char*>( &length ), sizeof( length ) ) + payload;
}

SocketServer::SocketServer( Script script ) : SocketServer( std::vector<Script> { std::move( script ) } ) {}

SocketServer::SocketServer( std::vector<Script> scripts )
   : scripts_( std::move( scripts ) ), path_( directory_.path() / "smbus.sock" ) {
   start();
   setenv( "QUILLON_SMBUS_SOCKET", path_.c_str(), 1 );
}

SocketServer::~SocketServer() {
   stop();
   unsetenv( "QUILLON_SMBUS_SOCKET" );
}

void SocketServer::stop() {
   if ( !thread_.joinable() ) {
      return;
   }
   {
      std::lock_guard lock( mutex_ );
      stopping_ = true;
      shutdown( listener_, SHUT_RDWR );
      if ( client_ >= 0 ) {
         shutdown( client_, SHUT_RDWR );
      }
   }
   thread_.join();
   close( listener_ );
   std::filesystem::remove( path_ );
}

void SocketServer::start() {
   stop();
   stopping_ = false;
   listener_ = listenAt( path_ );
   // The thread inherits the mask, so that a test's signals interrupt the test and never the server.
   sigset_t all;
   sigset_t before;
   sigfillset( &all );
   pthread_sigmask( SIG_SETMASK, &all, &before );
   thread_ = std::thread( [this] { serve(); } );
   pthread_sigmask( SIG_SETMASK, &before, nullptr );
}

size_t SocketServer::connections() const {
   std::lock_guard lock( mutex_ );
   return connections_;
}

std::vector<Smbus::TransactionRequest> SocketServer::requests() const {
   std::lock_guard lock( mutex_ );
   return requests_;
}

void SocketServer::serve() {
   for ( ;; ) {
      auto fd = accept4( listener_, nullptr, nullptr, SOCK_CLOEXEC );
      if ( fd < 0 || !take( fd ) ) {
         return;
      }
      Connection connection( *this, fd );
      scripts_[std::min( connections(), scripts_.size() ) - 1]( connection );
      release();
   }
}

bool SocketServer::take( int fd ) {
   std::lock_guard lock( mutex_ );
   if ( stopping_ ) {
      close( fd );
      return false;
   }
   client_ = fd;
   ++connections_;
   return true;
}

void SocketServer::release() {
   std::lock_guard lock( mutex_ );
   close( client_ );
   client_ = -1;
}
