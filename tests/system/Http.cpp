#include "Http.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

HttpConnection::HttpConnection( int port ) : socket_( socket( AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_in address {};
   address.sin_family = AF_INET;
   address.sin_port = htons( static_cast<uint16_t>( port ) );
   address.sin_addr.s_addr = htonl( INADDR_LOOPBACK );
   EXPECT_EQ( connect( socket_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
}

HttpConnection::~HttpConnection() { close( socket_ ); }

void HttpConnection::send( const std::string& text ) const {
   EXPECT_EQ(
      ::send( socket_, text.data(), text.size(), MSG_NOSIGNAL ), static_cast<ssize_t>( text.size() ) );
}

std::string HttpConnection::receive() const {
   std::string text;
   char block[4096];
   ssize_t count = 0;
   while ( ( count = recv( socket_, block, sizeof( block ), 0 ) ) > 0 ) {
      text.append( block, static_cast<size_t>( count ) );
   }
   return text;
}

HttpAnswer ask( int port, const std::string& method, const std::string& path, const std::string& body ) {
   HttpConnection connection( port );
   connection.send(
      fmt::format( "{} {} HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Length: {}\r\n\r\n{}",
         method, path, body.size(), body ) );
   auto text = connection.receive();
   auto end = text.find( "\r\n\r\n" );
   if ( end == std::string::npos ) {
      ADD_FAILURE() << "no answer: " << text;
      return {};
   }
   return { std::atoi( text.c_str() + sizeof( "HTTP/1.1" ) ), text.substr( 0, end ), text.substr( end + 4 ) };
}
