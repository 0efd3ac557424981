#ifndef SMBUSD_SERVER_H
#define SMBUSD_SERVER_H

#include "Bus.h"
#include "Connection.h"
#include "EventLoop.h"
#include "Listener.h"
#include "Scheduler.h"

#include "emulator/Board.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Smbusd {

/** The sockets that are served and those who are connected to them. */
class Server {
public:
   explicit Server( EventLoop& loop ) : loop_( loop ) {}

   /** Serves transactions at a socket. Throws std::runtime_error, with words for a person; so does the other.
    */
   void serveBusses( const std::string& path, Backend& backend, Scheduler& scheduler );
   /** Serves the bench of an emulated board at a socket. */
   void serveControl( const std::string& path, Emulator::Board& board );

private:
   void keep( std::shared_ptr<Connection> connection );

   EventLoop& loop_;
   std::vector<std::unique_ptr<Listener>> listeners_;
   std::unordered_map<Connection*, std::shared_ptr<Connection>> connections_;
};

} // namespace Smbusd

#endif
