#ifndef FUZZ_HOST_H
#define FUZZ_HOST_H

#include "quillon/ql.h"

#include <chrono>

/** A host of the library in a fuzz target: the host services, and a time of its own. */
namespace Host {

/** The library's time, which its waits move on. */
extern std::chrono::nanoseconds now;

/**
 * While it lives, its thread has the time of the host. The fuzzer's own threads, and the fuzzer between two
 * inputs, have the real one.
 */
class Turn {
public:
   Turn();
   ~Turn();
   Turn( const Turn& ) = delete;
   Turn& operator=( const Turn& ) = delete;
};

/** Runs what armed timers are to run. */
void fireTimers();

} // namespace Host

#endif
