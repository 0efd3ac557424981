#include "HttpServer.h"

#include <microhttpd.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Serve {

namespace {

/** Seconds of silence after which a client has no more to say; one without any request has less to lose. */
constexpr unsigned patience = 10;
constexpr unsigned patienceAtFirst = 2;
constexpr unsigned mostConnections = 600;
/** One host alone does not keep the others out. */
constexpr unsigned mostConnectionsOfOne = 300;

constexpr const char* textType = "text/plain; charset=utf-8";

struct Answer {
   unsigned status;
   Page page;
};

void setHeaders( MHD_Response* response, const Answer& answer ) {
   MHD_add_response_header( response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.page.type );
   MHD_add_response_header( response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store" );
   MHD_add_response_header( response, "X-Content-Type-Options", "nosniff" );
   // The page has everything in itself and asks for nothing elsewhere.
   MHD_add_response_header( response, "Content-Security-Policy",
      "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; connect-src 'self'; "
      "img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'" );
   if ( answer.status == MHD_HTTP_METHOD_NOT_ALLOWED ) {
      MHD_add_response_header( response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD" );
   }
}

bool isRead( std::string_view method ) {
   return method == MHD_HTTP_METHOD_GET || method == MHD_HTTP_METHOD_HEAD;
}

Answer answerTo( const HttpServer& server, std::string_view method, std::string_view path ) {
   if ( !isRead( method ) ) {
      return { MHD_HTTP_METHOD_NOT_ALLOWED, { textType, "This server is read-only: GET and HEAD.\n" } };
   }
   if ( auto page = server.pageOf( path ) ) {
      return { MHD_HTTP_OK, *page };
   }
   return { MHD_HTTP_NOT_FOUND, { textType, "There are /, /metrics and /status.json.\n" } };
}

/** Called when the headers are there, with each part of a body, and at the end. */
MHD_Result handle( void* server, MHD_Connection* connection, const char* path, const char* method,
   const char*, const char*, size_t* bodySize, void** progress ) {
   static int begun;
   auto isFirst = !std::exchange( *progress, &begun );
   if ( isFirst ) {
      MHD_set_connection_option( connection, MHD_CONNECTION_OPTION_TIMEOUT, patience );
   }
   // Whoever is answered before the end is not heard any more: that is right for one that wants to write.
   if ( isRead( method ) && ( isFirst || *bodySize > 0 ) ) {
      *bodySize = 0;
      return MHD_YES;
   }
   auto answer = answerTo( *static_cast<const HttpServer*>( server ), method, path );
   auto& body = answer.page.body;
   auto response = MHD_create_response_from_buffer( body.size(), body.data(), MHD_RESPMEM_MUST_COPY );
   if ( !response ) {
      return MHD_NO;
   }
   setHeaders( response, answer );
   auto result = MHD_queue_response( connection, answer.status, response );
   MHD_destroy_response( response );
   return result;
}

} // namespace

HttpServer::HttpServer( Listener& listener, Pages pages ) : pages_( std::move( pages ) ) {
   daemon_.reset(
      MHD_start_daemon( MHD_USE_EPOLL, 0, nullptr, nullptr, handle, this, MHD_OPTION_LISTEN_SOCKET,
         listener.release(), MHD_OPTION_CONNECTION_TIMEOUT, patienceAtFirst, MHD_OPTION_CONNECTION_LIMIT,
         mostConnections, MHD_OPTION_PER_IP_CONNECTION_LIMIT, mostConnectionsOfOne, MHD_OPTION_END ) );
   if ( !daemon_ ) {
      throw std::runtime_error( "cannot start the HTTP server" );
   }
}

int HttpServer::descriptor() const {
   return MHD_get_daemon_info( daemon_.get(), MHD_DAEMON_INFO_EPOLL_FD )->epoll_fd;
}

int HttpServer::timeout() const {
   MHD_UNSIGNED_LONG_LONG milliseconds = 0;
   if ( MHD_get_timeout( daemon_.get(), &milliseconds ) != MHD_YES ) {
      return -1;
   }
   constexpr MHD_UNSIGNED_LONG_LONG most = std::numeric_limits<int>::max();
   return static_cast<int>( std::min( milliseconds, most ) );
}

void HttpServer::run() { MHD_run( daemon_.get() ); }

void HttpServer::Stop::operator()( MHD_Daemon* daemon ) const { MHD_stop_daemon( daemon ); }

} // namespace Serve
