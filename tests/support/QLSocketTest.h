#ifndef QL_SOCKET_TEST_H
#define QL_SOCKET_TEST_H

#include "QLSocket.h"

#include "SocketServer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>

/** A socket under test, with a limit that no test reaches unless it sets its own. */
class QLSocketTest : public testing::Test {
protected:
   QLSocketTest() {
      unsetenv( "SIMULATION_VMID" );
      unsetenv( "QUILLON_SMBUS_SOCKET" );
      limit( "5000" );
   }

   void limit( const char* milliseconds ) { setenv( "QUILLON_SMBUS_TIMEOUT_MS", milliseconds, 1 ); }

   std::string setup() {
      errno = 0;
      auto result = socket.setup();
      return verdict( result );
   }

   /** Sends a request; `answer` then holds the reply. @return "OK" or the error's name */
   std::string ask( Smbus::TransactionRequest request ) {
      errno = 0;
      Smbus::TransactionResponse* response = nullptr;
      auto result = socket.sendRequestWait( &request, &response );
      auto text = verdict( result );
      EXPECT_EQ( response != nullptr, result == 0 );
      answer.reset( response );
      return text;
   }

   std::string ask( uint32_t number ) {
      Smbus::TransactionRequest request;
      request.set_retries( number );
      return ask( request );
   }

   QuillonLibrary::QLSocket socket;
   std::unique_ptr<Smbus::TransactionResponse> answer;

private:
   static std::string verdict( int result ) {
      if ( result == 0 ) {
         return "OK";
      }
      auto error = errno;
      EXPECT_EQ( result, -1 );
      auto name = strerrorname_np( error );
      return name ? name : std::to_string( error );
   }
};

inline constexpr size_t maxPayload = 1048576;

/** A request whose serialised form has exactly this many bytes, between 16 KiB and 2 MiB. */
inline Smbus::TransactionRequest requestOfSize( size_t size ) {
   Smbus::TransactionRequest request;
   // Tag and three bytes of length come in front of the text.
   request.set_client( std::string( size - 4, 'q' ) );
   return request;
}

inline std::string replyWith( const std::string& reason ) {
   Smbus::TransactionResponse response;
   response.set_reason( reason );
   return response.SerializeAsString();
}

/** A script that repeats each request's number in its reply. */
inline const auto echoing = SocketServer::answering( []( const Smbus::TransactionRequest& request ) {
   Smbus::TransactionResponse response;
   response.set_reason( std::to_string( request.retries() ) );
   return response;
} );

/** A script that answers one request with these bytes and keeps the connection open. */
inline SocketServer::Script sending( std::string bytes ) {
   return [bytes]( SocketServer::Connection& connection ) {
      connection.receive();
      connection.sendBytes( bytes );
      connection.receive();
   };
}

/** The descriptors of this process that are connected to a server at the path. */
inline std::vector<int> descriptorsTo( const std::string& path ) {
   std::vector<int> found;
   for ( auto& entry : std::filesystem::directory_iterator( "/proc/self/fd" ) ) {
      auto fd = std::stoi( entry.path().filename() );
      sockaddr_un peer {};
      socklen_t size = sizeof( peer );
      if ( getpeername( fd, reinterpret_cast<sockaddr*>( &peer ), &size ) == 0 && path == peer.sun_path ) {
         found.push_back( fd );
      }
   }
   return found;
}

#endif
