#ifndef BENCH_TRANSACTIONS_H
#define BENCH_TRANSACTIONS_H

#include "PingPong.h"

#include <memory>
#include <string>

/** Makes the folder's emulated board: one sensor, on bus 3 at 0x48. */
void describeBoard( const std::string& folder );

/** A transaction of so many reads of the sensor's temperature. @return whether it went well */
bool readBatch( int reads );

/** The bare exchange of as many bytes as a transaction of one read takes. */
std::unique_ptr<PingPong> pingPongOfOneRead();

#endif
