#ifndef DRIVERS_SELVANE_SELVANE_SYSTEM_H
#define DRIVERS_SELVANE_SELVANE_SYSTEM_H

#include "quillon/ql.h"

/* The callbacks of the system object. The record is not looked at. */
extern "C" {

/** This platform can't switch itself: both always give QL_STATUS_NOT_SUPPORTED. */
ql_status ql_system_poweroff( ql_system* system );
ql_status ql_system_powercycle( ql_system* system );
}

#endif
