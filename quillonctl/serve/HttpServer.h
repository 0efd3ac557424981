#ifndef SERVE_HTTP_SERVER_H
#define SERVE_HTTP_SERVER_H

#include "Listener.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct MHD_Daemon;

namespace Serve {

struct Page {
   const char* type;
   std::string body;
};

/** Answers GET and HEAD, in the thread that runs it, and never waits for a client. */
class HttpServer {
public:
   /** @return the page of a path, or nothing where there is none */
   using Pages = std::function<std::optional<Page>( std::string_view path )>;

   /** @throw std::runtime_error */
   HttpServer( Listener& listener, Pages pages );

   /** Readable when there is something to do. */
   int descriptor() const;

   /** Milliseconds after which there is something to do anyway, -1 for none. */
   int timeout() const;

   /** Does what there is to do. */
   void run();

   /** The page of a path, if there is one. */
   std::optional<Page> pageOf( std::string_view path ) const { return pages_( path ); }

private:
   struct Stop {
      void operator()( MHD_Daemon* daemon ) const;
   };

   Pages pages_;
   std::unique_ptr<MHD_Daemon, Stop> daemon_;
};

} // namespace Serve

#endif
