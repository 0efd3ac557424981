/**
 * A plug-in that does what the argument text of an object says: "driverArgs": { "script": "<word> <number>"
 * }. The environment variable INIT_SCRIPT does the same for the init functions.
 */
#include "quillon/ql.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

struct Script {
   std::string word;
   float number = 0;
};

Script scriptOf( const std::string& args ) {
   const std::string key = R"("script":")";
   auto begin = args.find( key );
   if ( begin == std::string::npos ) {
      return {};
   }
   begin += key.size();
   auto text = args.substr( begin, args.find( '"', begin ) - begin );
   auto blank = text.find( ' ' );
   return { text.substr( 0, blank ), blank == std::string::npos ? 0 : std::stof( text.substr( blank ) ) };
}

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
   if ( word == "fails" ) {
      ql_trace( 4, "getTemperatureCallback" );
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      ql_trace( 6, "fine detail" );
      return QL_STATUS_IO_ERROR;
   }
   if ( word == "answers" ) {
      return static_cast<ql_status>( number );
   }
   if ( word == "throws" ) {
      throw std::runtime_error( "Not implemented addRead32" );
   }
   if ( word == "recovers" && reads < 3 ) {
      return QL_STATUS_DEVICE_ERROR;
   }
   if ( word == "dies" && reads > 1 ) {
      abort();
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

/** What all kinds do alike. @return whether there is to be an object */
bool begin( const Script& script ) {
   if ( script.word == "unknownDriver" ) {
      ql_trace( 0, "driver PCT2076 not found" );
      ql_trace( 0, "factory function returned a null object" );
      return false;
   }
   if ( script.word == "throwsAtOnce" ) {
      throw std::runtime_error( "Not implemented newThing" );
   }
   if ( script.word == "abortsAtOnce" ) {
      ql_trace( 0, "setting alert threshold" );
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      abort();
   }
   return script.word != "silent";
}

/** A record of the shape of all kinds but system, without callbacks. */
struct AnyRecord {
   uint64_t reserved;
   const void* ops;
   void* owner;
};

void* addAny( const char* args ) {
   static AnyRecord record {};
   return begin( scriptOf( args ) ) ? &record : nullptr;
}

} // namespace

#define ANY_KIND( kind )                                                                                     \
   ql_status ql_##kind##_init( const char* ) { return init(); }                                              \
   ql_##kind* ql_##kind##_add( const char* args ) { return static_cast<ql_##kind*>( addAny( args ) ); }

ANY_KIND( system )
ANY_KIND( fan )
ANY_KIND( psu )
ANY_KIND( led )
ANY_KIND( slot )
ANY_KIND( xcvr )
ANY_KIND( gpio )
ANY_KIND( poe_port )

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
