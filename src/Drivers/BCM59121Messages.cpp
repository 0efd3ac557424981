#include "Drivers/BCM59121Messages.h"

#include "Drivers/BCM59121.h"
#include "Ham/Ham.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <numeric>

#include <unistd.h>

namespace Drivers {

namespace {

// Byte 0 is the command, bytes 1 to 10 are its arguments or results, byte 11 is the checksum.
constexpr size_t messageSize = 12;
constexpr size_t checksumOffset = 11;

constexpr uint8_t regSize = 1;
/** Register number under which a reply is read. */
constexpr uint8_t replyReg = 0xFF;

/** Time that the chip takes to answer. */
constexpr unsigned waitUnit = 4000;
/** A reply younger than this, in seconds, is used again. */
constexpr double reuse = 2.0;

using Message = std::array<uint8_t, messageSize>;

/** The command byte travels as the register number. */
ql_status send( Ham::Ham* ham, Message message ) {
   assert( ham );
   setCheckSum( message.data() );
   return ham->write( message[0], &message[1], messageSize - 1, false, regSize );
}

ql_status receive( Ham::Ham* ham, std::string& reply ) {
   assert( ham );
   return ham->read( replyReg, messageSize, &reply, true, regSize );
}

/** Whether a reply is whole, and an answer to a command and not an error code. */
ql_status check( const std::string& reply, uint8_t cmd ) {
   Message message;
   for ( size_t i = 0; i < messageSize; ++i ) {
      message[i] = byteAt( reply, i );
   }
   if ( calcCheckSum( message.data() ) != message[checksumOffset] ) {
      ql_trace( 0, "Error: Checksum invalid" );
      return QL_STATUS_IO_ERROR;
   }
   if ( message[0] != cmd ) {
      ql_trace( 0, "Error: Failed to read PoE chip. Error code: %x",
         static_cast<unsigned>( static_cast<int8_t>( message[0] ) ) );
      return QL_STATUS_DEVICE_ERROR;
   }
   return QL_STATUS_OK;
}

double seconds( const timespec& time ) {
   return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) / 1e9;
}

std::chrono::microseconds monotonicTime() {
   timespec now;
   clock_gettime( CLOCK_MONOTONIC, &now );
   return std::chrono::seconds( now.tv_sec ) +
          std::chrono::ceil<std::chrono::microseconds>( std::chrono::nanoseconds( now.tv_nsec ) );
}

} // namespace

void waitMicroseconds( unsigned time ) {
   auto end = monotonicTime() + std::chrono::microseconds( time );
   while ( usleep( time ) != 0 && errno == EINTR && monotonicTime() < end ) {
      time = static_cast<unsigned>( ( end - monotonicTime() ).count() );
   }
}

void waitSeconds( unsigned time ) {
   auto end = monotonicTime() + std::chrono::seconds( time );
   sleep( time );
   auto now = monotonicTime();
   if ( now < end ) {
      waitMicroseconds( static_cast<unsigned>( ( end - now ).count() ) );
   }
}

uint8_t calcCheckSum( const uint8_t* msg ) {
   return static_cast<uint8_t>( std::accumulate( msg, msg + checksumOffset, 0U ) & 0xFF );
}

void setCheckSum( uint8_t* msg ) { msg[checksumOffset] = calcCheckSum( msg ); }

uint8_t byteAt( const std::string& reply, size_t offset ) {
   return offset < reply.size() ? static_cast<uint8_t>( reply[offset] ) : 0;
}

double getMeasurementVal( uint8_t hi, uint8_t lo, double scale, double offset ) {
   return ( hi * 256 + lo ) * scale + offset;
}

double getTemperatureVal( uint8_t hi, uint8_t lo ) { return ( hi * 256 + lo - 120 ) * -1.25 + 125.0; }

bool isDualSigPd( std::string portStatus, std::string perPairStatus ) {
   return byteAt( perPairStatus, 3 ) == 0x14 && byteAt( perPairStatus, 7 ) == 0x14 &&
          byteAt( portStatus, 10 ) == 2;
}

ql_status BCM59121::queryCustom( uint8_t cmd, uint8_t b1, uint8_t b2, uint8_t b3, uint8_t b4, uint8_t b5,
   uint8_t b6, uint8_t b7, uint8_t b8, uint8_t b9, uint8_t b10, std::string& reply, timespec& lastQuery ) {
   timespec now;
   clock_gettime( CLOCK_MONOTONIC, &now );
   if ( seconds( now ) - seconds( lastQuery ) < reuse ) {
      return QL_STATUS_OK;
   }
   lastQuery = now;
   auto status = send( ham, { cmd, b1, b2, b3, b4, b5, b6, b7, b8, b9, b10 } );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Error: Failed to write to PoE chip. Command: %x.", cmd );
      return status;
   }
   waitMicroseconds( waitUnit );
   return receiveReply( cmd, reply );
}

ql_status BCM59121::queryPort( uint8_t port, uint8_t cmd, std::string& reply, timespec& lastQuery ) {
   constexpr auto none = unusedByte;
   return queryCustom( cmd, none, port, none, none, none, none, none, none, none, none, reply, lastQuery );
}

ql_status BCM59121::queryDebug( uint8_t portOrChip, uint8_t cmd, std::string& reply ) {
   constexpr auto none = unusedByte;
   send( ham, { cmd, none, portOrChip, none, none, none, none, none, none, none, none } );
   waitMicroseconds( waitUnit );
   auto status = receive( ham, reply );
   if ( status != QL_STATUS_OK ) {
      reply.clear();
      return status;
   }
   return check( reply, cmd );
}

ql_status BCM59121::configCustom( uint8_t cmd, uint8_t b1, uint8_t b2, uint8_t b3, uint8_t b4, uint8_t b5,
   uint8_t b6, uint8_t b7, uint8_t b8, uint8_t b9, uint8_t b10, uint16_t waitUnits, bool readReply ) {
   auto status = send( ham, { cmd, b1, b2, b3, b4, b5, b6, b7, b8, b9, b10 } );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Error: Failed to write to PoE chip. Command: %x", cmd );
      return status;
   }
   waitMicroseconds( waitUnits * waitUnit );
   if ( !readReply ) {
      return QL_STATUS_OK;
   }
   std::string reply;
   return receiveReply( cmd, reply );
}

ql_status BCM59121::configPort( PoePort* port, uint8_t cmd, uint8_t value, uint8_t waitUnits ) {
   return config( { cmd, unusedByte, port->id, value }, waitUnits );
}

ql_status BCM59121::configSystem( uint8_t cmd, uint8_t value, uint8_t waitUnits ) {
   return config( { cmd, unusedByte, value }, waitUnits );
}

ql_status BCM59121::config( std::initializer_list<uint8_t> message, uint16_t waitUnits, bool readReply ) {
   std::array<uint8_t, messageSize> b;
   b.fill( unusedByte );
   std::copy( message.begin(), message.end(), b.begin() );
   return configCustom(
      b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], waitUnits, readReply );
}

ql_status BCM59121::receiveReply( uint8_t cmd, std::string& reply ) {
   auto status = receive( ham, reply );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Error: Failed to read PoE chip" );
      return status;
   }
   return check( reply, cmd );
}

} // namespace Drivers
