#ifndef EMULATOR_BCM59121_H
#define EMULATOR_BCM59121_H

#include "Bcm59121State.h"
#include "ChipFactory.h"
#include "Model.h"

#include <chrono>
#include <string>
#include <vector>

namespace Emulator {

/**
 * The BCM59121 power sourcing equipment controller: messages of 12 bytes, ports that find, classify and power
 * what is plugged in, and a firmware image in its memory. A reply is there some milliseconds after its
 * request, and stays until the next one; before that, reads give 0xff. After power-on or reset the chip boots
 * for half a second, in which it does not answer to its address.
 *
 * Options: `ports`, 1 to 64, 48 without it; `two_pair_ports`, how many of them, from the first, have one
 * channel, all without it; `automatic`, 1 for a board that straps the ports to come up without a host.
 *
 * Properties: `reset`, 1 while the reset input is active; `temperature` in °C; `supply` in V; `budget` in W
 * and `allocated`, what is given away of it; `shutoff`, the shut-off inputs that are active, a bit each;
 * `firmware`, the revision or "none", "clearing", "loading", "failed"; `r0x0a` and `r0x17`, the last values
 * of these commands; `crc_reset`, 1 while a wrong CRC is corrected by itself; `groupN.crc`, the channels of a
 * group that have a wrong CRC, a bit each.
 *
 * Ports count from 1 here, while the bus counts from 0: `portN.device`, what is plugged in; `.class` and
 * `.draw`, its class and what it takes in W; `.state`; `.power` in W; and what the bus has set:
 * `.enabled`, `.detection`, `.mode`, `.limit` in W or its kind, `.mpss`, `.r0x08`, `.r0x12`.
 */
class Bcm59121 : public Model {
public:
   explicit Bcm59121( const Options& options );

   std::string part() const override { return "bcm59121"; }

   bool listens() const override { return !isHeld_ && boot_ <= boot_.zero(); }

   void start() override { position_ = 0; }

   bool write( std::span<const uint8_t> bytes ) override;
   void read( std::span<uint8_t> bytes ) override;
   void advance( std::chrono::nanoseconds elapsed ) override;

   void reset() override;
   std::string actions() const override;
   void act( std::span<const std::string_view> words ) override;

private:
   struct Size {
      uint32_t ports;
      uint32_t twoPairPorts;
      bool isAutomatic;
   };

   explicit Bcm59121( Size size );
   static Size sizeOf( const Options& options );

   void addChipProperties();
   void addGroupProperties();
   void addPortProperties( size_t index );
   void addPortSettings( size_t index );

   void setReset( bool isHeld );

   Bcm59121State state_;
   bool isHeld_ = false;
   std::chrono::nanoseconds boot_;

   std::vector<uint8_t> reply_;
   /** Until the reply is there. */
   std::chrono::nanoseconds busy_ {};
   size_t position_ = 0;
};

} // namespace Emulator

#endif
