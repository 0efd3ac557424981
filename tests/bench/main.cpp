// Measures what the library promises about speed and prints a table at the end.
//
//   quillon-bench            the sizes that count
//   quillon-bench --smoke    small sizes, to see that everything works; the times mean nothing
//
// Options of Google Benchmark are taken too.

#include "Benchmarks.h"
#include "Report.h"

#include "quillon/ql.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

// A host that drops every trace.
void ql_trace( int, const char*, ... ) {}

ql_timer* ql_timer_add( void ( * )( void* ), void* ) { return nullptr; }

int ql_timer_set( ql_timer*, uint32_t ) { return -1; }

void ql_timer_delete( ql_timer* ) {}

namespace {

/** Takes an option of ours out of the arguments. */
bool takeOption( int& argc, char** argv, std::string_view option ) {
   auto end = std::remove( argv + 1, argv + argc, option );
   bool found = end != argv + argc;
   argc = static_cast<int>( end - argv );
   return found;
}

} // namespace

int main( int argc, char** argv ) {
   bool smoke = takeOption( argc, argv, "--smoke" );
   benchmark::SetDefaultTimeUnit( benchmark::kMicrosecond );
   benchmark::Initialize( &argc, argv );
   if ( benchmark::ReportUnrecognizedArguments( argc, argv ) ) {
      return 2;
   }

   auto directory = ( std::filesystem::temp_directory_path() / "quillon-bench-XXXXXX" ).string();
   if ( !mkdtemp( directory.data() ) ) {
      fmt::print( stderr, "quillon-bench: can't make {}\n", directory );
      return 1;
   }
   setenv( "SIMULATION_VMID", "1", 1 );
   setenv( "QUILLONLIB_SIMDIR", directory.c_str(), 1 );

   std::vector<Comparison> comparisons;
   auto add = [&comparisons]( const std::vector<Comparison>& more ) {
      comparisons.insert( comparisons.end(), more.begin(), more.end() );
   };
   for ( int devices : smoke ? std::vector { 10, 100 } : std::vector { 1000, 10000 } ) {
      add( registerTopologyBenchmarks( devices ) );
   }
   add( registerSimulationBenchmarks( smoke ? 10 : 1000 ) );

   Times times( Times::Clock::Processor );
   auto count = benchmark::RunSpecifiedBenchmarks( &times );
   std::filesystem::remove_all( directory );
   printTable( comparisons, times );
   return count == 0 || times.failed ? 1 : 0;
}
