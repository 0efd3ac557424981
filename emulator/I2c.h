#ifndef EMULATOR_I2C_H
#define EMULATOR_I2C_H

#include <cstddef>
#include <cstdint>
#include <vector>

/** What passes over an I2C bus, for the emulated board and for real adapters alike. */
namespace I2c {

/** One message between a (repeated) start and the next start or the stop. */
struct Message {
   enum class Kind {
      /** `bytes` go out to the chip. */
      Write,
      /** `length` bytes come from the chip. */
      Read,
      /** The chip's first byte tells how many follow, 1 to 32; the answer is those bytes without the count.
       */
      ReadBlock
   };
   Kind kind;
   /** What goes out, and for a read what has come in. */
   std::vector<uint8_t> bytes;
   size_t length = 0;
};

/** How a transfer ended. Each cause keeps its own words all the way to the person who reads them. */
enum class Result {
   Ok,
   NoAcknowledge,
   /** A line is held: nothing can be sent. */
   BusBusy,
   ArbitrationLost,
   /** A block count outside 1 to 32. */
   BadBlock,
   TimedOut,
   NotPermitted,
   /** A kernel driver has the chip. */
   HeldByDriver,
   /** The adapter cannot do this kind of transfer. */
   NotSupported,
   /** There is no such bus, or it has gone away. */
   NoBus,
   IoError
};

constexpr size_t maxBlock = 32;

/** The cause in a few words, such as "no acknowledge". */
const char* describe( Result result );

} // namespace I2c

#endif
