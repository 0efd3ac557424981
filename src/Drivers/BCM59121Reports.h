#ifndef DRIVERS_BCM59121_REPORTS_H
#define DRIVERS_BCM59121_REPORTS_H

#include "quillon/ql.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** The report of a PoE port for debugging: one formatter for each reply of the controller. */
namespace Drivers {

constexpr size_t reportSize = 4096;
constexpr size_t rawReportSize = 768;

/* Texts of reply bytes; "n/a" for a code without one. */
std::string getChannelDetectionStr( uint8_t value );
std::string getPdClassStr( uint8_t value );
std::string getChannelErrorStr( uint8_t value );
std::string getChannelModeStr( uint8_t value );

/**
 * Prints one line for each field, with a column that says whether the data can be trusted.
 * @param dst where the lines go in a report of reportSize bytes
 * @param used how much of the report lies before them
 * @param reply an empty one makes every field "n/a"
 * @return characters added, counted in full also when the last line was cut
 */
size_t formatDebugStr(
   char* dst, size_t used, ql_status status, std::string& reply, std::vector<std::string>& fields );

using ReportFormatter = size_t ( * )( ql_status status, std::string& reply, char* dst, size_t used );

size_t getSysStatusStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortStatusStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortStatStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getSysPowerStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortConfigStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortConfigExtStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getSysPowerManagementStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getSysConfigStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getCrcStatusStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortMpssStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortMeasurementStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortPerPairPowerStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getPortPerPairStatusStr( ql_status status, std::string& reply, char* dst, size_t used );
size_t getCrcConfigQueryStr( ql_status status, std::string& reply, char* dst, size_t used );

} // namespace Drivers

#endif
