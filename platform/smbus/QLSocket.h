#ifndef QL_SOCKET_H
#define QL_SOCKET_H

#include <chrono>
#include <cstddef>
#include <string_view>
#include <vector>

namespace Smbus {
class TransactionRequest;
class TransactionResponse;
} // namespace Smbus

namespace QuillonLibrary {

class Deadline;

/**
 * The connection of a process to the SMBus server: a Unix-domain stream socket. A frame is a 4-byte
 * big-endian payload length and that many bytes, one serialised message; a payload is at most 1 MiB. One
 * request, one reply, in order.
 *
 * The environment is read anew at each use, so a change takes effect with the next call:
 * - QUILLON_SMBUS_SOCKET: where to connect, /run/quillon/smbus.sock when unset or empty. A connection that
 *   stands stays where it is.
 * - QUILLON_SMBUS_TIMEOUT_MS: how long one call may take, in milliseconds from 1 to 2147483647; 10000
 *   when unset or anything else.
 * - SIMULATION_VMID: when set, there is no server: setup succeeds and requests fail with ENOTCONN.
 *
 * For one thread at a time. No call raises SIGPIPE, a signal that arrives during a call neither fails nor
 * lengthens it, and the descriptor is close-on-exec.
 */
class QLSocket {
public:
   QLSocket();
   ~QLSocket();
   QLSocket( const QLSocket& ) = delete;
   QLSocket& operator=( const QLSocket& ) = delete;

   /**
    * Connects, in place of the connection that there may be. Blocks only while the server has no room for
    * another client.
    *
    * @return 0, or -1 with errno: ENAMETOOLONG for a path of more than 107 bytes; ETIMEDOUT; or the
    *         reason why the server can't be reached, such as ENOENT, ECONNREFUSED or EACCES
    */
   int setup();

   /** Drops the connection, if there is one. A later request connects anew. */
   void cleanup();

   /**
    * Sends a request and blocks for its reply, QUILLON_SMBUS_TIMEOUT_MS at most for connecting, sending and
    * receiving together. When there is no connection, or the server has closed it while nothing was asked, it
    * is made anew, once. After a failure the connection is dropped, so that a late reply can't answer a later
    * request; a request of which a part has gone out is never sent again.
    *
    * @param response on success a new object that the caller owns; left as it is otherwise
    * @return 0, or -1 with errno: ETIMEDOUT; ECONNRESET when the server closes instead of answering;
    *         EMSGSIZE for a request (which is not sent then) or reply over 1 MiB; EBADMSG for a reply that
    *         is no message; ENOTCONN in simulation; or what setup fails with
    */
   int sendRequestWait( Smbus::TransactionRequest* request, Smbus::TransactionResponse** response );

private:
   // Both return 0 or an error number, and leave the connection to the caller when they fail. The reply is
   // the payload, in the buffer.
   int connect( Deadline& deadline );
   int exchange( const Smbus::TransactionRequest& request, std::string_view& reply );
   // Receives what there is, a whole frame at least, to the buffer's start.
   int receiveFrame( size_t& received, Deadline& deadline );
   // Whether the first receive may do its own waiting, which saves a system call, and is over well before the
   // deadline.
   bool mayBlock( Deadline& deadline );

   // Drops the connection and sets errno. Returns -1.
   int fail( int error );

   int fd_ = -1;
   // What the socket has. In steps of a millisecond it is mostly the same again, and costs no system call.
   std::chrono::milliseconds receiveLimit_ {};
   // The frame that goes out, then the one that comes in.
   std::vector<char> buffer_;
};

} // namespace QuillonLibrary

#endif
