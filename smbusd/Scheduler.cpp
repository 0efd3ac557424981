#include "Scheduler.h"

#include <utility>

namespace Smbusd {

// The copy keeps a job that stands in no queue: its end may be where its owner lets it go.
void Scheduler::run( std::shared_ptr<Job> job ) {
   // It enters all its queues at once, so that no two transactions can wait for each other.
   job->ahead_ = 0;
   for ( auto bus : job->transaction.busses() ) {
      auto& queue = queues_[bus];
      queue.push_back( job );
      job->ahead_ += queue.size() > 1;
   }
   if ( job->ahead_ == 0 ) {
      start( *job );
   }
}

void Scheduler::start( Job& job ) {
   job.transaction.run( loop_, [this, &job] { finish( job ); } );
}

void Scheduler::finish( Job& job ) {
   // The queues may be the last that have it.
   std::shared_ptr<Job> last;
   for ( auto bus : job.transaction.busses() ) {
      auto& queue = queues_[bus];
      last = std::move( queue.front() );
      queue.pop_front();
      if ( !queue.empty() && --queue.front()->ahead_ == 0 ) {
         loop_.post( [this, next = queue.front()] { start( *next ); } );
      }
   }
   job.done();
}

} // namespace Smbusd
