#ifndef SOCKET_SERVER_H
#define SOCKET_SERVER_H

#include "TemporaryDirectory.h"

#include "smbus.pb.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/**
 * A server at the SMBus socket for tests, on a thread of its own with all signals blocked. While it exists,
 * QUILLON_SMBUS_SOCKET leads to it. It serves one client after the other: a script runs for each connection,
 * and the connection closes when its script returns.
 *
 *    SocketServer server( SocketServer::answering( []( const Smbus::TransactionRequest& request ) {
 *       Smbus::TransactionResponse response;
 *       ...
 *       return response;
 *    } ) );
 */
class SocketServer {
public:
   /** A client, as a script sees it. Whatever is sent to a client that has gone is lost without a trace. */
   class Connection {
   public:
      /** @return the payload of the next frame; nothing when the client closes before the frame's end */
      std::optional<std::string> receive();
      /** @return the next bytes as they come; fewer when the client closes before */
      std::string receiveBytes( size_t count );
      /** Sends one frame. */
      void send( const std::string& payload );
      /** Sends bytes as they are, frame or not. */
      void sendBytes( std::string_view bytes );
      /** Takes nothing more from the client, and can still send. */
      void stopReceiving();
      /** @return whether the client closes before the time is over */
      bool waitForClose( std::chrono::milliseconds time );

   private:
      friend SocketServer;

      Connection( SocketServer& server, int fd ) : server_( server ), fd_( fd ) {}

      SocketServer& server_;
      int fd_;
   };

   using Script = std::function<void( Connection& )>;
   using Answer = std::function<Smbus::TransactionResponse( const Smbus::TransactionRequest& )>;

   /** A script that answers every request until the client closes. A request that is no message ends it. */
   static Script answering( Answer answer );
   /** A payload with its length in front. */
   static std::string frame( const std::string& payload );

   /** Runs the same script for every connection. */
   explicit SocketServer( Script script );
   /** Runs the first script for the first connection and so on, and the last for all further ones too. */
   explicit SocketServer( std::vector<Script> scripts );
   ~SocketServer();
   SocketServer( const SocketServer& ) = delete;
   SocketServer& operator=( const SocketServer& ) = delete;

   /** Closes everything and removes the socket file. A script that runs sees its client close. */
   void stop();
   /** Listens again, at the same path. Connections count on. */
   void start();

   const std::string& path() const { return path_; }

   /** How many clients have been taken so far. */
   size_t connections() const;
   /** Every request that has come so far, from all clients; a frame that is no message is left out. */
   std::vector<Smbus::TransactionRequest> requests() const;

private:
   void serve();
   bool take( int fd );
   void release();

   std::vector<Script> scripts_;
   TemporaryDirectory directory_;
   std::string path_;
   int listener_ = -1;
   std::thread thread_;

   mutable std::mutex mutex_;
   // Guarded by mutex_.
   bool stopping_ = false;
   int client_ = -1;
   size_t connections_ = 0;
   std::vector<Smbus::TransactionRequest> requests_;
};

#endif
