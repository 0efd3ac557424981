#ifndef SMBUSD_CONNECTION_H
#define SMBUSD_CONNECTION_H

#include "Descriptor.h"
#include "EventLoop.h"
#include "InputBuffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Smbusd {

/**
 * A stream connection that carries one message and one answer at a time. While a message is worked on and
 * until its answer has gone out nothing more is read, so a peer that doesn't read its answers holds up nobody
 * but itself.
 */
class Connection : EventLoop::Watcher {
public:
   Connection( EventLoop& loop, Descriptor descriptor );
   virtual ~Connection();
   Connection( const Connection& ) = delete;
   Connection& operator=( const Connection& ) = delete;

   /** Called once, when the connection has ended by itself. The object must live on until the call returns.
    */
   std::function<void( Connection& )> ended;

protected:
   /**
    * Looks at what has arrived. It takes one message, which `answer` then answers, at once or later; or none,
    * when the message isn't complete; or it drops the connection.
    *
    * @return how many bytes belong to the message, 0 for none
    */
   virtual size_t take( std::span<const uint8_t> bytes ) = 0;

   /** Sends what is in `output`. */
   void answer();

   /** Ends the connection for something its peer has done. */
   void drop( std::string_view why );

   std::vector<uint8_t> output;

private:
   void ready( short events ) override;
   void receive( bool peerEnded );
   void takeMessages();
   void send();
   void updateEvents();
   void close();

   EventLoop& loop_;
   Descriptor descriptor_;
   EventLoop::Slot slot_;
   InputBuffer input_;
   size_t sent_ = 0;
   /** A message has been taken and not been answered. */
   bool working_ = false;
   bool takingMessages_ = false;
   const std::string peer_;
};

} // namespace Smbusd

#endif
