/* The smallest host: loads the plug-in, adds one temperature sensor and prints what it reads.
   Usage: minimal_host PLUGIN */
#include "quillon/ql.h"

#include <dlfcn.h>
#include <stdio.h>

/* The four services. This host shows no traces and has no timers. */

void ql_trace( int level, const char* format, ... ) {
   ( void )level;
   ( void )format;
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   ( void )function;
   ( void )argument;
   return NULL;
}

int ql_timer_set( ql_timer* timer, uint32_t interval ) {
   ( void )timer;
   ( void )interval;
   return -1;
}

void ql_timer_delete( ql_timer* timer ) { ( void )timer; }

static const char topology[] =
   "[ { \"type\": \"I2C\", \"ham\": \"QuillonSmbus\", \"id\": 1, \"devices\": [ { \"did\": 1 } ] } ]";
static const char arguments[] = "{ \"did\": 1, \"driver\": \"PCT2075\", \"address\": { \"address\": 72 } }";

static int fail( const char* what ) {
   fprintf( stderr, "minimal_host: %s\n", what );
   return 1;
}

int main( int argc, char** argv ) {
   if ( argc != 2 ) {
      return fail( "usage: minimal_host PLUGIN" );
   }
   void* plugin = dlopen( argv[1], RTLD_NOW | RTLD_LOCAL );
   if ( !plugin ) {
      return fail( dlerror() );
   }
   /* C has no conversion from an object pointer to a function pointer; POSIX has this one. */
   ql_status ( *init )( const char* ) = NULL;
   *( void** )&init = dlsym( plugin, "ql_temp_sensor_init" );
   ql_temp_sensor* ( *add )( const char*, float, float ) = NULL;
   *( void** )&add = dlsym( plugin, "ql_temp_sensor_add" );
   if ( !init || !add ) {
      return fail( dlerror() );
   }

   if ( init( topology ) != QL_STATUS_OK ) {
      return fail( "the topology can't be loaded" );
   }
   ql_temp_sensor* sensor = add( arguments, 65.0F, 75.0F );
   if ( !sensor ) {
      return fail( "there is no sensor" );
   }
   float degrees = 0;
   ql_status status = sensor->ops->get_temperature( sensor, &degrees );
   if ( status != QL_STATUS_OK ) {
      fprintf( stderr, "minimal_host: the sensor can't be read: status %d\n", ( int )status );
      return 1;
   }
   printf( "%.3f\n", ( double )degrees );
   return 0;
}
