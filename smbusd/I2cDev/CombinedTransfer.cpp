#include "CombinedTransfer.h"

#include <cerrno>
#include <vector>

namespace Smbusd::I2cDev::CombinedTransfer {

std::string lacking( const Operation& operation, unsigned long functions ) {
   // I2C_M_RECV_LEN needs it.
   if ( operation.kind == Operation::Kind::BlockRead && !( functions & I2C_FUNC_SMBUS_READ_BLOCK_DATA ) ) {
      return "block reads";
   }
   return "";
}

namespace {

i2c_msg toKernel( uint8_t chip, I2c::Message& message ) {
   uint16_t flags = 0;
   switch ( message.kind ) {
   case I2c::Message::Kind::Write:
      break;
   case I2c::Message::Kind::Read:
      flags = I2C_M_RD;
      message.bytes.resize( message.length );
      break;
   case I2c::Message::Kind::ReadBlock:
      // The kernel wants room for the count and the longest block, and in the first byte how many bytes there
      // are besides the block: the count.
      flags = I2C_M_RD | I2C_M_RECV_LEN;
      message.bytes.resize( 1 + I2c::maxBlock );
      message.bytes[0] = 1;
      break;
   }
   return { chip, flags, static_cast<uint16_t>( message.bytes.size() ), message.bytes.data() };
}

/** Leaves the block without its count. @return false for a count that no block has */
bool cutBlock( std::vector<uint8_t>& bytes ) {
   size_t count = bytes[0];
   if ( count < 1 || count > I2c::maxBlock ) {
      return false;
   }
   bytes = { bytes.begin() + 1, bytes.begin() + 1 + static_cast<ptrdiff_t>( count ) };
   return true;
}

} // namespace

int run( Kernel& kernel, int fd, Operation& operation ) {
   std::vector<I2c::Message> messages;
   layOut( operation, messages );
   std::vector<i2c_msg> kernelMessages;
   for ( auto& message : messages ) {
      kernelMessages.push_back( toKernel( operation.chip, message ) );
   }
   i2c_rdwr_ioctl_data transfer { kernelMessages.data(), static_cast<uint32_t>( kernelMessages.size() ) };
   if ( kernel.transfer( fd, transfer ) < 0 ) {
      return errno;
   }
   if ( operation.kind == Operation::Kind::BlockRead && !cutBlock( messages.back().bytes ) ) {
      return EPROTO;
   }
   takeResult( operation, messages );
   return 0;
}

} // namespace Smbusd::I2cDev::CombinedTransfer
