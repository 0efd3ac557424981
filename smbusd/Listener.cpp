#include "Listener.h"

#include "Log.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace Smbusd {

Listener::Listener( EventLoop& loop, const std::string& path, std::function<void( Descriptor )> accepted )
   : loop_( loop )
   , path_( path )
   , socket_( path )
   , slot_( loop.watch( socket_.descriptor(), POLLIN, *this ) )
   , accepted_( std::move( accepted ) ) {}

Listener::~Listener() { loop_.unwatch( slot_ ); }

void Listener::ready( short ) {
   Descriptor descriptor( accept4( socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK ) );
   if ( descriptor ) {
      accept( std::move( descriptor ) );
   } else if ( errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM ) {
      pauseAccepting( errno );
   }
}

void Listener::accept( Descriptor descriptor ) {
   try {
      accepted_( std::move( descriptor ) );
   } catch ( const std::system_error& error ) {
      Log::warning( "{}: {}; a client is turned away", path_, error.what() );
   }
}

void Listener::pauseAccepting( int error ) {
   // The connection stays in the queue, so that poll would return at once, again and again.
   Log::warning( "{}: {}; new clients have to wait", path_, strerror( error ) );
   loop_.want( slot_, 0 );
   loop_.after( pause, [this] { loop_.want( slot_, POLLIN ); } );
}

} // namespace Smbusd
