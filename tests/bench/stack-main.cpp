// Measures the way from the library through the socket and the server to an emulated chip, and prints a
// table.
//
//   quillon-stack-bench            what counts
//   quillon-stack-bench --smoke    a little of it, to see that everything works; the times mean nothing
//
// Options of Google Benchmark are taken too.

#include "CreationBenchmarks.h"
#include "Programs.h"
#include "ServerCost.h"
#include "StackBenchmarks.h"
#include "Transactions.h"

int main( int argc, char** argv ) {
   auto smoke = takeOption( argc, argv, "--smoke" );
   TemporaryFolder board;
   describeBoard( board.path() );
   Server server( board.path() );
   auto devices = smoke ? 10 : 1000;
   registerStackBenchmarks( server.process(), smoke );
   registerCreationBenchmarks( devices, smoke );
   Times times;
   auto good = runBenchmarks( argc, argv, Order::Random, times );
   auto rows = stackRows( smoke, times ), more = creationRows( devices, times );
   rows.push_back( serverCostRow( server.process(), smoke ) );
   rows.insert( rows.end(), more.begin(), more.end() );
   printTable( rows );
   return good ? 0 : 1;
}
