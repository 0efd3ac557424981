#ifndef DRIVERS_SELVANE_LED_CODES_H
#define DRIVERS_SELVANE_LED_CODES_H

#include "quillon/ql.h"

#include <cstdint>
#include <map>

namespace Drivers {

/** The CPLD's code for each status that an LED has; a status without a row is refused. */
using LedCodes = std::map<ql_led_status, uint8_t>;

/** Name of a status in trace lines; a number that is no status ends the process. */
const char* ledStatusName( ql_led_status status );

} // namespace Drivers

#endif
