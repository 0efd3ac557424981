#include "Scheduler.h"

#include <utility>

namespace Smbusd {

void Scheduler::run( std::shared_ptr<Transaction> transaction, std::function<void()> done ) {
   auto entry = std::make_shared<Entry>( Entry { std::move( transaction ), std::move( done ) } );
   // It enters all its queues at once, so that no two transactions can wait for each other.
   for ( auto bus : entry->transaction->busses() ) {
      auto& queue = queues_[bus];
      queue.push_back( entry );
      entry->ahead += queue.size() > 1;
   }
   if ( entry->ahead == 0 ) {
      start( *entry );
   }
}

void Scheduler::start( Entry& entry ) {
   entry.transaction->run( loop_, [this, &entry] { finish( entry ); } );
}

void Scheduler::finish( Entry& entry ) {
   auto transaction = std::move( entry.transaction );
   auto done = std::move( entry.done );
   for ( auto bus : transaction->busses() ) {
      auto& queue = queues_[bus];
      queue.pop_front();
      if ( !queue.empty() && --queue.front()->ahead == 0 ) {
         loop_.post( [this, next = queue.front()] { start( *next ); } );
      }
   }
   done();
}

} // namespace Smbusd
