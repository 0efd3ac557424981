#ifndef SERVE_METRICS_H
#define SERVE_METRICS_H

#include "Snapshot.h"

#include <string>

namespace Serve {

/** The snapshot in Prometheus's text format. */
std::string metricsOf( const Snapshot& snapshot, const std::string& board );

/** Media type of that format. */
constexpr const char* metricsType = "text/plain; version=0.0.4; charset=utf-8";

} // namespace Serve

#endif
