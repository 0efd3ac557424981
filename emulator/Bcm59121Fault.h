#ifndef EMULATOR_BCM59121_FAULT_H
#define EMULATOR_BCM59121_FAULT_H

#include <cstdint>
#include <string_view>

namespace Emulator {

/** Why a port of the BCM59121 does not give power although it should, and what the chip says about it. */
struct Bcm59121Fault {
   enum class Kind { MpsAbsent, Short, Overload, Denied, Thermal, Startup, UnderVoltage, OverVoltage };

   Kind kind;
   const char* word;
   /** 4 for a port that was powered and is shut off, 5 for one that is kept from power. */
   uint8_t portStatus;
   uint8_t faultCode;
   /** Numbered unlike the fault code. */
   uint8_t channelError;
   /** It happens when the bench says so. */
   bool isAction;
};

const Bcm59121Fault& bcm59121Fault( Bcm59121Fault::Kind kind );
/** The fault that the bench causes with a word, or null. */
const Bcm59121Fault* bcm59121FaultAction( std::string_view word );

} // namespace Emulator

#endif
