#ifndef EMULATOR_TMP102_H
#define EMULATOR_TMP102_H

#include "Model.h"
#include "RegisterFile.h"

#include <string>

namespace Emulator {

/**
 * The TMP102 temperature sensor in comparator mode.
 *
 * Properties: `temperature` of the die in °C, -40 to 125; `alert`, 1 from THIGH on until the temperature is
 * below TLOW; `tlow` and `thigh` in °C.
 *
 * What the model makes simpler than the part: a conversion ends by the end of a transfer or of a change on
 * the bench, a temperature is there long enough for any fault queue, and there is no interrupt mode, one-shot
 * conversion or extended mode.
 */
class Tmp102 : public Model {
public:
   Tmp102();

   std::string part() const override { return "tmp102"; }

   void start() override { registers_.start(); }

   bool write( std::span<const uint8_t> bytes ) override { return registers_.write( bytes ); }

   void read( std::span<uint8_t> bytes ) override { registers_.read( bytes ); }

   void stop() override { convert(); }

   void reset() override;

private:
   void convert();

   RegisterFile registers_;
   double temperature_ = 25;
   bool alert_ = false;
};

} // namespace Emulator

#endif
