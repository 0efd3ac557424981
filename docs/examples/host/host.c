/* A small host of the Selvane platform library. It shows the inlet temperature, a fan and an SFP cage of the
   board in docs/examples/board, and what is wrong with them on the status LED.
   Usage: host [-t TRACE_LEVEL] [-n ROUNDS] PLUGIN TOPOLOGY */
#define _POSIX_C_SOURCE 200809L

#include <quillon/ql.h>

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

/* The host services. */

static int trace_level = -1;

void ql_trace( int level, const char* format, ... ) {
   if ( level > trace_level ) {
      return;
   }
   fprintf( stderr, "%d: ", level );
   va_list args;
   va_start( args, format );
   vfprintf( stderr, format, args );
   va_end( args );
   fputc( '\n', stderr );
}

struct ql_timer {
   void ( *function )( void* );
   void* argument;
   /* In milliseconds of the monotonic clock; 0 while the timer is not armed. */
   int64_t due;
   ql_timer* next;
};

static ql_timer* timers;

static int64_t now( void ) {
   struct timespec time;
   clock_gettime( CLOCK_MONOTONIC, &time );
   return ( int64_t )time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   ql_timer* timer = malloc( sizeof( *timer ) );
   if ( timer ) {
      *timer = ( ql_timer ) { function, argument, 0, timers };
      timers = timer;
   }
   return timer;
}

int ql_timer_set( ql_timer* timer, uint32_t interval ) {
   if ( !timer ) {
      return -1;
   }
   timer->due = now() + interval;
   return 0;
}

void ql_timer_delete( ql_timer* timer ) {
   for ( ql_timer** link = &timers; *link; link = &( *link )->next ) {
      if ( *link == timer ) {
         *link = timer->next;
         free( timer );
         return;
      }
   }
}

/* The main loop: until `end`, timers fire here and nowhere else. */
static void run_timers_until( int64_t end ) {
   for ( ;; ) {
      ql_timer* first = NULL;
      for ( ql_timer* timer = timers; timer; timer = timer->next ) {
         if ( timer->due && ( !first || timer->due < first->due ) ) {
            first = timer;
         }
      }
      int64_t wake = first && first->due < end ? first->due : end;
      int64_t left = wake - now();
      if ( left > 0 ) {
         struct timespec pause = { left / 1000, left % 1000 * 1000000 };
         nanosleep( &pause, NULL );
      }
      if ( wake == end ) {
         return;
      }
      /* Disarmed first: the function arms the timer again. */
      first->due = 0;
      first->function( first->argument );
   }
}

/* The library's entry functions, of the kinds that this host uses. */

static struct {
   ql_status ( *temp_sensor_init )( const char* );
   ql_status ( *fan_init )( const char* );
   ql_status ( *xcvr_init )( const char* );
   ql_status ( *led_init )( const char* );
   ql_temp_sensor* ( *temp_sensor_add )( const char*, float, float );
   ql_fan* ( *fan_add )( const char* );
   ql_xcvr* ( *xcvr_add )( const char* );
   ql_led* ( *led_add )( const char* );
} library;

static void* plugin;

static void fail( const char* what, const char* why ) {
   fprintf( stderr, "host: %s: %s\n", what, why );
   exit( 1 );
}

/* C has no conversion from an object pointer to a function pointer; POSIX has this one. */
static void find( void* function, const char* name ) {
   void* address = dlsym( plugin, name );
   if ( !address ) {
      fail( name, dlerror() );
   }
   *( void** )function = address;
}

static void load( const char* path ) {
   plugin = dlopen( path, RTLD_NOW | RTLD_LOCAL );
   if ( !plugin ) {
      fail( "cannot load the library", dlerror() );
   }
   find( &library.temp_sensor_init, "ql_temp_sensor_init" );
   find( &library.fan_init, "ql_fan_init" );
   find( &library.xcvr_init, "ql_xcvr_init" );
   find( &library.led_init, "ql_led_init" );
   find( &library.temp_sensor_add, "ql_temp_sensor_add" );
   find( &library.fan_add, "ql_fan_add" );
   find( &library.xcvr_add, "ql_xcvr_add" );
   find( &library.led_add, "ql_led_add" );
}

static const char* name_of( ql_status status ) {
   static const char* const names[] = { "ok", "not present", "device error", "invalid argument", "I/O error",
      "not supported", "failed" };
   return status < sizeof( names ) / sizeof( *names ) ? names[status] : "unknown status";
}

/* The topology, handed to every kind that is used. */

static char* read_file( const char* path ) {
   FILE* file = fopen( path, "r" );
   char* text = calloc( 1, 1 << 20 );
   if ( !file || !text ) {
      fail( path, "cannot be read" );
   }
   size_t length = fread( text, 1, ( 1 << 20 ) - 1, file );
   fclose( file );
   if ( length == 0 ) {
      fail( path, "is empty" );
   }
   return text;
}

static void init( ql_status ( *kind_init )( const char* ), const char* topology ) {
   ql_status status = kind_init( topology );
   if ( status != QL_STATUS_OK ) {
      fail( "cannot start the library", name_of( status ) );
   }
}

static void init_all( const char* path ) {
   char* topology = read_file( path );
   init( library.temp_sensor_init, topology );
   init( library.fan_init, topology );
   init( library.xcvr_init, topology );
   init( library.led_init, topology );
   /* The library has its own copy. */
   free( topology );
}

/* The objects. In a product these texts come from a document, as objects.json does for quillonctl. */

static const char inlet_args[] =
   "{ \"did\": 1, \"driver\": \"PCT2075\", \"address\": { \"address\": 72 }, \"name\": \"inlet\" }";

static const char fan_args[] =
   "{ \"did\": 2, \"driver\": \"EMC2305\", \"address\": { \"address\": 45 }, \"name\": \"fans\","
   "  \"driverArgs\": { \"fanId\": 1, \"maxRpm\": 20000, \"registerOffset\": 0 } }";

static const char sfp_args[] =
   "{ \"did\": 4, \"driver\": \"SelvaneXcvr\", \"address\": { \"address\": 49 }, \"name\": \"cages\","
   "  \"driverArgs\": { \"id\": 1, \"type\": \"sfp\","
   "    \"presenceReg\": 16, \"presenceBit\": 0, \"presenceActiveHigh\": false,"
   "    \"rxLosReg\": 16, \"rxLosBit\": 4, \"rxLosActiveHigh\": true,"
   "    \"txFaultReg\": 31, \"txFaultBit\": 0, \"txFaultActiveHigh\": true,"
   "    \"txDisableReg\": 31, \"txDisableBit\": 4, \"txDisableActiveHigh\": true } }";

static const char led_args[] =
   "{ \"did\": 5, \"driver\": \"SelvaneSystemLed\", \"address\": { \"address\": 49 }, \"name\": \"leds\","
   "  \"driverArgs\": { \"reg\": 64, \"id\": 1 } }";

static ql_temp_sensor* inlet;
static ql_fan* fan;
static ql_xcvr* sfp;
static ql_led* led;

static void add_all( void ) {
   inlet = library.temp_sensor_add( inlet_args, 45.0F, 55.0F );
   fan = library.fan_add( fan_args );
   sfp = library.xcvr_add( sfp_args );
   led = library.led_add( led_args );
   if ( !inlet || !fan || !sfp || !led ) {
      fail( "an object was not made", "the trace tells why" );
   }
}

/* Whether a table reaches as far as a slot, and has it. A library may be older or newer than this program. */
#define HAS( ops, slot )                                                                                     \
   ( ( ops )->size >= ( size_t )( ( const char* )( &( ops )->slot + 1 ) - ( const char* )( ops ) ) &&        \
      ( ops )->slot )

/* Each prints one line. @return whether all is well */

static bool show_temperature( void ) {
   float degrees = 0;
   ql_status status = QL_STATUS_NOT_SUPPORTED;
   if ( HAS( inlet->ops, get_temperature ) ) {
      status = inlet->ops->get_temperature( inlet, &degrees );
   }
   if ( status != QL_STATUS_OK ) {
      printf( "inlet: %s\n", name_of( status ) );
      return false;
   }
   printf( "inlet: %.3f C\n", ( double )degrees );
   return degrees < 45.0F;
}

static bool show_fan( void ) {
   int rpm = 0;
   ql_status status = QL_STATUS_NOT_SUPPORTED;
   if ( HAS( fan->ops, get_rpm ) ) {
      status = fan->ops->get_rpm( fan, &rpm );
   }
   if ( status != QL_STATUS_OK ) {
      printf( "fan1: %s\n", name_of( status ) );
      return false;
   }
   printf( "fan1: %d rpm\n", rpm );
   return rpm >= 2000;
}

static bool show_cage( void ) {
   ql_status status = QL_STATUS_NOT_SUPPORTED;
   const ql_sfp_ops* ops = &sfp->ops->by_kind.sfp;
   if ( sfp->ops->kind == QL_XCVR_SFP && HAS( ops, get_presence ) ) {
      status = ops->get_presence( sfp );
   }
   if ( status == QL_STATUS_NOT_PRESENT ) {
      printf( "sfp1: empty\n" );
      return true;
   }
   int lost = 0;
   if ( status == QL_STATUS_OK ) {
      status = HAS( ops, get_rx_los ) ? ops->get_rx_los( sfp, &lost ) : QL_STATUS_NOT_SUPPORTED;
   }
   if ( status != QL_STATUS_OK ) {
      printf( "sfp1: %s\n", name_of( status ) );
      return false;
   }
   printf( "sfp1: %s\n", lost ? "no light" : "light" );
   return !lost;
}

static void show_all( void ) {
   bool well = show_temperature();
   well = show_fan() && well;
   well = show_cage() && well;
   ql_status status = QL_STATUS_NOT_SUPPORTED;
   if ( HAS( led->ops, set_light_setting ) ) {
      status = led->ops->set_light_setting( led, well ? QL_LED_GOOD : QL_LED_WARNING );
   }
   if ( status != QL_STATUS_OK ) {
      printf( "led.status: %s\n", name_of( status ) );
   }
   fflush( stdout );
}

int main( int argc, char** argv ) {
   int rounds = 1;
   for ( int option; ( option = getopt( argc, argv, "t:n:" ) ) != -1; ) {
      if ( option == 't' ) {
         trace_level = atoi( optarg );
      } else if ( option == 'n' ) {
         rounds = atoi( optarg );
      } else {
         return 2;
      }
   }
   if ( argc - optind != 2 ) {
      fprintf( stderr, "usage: host [-t TRACE_LEVEL] [-n ROUNDS] PLUGIN TOPOLOGY\n" );
      return 2;
   }
   load( argv[optind] );
   init_all( argv[optind + 1] );
   add_all();
   for ( int round = 0; round < rounds; ++round ) {
      show_all();
      if ( round + 1 < rounds ) {
         run_timers_until( now() + 2000 );
      }
   }
   return 0;
}
