#include "Calls.h"

#include <cmath>

namespace {

constexpr Field fields[] = {
   { "temperature_celsius", "TEMPERATURE", "°C", 1 },
   { "alert_celsius", "ALERT", "°C", 1 },
   { "critical_celsius", "CRITICAL", "°C", 1 },
};

void* add( const Plugin& plugin, const ObjectEntry& object ) {
   auto add = plugin.entry<ql_temp_sensor*( const char*, float, float )>( "ql_temp_sensor_add" );
   return add(
      object.args.c_str(), static_cast<float>( *object.alert ), static_cast<float>( *object.critical ) );
}

Reading read( void* record, const ObjectEntry& object ) {
   Reading reading { { {}, *object.alert, *object.critical }, "failed", {} };
   auto sensor = static_cast<ql_temp_sensor*>( record );
   if ( !sensor ) {
      return reading;
   }
   float degrees = 0;
   auto status = Calls::call( sensor->ops, &ql_temp_sensor_ops::get_temperature, sensor, &degrees );
   if ( status != QL_STATUS_OK ) {
      reading.failure = Calls::failure( "read the temperature", status );
      return reading;
   }
   if ( !std::isfinite( degrees ) ) {
      reading.failure =
         Failure { QL_STATUS_DEVICE_ERROR, "cannot read the temperature: the library gave no number" };
      return reading;
   }
   reading.values.front() = degrees;
   reading.state = degrees >= *object.critical ? "critical" : degrees >= *object.alert ? "alert" : "ok";
   return reading;
}

} // namespace

const Kind tempSensorKind = { "temp_sensor", "Temperature sensors", fields, add, read };
