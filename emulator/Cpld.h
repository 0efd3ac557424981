#ifndef EMULATOR_CPLD_H
#define EMULATOR_CPLD_H

#include "Model.h"
#include "RegisterFile.h"

#include <array>
#include <cstdint>
#include <string>

namespace Emulator {

/**
 * The switch's CPLD: versions, why the switch last started, LEDs, and the signals of SFP cages, fan trays and
 * power supplies.
 *
 * Properties: `version`, the major one in the high byte; `reset_reason`; what the host has written, only to
 * be looked at: `reboot_action`, `poe_reset`, `sfp1.tx_disable` to `sfp4.tx_disable`, and the code of each
 * LED, `led.status` and so on; what is plugged: `tray1.present` to `tray3.present`, `psu1.power_good` and
 * `psu2.power_good`, `sfp1.present` to `sfp4.present`, and `sfp1.rx_los` and `sfp1.tx_fault` and so on, the
 * outputs of the module that is or will be in the cage. An empty cage reads as one that receives nothing and
 * has no fault.
 *
 * A power-on reset is a reset reason by itself: power loss.
 */
class Cpld : public Model {
public:
   Cpld();

   std::string part() const override { return "cpld"; }

   void start() override { registers_.start(); }

   bool write( std::span<const uint8_t> bytes ) override;

   void read( std::span<uint8_t> bytes ) override { registers_.read( bytes ); }

   void reset() override;

private:
   struct Cage {
      bool present = false;
      bool rxLos = false;
      bool txFault = false;
   };

   /** A bit of a register, to be looked at. */
   void addBit( const std::string& name, uint8_t number, unsigned bit );
   /** What someone at the board switches; the signals follow. */
   void addSwitch( const std::string& name, bool& state );
   void addLed( const std::string& name, uint8_t number );
   /** Takes the version and what is plugged into the registers. */
   void sample();

   RegisterFile registers_;
   uint16_t version_ = 0x012A;
   std::array<bool, 3> trays_ { true, true, true };
   std::array<bool, 2> supplies_ { true, true };
   std::array<Cage, 4> cages_;
};

} // namespace Emulator

#endif
