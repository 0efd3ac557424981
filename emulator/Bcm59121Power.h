#ifndef EMULATOR_BCM59121_POWER_H
#define EMULATOR_BCM59121_POWER_H

#include <cstdint>

namespace Emulator {

/** The power supply that all ports of the BCM59121 share. */
struct Bcm59121Power {
   double volts = 54;
   /** What may be given to ports, in 0.1 W. */
   unsigned budget = 7400;
   /** What is given to ports, in 0.1 W. */
   unsigned allocated = 0;
   /** The shut-off inputs that are active, a bit each. */
   uint8_t shutOff = 0;
   /** A strap: ports are enabled from power-on, and power what they have classified without being asked. */
   bool isAutomatic = false;

   bool isUnder() const { return volts < underVoltage; }

   bool isOver() const { return volts > overVoltage; }

   /* The thresholds: steps of 0.06445 V above 33 V and above 57 V. */

   static constexpr uint8_t underVoltageCode = 47;
   static constexpr double underVoltage = 36.02915;
   static constexpr uint8_t overVoltageCode = 31;
   static constexpr double overVoltage = 58.99795;
};

} // namespace Emulator

#endif
