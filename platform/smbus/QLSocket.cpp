#include "QLSocket.h"

#include "Deadline.h"
#include "smbus.pb.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace QuillonLibrary {

// The functions below return 0 or an error number.
namespace {

constexpr size_t headSize = 4;
constexpr size_t maxPayload = 1U << 20;
/** Room for all but rare messages. */
constexpr size_t usualBuffer = 4096;

std::string serverPath() {
   auto path = getenv( "QUILLON_SMBUS_SOCKET" );
   return path && *path ? path : "/run/quillon/smbus.sock";
}

std::chrono::milliseconds timeLimit() {
   constexpr std::chrono::milliseconds byDefault( 10000 );
   auto text = getenv( "QUILLON_SMBUS_TIMEOUT_MS" );
   if ( !text ) {
      return byDefault;
   }
   int limit = 0;
   auto end = text + strlen( text );
   auto [stop, error] = std::from_chars( text, end, limit );
   auto valid = error == std::errc() && stop == end && limit > 0;
   return valid ? std::chrono::milliseconds( limit ) : byDefault;
}

bool inSimulation() { return getenv( "SIMULATION_VMID" ); }

/** Whether a connection can carry a request: still there, and without bytes that nobody asked for. */
bool isIdle( int fd ) {
   char byte;
   return recv( fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT ) < 0 && errno == EAGAIN;
}

int waitUntilReady( int fd, short events, Deadline& deadline ) {
   for ( ;; ) {
      auto left = deadline.left<std::chrono::milliseconds>();
      pollfd entry { fd, events, 0 };
      auto ready = poll( &entry, 1, static_cast<int>( left.count() ) );
      if ( ready > 0 ) {
         return 0;
      }
      if ( ready == 0 ) {
         return ETIMEDOUT;
      }
      if ( errno != EINTR ) {
         return errno;
      }
   }
}

int sendAll( int fd, std::string_view bytes, Deadline& deadline ) {
   while ( !bytes.empty() ) {
      auto sent = send( fd, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL );
      if ( sent > 0 ) {
         bytes.remove_prefix( static_cast<size_t>( sent ) );
      } else if ( errno == EAGAIN ) {
         if ( auto error = waitUntilReady( fd, POLLOUT, deadline ) ) {
            return error;
         }
      } else if ( errno != EINTR ) {
         return errno == EPIPE ? ECONNRESET : errno;
      }
   }
   return 0;
}

/** Makes the buffer's start the frame of a message whose size has just been counted. */
std::string_view fillFrame( std::vector<char>& buffer, const Smbus::TransactionRequest& message ) {
   auto size = static_cast<size_t>( message.GetCachedSize() );
   buffer.resize( std::max( buffer.size(), headSize + size ) );
   auto length = htonl( static_cast<uint32_t>( size ) );
   memcpy( buffer.data(), &length, headSize );
   message.SerializeWithCachedSizesToArray( reinterpret_cast<uint8_t*>( buffer.data() + headSize ) );
   return { buffer.data(), headSize + size };
}

/** The size of the frame that the buffer starts with; no more than a head while that isn't complete. */
size_t frameSize( const std::vector<char>& buffer, size_t received ) {
   if ( received < headSize ) {
      return headSize;
   }
   uint32_t length;
   memcpy( &length, buffer.data(), headSize );
   return headSize + ntohl( length );
}

/** How long a socket may block in a connect or send (SO_SNDTIMEO) or a receive (SO_RCVTIMEO). */
int setLimit( int fd, int option, std::chrono::microseconds limit ) {
   timeval value { limit.count() / std::micro::den, limit.count() % std::micro::den };
   return setsockopt( fd, SOL_SOCKET, option, &value, sizeof( value ) ) == 0 ? 0 : errno;
}

} // namespace

QLSocket::QLSocket() : buffer_( usualBuffer ) {}

QLSocket::~QLSocket() { cleanup(); }

int QLSocket::setup() {
   cleanup();
   if ( inSimulation() ) {
      return 0;
   }
   Deadline deadline( timeLimit() );
   auto error = connect( deadline );
   return error ? fail( error ) : 0;
}

void QLSocket::cleanup() {
   if ( fd_ >= 0 ) {
      close( fd_ );
      fd_ = -1;
   }
}

int QLSocket::sendRequestWait( Smbus::TransactionRequest* request, Smbus::TransactionResponse** response ) {
   std::string_view payload;
   if ( auto error = exchange( *request, payload ) ) {
      return fail( error );
   }
   auto reply = std::make_unique<Smbus::TransactionResponse>();
   if ( !reply->ParseFromArray( payload.data(), static_cast<int>( payload.size() ) ) ) {
      return fail( EBADMSG );
   }
   *response = reply.release();
   return 0;
}

int QLSocket::connect( Deadline& deadline ) {
   cleanup();
   auto path = serverPath();
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   if ( path.size() >= sizeof( address.sun_path ) ) {
      return ENAMETOOLONG;
   }
   path.copy( address.sun_path, path.size() );

   fd_ = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   receiveLimit_ = {};
   if ( fd_ < 0 ) {
      return errno;
   }
   // A non-blocking connect has nothing to poll for while the server's queue of clients is full; a blocking
   // one with a send timeout is woken as soon as there is room, and tells EAGAIN when the time is over.
   do {
      auto left = deadline.left<std::chrono::microseconds>();
      if ( left == left.zero() ) {
         return ETIMEDOUT;
      }
      if ( auto error = setLimit( fd_, SO_SNDTIMEO, left ) ) {
         return error;
      }
      if ( ::connect( fd_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ) == 0 ) {
         return 0;
      }
   } while ( errno == EINTR );
   return errno == EAGAIN ? ETIMEDOUT : errno;
}

int QLSocket::exchange( const Smbus::TransactionRequest& request, std::string_view& reply ) {
   if ( inSimulation() ) {
      return ENOTCONN;
   }
   if ( request.ByteSizeLong() > maxPayload ) {
      return EMSGSIZE;
   }
   Deadline deadline( timeLimit() );
   if ( fd_ < 0 || !isIdle( fd_ ) ) {
      if ( auto error = connect( deadline ) ) {
         return error;
      }
   }
   if ( auto error = sendAll( fd_, fillFrame( buffer_, request ), deadline ) ) {
      return error;
   }
   size_t received = 0;
   if ( auto error = receiveFrame( received, deadline ) ) {
      return error;
   }
   auto size = frameSize( buffer_, received );
   if ( received > size ) {
      // Nobody asked for what came behind it.
      cleanup();
   }
   reply = { buffer_.data() + headSize, size - headSize };
   return 0;
}

int QLSocket::receiveFrame( size_t& received, Deadline& deadline ) {
   received = 0;
   auto flags = mayBlock( deadline ) ? 0 : MSG_DONTWAIT;
   for ( auto size = headSize; received < size; flags = MSG_DONTWAIT ) {
      auto error = flags == 0 ? 0 : waitUntilReady( fd_, POLLIN, deadline );
      if ( error ) {
         return error;
      }
      auto count = recv( fd_, buffer_.data() + received, buffer_.size() - received, flags );
      if ( count == 0 ) {
         return ECONNRESET;
      }
      if ( count < 0 && errno != EINTR && errno != EAGAIN ) {
         return errno;
      }
      received += static_cast<size_t>( std::max<ssize_t>( count, 0 ) );
      size = frameSize( buffer_, received );
      if ( size > headSize + maxPayload ) {
         return EMSGSIZE;
      }
      buffer_.resize( std::max( buffer_.size(), size ) );
   }
   return 0;
}

bool QLSocket::mayBlock( Deadline& deadline ) {
   using std::chrono::milliseconds;
   // The kernel keeps to a socket's limit by its coarse timers, which are late by a tick and up to an eighth.
   constexpr milliseconds least( 20 );
   auto limit = deadline.left<milliseconds>() / 2;
   if ( limit < least ) {
      return false;
   }
   if ( limit != receiveLimit_ && setLimit( fd_, SO_RCVTIMEO, limit ) == 0 ) {
      receiveLimit_ = limit;
   }
   return limit == receiveLimit_;
}

int QLSocket::fail( int error ) {
   cleanup();
   errno = error;
   return -1;
}

} // namespace QuillonLibrary
