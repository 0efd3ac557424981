/* A process without the host services: the plug-in loads into it all the same.
   Usage: no_services PLUGIN */
#include <dlfcn.h>
#include <stdio.h>

int main( int argc, char** argv ) {
   if ( argc != 2 ) {
      fprintf( stderr, "usage: no_services PLUGIN\n" );
      return 2;
   }
   if ( dlsym( dlopen( NULL, RTLD_NOW ), "ql_trace" ) ) {
      fprintf( stderr, "this process has the host services\n" );
      return 1;
   }
   void* plugin = dlopen( argv[1], RTLD_NOW );
   if ( !plugin ) {
      fprintf( stderr, "%s\n", dlerror() );
      return 1;
   }
   if ( !dlsym( plugin, "ql_fan_init" ) ) {
      fprintf( stderr, "%s\n", dlerror() );
      return 1;
   }
   return dlclose( plugin ) == 0 ? 0 : 1;
}
