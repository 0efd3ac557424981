#include "Components/TempSensor.h"

namespace Component::LogicalDevice {

const ql_temp_sensor_ops TempSensor::ops_ = {
   .size = sizeof( ql_temp_sensor_ops ),
   .debug_info = nullptr,
   .get_temperature = getTemperatureCallback,
};
static_assert( sizeof( ql_temp_sensor_ops ) == 24 );

TempSensor::TempSensor() {
   record.ops = &ops_;
   record.owner = this;
}

void TempSensor::alertThresholdIs( float value ) { alertThreshold = value; }

void TempSensor::criticalThresholdIs( float value ) { criticalThreshold = value; }

ql_status TempSensor::getTemperatureCallback( ql_temp_sensor* record, float* value ) {
   ql_trace( 4, "%s(%p)", "getTemperatureCallback", static_cast<void*>( record ) );
   return static_cast<TempSensor*>( record->owner )->getTemperature( value );
}

} // namespace Component::LogicalDevice
