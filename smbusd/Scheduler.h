#ifndef SMBUSD_SCHEDULER_H
#define SMBUSD_SCHEDULER_H

#include "EventLoop.h"
#include "Transaction.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>

namespace Smbusd {

/**
 * Runs transactions: one at a time on a bus, in the order in which they came, those of different busses side
 * by side. A transaction holds all its busses from its start to its end.
 */
class Scheduler {
public:
   explicit Scheduler( EventLoop& loop ) : loop_( loop ) {}

   /** Runs a planned transaction, and calls `done` at its end: before this returns, or later from the loop.
    */
   void run( std::shared_ptr<Transaction> transaction, std::function<void()> done );

private:
   struct Entry {
      std::shared_ptr<Transaction> transaction;
      std::function<void()> done;
      /** In how many queues others stand ahead of it. */
      size_t ahead = 0;
   };

   void start( Entry& entry );
   void finish( Entry& entry );

   EventLoop& loop_;
   /** The first of a queue has the bus. */
   std::unordered_map<Bus*, std::deque<std::shared_ptr<Entry>>> queues_;
};

} // namespace Smbusd

#endif
