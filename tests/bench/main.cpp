// Measures what the library promises about speed and prints a table at the end.
//
//   quillon-bench            the sizes that count
//   quillon-bench --smoke    small sizes, to see that everything works; the times mean nothing
//
// Options of Google Benchmark are taken too.

#include "Benchmarks.h"

#include "quillon/ql.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>

// A host that drops every trace.
void ql_trace( int, const char*, ... ) {}

ql_timer* ql_timer_add( void ( * )( void* ), void* ) { return nullptr; }

int ql_timer_set( ql_timer*, uint32_t ) { return -1; }

void ql_timer_delete( ql_timer* ) {}

namespace {

/** Keeps the time of each benchmark: the best of its repetitions, the one that was disturbed least. */
class Times : public benchmark::ConsoleReporter {
public:
   void ReportRuns( const std::vector<Run>& runs ) override {
      ConsoleReporter::ReportRuns( runs );
      for ( auto& run : runs ) {
         failed |= run.error_occurred;
         if ( run.error_occurred || run.run_type != Run::RT_Iteration ) {
            continue;
         }
         auto seconds = run.cpu_accumulated_time / static_cast<double>( run.iterations );
         auto [best, isNew] = seconds_.try_emplace( run.run_name.function_name, seconds );
         best->second = isNew ? seconds : std::min( best->second, seconds );
      }
   }

   /** Null for a benchmark that has not run. */
   const double* secondsOf( const std::string& name ) const {
      auto best = seconds_.find( name );
      return best == seconds_.end() ? nullptr : &best->second;
   }

   bool failed = false;

private:
   std::map<std::string, double> seconds_;
};

std::string inMicroseconds( const double* seconds ) {
   return seconds ? fmt::format( "{:.1f} us", *seconds * 1e6 ) : "-";
}

void printTable( const std::vector<Comparison>& comparisons, const Times& times ) {
   constexpr auto row = "{:<36}{:>14}{:>14}{:>8}{:>8}  {}\n";
   fmt::print( "\n" );
   fmt::print( row, "name", "time", "baseline", "ratio", "wanted", "verdict" );
   for ( auto& comparison : comparisons ) {
      auto time = times.secondsOf( comparison.name );
      if ( !time ) {
         continue;
      }
      auto baseline = times.secondsOf( comparison.baseline );
      std::string ratio = "-", wanted = "-", verdict = "-";
      if ( baseline ) {
         ratio = fmt::format( "{:.2f}", *time / *baseline );
      }
      if ( baseline && comparison.wanted ) {
         wanted = fmt::format( "{:.2f}", *comparison.wanted );
         verdict = *time / *baseline <= *comparison.wanted ? "good" : "too slow";
      }
      fmt::print(
         row, comparison.name, inMicroseconds( time ), inMicroseconds( baseline ), ratio, wanted, verdict );
   }
}

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

   Times times;
   auto count = benchmark::RunSpecifiedBenchmarks( &times );
   std::filesystem::remove_all( directory );
   printTable( comparisons, times );
   return count == 0 || times.failed ? 1 : 0;
}
