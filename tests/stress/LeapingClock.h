#ifndef STRESS_LEAPING_CLOCK_H
#define STRESS_LEAPING_CLOCK_H

#include <chrono>

/** CLOCK_MONOTONIC of this process goes as always, but for what it is moved on. */
void leap( std::chrono::seconds time );

#endif
