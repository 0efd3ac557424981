#ifndef COMPONENTS_TEMP_SENSOR_H
#define COMPONENTS_TEMP_SENSOR_H

#include "quillon/ql.h"

namespace Component::LogicalDevice {

/** A temperature sensor as the host sees it; a driver reads the chip. Degrees Celsius. */
class TempSensor {
public:
   TempSensor();
   virtual ~TempSensor() = default;
   virtual void alertThresholdIs( float value );
   virtual void criticalThresholdIs( float value );
   virtual ql_status getTemperature( float* value ) = 0;

   static ql_status getTemperatureCallback( ql_temp_sensor* record, float* value );
   static const ql_temp_sensor_ops ops_;

   ql_temp_sensor record;
   float alertThreshold = 0;
   float criticalThreshold = 0;
};

} // namespace Component::LogicalDevice

#endif
