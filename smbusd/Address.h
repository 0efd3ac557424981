#ifndef SMBUSD_ADDRESS_H
#define SMBUSD_ADDRESS_H

#include <cstdint>

namespace Smbusd {

/** The address word of a request, taken apart. */
struct Address {
   uint32_t reg;
   /** 7-bit address of the chip. */
   uint8_t chip;
   uint8_t bus;
   uint8_t accelerator;
   /** Bytes of a register number, 1 to 4. */
   uint8_t regSize;
};

/**
 * Bits 53 to 56 and 59 to 63 change nothing here. A read is one message pair with writeNoStopReadCurrent and
 * without, and what the codes for the bus timeout and the delays ask for is settled by the adapters and their
 * drivers, which have timeouts of their own.
 */
constexpr Address decodeAddress( uint64_t word ) {
   auto field = [word]( unsigned shift, unsigned bits ) {
      return static_cast<uint8_t>( word >> shift & ( ( 1U << bits ) - 1 ) );
   };
   auto addrSize = field( 57, 2 );
   return { .reg = static_cast<uint32_t>( word ),
      .chip = field( 32, 7 ),
      .bus = field( 39, 7 ),
      .accelerator = field( 46, 7 ),
      .regSize = addrSize == 0 ? uint8_t { 4 } : addrSize };
}

} // namespace Smbusd

#endif
