#ifndef EMULATOR_REGISTER_FILE_H
#define EMULATOR_REGISTER_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Emulator {

/** One register of a part, as its data sheet has it in a table. */
struct Register {
   uint8_t number;
   /** Width: 1, or 2 with the high byte first on the bus. */
   uint8_t bytes;
   uint16_t reset;
   /** The bits that the bus can change. A write to the others is acknowledged and ignored. */
   uint16_t writable;
   /** The bits that are 0 after they have been read. */
   uint16_t clearedByRead = 0;
};

/**
 * The registers of a chip behind a pointer register. The first byte of a write sets the pointer, which stays
 * for the messages that follow; a number that no register has is not acknowledged and leaves the pointer
 * alone. A message that goes on after a write of the pointer, and any read, works at the register that is
 * pointed to.
 */
class RegisterFile {
public:
   /** What follows a register's last byte in the same message. */
   enum class Pointer {
      /** Nothing: more bytes are ignored in a write and 0xff in a read. */
      Stays,
      /** The next register. Where none is, a write is not acknowledged and a read gives 0xff. */
      Increments
   };

   RegisterFile( Pointer pointer, const std::vector<Register>& registers );

   void start() { byte_ = 0; }

   bool write( std::span<const uint8_t> bytes );
   void read( std::span<uint8_t> bytes );
   /** All registers and the pointer as at power-on. The pointer is then at register 0. */
   void reset();

   /** The model's own access, without a pointer and to all bits. The register must be one of the table. */
   uint16_t get( uint8_t number ) const { return cells_[number].value; }

   void set( uint8_t number, uint16_t value ) { cells_[number].value = value; }

private:
   /** A number without a register has a cell of no bytes. */
   struct Cell {
      Register definition {};
      uint16_t value = 0;
   };

   /** The register at the pointer while the position is within it, or null. */
   Cell* current();
   void advance( const Cell& cell );
   bool put( uint8_t byte );
   uint8_t next();

   Pointer mode_;
   std::array<Cell, 256> cells_;
   /** May be one behind the last register. */
   unsigned pointer_ = 0;
   /** The position within the register. */
   unsigned byte_ = 0;
};

} // namespace Emulator

#endif
