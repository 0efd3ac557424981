#ifndef HAM_HAM_ADDRESS_H
#define HAM_HAM_ADDRESS_H

#include <cstdint>

/**
 * Address of a device and a register as the SMBus server sees it: one 64-bit word, sent whole with each
 * request. `reg` is the least significant field.
 */
struct HamAddress {
   /** Register number, written anew for each request. */
   uint64_t reg : 32;
   /** 7-bit address of the chip on its bus. */
   uint64_t address : 7;
   uint64_t bus : 7;
   uint64_t accelerator : 7;
   /** The write is not followed by a stop, and the read takes the chip's current position. */
   uint64_t writeNoStopReadCurrent : 1;
   /** Code that the server interprets, as the three delays below. */
   uint64_t busTimeout : 3;
   /** Bytes of a register number: 1 or 2, and 0 for 4. */
   uint64_t addrSize : 2;
   uint64_t extraDelay : 1;
   uint64_t writeDelay : 2;
   uint64_t readDelay : 2;
};

static_assert( sizeof( HamAddress ) == 8 );

#endif
