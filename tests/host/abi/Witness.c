/* Every entry function of the header, and the services that it wants, in a library that holds nothing else:
   what libabigail sees of it is what a compiled host relies on. The functions are never called. */
#include "quillon/ql.h"

#include <stddef.h>

#define KIND( kind )                                                                                         \
   ql_status ql_##kind##_init( const char* topology ) {                                                      \
      ( void )topology;                                                                                      \
      return QL_STATUS_OK;                                                                                   \
   }
#define PLAIN_KIND( kind )                                                                                   \
   KIND( kind )                                                                                              \
   ql_##kind* ql_##kind##_add( const char* args ) {                                                          \
      ( void )args;                                                                                          \
      return NULL;                                                                                           \
   }

PLAIN_KIND( system )
PLAIN_KIND( fan )
PLAIN_KIND( psu )
PLAIN_KIND( led )
PLAIN_KIND( slot )
PLAIN_KIND( xcvr )
PLAIN_KIND( gpio )
PLAIN_KIND( poe_port )

KIND( temp_sensor )

ql_temp_sensor* ql_temp_sensor_add( const char* args, float alert, float critical ) {
   ( void )args;
   ( void )alert;
   ( void )critical;
   return NULL;
}

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
   return 0;
}

void ql_timer_delete( ql_timer* timer ) { ( void )timer; }
