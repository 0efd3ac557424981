#ifndef BENCH_SIMULATION_BENCHMARKS_H
#define BENCH_SIMULATION_BENCHMARKS_H

#include "Times.h"

void registerSimulationBenchmarks();
std::vector<Row> simulationRows( const Times& times );

#endif
