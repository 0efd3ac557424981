#include "Operation.h"

#include "Address.h"

#include <fmt/format.h>

#include <smbus.pb.h>

#include <stdexcept>

namespace Smbusd {

namespace {

using Kind = Operation::Kind;

[[noreturn]] void refuse( const std::string& why ) { throw std::invalid_argument( why ); }

void requireData( const char* what, size_t size, size_t data ) {
   if ( data != size ) {
      refuse( fmt::format( "{} of size {} with {} bytes of data", what, size, data ) );
   }
}

void fillRead( Operation& operation, size_t size ) {
   if ( size > maxTransfer ) {
      refuse( fmt::format( "read of {} bytes; {} are the most", size, maxTransfer ) );
   }
   operation.kind = size == 0 ? Kind::ReceiveByte : Kind::Read;
   operation.length = size == 0 ? 1 : size;
}

void fillWrite( Operation& operation, size_t size ) {
   requireData( "write", size, operation.data.size() );
   if ( size > maxTransfer ) {
      refuse( fmt::format( "write of {} bytes; {} are the most", size, maxTransfer ) );
   }
   operation.kind = size == 0 ? Kind::SendByte : Kind::Write;
}

void fillProcessCall( Operation& operation, size_t size ) {
   if ( size != 2 ) {
      refuse( fmt::format( "process call of size {}; it has 2 bytes", size ) );
   }
   requireData( "process call", size, operation.data.size() );
   operation.kind = Kind::ProcessCall;
   operation.length = 2;
}

void fillBlockRead( Operation& operation, size_t size ) {
   if ( size != 0 ) {
      refuse( fmt::format( "block read of size {}; the chip tells the size", size ) );
   }
   operation.kind = Kind::BlockRead;
   operation.length = I2c::maxBlock;
}

void fillBlockWrite( Operation& operation, size_t size ) {
   if ( size < 1 || size > I2c::maxBlock ) {
      refuse( fmt::format( "block write of {} bytes; a block has 1 to {}", size, I2c::maxBlock ) );
   }
   requireData( "block write", size, operation.data.size() );
   operation.kind = Kind::BlockWrite;
}

} // namespace

Operation operationOf( const Smbus::Request& request ) {
   if ( !request.has_address() ) {
      refuse( "no address" );
   }
   if ( !request.has_type() ) {
      refuse( "no known request type" );
   }
   auto address = decodeAddress( request.address() );
   Operation operation { Kind::Read, address.chip, address.reg, address.regSize };
   auto& data = request.data();
   operation.data = { reinterpret_cast<const uint8_t*>( data.data() ), data.size() };
   switch ( request.type() ) {
   case Smbus::READ:
      fillRead( operation, request.size() );
      break;
   case Smbus::WRITE:
      fillWrite( operation, request.size() );
      break;
   case Smbus::PROCESS_CALL:
      fillProcessCall( operation, request.size() );
      break;
   case Smbus::BLOCK_READ:
      fillBlockRead( operation, request.size() );
      break;
   case Smbus::BLOCK_WRITE:
      fillBlockWrite( operation, request.size() );
      break;
   }
   return operation;
}

namespace {

/** What goes out: the register number, most significant byte first, and the data. */
void layOutWrite( const Operation& operation, std::vector<uint8_t>& bytes ) {
   bytes.clear();
   if ( operation.kind == Kind::SendByte ) {
      bytes.push_back( static_cast<uint8_t>( operation.reg ) );
      return;
   }
   for ( unsigned left = operation.regSize; left > 0; --left ) {
      bytes.push_back( static_cast<uint8_t>( operation.reg >> 8 * ( left - 1 ) ) );
   }
   if ( operation.kind == Kind::BlockWrite ) {
      bytes.push_back( static_cast<uint8_t>( operation.data.size() ) );
   }
   bytes.insert( bytes.end(), operation.data.begin(), operation.data.end() );
}

} // namespace

void layOut( const Operation& operation, std::vector<I2c::Message>& messages ) {
   bool writes = operation.kind != Kind::ReceiveByte;
   bool reads = operation.length > 0;
   messages.resize( size_t { writes } + size_t { reads } );
   if ( writes ) {
      auto& message = messages.front();
      message.kind = I2c::Message::Kind::Write;
      layOutWrite( operation, message.bytes );
      message.length = 0;
   }
   if ( reads ) {
      auto& message = messages.back();
      message.kind =
         operation.kind == Kind::BlockRead ? I2c::Message::Kind::ReadBlock : I2c::Message::Kind::Read;
      message.bytes.clear();
      message.length = operation.length;
   }
}

void takeResult( Operation& operation, std::span<I2c::Message> messages ) {
   if ( messages.back().kind != I2c::Message::Kind::Write ) {
      operation.result.swap( messages.back().bytes );
   }
}

std::string describe( const Operation& operation ) {
   if ( operation.kind == Kind::ReceiveByte ) {
      return fmt::format( "0x{:02x}", operation.chip );
   }
   return fmt::format( "0x{:02x} reg 0x{:0{}x}", operation.chip, operation.reg, 2 * operation.regSize );
}

} // namespace Smbusd
