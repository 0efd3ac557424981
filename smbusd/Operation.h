#ifndef SMBUSD_OPERATION_H
#define SMBUSD_OPERATION_H

#include "emulator/I2c.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Smbus {
class Request;
}

namespace Smbusd {

/** One operation with a chip, as SMBus names them. */
struct Operation {
   enum class Kind {
      ReceiveByte,
      Read,
      /** The byte is the low one of the register number. */
      SendByte,
      Write,
      ProcessCall,
      BlockRead,
      BlockWrite
   };
   Kind kind;
   uint8_t chip;
   uint32_t reg = 0;
   /** Bytes of the register number, 1 to 4. */
   uint8_t regSize = 1;
   /** What goes out behind the register number. The bytes belong to the request. */
   std::span<const uint8_t> data {};
   /** How many bytes are to come in; for a block read, at most. */
   size_t length = 0;
   /** What has come in. */
   std::vector<uint8_t> result {};
};

/** The most bytes of a read or a write. */
constexpr size_t maxTransfer = 8192;

/**
 * The operation that a request asks for; it refers to the request's data. Throws std::invalid_argument, with
 * words for a person, for a request that isn't one of the operations.
 */
Operation operationOf( const Smbus::Request& request );

/** Makes the messages those of the operation on the bus. Messages that are used again keep their memory. */
void layOut( const Operation& operation, std::vector<I2c::Message>& messages );

/** Takes what has come in from messages that were carried out, and leaves them the operation's memory for it.
 */
void takeResult( Operation& operation, std::span<I2c::Message> messages );

/** The chip and the register, such as "0x48 reg 0x00"; a received byte has no register. */
std::string describe( const Operation& operation );

} // namespace Smbusd

#endif
