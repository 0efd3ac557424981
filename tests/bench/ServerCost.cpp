#include "ServerCost.h"

#include "Programs.h"
#include "Transactions.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <sched.h>

namespace {

/**
 * Keeps this process and another one on one processor. Waking somebody on a processor that sleeps costs
 * several times as much, and where a process runs is the kernel's choice.
 */
class OnOneProcessor {
public:
   explicit OnOneProcessor( pid_t other ) : other_( other ) {
      sched_getaffinity( 0, sizeof( all_ ), &all_ );
      cpu_set_t one;
      CPU_ZERO( &one );
      CPU_SET( sched_getcpu(), &one );
      setBoth( one );
   }

   ~OnOneProcessor() { setBoth( all_ ); }

   OnOneProcessor( const OnOneProcessor& ) = delete;
   OnOneProcessor& operator=( const OnOneProcessor& ) = delete;

private:
   void setBoth( const cpu_set_t& processors ) const {
      if ( sched_setaffinity( 0, sizeof( processors ), &processors ) != 0 ||
           sched_setaffinity( other_, sizeof( processors ), &processors ) != 0 ) {
         abort();
      }
   }

   pid_t other_;
   cpu_set_t all_ {};
};

/** What another process uses for an exchange, in the best of several rounds. */
template <typename Exchange>
double costOf( pid_t process, bool smoke, Exchange exchange ) {
   OnOneProcessor placement( process );
   auto rounds = smoke ? 1 : 100, exchanges = smoke ? 10 : 1000;
   auto best = std::numeric_limits<double>::infinity();
   for ( int round = 0; round < rounds; ++round ) {
      auto begin = processorTimeOf( process );
      for ( int i = 0; i < exchanges; ++i ) {
         if ( !exchange() ) {
            abort();
         }
      }
      best = std::min( best, ( processorTimeOf( process ) - begin ) / exchanges );
   }
   return best;
}

} // namespace

Row serverCostRow( pid_t server, bool smoke ) {
   auto bare = pingPongOfOneRead();
   auto transaction = costOf( server, smoke, [] { return readBatch( 1 ); } );
   auto answer = costOf( bare->answerer(), smoke, [&] { return bare->ask(); } );
   return { "server's processor time, to an answerer's", inSeconds( transaction ), inSeconds( answer ) };
}
