#ifndef EMULATOR_BUS_H
#define EMULATOR_BUS_H

#include "emulator/Chip.h"
#include "emulator/I2c.h"

#include <cstdint>
#include <utility>
#include <vector>

/** What tests of the emulated board send. */
namespace Emulator {

using Bytes = std::vector<uint8_t>;

inline I2c::Message writing( Bytes bytes ) { return { I2c::Message::Kind::Write, std::move( bytes ) }; }

inline I2c::Message reading( size_t length ) { return { I2c::Message::Kind::Read, {}, length }; }

inline I2c::Message readingBlock() { return { I2c::Message::Kind::ReadBlock, {} }; }

/** A transfer of one write message. @return whether the chip acknowledged all of it */
inline bool sendTo( Chip& chip, const Bytes& bytes ) {
   chip.start();
   bool acknowledged = chip.write( bytes );
   chip.stop();
   return acknowledged;
}

/** The next bytes of a chip's read message, or of a register file's. */
inline Bytes readNext( auto& source, size_t count ) {
   Bytes bytes( count );
   source.read( bytes );
   return bytes;
}

/** A transfer of one read message. */
inline Bytes receiveFrom( Chip& chip, size_t count ) {
   chip.start();
   auto bytes = readNext( chip, count );
   chip.stop();
   return bytes;
}

/** The register number, a repeated start, and so many bytes. */
inline Bytes readRegister( Chip& chip, uint8_t number, size_t count ) {
   chip.start();
   if ( !chip.write( Bytes { number } ) ) {
      chip.stop();
      return {};
   }
   return receiveFrom( chip, count );
}

} // namespace Emulator

#endif
