#ifndef BENCH_TOPOLOGY_BENCHMARKS_H
#define BENCH_TOPOLOGY_BENCHMARKS_H

#include "Times.h"

#include <vector>

/** Registers the loads of topologies of so many devices, in ascending order. */
void registerTopologyBenchmarks( const std::vector<int>& sizes, bool smoke );
std::vector<Row> topologyRows( const std::vector<int>& sizes, const Times& times );

#endif
