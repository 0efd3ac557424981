#include "Drivers/BCM59121.h"

#include "Drivers/BCM59121Messages.h"
#include "Drivers/Helpers.h"
#include "Ham/Ham.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace Drivers {

namespace {

/** Error code of a chip that runs no firmware image. */
constexpr uint8_t noImage = 0xAF;
/** Set in byte 9 of the system status while the 4-pair port map is in force. */
constexpr uint8_t portMapInForce = 1 << 3;

/** Power mode "IEEE 802.3bt Type-3". */
constexpr uint8_t type3 = 5;

// Steps of the port map.
constexpr uint8_t announcePorts = 2;
constexpr uint8_t endOfRows = 3;
constexpr uint8_t applyPortMap = 0xF0;

constexpr unsigned afterReset = 800000;
constexpr unsigned afterPortMapStep = 400000;

/** The reset line is the CPLD's. */
ql_status takeOutOfReset( uint16_t reg, uint8_t value ) {
   auto cpld = getHardwareDeviceByLabel( "CpuCpld", "Dummy" );
   assert( cpld );
   auto ham = cpld->ham;
   assert( ham );
   auto status = ham->write8( reg, value, false, 1 );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Taking PoE chip out of reset failed." );
      return status;
   }
   waitMicroseconds( afterReset );
   return QL_STATUS_OK;
}

} // namespace

void BCM59121::recoverFirmware( PoePort* port ) {
   auto cache = copyCache( 0 );
   auto status = queryPort( port->id, PoeCommand::getSystemStatus, cache.sysStatus, cache.sysStatusTime );
   if ( status == QL_STATUS_DEVICE_ERROR && byteAt( cache.sysStatus, 0 ) == noImage ) {
      char* revision = nullptr;
      reprogramFirmware( port, false, &revision );
      free( revision );
   }
}

ql_status BCM59121::portInit( PoePort* port ) {
   auto id = port->id;
   auto result = QL_STATUS_OK;
   auto step = [&result]( ql_status status ) { result = std::max( result, status ); };

   ql_trace( 0, "PoE port init: configuring PoE port %d", id );
   if ( !globalConfigDone ) {
      ql_trace( 0, "Global level configurations." );
      if ( hasResetControl ) {
         auto status = takeOutOfReset( resetReg, outOfResetVal );
         if ( status != QL_STATUS_OK ) {
            return status;
         }
      }
      recoverFirmware( port );
      step( config( { PoeCommand::globalStart1, unusedByte, 0 }, 5 ) );
      step( setCrcAutocorrect( hasFirmwarePath ) );
      step( config( { PoeCommand::globalStart2, unusedByte, 0x6D, 1, 0x2F, 1 }, 1 ) );
      globalConfigDone = true;
   }
   step( configPort( port, PoeCommand::portStart1, 0, 1 ) );
   step( configPort( port, PoeCommand::portStart2, 0, 1 ) );
   if ( isFourPair( id ) ) {
      step( configPort( port, PoeCommand::powerMode, type3, 1 ) );
   }
   if ( id < numPorts ) {
      portMpssMask[id] = 0;
   }
   step( configPort( port, PoeCommand::mpssMask, 0, 1 ) );
   return result;
}

ql_status BCM59121::configPortMap( PoePort* port ) {
   auto cache = copyCache( port->id );
   auto result = queryPort( port->id, PoeCommand::getSystemStatus, cache.sysStatus, cache.sysStatusTime );
   if ( result == QL_STATUS_OK && byteAt( cache.sysStatus, 9 ) & portMapInForce ) {
      return QL_STATUS_OK;
   }
   auto step = [&result]( ql_status status ) { result = std::max( result, status ); };

   ql_trace( 0, "Configuring 4-pair port mapping" );
   step( config( { PoeCommand::portMap, unusedByte, announcePorts, numPorts }, 3 ) );
   waitMicroseconds( afterPortMapStep );
   // A 4-pair port takes two neighbouring channels, and the first of them decides the group.
   auto channel = static_cast<unsigned>( numAtPorts );
   for ( unsigned i = 0; i < numPorts; ++i ) {
      bool fourPair = i >= numAtPorts;
      auto first = fourPair ? channel : i;
      auto second = fourPair ? channel + 1 : i;
      step( config( { PoeCommand::portMapRow, unusedByte, static_cast<uint8_t>( i ), fourPair,
                       static_cast<uint8_t>( first >> 3 ), static_cast<uint8_t>( first & 7 ),
                       static_cast<uint8_t>( second & 7 ), 1, 0, 1 },
         3 ) );
      channel += fourPair ? 2 : 0;
   }
   step( config( { PoeCommand::portMap, unusedByte, endOfRows }, 3 ) );
   waitMicroseconds( afterPortMapStep );
   step( config( { PoeCommand::image, applyPortMap }, 3 ) );
   waitMicroseconds( afterPortMapStep );
   return result;
}

} // namespace Drivers
