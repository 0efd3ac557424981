#ifndef HOST_SERVICES_H
#define HOST_SERVICES_H

#include "quillon/ql.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct ql_timer {
   void ( *function )( void* );
   void* argument;
   /** Interval of each ql_timer_set, in order. */
   std::vector<uint32_t> settings;
   bool armed = false;
   bool deleted = false;

   /** The host's part of a tick: disarms, then calls the function. */
   void fire();
};

/** The four services that a host gives to the library, recorded and controlled by tests. */
namespace Host {

struct TraceLine {
   int level;
   std::string text;
   bool operator==( const TraceLine& ) const = default;
};

std::ostream& operator<<( std::ostream& stream, const TraceLine& line );

/** Every line that has been traced, in order. */
extern std::vector<TraceLine> traces;
/** Every timer ever added, also deleted ones. */
extern std::vector<std::unique_ptr<ql_timer>> timers;
/** What ql_timer_set is to answer. */
extern int timerSetResult;
/** Whether ql_timer_add is to fail. */
extern bool timerAddFails;
/** Also writes each trace line to stderr, so that a death test can look for it. */
extern bool echoTraces;

/** All lines of one level. */
std::vector<std::string> tracesOf( int level );
bool hasTraced( int level, const std::string& text );
void reset();

/** Starts each test with no traces, no timers and services that work. */
class Test : public ::testing::Test {
protected:
   Test() { reset(); }
};

} // namespace Host

#endif
