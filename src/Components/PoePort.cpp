#include "Components/PoePort.h"

namespace Component::LogicalDevice {

const ql_poe_port_ops PoePort::ops_ = {
   .size = sizeof( ql_poe_port_ops ),
   .debug_info = debugInfoCallback,
   .port_init = poePortInitCallback,
   .reprogram_firmware = reprogramPoeFirmwareCallback,
   .set_pse = setPoePortPseCallback,
   .set_limit = setPoePortLimitCallback,
   .set_shut_off_with_psu = setPoePortShutOffWithPsuCallback,
   .power_on = poePortPowerOnCallback,
   .set_legacy_detect = setPoePortLegacyDetectCallback,
   .get_power_state = getPoePortPowerStateCallback,
   .get_device_class = getPoeDeviceClassCallback,
   .get_power = getPoePortPowerCallback,
   .get_voltage = getPoePortVoltageCallback,
   .get_current = getPoePortCurrentCallback,
   .get_temperature = getPoePortTemperatureCallback,
   .get_crc_status = getPoePortCrcStatusCallback,
   .get_information = getPoePortInformationCallback,
};
static_assert( sizeof( ql_poe_port_ops ) == 136 );

PoePort::PoePort() {
   record.ops = &ops_;
   record.owner = this;
}

namespace {

/** The port behind a record, after the trace that every callback begins with. */
PoePort* enter( const char* callback, const ql_poe_port* record ) {
   ql_trace( 4, "%s(%p)", callback, static_cast<const void*>( record ) );
   return static_cast<PoePort*>( record->owner );
}

} // namespace

size_t PoePort::debugInfoCallback( const ql_poe_port* record, char** text, bool raw ) {
   return enter( "debugInfoCallback", record )->debugInfo( text, raw );
}

ql_status PoePort::poePortInitCallback( ql_poe_port* record ) {
   return enter( "poePortInitCallback", record )->poePortInit();
}

ql_status PoePort::reprogramPoeFirmwareCallback( ql_poe_port* record, bool skip, char** revision ) {
   return enter( "reprogramPoeFirmwareCallback", record )->reprogramPoeFirmware( skip, revision );
}

ql_status PoePort::setPoePortPseCallback( ql_poe_port* record, bool enable ) {
   return enter( "setPoePortPseCallback", record )->setPoePortPse( enable );
}

ql_status PoePort::setPoePortLimitCallback( ql_poe_port* record, ql_poe_power_limit_mode mode, float watts ) {
   return enter( "setPoePortLimitCallback", record )->setPoePortLimit( mode, watts );
}

ql_status PoePort::setPoePortShutOffWithPsuCallback( ql_poe_port* record, uint8_t psu, bool shutOff ) {
   return enter( "setPoePortShutOffWithPsuCallback", record )->setPoePortShutOffWithPsu( psu, shutOff );
}

ql_status PoePort::poePortPowerOnCallback( ql_poe_port* record, bool on ) {
   return enter( "poePortPowerOnCallback", record )->poePortPowerOn( on );
}

ql_status PoePort::setPoePortLegacyDetectCallback( ql_poe_port* record, bool legacy ) {
   return enter( "setPoePortLegacyDetectCallback", record )->setPoePortLegacyDetect( legacy );
}

ql_status PoePort::getPoePortPowerStateCallback( ql_poe_port* record, ql_poe_port_state* state,
   ql_poe_port_state* primary, ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState ) {
   return enter( "getPoePortPowerStateCallback", record )
      ->getPoePortPowerState( state, primary, alternative, pairState );
}

ql_status PoePort::getPoeDeviceClassCallback( ql_poe_port* record, ql_poe_device_class* cls,
   ql_poe_device_class* primary, ql_poe_device_class* alternative ) {
   return enter( "getPoeDeviceClassCallback", record )->getPoeDeviceClass( cls, primary, alternative );
}

ql_status PoePort::getPoePortPowerCallback(
   ql_poe_port* record, float* total, float* primary, float* alternative ) {
   return enter( "getPoePortPowerCallback", record )->getPoePortPower( total, primary, alternative );
}

ql_status PoePort::getPoePortVoltageCallback( ql_poe_port* record, float* volts ) {
   return enter( "getPoePortVoltageCallback", record )->getPoePortVoltage( volts );
}

ql_status PoePort::getPoePortCurrentCallback( ql_poe_port* record, float* amps ) {
   return enter( "getPoePortCurrentCallback", record )->getPoePortCurrent( amps );
}

ql_status PoePort::getPoePortTemperatureCallback( ql_poe_port* record, float* degrees ) {
   return enter( "getPoePortTemperatureCallback", record )->getPoePortTemperature( degrees );
}

ql_status PoePort::getPoePortCrcStatusCallback( ql_poe_port* record, bool* ok ) {
   return enter( "getPoePortCrcStatusCallback", record )->getPoePortCrcStatus( ok );
}

size_t PoePort::getPoePortInformationCallback( ql_poe_port* record, char** text ) {
   return enter( "getPoePortInformationCallback", record )->getPoePortInformation( text );
}

} // namespace Component::LogicalDevice
