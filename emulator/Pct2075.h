#ifndef EMULATOR_PCT2075_H
#define EMULATOR_PCT2075_H

#include "Model.h"
#include "RegisterFile.h"

#include <string>

namespace Emulator {

/**
 * The PCT2075 temperature sensor with its overtemperature output OS.
 *
 * Properties: `temperature` of the die in °C, -55 to 125; `os`, 1 while the output is active, whichever level
 * that is; `thyst` and `tos`, the limits in °C.
 *
 * What the model makes simpler than the part: the next conversion always ends by the end of a transfer or of
 * a change on the bench, and a temperature is there long enough for any fault queue.
 */
class Pct2075 : public Model {
public:
   Pct2075();

   std::string part() const override { return "pct2075"; }

   void start() override { registers_.start(); }

   bool write( std::span<const uint8_t> bytes ) override { return registers_.write( bytes ); }

   void read( std::span<uint8_t> bytes ) override;

   void stop() override { convert(); }

   void reset() override;

private:
   bool configured( unsigned bit ) const;
   void convert();
   void compare();

   RegisterFile registers_;
   double temperature_ = 25;
   /** The last limit crossed was Tos. */
   bool over_ = false;
   bool os_ = false;
};

} // namespace Emulator

#endif
