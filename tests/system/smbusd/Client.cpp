#include "Client.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

std::string frame( const google::protobuf::MessageLite& message ) {
   auto payload = message.SerializeAsString();
   std::string bytes;
   for ( int shift = 24; shift >= 0; shift -= 8 ) {
      bytes += static_cast<char>( payload.size() >> shift );
   }
   return bytes + payload;
}

namespace {

Smbus::TransactionRequest single(
   Smbus::RequestType type, uint8_t bus, uint8_t chip, uint8_t reg, size_t size ) {
   Smbus::TransactionRequest message;
   auto request = message.add_request();
   request->set_type( type );
   request->set_address( uint64_t { 1 } << 57 | uint64_t { bus } << 39 | uint64_t { chip } << 32 | reg );
   request->set_size( static_cast<uint32_t>( size ) );
   request->set_mastertype( Smbus::I2C );
   return message;
}

} // namespace

Smbus::TransactionRequest reading( uint8_t bus, uint8_t chip, uint8_t reg, uint32_t size ) {
   return single( Smbus::READ, bus, chip, reg, size );
}

Smbus::TransactionRequest writing( uint8_t bus, uint8_t chip, uint8_t reg, const std::string& data ) {
   auto message = single( Smbus::WRITE, bus, chip, reg, data.size() );
   message.mutable_request( 0 )->set_data( data );
   return message;
}

Client::Client( const std::string& path ) : fd_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
   EXPECT_EQ( connect( fd_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 )
      << path << ": " << strerror( errno );
}

Client::~Client() {
   if ( fd_ >= 0 ) {
      close( fd_ );
   }
}

Client::Client( Client&& other ) noexcept : fd_( std::exchange( other.fd_, -1 ) ) {}

Client& Client::operator=( Client&& other ) noexcept {
   std::swap( fd_, other.fd_ );
   return *this;
}

void Client::send( std::string_view bytes ) const {
   while ( !bytes.empty() ) {
      auto count = ::send( fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL );
      if ( count < 0 ) {
         return; // the server has ended the connection, which the next look at it tells
      }
      bytes.remove_prefix( static_cast<size_t>( count ) );
   }
}

bool Client::waitForInput( std::chrono::steady_clock::time_point deadline ) const {
   auto left = std::chrono::ceil<std::chrono::milliseconds>( deadline - std::chrono::steady_clock::now() );
   pollfd file { fd_, POLLIN, 0 };
   return poll( &file, 1, static_cast<int>( std::max<int64_t>( left.count(), 0 ) ) ) > 0;
}

std::string Client::receive( size_t size, std::chrono::milliseconds time ) const {
   auto deadline = std::chrono::steady_clock::now() + time;
   std::string bytes( size, '\0' );
   size_t received = 0;
   while ( received < size && waitForInput( deadline ) ) {
      auto count = recv( fd_, bytes.data() + received, size - received, 0 );
      if ( count <= 0 ) {
         break;
      }
      received += static_cast<size_t>( count );
   }
   bytes.resize( received );
   return bytes;
}

bool Client::isDropped() const {
   char byte;
   return waitForInput( std::chrono::steady_clock::now() + patience ) && recv( fd_, &byte, 1, 0 ) <= 0;
}

bool Client::hasAnswer( std::chrono::milliseconds time ) const {
   return waitForInput( std::chrono::steady_clock::now() + time );
}

Smbus::TransactionResponse Client::ask( const Smbus::TransactionRequest& message ) const {
   send( frame( message ) );
   return answer();
}

Smbus::TransactionResponse Client::answer() const {
   Smbus::TransactionResponse response;
   auto header = receive( 4 );
   if ( header.size() < 4 ) {
      ADD_FAILURE() << "no answer";
      return response;
   }
   size_t size = 0;
   for ( auto byte : header ) {
      size = size << 8 | static_cast<uint8_t>( byte );
   }
   auto payload = receive( size );
   EXPECT_EQ( payload.size(), size );
   EXPECT_TRUE( response.ParseFromString( payload ) );
   return response;
}

std::string Client::askLine( const std::string& line ) const {
   send( line + "\n" );
   std::string answer;
   while ( !answer.ends_with( '\n' ) ) {
      auto byte = receive( 1 );
      if ( byte.empty() ) {
         ADD_FAILURE() << "no answer to " << line;
         return answer;
      }
      answer += byte;
   }
   answer.pop_back();
   return answer;
}

pid_t Client::server() const {
   ucred peer {};
   socklen_t size = sizeof( peer );
   EXPECT_EQ( getsockopt( fd_, SOL_SOCKET, SO_PEERCRED, &peer, &size ), 0 );
   return peer.pid;
}
