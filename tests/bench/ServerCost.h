#ifndef BENCH_SERVER_COST_H
#define BENCH_SERVER_COST_H

#include "Table.h"

#include <sys/types.h>

/** Processor time of the server for a transaction, compared with that of the one who answers a ping-pong. */
Row serverCostRow( pid_t server, bool smoke );

#endif
