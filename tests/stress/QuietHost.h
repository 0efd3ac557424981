#ifndef STRESS_QUIET_HOST_H
#define STRESS_QUIET_HOST_H

#include "quillon/ql.h"

#include <memory>
#include <vector>

struct ql_timer {
   void ( *function )( void* );
   void* argument;
   bool armed = false;
};

/** Every timer that the library has made. */
extern std::vector<std::unique_ptr<ql_timer>> timers;

#endif
