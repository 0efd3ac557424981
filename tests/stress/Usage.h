#ifndef STRESS_USAGE_H
#define STRESS_USAGE_H

#include <chrono>
#include <cstddef>
#include <string>

#include <sys/types.h>

/** What a process holds. */
struct Usage {
   size_t kilobytes;
   size_t descriptors;
};

Usage usageOf( pid_t process );

/** "4312 KiB, 14 descriptors". */
std::string textOf( const Usage& usage );
/** In whole milliseconds. */
std::string textOf( std::chrono::steady_clock::duration time );

/** A whole number from the environment. */
int numberFrom( const char* variable, int byDefault );

#endif
