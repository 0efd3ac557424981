#ifndef EMULATOR_EMC2305_H
#define EMULATOR_EMC2305_H

#include "Model.h"
#include "RegisterFile.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace Emulator {

/**
 * The EMC2305 controller with five two-pole fans on it, whose speed follows the drive setting with inertia.
 *
 * Properties of each fan, by `fan1` to `fan5`: `fan1.rpm`, the speed of the rotor; `fan1.drive`, the drive
 * setting, 0 to 255; `fan1.max_rpm`, the speed at drive setting 255, from which lower settings take their
 * part; `fan1.stalled`, 1 while something holds the rotor.
 *
 * What the model makes simpler than the part: EN_ALGO, the interrupts and the lock are bits without an
 * effect, so the drive is always what was set, and no fan fails to spin up or to reach its speed. A fan that
 * is not driven is not watched for a stall. A tachometer measurement takes no time.
 */
class Emc2305 : public Model {
public:
   Emc2305();

   std::string part() const override { return "emc2305"; }

   void start() override;
   bool write( std::span<const uint8_t> bytes ) override;

   void read( std::span<uint8_t> bytes ) override { registers_.read( bytes ); }

   void advance( std::chrono::nanoseconds elapsed ) override;
   void reset() override;

private:
   struct Fan {
      /** Of its first register. */
      uint8_t block;
      double maxRpm = 20000;
      double rpm = 0;
      bool stalled = false;
      /** Still to come of the time in which a fan that starts need not have its speed. */
      std::chrono::nanoseconds spinUp {};
   };

   static constexpr size_t fanCount = 5;

   void addFan( size_t index );
   void endPowerUp();
   uint8_t content( const Fan& fan, uint8_t reg ) const;
   void run( std::chrono::nanoseconds elapsed );
   void turn( Fan& fan, std::chrono::nanoseconds elapsed ) const;
   void measure( const Fan& fan );
   bool isTooSlow( const Fan& fan ) const;
   void raise( uint8_t reg, unsigned bits );
   bool isWatching() const;

   RegisterFile registers_;
   std::array<Fan, fanCount> fans_;
   /** The watchdog of power-up, until a drive has been set or it has barked. */
   bool poweringUp_ = true;
   std::chrono::nanoseconds quiet_ {};
};

} // namespace Emulator

#endif
