#ifndef SMBUSD_TRANSACTION_H
#define SMBUSD_TRANSACTION_H

#include "Bus.h"
#include "EventLoop.h"
#include "Operation.h"

#include <smbus.pb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace Smbusd {

/**
 * The requests of one message and their answers. Nothing goes to a bus before all requests have been found
 * good. They run in order; one that fails is tried again, and when that doesn't help the transaction has
 * failed and holds the reason and no answers. It can be used again and keeps its memory for that.
 */
class Transaction {
public:
   /** Starts anew with a message. @return false when the bytes aren't one */
   bool parse( std::span<const uint8_t> message );

   /** Finds the busses and operations of the requests. @return false when the transaction has failed by that
    */
   bool plan( Backend& backend );

   /** The busses of the planned operations, each once. */
   const std::vector<Bus*>& busses() const { return busses_; }

   /** Runs what was planned, and calls `done` at its end: before this returns, or later from the event loop.
    */
   void run( EventLoop& loop, std::function<void()> done );

   const Smbus::TransactionResponse& response() const { return response_; }

private:
   struct Step {
      Bus* bus;
      Operation operation;
   };

   void addStep( const Smbus::Request& request, Backend& backend );
   void proceed( EventLoop::Clock::time_point begin );
   void settle( const Outcome& outcome );
   void fail( size_t step, std::string_view why );

   Smbus::TransactionRequest request_;
   Smbus::TransactionResponse response_;
   std::vector<Step> steps_;
   std::vector<Bus*> busses_;
   /** The memory of one operation's result, for the next. */
   std::vector<uint8_t> spare_;

   EventLoop* loop_ = nullptr;
   std::function<void()> done_;
   size_t current_ = 0;
   unsigned failures_ = 0;
};

} // namespace Smbusd

#endif
