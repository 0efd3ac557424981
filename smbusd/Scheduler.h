#ifndef SMBUSD_SCHEDULER_H
#define SMBUSD_SCHEDULER_H

#include "EventLoop.h"
#include "Transaction.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Smbusd {

/**
 * Runs transactions: one at a time on a bus, in the order in which they came, those of different busses side
 * by side. A transaction holds all its busses from its start to its end.
 */
class Scheduler {
public:
   /** A transaction and who waits for it. From its end on it may be planned and run again. */
   class Job {
   public:
      explicit Job( std::function<void()> ended ) : done( std::move( ended ) ) {}

      Transaction transaction;
      /** Called at the end; may be replaced meanwhile. */
      std::function<void()> done;

   private:
      friend Scheduler;
      using Queue = std::deque<std::shared_ptr<Job>>;

      /** Those that it stands in, and in how many others are ahead of it. */
      std::vector<Queue*> queues_;
      size_t ahead_ = 0;
   };

   explicit Scheduler( EventLoop& loop ) : loop_( loop ) {}

   /** Runs a job whose transaction is planned, to its end before this returns, or later from the loop. */
   void run( std::shared_ptr<Job> job );

   /** Nobody waits for a job any more: one that has not begun is forgotten, another runs to its end. */
   void abandon( const std::shared_ptr<Job>& job );

private:
   void start( Job& job );
   void finish( Job& job );
   /** The queue has lost its first. */
   void moveUp( const Job::Queue& queue );

   EventLoop& loop_;
   /** The first of a queue has the bus. A queue stays where it is. */
   std::unordered_map<Bus*, Job::Queue> queues_;
};

} // namespace Smbusd

#endif
