#ifndef EMULATOR_GENERIC_REGISTERS_H
#define EMULATOR_GENERIC_REGISTERS_H

#include "ChipFactory.h"
#include "Model.h"
#include "RegisterFile.h"

#include <string>

namespace Emulator {

/**
 * A chip of 8-bit registers from 0 on that keep what is written to them, with auto-increment in both
 * directions.
 *
 * Options: `size`, the number of registers, 1 to 256 (the default); `r0x10` and the like, what a register
 * holds after a reset, 0 unless given. Each register is a property of the same name.
 */
class GenericRegisters : public Model {
public:
   /** Throws std::invalid_argument for an option or value that can't be. */
   explicit GenericRegisters( const Options& options );

   std::string part() const override { return "registers"; }

   void start() override { registers_.start(); }

   bool write( std::span<const uint8_t> bytes ) override { return registers_.write( bytes ); }

   void read( std::span<uint8_t> bytes ) override { registers_.read( bytes ); }

   void reset() override { registers_.reset(); }

private:
   explicit GenericRegisters( const std::vector<Register>& table );
   static std::vector<Register> tableOf( const Options& options );

   RegisterFile registers_;
};

} // namespace Emulator

#endif
