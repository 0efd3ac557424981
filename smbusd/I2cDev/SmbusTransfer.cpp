#include "SmbusTransfer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

namespace Smbusd::I2cDev::SmbusTransfer {

namespace {

using Kind = Operation::Kind;

void fillNothing( i2c_smbus_data&, const Operation& ) {}

void fillByte( i2c_smbus_data& data, const Operation& operation ) { data.byte = operation.data[0]; }

// The low byte of a word is the first on the bus.
void fillWord( i2c_smbus_data& data, const Operation& operation ) {
   data.word = static_cast<uint16_t>( operation.data[0] | operation.data[1] << 8 );
}

void fillBlock( i2c_smbus_data& data, const Operation& operation ) {
   data.block[0] = static_cast<uint8_t>( operation.data.size() );
   std::ranges::copy( operation.data, data.block + 1 );
}

void fillLength( i2c_smbus_data& data, const Operation& operation ) {
   data.block[0] = static_cast<uint8_t>( operation.length );
}

/* These take what has come in, and return 0 or an errno. */

int takeNothing( const i2c_smbus_data&, Operation& ) { return 0; }

int takeByte( const i2c_smbus_data& data, Operation& operation ) {
   operation.result = { data.byte };
   return 0;
}

int takeWord( const i2c_smbus_data& data, Operation& operation ) {
   operation.result = { static_cast<uint8_t>( data.word ), static_cast<uint8_t>( data.word >> 8 ) };
   return 0;
}

int takeBlock( const i2c_smbus_data& data, Operation& operation ) {
   auto count = data.block[0];
   if ( count < 1 || count > I2C_SMBUS_BLOCK_MAX ) {
      return EPROTO;
   }
   operation.result = { data.block + 1, data.block + 1 + count };
   return 0;
}

int takeBytes( const i2c_smbus_data& data, Operation& operation ) {
   return data.block[0] == operation.length ? takeBlock( data, operation ) : EPROTO;
}

/** One of the kernel's SMBus protocols, in one direction. */
struct Protocol {
   const char* name;
   /** I2C_SMBUS_..., which the kernel calls the size. */
   uint32_t size;
   uint8_t direction;
   /** The function that the adapter has to have. */
   unsigned long function;
   void ( *fill )( i2c_smbus_data& data, const Operation& operation );
   int ( *take )( const i2c_smbus_data& data, Operation& operation );
};

constexpr Protocol receiveByte { "receive byte", I2C_SMBUS_BYTE, I2C_SMBUS_READ, I2C_FUNC_SMBUS_READ_BYTE,
   fillNothing, takeByte };
constexpr Protocol sendByte { "send byte", I2C_SMBUS_BYTE, I2C_SMBUS_WRITE, I2C_FUNC_SMBUS_WRITE_BYTE,
   fillNothing, takeNothing };
constexpr Protocol readByte { "read byte", I2C_SMBUS_BYTE_DATA, I2C_SMBUS_READ, I2C_FUNC_SMBUS_READ_BYTE_DATA,
   fillNothing, takeByte };
constexpr Protocol writeByte { "write byte", I2C_SMBUS_BYTE_DATA, I2C_SMBUS_WRITE,
   I2C_FUNC_SMBUS_WRITE_BYTE_DATA, fillByte, takeNothing };
constexpr Protocol readWord { "read word", I2C_SMBUS_WORD_DATA, I2C_SMBUS_READ, I2C_FUNC_SMBUS_READ_WORD_DATA,
   fillNothing, takeWord };
constexpr Protocol writeWord { "write word", I2C_SMBUS_WORD_DATA, I2C_SMBUS_WRITE,
   I2C_FUNC_SMBUS_WRITE_WORD_DATA, fillWord, takeNothing };
constexpr Protocol readBytes { "I2C block read", I2C_SMBUS_I2C_BLOCK_DATA, I2C_SMBUS_READ,
   I2C_FUNC_SMBUS_READ_I2C_BLOCK, fillLength, takeBytes };
constexpr Protocol writeBytes { "I2C block write", I2C_SMBUS_I2C_BLOCK_DATA, I2C_SMBUS_WRITE,
   I2C_FUNC_SMBUS_WRITE_I2C_BLOCK, fillBlock, takeNothing };
constexpr Protocol processCall { "process call", I2C_SMBUS_PROC_CALL, I2C_SMBUS_WRITE,
   I2C_FUNC_SMBUS_PROC_CALL, fillWord, takeWord };
constexpr Protocol readBlock { "block read", I2C_SMBUS_BLOCK_DATA, I2C_SMBUS_READ,
   I2C_FUNC_SMBUS_READ_BLOCK_DATA, fillNothing, takeBlock };
constexpr Protocol writeBlock { "block write", I2C_SMBUS_BLOCK_DATA, I2C_SMBUS_WRITE,
   I2C_FUNC_SMBUS_WRITE_BLOCK_DATA, fillBlock, takeNothing };

const Protocol& protocolOf( const Operation& operation ) {
   switch ( operation.kind ) {
   case Kind::ReceiveByte:
      return receiveByte;
   case Kind::Read:
      return operation.length == 1 ? readByte : operation.length == 2 ? readWord : readBytes;
   case Kind::SendByte:
      return sendByte;
   case Kind::Write:
      return operation.data.size() == 1 ? writeByte : operation.data.size() == 2 ? writeWord : writeBytes;
   case Kind::ProcessCall:
      return processCall;
   case Kind::BlockRead:
      return readBlock;
   case Kind::BlockWrite:
      break;
   }
   return writeBlock;
}

} // namespace

std::string lacking( const Operation& operation, unsigned long functions ) {
   auto hasRegister = operation.kind != Kind::ReceiveByte && operation.kind != Kind::SendByte;
   if ( hasRegister && operation.regSize != 1 ) {
      return fmt::format( "register number of {} bytes", operation.regSize );
   }
   auto size = std::max( operation.length, operation.data.size() );
   if ( size > I2C_SMBUS_BLOCK_MAX ) {
      return fmt::format( "{} bytes at once", size );
   }
   auto& protocol = protocolOf( operation );
   return functions & protocol.function ? "" : protocol.name;
}

int run( Kernel& kernel, int fd, Operation& operation ) {
   auto& protocol = protocolOf( operation );
   i2c_smbus_data data {};
   protocol.fill( data, operation );
   i2c_smbus_ioctl_data transfer { protocol.direction, static_cast<uint8_t>( operation.reg ), protocol.size,
      &data };
   return kernel.transfer( fd, transfer ) < 0 ? errno : protocol.take( data, operation );
}

} // namespace Smbusd::I2cDev::SmbusTransfer
