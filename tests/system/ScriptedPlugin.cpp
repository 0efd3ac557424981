/**
 * A plug-in that does what the scripts of its objects say. The environment variable INIT_SCRIPT does the same
 * for the init functions. This file has those and the temperature sensors.
 */
#include "Script.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace {

struct Sensor {
   ql_temp_sensor record;
   Script script;
   int reads = 0;
   int ticks = 0;
   ql_timer* timer = nullptr;
};

void tick( void* argument ) {
   auto sensor = static_cast<Sensor*>( argument );
   ++sensor->ticks;
   ql_timer_set( sensor->timer, 10 );
}

/** A timer deletes itself in its own function. */
void tickOnce( void* argument ) {
   auto sensor = static_cast<Sensor*>( argument );
   ++sensor->ticks;
   ql_timer_delete( sensor->timer );
}

ql_status getTemperature( ql_temp_sensor* record, float* degrees ) {
   auto sensor = static_cast<Sensor*>( record->owner );
   auto& [word, number] = sensor->script;
   auto reads = ++sensor->reads;
   if ( auto status = answer( sensor->script ) ) {
      return status;
   }
   if ( word == "recovers" && reads < 3 ) {
      return QL_STATUS_DEVICE_ERROR;
   }
   if ( word == "dies" && reads > 1 ) {
      abort();
   }
   if ( word == "prints" ) {
      puts( "{ \"noise\":" );
   }
   *degrees = word == "nan"                            ? std::numeric_limits<float>::quiet_NaN()
              : word == "ticks" || word == "ticksOnce" ? static_cast<float>( sensor->ticks )
                                                       : number;
   return QL_STATUS_OK;
}

const ql_temp_sensor_ops whole = { sizeof( ql_temp_sensor_ops ), nullptr, getTemperature };
const ql_temp_sensor_ops small = { offsetof( ql_temp_sensor_ops, get_temperature ), nullptr, getTemperature };
const ql_temp_sensor_ops empty = { sizeof( ql_temp_sensor_ops ), nullptr, nullptr };

ql_status init() {
   auto variable = getenv( "INIT_SCRIPT" );
   std::string script = variable ? variable : "";
   if ( script == "aborts" ) {
      ql_trace( 0, "ql_temp_sensor_init" );
      abort();
   }
   if ( script == "throws" ) {
      throw std::runtime_error( "stoi" );
   }
   return script == "fails" ? QL_STATUS_FAILED : QL_STATUS_OK;
}

} // namespace

ql_status ql_system_init( const char* ) { return init(); }

ql_status ql_fan_init( const char* ) { return init(); }

ql_status ql_psu_init( const char* ) { return init(); }

ql_status ql_led_init( const char* ) { return init(); }

ql_status ql_slot_init( const char* ) { return init(); }

ql_status ql_xcvr_init( const char* ) { return init(); }

ql_status ql_gpio_init( const char* ) { return init(); }

ql_status ql_poe_port_init( const char* ) { return init(); }

ql_status ql_temp_sensor_init( const char* ) { return init(); }

ql_temp_sensor* ql_temp_sensor_add( const char* args, float, float ) {
   auto script = scriptOf( args );
   if ( !begin( script ) ) {
      return nullptr;
   }
   auto ops = script.word == "smallTable" ? &small : script.word == "emptySlot" ? &empty : &whole;
   // As with a real plug-in, objects live until the process ends.
   static Sensor sensors[16];
   static size_t count = 0;
   auto sensor = &sensors[count++];
   sensor->record.ops = script.word == "noTable" ? nullptr : ops;
   sensor->record.owner = sensor;
   sensor->script = script;
   if ( script.word == "ticks" || script.word == "ticksOnce" ) {
      sensor->timer = ql_timer_add( script.word == "ticks" ? tick : tickOnce, sensor );
      ql_timer_set( sensor->timer, 10 );
   }
   return &sensor->record;
}
