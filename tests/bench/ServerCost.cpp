#include "ServerCost.h"

#include "Placement.h"
#include "Programs.h"
#include "Transactions.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

/** What another process uses for an exchange, in the best of several rounds. */
template <typename Exchange>
double costOf( pid_t process, bool smoke, Exchange exchange ) {
   Placement placement( process, Placed::Together );
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
