#ifndef BENCH_REPORT_H
#define BENCH_REPORT_H

#include "Benchmarks.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

/** Keeps the time of each benchmark: the best of its repetitions, the one that was disturbed least. */
class Times : public benchmark::ConsoleReporter {
public:
   /** Processor time of work that is done here, wall time of work that another process does too. */
   enum class Clock { Processor, Wall };

   explicit Times( Clock clock ) : clock_( clock ) {}

   void ReportRuns( const std::vector<Run>& runs ) override {
      ConsoleReporter::ReportRuns( runs );
      for ( auto& run : runs ) {
         failed |= run.error_occurred;
         if ( run.error_occurred || run.run_type != Run::RT_Iteration ) {
            continue;
         }
         auto iterations = static_cast<double>( run.iterations );
         auto time = clock_ == Clock::Processor ? run.cpu_accumulated_time : run.real_accumulated_time;
         auto [best, isNew] = seconds_.try_emplace( run.run_name.function_name, time / iterations );
         best->second = isNew ? best->second : std::min( best->second, time / iterations );
      }
   }

   /** Null for a benchmark that has not run. */
   const double* secondsOf( const std::string& name ) const {
      auto best = seconds_.find( name );
      return best == seconds_.end() ? nullptr : &best->second;
   }

   bool failed = false;

private:
   Clock clock_;
   std::map<std::string, double> seconds_;
};

/** Prints what has run, a line a comparison. */
void printTable( const std::vector<Comparison>& comparisons, const Times& times );

#endif
