#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

#include <optional>
#include <string>
#include <vector>

/** Every benchmark is run this often, and the best run counts. */
constexpr int repetitions = 5;

/** A line of the result: a benchmark, and what it is measured against. */
struct Comparison {
   /** Name of the benchmark. */
   std::string name;
   /** Benchmark of the same work done otherwise; empty for a time that stands by itself. */
   std::string baseline;
   /** The greatest ratio to the baseline that is good enough. */
   std::optional<double> wanted;
};

/** Each registers benchmarks for a size and tells how to judge them. */
std::vector<Comparison> registerTopologyBenchmarks( int devices );
std::vector<Comparison> registerSimulationBenchmarks( int devices );

#endif
