/* A host as its author may begin: it loads the plug-in and reads a temperature. */

#include <quillon/ql.h>

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

static void* library;
static int traces;

void ql_trace( int level, const char* format, ... ) {
   ( void )level;
   ( void )format;
   ++traces;
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

static void* entry( const char* name ) {
   void* address = dlsym( library, name );
   if ( !address ) {
      fprintf( stderr, "%s\n", dlerror() );
      exit( 1 );
   }
   return address;
}

/* host PLUGIN: tells in simulation what one sensor says, and that the plug-in has found the services. */
int main( int argc, char** argv ) {
   library = argc == 2 ? dlopen( argv[1], RTLD_NOW | RTLD_LOCAL ) : NULL;
   if ( !library ) {
      fprintf( stderr, "%s\n", argc == 2 ? dlerror() : "usage: host PLUGIN" );
      return 1;
   }
   ql_status ( *init )( const char* );
   ql_temp_sensor* ( *add )( const char*, float, float );
   *( void** )&init = entry( "ql_temp_sensor_init" );
   *( void** )&add = entry( "ql_temp_sensor_add" );

   if ( init( "[ { \"type\": \"I2C\", \"id\": 3, \"ham\": \"QuillonSmbus\","
              "    \"devices\": [ { \"did\": 1 } ] } ]" ) != QL_STATUS_OK ) {
      return 1;
   }
   ql_temp_sensor* sensor =
      add( "{ \"did\": 1, \"driver\": \"PCT2075\", \"address\": { \"address\": 72 } }", 45, 55 );
   float degrees = -1;
   if ( !sensor || sensor->ops->get_temperature( sensor, &degrees ) != QL_STATUS_OK ) {
      return 1;
   }
   printf( "%.1f degrees, %s\n", degrees, traces > 0 ? "traces came" : "no trace" );
   return 0;
}
