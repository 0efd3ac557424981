#include "Drivers/BCM59121.h"

#include "Drivers/BCM59121Messages.h"

#include <algorithm>

namespace Drivers {

namespace {

// Port status codes, byte 3 of the reply 0x21.
constexpr uint8_t statusDisabled = 0;
constexpr uint8_t statusDetecting = 1;
constexpr uint8_t statusPowered = 2;
constexpr uint8_t statusError = 4;
constexpr uint8_t statusErrorToo = 5;
constexpr uint8_t statusRequesting = 6;

// Fault codes, byte 4 of the same reply.
constexpr uint8_t faultOverload = 3;
constexpr uint8_t faultPowerDenied = 4;

// Detection, the low 4 bits of a channel's first byte, and the channel's error.
constexpr uint8_t detectionValid = 4;
constexpr uint8_t channelOverload = 3;

constexpr uint8_t highestPairState = 3;

/** Set in a channel's byte of the reply 0x4C when its CRC has failed. */
constexpr uint8_t channelCrcFailed = 1 << 2;

ql_poe_port_state faultState( uint8_t fault ) {
   switch ( fault ) {
   case faultOverload:
      return QL_POE_PORT_OVERLOAD;
   case faultPowerDenied:
      return QL_POE_PORT_DETECTING;
   default:
      return QL_POE_PORT_FAULT;
   }
}

ql_poe_port_state portState( const std::string& portStatus, bool isDualRequest ) {
   switch ( byteAt( portStatus, 3 ) ) {
   case statusDisabled:
      return QL_POE_PORT_DISABLED;
   case statusDetecting:
      return QL_POE_PORT_DETECTING;
   case statusPowered:
      return QL_POE_PORT_POWERED;
   case statusError:
   case statusErrorToo:
      return faultState( byteAt( portStatus, 4 ) );
   case statusRequesting:
      return isDualRequest ? QL_POE_PORT_REQUESTING_DUAL : QL_POE_PORT_REQUESTING;
   default:
      return QL_POE_PORT_FAULT;
   }
}

ql_poe_port_pair_state pairStateOf( uint8_t code ) {
   return static_cast<ql_poe_port_pair_state>( code <= highestPairState ? code : 0 );
}

/** A channel without a valid detection never shows a fault of its own. */
ql_poe_port_state channelState( ql_poe_port_state port, uint8_t detection, uint8_t error ) {
   if ( ( detection & 0x0F ) != detectionValid ) {
      return port == QL_POE_PORT_DISABLED ? QL_POE_PORT_DISABLED : QL_POE_PORT_DETECTING;
   }
   if ( port != QL_POE_PORT_POWERED ) {
      return QL_POE_PORT_REQUESTING;
   }
   switch ( error ) {
   case 0:
      return QL_POE_PORT_POWERED;
   case channelOverload:
      return QL_POE_PORT_OVERLOAD;
   default:
      return QL_POE_PORT_FAULT;
   }
}

ql_poe_device_class deviceClass( uint8_t code ) {
   return code <= QL_POE_CLASS_8 ? static_cast<ql_poe_device_class>( code ) : QL_POE_CLASS_INVALID;
}

float watts( const std::string& reply, size_t offset ) {
   return static_cast<float>(
      getMeasurementVal( byteAt( reply, offset ), byteAt( reply, offset + 1 ), 0.1, 0.0 ) );
}

} // namespace

// Every getter works on a copy of the port's cache and writes it back when all has gone well, so that a
// failed exchange leaves neither its reply nor its time behind.

ql_status BCM59121::queryStatus( PoePort* port, PoeCache& cache ) {
   auto status = queryPort( port->id, PoeCommand::getPortStatus, cache.portStatus, cache.portStatusTime );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   return queryPort( port->id, PoeCommand::getPerPairStatus, cache.perPairStatus, cache.perPairStatusTime );
}

ql_status BCM59121::getPowerState( PoePort* port, ql_poe_port_state* state, ql_poe_port_state* primary,
   ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState ) {
   ql_trace( 6, "%s",
      "ql_status Drivers::BCM59121::getPowerState(Drivers::BCM59121::PoePort*, ql_poe_port_state*, "
      "ql_poe_port_state*, ql_poe_port_state*, ql_poe_port_pair_state*)" );
   auto cache = copyCache( port->id );
   auto status = queryStatus( port, cache );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   auto& pairs = cache.perPairStatus;
   auto whole =
      portState( cache.portStatus, isFourPair( port->id ) && isDualSigPd( cache.portStatus, pairs ) );
   *state = whole;
   *pairState = pairStateOf( byteAt( cache.portStatus, 9 ) );
   *primary = channelState( whole, byteAt( pairs, 3 ), byteAt( pairs, 5 ) );
   *alternative = channelState( whole, byteAt( pairs, 7 ), byteAt( pairs, 9 ) );
   storeCache( port->id, cache );
   return QL_STATUS_OK;
}

ql_status BCM59121::getDeviceClass(
   PoePort* port, ql_poe_device_class* cls, ql_poe_device_class* primary, ql_poe_device_class* alternative ) {
   ql_trace( 6, "%s",
      "ql_status Drivers::BCM59121::getDeviceClass(Drivers::BCM59121::PoePort*, ql_poe_device_class*, "
      "ql_poe_device_class*, ql_poe_device_class*)" );
   auto cache = copyCache( port->id );
   auto status = queryStatus( port, cache );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   *cls = deviceClass( byteAt( cache.portStatus, 5 ) );
   *primary = deviceClass( byteAt( cache.perPairStatus, 4 ) );
   *alternative = deviceClass( byteAt( cache.perPairStatus, 8 ) );
   if ( isFourPair( port->id ) ) {
      // The cap applies to the invalid class too.
      auto cap = isDualSigPd( cache.portStatus, cache.perPairStatus ) ? maxDualSigPdClass : maxPdClass;
      *cls = std::min( *cls, cap );
      *primary = std::min( *primary, cap );
      *alternative = std::min( *alternative, cap );
   }
   storeCache( port->id, cache );
   return QL_STATUS_OK;
}

ql_status BCM59121::measure( PoePort* port, std::string* reply ) {
   auto cache = copyCache( port->id );
   auto status = queryPort( port->id, PoeCommand::getMeasurement, cache.measurement, cache.measurementTime );
   if ( status == QL_STATUS_OK ) {
      *reply = cache.measurement;
      storeCache( port->id, cache );
   }
   return status;
}

ql_status BCM59121::getCurrent( PoePort* port, float* amps ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::getCurrent(Drivers::BCM59121::PoePort*, float*)" );
   std::string reply;
   auto status = measure( port, &reply );
   if ( status == QL_STATUS_OK ) {
      *amps = static_cast<float>( getMeasurementVal( byteAt( reply, 5 ), byteAt( reply, 6 ), 0.001, 0.0 ) );
   }
   return status;
}

ql_status BCM59121::getVoltage( PoePort* port, float* volts ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::getVoltage(Drivers::BCM59121::PoePort*, float*)" );
   std::string reply;
   auto status = measure( port, &reply );
   if ( status == QL_STATUS_OK ) {
      *volts = static_cast<float>(
         getMeasurementVal( byteAt( reply, 3 ), byteAt( reply, 4 ), 64.45, 0.0 ) * 0.001 );
   }
   return status;
}

ql_status BCM59121::getTemperature( PoePort* port, float* degrees ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::getTemperature(Drivers::BCM59121::PoePort*, float*)" );
   std::string reply;
   auto status = measure( port, &reply );
   if ( status == QL_STATUS_OK ) {
      *degrees = static_cast<float>( getTemperatureVal( byteAt( reply, 7 ), byteAt( reply, 8 ) ) );
   }
   return status;
}

ql_status BCM59121::getPower( PoePort* port, float* total, float* primary, float* alternative ) {
   ql_trace(
      6, "%s", "ql_status Drivers::BCM59121::getPower(Drivers::BCM59121::PoePort*, float*, float*, float*)" );
   auto cache = copyCache( port->id );
   auto status = queryPort( port->id, PoeCommand::getMeasurement, cache.measurement, cache.measurementTime );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   status = queryPort( port->id, PoeCommand::getPerPairPower, cache.perPairPower, cache.perPairPowerTime );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   *total = watts( cache.measurement, 9 );
   *primary = watts( cache.perPairPower, 3 );
   *alternative = watts( cache.perPairPower, 5 );
   storeCache( port->id, cache );
   return QL_STATUS_OK;
}

ql_status BCM59121::getCrcStatus( PoePort* port, bool* ok ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::getCrcStatus(Drivers::BCM59121::PoePort*, bool*)" );
   auto cache = copyCache( port->id );
   constexpr auto none = unusedByte;
   auto status = queryCustom( hasFirmwarePath ? PoeCommand::getChannelCrc : PoeCommand::getChipStatus, none,
      portChipIndex( port->id ), 1, none, none, none, none, none, none, none, cache.crcStatus,
      cache.crcStatusTime );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   *ok = judgeCrc( port, cache.crcStatus );
   storeCache( port->id, cache );
   return QL_STATUS_OK;
}

bool BCM59121::judgeCrc( PoePort* port, const std::string& reply ) {
   if ( hasFirmwarePath ) {
      uint8_t channels = 0;
      for ( size_t offset = 3; offset <= 10; ++offset ) {
         channels |= byteAt( reply, offset );
      }
      return !( channels & channelCrcFailed );
   }
   auto group = portChipIndex( port->id );
   if ( byteAt( reply, 8 ) != 0 ) {
      port->crcFailCountdown = PoePort::hiddenCrcFailures;
      if ( crcAutocorrect && crcAutocorrectChip == group ) {
         setCrcAutocorrect( false );
      }
      return true;
   }
   if ( port->crcFailCountdown > 0 ) {
      --port->crcFailCountdown;
      return true;
   }
   crcAutocorrectChip = group;
   setCrcAutocorrect( true );
   return false;
}

} // namespace Drivers
