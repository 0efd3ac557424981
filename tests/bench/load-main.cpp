// Measures loading and simulation, in processor time, and prints a table.
//
//   quillon-load-bench            the sizes that count
//   quillon-load-bench --smoke    small sizes, to see that everything works; the times mean nothing
//
// Options of Google Benchmark are taken too.

#include "SimulationBenchmarks.h"
#include "TemporaryFolder.h"
#include "TopologyBenchmarks.h"

#include <cstdlib>

#include <malloc.h>

int main( int argc, char** argv ) {
   auto smoke = takeOption( argc, argv, "--smoke" );
   TemporaryFolder folder;
   setenv( "SIMULATION_VMID", "1", 1 );
   setenv( "QUILLONLIB_SIMDIR", folder.path().c_str(), 1 );

   // Memory stays with the process, or a parse would have what it has just given back, and a load fresh
   // pages.
   mallopt( M_TRIM_THRESHOLD, 1 << 30 );
   mallopt( M_MMAP_THRESHOLD, 1 << 30 );

   auto sizes = smoke ? std::vector { 10, 100 } : std::vector { 100, 1000, 10000, 100000 };
   registerTopologyBenchmarks( sizes, smoke );
   registerSimulationBenchmarks();
   Times times;
   auto good = runBenchmarks( argc, argv, Order::AsRegistered, times );
   auto rows = topologyRows( sizes, times ), more = simulationRows( times );
   rows.insert( rows.end(), more.begin(), more.end() );
   printTable( rows );
   return good ? 0 : 1;
}
