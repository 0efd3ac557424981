#ifndef BENCH_TIMES_H
#define BENCH_TIMES_H

#include "Table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <iostream>
#include <map>

/**
 * Keeps the times of each benchmark: the best of its repetitions, the one that was disturbed least. What
 * Google Benchmark has to say goes to stderr.
 */
class Times : public benchmark::ConsoleReporter {
public:
   Times() : ConsoleReporter( OO_None ) {
      SetOutputStream( &std::cerr );
      SetErrorStream( &std::cerr );
   }

   void ReportRuns( const std::vector<Run>& runs ) override {
      ConsoleReporter::ReportRuns( runs );
      for ( auto& run : runs ) {
         failed |= run.error_occurred;
         if ( run.error_occurred || run.run_type != Run::RT_Iteration ) {
            continue;
         }
         auto iterations = static_cast<double>( run.iterations );
         keep( wall_, run.run_name.function_name, run.real_accumulated_time / iterations );
         keep( processor_, run.run_name.function_name, run.cpu_accumulated_time / iterations );
      }
   }

   /** Whether it was among those that were asked for. */
   bool has( const std::string& name ) const { return wall_.count( name ) != 0; }

   /** Seconds of work that another process does too, or that the benchmark has measured itself. */
   double wall( const std::string& name ) const { return wall_.at( name ); }

   /** Seconds of this process's work. */
   double processor( const std::string& name ) const { return processor_.at( name ); }

   bool failed = false;

private:
   using Best = std::map<std::string, double>;

   static void keep( Best& best, const std::string& name, double time ) {
      auto [entry, isNew] = best.try_emplace( name, time );
      entry->second = std::min( entry->second, time );
   }

   Best wall_;
   Best processor_;
};

/** Registers a benchmark to be run many times for a short time: some runs meet a moment of quiet. */
template <typename Function>
benchmark::internal::Benchmark* addShortRuns( const std::string& name, bool smoke, Function function ) {
   auto added = benchmark::RegisterBenchmark( name.c_str(), function );
   return smoke ? added->Iterations( 3 ) : added->Repetitions( 40 )->MinTime( 0.005 );
}

/** In random order a benchmark and its baseline meet the same disturbances, but the heap that others leave.
 */
enum class Order { AsRegistered, Random };

/**
 * Runs what is registered, with the options of Google Benchmark.
 * @return false after a failure, which has been told
 */
bool runBenchmarks( int argc, char** argv, Order order, Times& times );

/** Takes an option of ours out of the arguments. */
bool takeOption( int& argc, char** argv, const char* option );

#endif
