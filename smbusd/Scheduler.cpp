#include "Scheduler.h"

#include <algorithm>
#include <utility>

namespace Smbusd {

// The copy keeps a job that stands in no queue: its end may be where its owner lets it go.
void Scheduler::run( std::shared_ptr<Job> job ) {
   // It enters all its queues at once, so that no two transactions can wait for each other.
   job->queues_.clear();
   job->ahead_ = 0;
   for ( auto bus : job->transaction.busses() ) {
      auto& queue = queues_[bus];
      job->queues_.push_back( &queue );
      queue.push_back( job );
      job->ahead_ += queue.size() > 1;
   }
   if ( job->ahead_ == 0 ) {
      start( *job );
   }
}

void Scheduler::abandon( const std::shared_ptr<Job>& job ) {
   job->done = [] {};
   if ( job->ahead_ == 0 ) {
      return;
   }
   for ( auto queue : job->queues_ ) {
      bool wasFirst = queue->front() == job;
      queue->erase( std::ranges::find( *queue, job ) );
      if ( wasFirst ) {
         moveUp( *queue );
      }
   }
   job->ahead_ = 0;
}

void Scheduler::start( Job& job ) {
   job.transaction.run( loop_, [this, &job] { finish( job ); } );
}

void Scheduler::finish( Job& job ) {
   // The queues may be the last that have it.
   std::shared_ptr<Job> last;
   for ( auto queue : job.queues_ ) {
      last = std::move( queue->front() );
      queue->pop_front();
      moveUp( *queue );
   }
   job.done();
}

void Scheduler::moveUp( const Job::Queue& queue ) {
   if ( !queue.empty() && --queue.front()->ahead_ == 0 ) {
      loop_.post( [this, next = queue.front()] { start( *next ); } );
   }
}

} // namespace Smbusd
