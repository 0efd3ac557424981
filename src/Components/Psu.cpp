#include "Components/Psu.h"

namespace Component::LogicalDevice {

const ql_psu_ops Psu::ops_ = {
   .size = sizeof( ql_psu_ops ),
   .debug_info = nullptr,
   .get_power_ok = get_power_ok_callback,
   .get_input_current = get_input_current_callback,
   .get_output_current = get_output_current_callback,
   .get_input_voltage = get_input_voltage_callback,
   .get_output_voltage = get_output_voltage_callback,
   .get_input_power = get_input_power_callback,
   .get_output_power = get_output_power_callback,
};
static_assert( sizeof( ql_psu_ops ) == 72 );

Psu::Psu() {
   record.ops = &ops_;
   record.owner = this;
}

namespace {

Psu* owner( const ql_psu* record ) { return static_cast<Psu*>( record->owner ); }

} // namespace

ql_status Psu::get_power_ok_callback( ql_psu* record, int* ok ) {
   ql_trace( 4, "get_power_ok_callback" );
   return owner( record )->getPowerOk( ok );
}

ql_status Psu::get_input_current_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_input_current_callback" );
   return owner( record )->getInputCurrent( value );
}

ql_status Psu::get_output_current_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_output_current_callback" );
   return owner( record )->getOutputCurrent( value );
}

ql_status Psu::get_input_voltage_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_input_voltage_callback" );
   return owner( record )->getInputVoltage( value );
}

ql_status Psu::get_output_voltage_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_output_voltage_callback" );
   return owner( record )->getOutputVoltage( value );
}

ql_status Psu::get_input_power_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_input_power_callback" );
   return owner( record )->getInputPower( value );
}

ql_status Psu::get_output_power_callback( ql_psu* record, float* value ) {
   ql_trace( 4, "get_output_power_callback" );
   return owner( record )->getOutputPower( value );
}

} // namespace Component::LogicalDevice
