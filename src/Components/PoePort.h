#ifndef COMPONENTS_POE_PORT_H
#define COMPONENTS_POE_PORT_H

#include "quillon/ql.h"

#include <cstddef>
#include <cstdint>

namespace Component::LogicalDevice {

/** A port with Power over Ethernet as the host sees it. All logic is the driver's; units are those of ql.h.
 */
class PoePort {
public:
   PoePort();
   virtual ~PoePort() = default;
   virtual size_t debugInfo( char** text, bool raw ) = 0;
   virtual ql_status poePortInit() = 0;
   virtual ql_status reprogramPoeFirmware( bool skip, char** revision ) = 0;
   virtual ql_status setPoePortPse( bool enable ) = 0;
   virtual ql_status setPoePortLimit( ql_poe_power_limit_mode mode, float watts ) = 0;
   virtual ql_status setPoePortShutOffWithPsu( uint8_t psu, bool shutOff ) = 0;
   virtual ql_status poePortPowerOn( bool on ) = 0;
   virtual ql_status setPoePortLegacyDetect( bool legacy ) = 0;
   virtual ql_status getPoePortPowerState( ql_poe_port_state* state, ql_poe_port_state* primary,
      ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState ) = 0;
   virtual ql_status getPoeDeviceClass(
      ql_poe_device_class* cls, ql_poe_device_class* primary, ql_poe_device_class* alternative ) = 0;
   virtual ql_status getPoePortPower( float* total, float* primary, float* alternative ) = 0;
   virtual ql_status getPoePortVoltage( float* volts ) = 0;
   virtual ql_status getPoePortCurrent( float* amps ) = 0;
   virtual ql_status getPoePortTemperature( float* degrees ) = 0;
   virtual ql_status getPoePortCrcStatus( bool* ok ) = 0;
   virtual size_t getPoePortInformation( char** text ) = 0;

   static size_t debugInfoCallback( const ql_poe_port* record, char** text, bool raw );
   static ql_status poePortInitCallback( ql_poe_port* record );
   static ql_status reprogramPoeFirmwareCallback( ql_poe_port* record, bool skip, char** revision );
   static ql_status setPoePortPseCallback( ql_poe_port* record, bool enable );
   static ql_status setPoePortLimitCallback( ql_poe_port* record, ql_poe_power_limit_mode mode, float watts );
   static ql_status setPoePortShutOffWithPsuCallback( ql_poe_port* record, uint8_t psu, bool shutOff );
   static ql_status poePortPowerOnCallback( ql_poe_port* record, bool on );
   static ql_status setPoePortLegacyDetectCallback( ql_poe_port* record, bool legacy );
   static ql_status getPoePortPowerStateCallback( ql_poe_port* record, ql_poe_port_state* state,
      ql_poe_port_state* primary, ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState );
   static ql_status getPoeDeviceClassCallback( ql_poe_port* record, ql_poe_device_class* cls,
      ql_poe_device_class* primary, ql_poe_device_class* alternative );
   static ql_status getPoePortPowerCallback(
      ql_poe_port* record, float* total, float* primary, float* alternative );
   static ql_status getPoePortVoltageCallback( ql_poe_port* record, float* volts );
   static ql_status getPoePortCurrentCallback( ql_poe_port* record, float* amps );
   static ql_status getPoePortTemperatureCallback( ql_poe_port* record, float* degrees );
   static ql_status getPoePortCrcStatusCallback( ql_poe_port* record, bool* ok );
   static size_t getPoePortInformationCallback( ql_poe_port* record, char** text );
   static const ql_poe_port_ops ops_;

   ql_poe_port record;
};

} // namespace Component::LogicalDevice

#endif
