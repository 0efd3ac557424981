#include "Drivers/BCM59121.h"

#include "Drivers/BCM59121Messages.h"

#include <cmath>

namespace Drivers {

namespace {

// Values of the settings.
constexpr uint8_t detection4Point = 2;
constexpr uint8_t detectionLegacy4Point = 3;
constexpr uint8_t violationClassBased = 1;
constexpr uint8_t violationUserDefined = 2;

/** Channel detection "valid", in the low 4 bits of its byte. */
constexpr uint8_t detectionValid = 4;

/** A limit of 31 W, in the chip's unit of 0.2 W. */
constexpr uint8_t highestLimit = 155;
constexpr float limitUnitsPerWatt = 5.0F;
constexpr double limitMargin = 1.03;

/** The bit of a power supply in the MPSS mask; none for one beyond the byte. */
uint8_t mpssBit( uint8_t psu, bool mpssValueZero ) {
   constexpr uint8_t lastPsu = 2;
   if ( mpssValueZero ) {
      return 1;
   }
   // The bit's number is itself a power of two: PSU 0 sits in bit 1, PSU 1 in bit 2, PSU 2 in bit 4.
   return psu <= lastPsu ? static_cast<uint8_t>( 1 << ( 1 << psu ) ) : 0;
}

/** The limit in the chip's unit. */
uint8_t limitByte( float watts ) {
   auto raw = std::ceil( watts * limitUnitsPerWatt );
   if ( raw >= highestLimit ) {
      return highestLimit;
   }
   // What does not fit 32 bits, and what is no number, has 0 in its low bits.
   auto whole = raw >= -0x1p31F ? static_cast<int32_t>( raw ) : 0;
   return static_cast<uint8_t>( whole & 0xFF );
}

} // namespace

ql_status BCM59121::setPse( PoePort* port, bool enable ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::setPse(Drivers::BCM59121::PoePort*, bool)" );
   return configPort( port, PoeCommand::setPse, enable ? 1 : 0, 1 );
}

ql_status BCM59121::setLegacyDetect( PoePort* port, bool legacy ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::setLegacyDetect(Drivers::BCM59121::PoePort*, bool)" );
   return configPort( port, PoeCommand::detectionType, legacy ? detectionLegacy4Point : detection4Point, 1 );
}

ql_status BCM59121::setShutOffWithPsu( PoePort* port, uint8_t psu, bool shutOff ) {
   ql_trace(
      6, "%s", "ql_status Drivers::BCM59121::setShutOffWithPsu(Drivers::BCM59121::PoePort*, uint8_t, bool)" );
   bool remembered = port->id < numPorts;
   uint8_t old = remembered ? portMpssMask[port->id] : 0;
   auto bit = mpssBit( psu, mpssValueZero );
   auto mask = static_cast<uint8_t>( shutOff ? old | bit : old & ~bit );
   if ( remembered ) {
      if ( mask == old ) {
         return QL_STATUS_OK;
      }
      // Kept also when the message fails.
      portMpssMask[port->id] = mask;
   }
   return configPort( port, PoeCommand::mpssMask, mask, 1 );
}

ql_status BCM59121::powerOn( PoePort* port, bool on ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::powerOn(Drivers::BCM59121::PoePort*, bool)" );
   return configPort( port, on ? PoeCommand::powerOn : PoeCommand::powerOff, 1, 1 );
}

ql_status BCM59121::setPowerLimit( PoePort* port, ql_poe_power_limit_mode mode, float watts ) {
   ql_trace( 6, "%s",
      "ql_status Drivers::BCM59121::setPowerLimit(Drivers::BCM59121::PoePort*, ql_poe_power_limit_mode, "
      "float)" );
   if ( mode == QL_POE_LIMIT_CLASS ) {
      return configPort( port, PoeCommand::violationType, violationClassBased, 1 );
   }
   auto limit = static_cast<float>( static_cast<double>( watts ) * limitMargin );
   if ( isFourPair( port->id ) ) {
      auto cache = copyCache( port->id );
      auto status =
         queryPort( port->id, PoeCommand::getPerPairStatus, cache.perPairStatus, cache.perPairStatusTime );
      if ( status != QL_STATUS_OK ) {
         return status;
      }
      if ( ( byteAt( cache.perPairStatus, 7 ) & 0x0F ) == detectionValid ) {
         limit *= 0.5F;
      }
   }
   auto status = configPort( port, PoeCommand::powerLimit, limitByte( limit ), 1 );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   return configPort( port, PoeCommand::violationType, violationUserDefined, 1 );
}

ql_status BCM59121::setCrcAutocorrect( bool enable ) {
   ql_trace( 6, "%s", "ql_status Drivers::BCM59121::setCrcAutocorrect(bool)" );
   bool value = enable || hasFirmwarePath;
   if ( value == crcAutocorrect ) {
      return QL_STATUS_OK;
   }
   auto status = config( { PoeCommand::crcAutocorrect, unusedByte, 1, value }, 1 );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   ql_trace( 0, value ? "CRC autocorrect has been enabled." : "CRC autocorrect has been disabled." );
   crcAutocorrect = value;
   return QL_STATUS_OK;
}

} // namespace Drivers
