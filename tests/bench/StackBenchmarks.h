#ifndef BENCH_STACK_BENCHMARKS_H
#define BENCH_STACK_BENCHMARKS_H

#include "Benchmarks.h"

/** Registers what is measured through a server at QUILLON_SMBUS_SOCKET, with the sensor "inlet" on bus 3 at
 * 0x48. */
std::vector<Comparison> registerStackBenchmarks( bool smoke );

#endif
