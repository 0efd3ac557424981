#ifndef DRIVERS_SELVANE_SELVANE_SYSTEM_H
#define DRIVERS_SELVANE_SELVANE_SYSTEM_H

#include "quillon/ql.h"

/*
 * The callbacks of the system object. All hardware access goes to the device labelled "CpuCpld", which comes
 * into being at the first use; a topology without it ends the process. The record is not looked at.
 */
extern "C" {

/** This platform can't switch itself: both always give QL_STATUS_NOT_SUPPORTED. */
ql_status ql_system_poweroff( ql_system* system );
ql_status ql_system_powercycle( ql_system* system );

/** Reads the reset reason and clears it, whatever the read gave. Only `reason` is ever written. */
ql_status ql_system_get_reload_cause(
   ql_system* system, char ( *reason )[100], time_t* when, char ( *debugInfo )[500] );

ql_status ql_system_poe_reboot_action( ql_system* system, bool keepPoe );

ql_status ql_system_get_chip_info( ql_system* system, char ( *version )[8] );
}

#endif
