#ifndef EMULATOR_BCM59121_STATE_H
#define EMULATOR_BCM59121_STATE_H

#include "Bcm59121Firmware.h"
#include "Bcm59121Port.h"
#include "Bcm59121PortMap.h"
#include "Bcm59121Power.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Emulator {

/** All that is in a BCM59121, for its commands on one side and its bench on the other. */
struct Bcm59121State {
   Bcm59121State( size_t ports, size_t twoPairPorts );
   // Ports refer to the power.
   Bcm59121State( const Bcm59121State& ) = delete;
   Bcm59121State& operator=( const Bcm59121State& ) = delete;

   /** The image begins to run: settings are those of power-on. */
   void start();
   /** No image runs any more: no port has power. */
   void stop();
   void advance( std::chrono::nanoseconds elapsed );
   void correctCrc( std::chrono::nanoseconds elapsed );

   void loseFirmware();
   /** A new map is in force. Settings stay; those of a port go by its number. */
   void applyMap();
   /** The supply has changed. The highest ports lose their power when there is not enough. */
   void followSupply();

   /** The ports of the map come first. */
   std::vector<Bcm59121Port> ports;
   Bcm59121Power power;
   Bcm59121Firmware firmware;
   Bcm59121PortMap map;
   double celsius = 40;

   /** A bit for each channel of a group whose memory has a wrong CRC. */
   std::vector<uint8_t> crcFailures;
   bool checksCrc = true;
   bool resetsOnCrcFailure = false;
   /** How long the failures have been there to be corrected. */
   std::chrono::nanoseconds crcAge {};

   /* Global settings that are kept for whoever looks. */
   std::array<uint8_t, 4> command0a {};
   uint8_t command17 = 0;
};

} // namespace Emulator

#endif
