// The log messages that this library declares to the logging library. Nothing is logged through the handles
// here: they exist so that the messages are known.

#include "Gant.h"

namespace {

enum { kernelPanic, hardwareWatchdog };

__attribute__( ( section( ".noctal_logmsg" ), used ) ) const Gant::LogDescriptor messages[] = {
   {
      .name = "SYS_KERNEL_PANIC",
      .format = "Reboot due to kernel panic",
      .explanation = "The system rebooted due to a kernel panic.",
      .recommendedAction = "This may indicate a serious hardware or software problem. Contact your customer "
                           "support representative.",
      .number = 3,
   },
   {
      .name = "HARDWARE_WATCHDOG_ERROR",
      .format = "Reboot due to system watchdog",
      .explanation = "The system rebooted due to a watchdog timeout.",
      .recommendedAction = "Harmless if seen infrequently, but may indicate a serious hardware or software "
                           "problem if seen often.",
      .number = 4,
   },
};

Gant::LogHandle watchdogHandle( &messages[hardwareWatchdog], 0.0, 1.0, 0, 0 );
Gant::LogHandle panicHandle( &messages[kernelPanic], 0.0, 1.0, 0, 0 );

} // namespace
