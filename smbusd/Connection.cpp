#include "Connection.h"

#include "Log.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Smbusd {

namespace {

constexpr short incoming = POLLIN | POLLRDHUP;

/** Who is at the other end, for the log. */
std::string describePeer( int fd ) {
   ucred peer {};
   socklen_t size = sizeof( peer );
   if ( getsockopt( fd, SOL_SOCKET, SO_PEERCRED, &peer, &size ) < 0 ) {
      return "client";
   }
   return fmt::format( "client pid {}", peer.pid );
}

} // namespace

Connection::Connection( EventLoop& loop, Descriptor descriptor )
   : loop_( loop )
   , descriptor_( std::move( descriptor ) )
   , slot_( loop.watchChanges( descriptor_.get(), incoming, *this ) )
   , peer_( describePeer( descriptor_.get() ) ) {
   Log::debug( "{}: connected", peer_ );
}

Connection::~Connection() {
   if ( descriptor_ ) {
      loop_.unwatch( slot_ );
   }
}

void Connection::ready( short events ) {
   if ( events & POLLOUT ) {
      send();
      takeMessages();
   } else if ( events & POLLIN ) {
      receive( events & ( POLLRDHUP | POLLHUP ) );
      takeMessages();
   } else {
      close();
   }
}

void Connection::receive( bool peerEnded ) {
   auto room = input_.room();
   auto count = TEMP_FAILURE_RETRY( recv( descriptor_.get(), room.data(), room.size(), MSG_DONTWAIT ) );
   if ( count == 0 || ( count < 0 && errno != EAGAIN ) ) {
      close();
      return;
   }
   auto received = static_cast<size_t>( std::max<ssize_t>( count, 0 ) );
   input_.add( received );
   // A stream that had less than there was room for has no more but its end. Descriptors end a receive early
   // too, but who passes such to a bus holds up nobody but itself.
   if ( received == room.size() || peerEnded ) {
      loop_.again( slot_ );
   }
}

void Connection::takeMessages() {
   // An answer that comes at once returns here, so that a row of messages needs no stack.
   takingMessages_ = true;
   while ( descriptor_ && !working_ && output.empty() && !input_.bytes().empty() ) {
      working_ = true;
      auto taken = take( input_.bytes() );
      if ( taken == 0 ) {
         working_ = false;
         break;
      }
      input_.remove( taken );
   }
   takingMessages_ = false;
   updateEvents();
}

void Connection::answer() {
   working_ = false;
   send();
   if ( !takingMessages_ ) {
      takeMessages();
   }
}

void Connection::send() {
   while ( sent_ < output.size() ) {
      auto count = ::send(
         descriptor_.get(), output.data() + sent_, output.size() - sent_, MSG_DONTWAIT | MSG_NOSIGNAL );
      if ( count >= 0 ) {
         sent_ += static_cast<size_t>( count );
      } else if ( errno == EAGAIN ) {
         return;
      } else if ( errno != EINTR ) {
         close();
         return;
      }
   }
   sent_ = 0;
   output.clear();
   if ( output.capacity() > InputBuffer::usualSize ) {
      output.shrink_to_fit();
   }
}

void Connection::updateEvents() {
   if ( !descriptor_ ) {
      return;
   }
   auto events = !output.empty() ? POLLOUT : working_ ? 0 : incoming;
   loop_.want( slot_, static_cast<short>( events ) );
}

void Connection::drop( std::string_view why ) {
   Log::warning( "{}: {}; connection dropped", peer_, why );
   close();
}

void Connection::close() {
   if ( !descriptor_ ) {
      return;
   }
   Log::debug( "{}: disconnected", peer_ );
   loop_.unwatch( slot_ );
   descriptor_ = Descriptor();
   ended( *this );
}

} // namespace Smbusd
