#ifndef BENCH_STACK_BENCHMARKS_H
#define BENCH_STACK_BENCHMARKS_H

#include "Times.h"

#include <vector>

#include <sys/types.h>

/** Registers what is measured from the library through the server to the sensor and back, in wall time. */
void registerStackBenchmarks( pid_t server, bool smoke );
std::vector<Row> stackRows( bool smoke, const Times& times );

#endif
