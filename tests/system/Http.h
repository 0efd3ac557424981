#ifndef HTTP_H
#define HTTP_H

#include <string>
#include <vector>

/** A connection to an HTTP server on this machine. */
class HttpConnection {
public:
   explicit HttpConnection( int port );
   ~HttpConnection();
   HttpConnection( const HttpConnection& ) = delete;
   HttpConnection& operator=( const HttpConnection& ) = delete;

   void send( const std::string& text ) const;

   /** All that comes until the server closes. */
   std::string receive() const;

private:
   int socket_;
};

struct HttpAnswer {
   int status = 0;
   /** With the status line. */
   std::string headers;
   std::string body;
};

/** Asks once, on a connection of its own. */
HttpAnswer ask( int port, const std::string& method, const std::string& path, const std::string& body = "" );

#endif
