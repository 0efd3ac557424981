#ifndef BENCH_CREATION_BENCHMARKS_H
#define BENCH_CREATION_BENCHMARKS_H

#include "Times.h"

#include <vector>

/**
 * Registers the creation of so many devices in a tree of as many, and the same walks of the tree alone, in
 * processor time of this process. What the kernel does to reach the server is in it; the server is not.
 */
void registerCreationBenchmarks( int devices, bool smoke );
std::vector<Row> creationRows( int devices, const Times& times );

#endif
