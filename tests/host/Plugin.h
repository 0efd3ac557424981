#ifndef HOST_PLUGIN_H
#define HOST_PLUGIN_H

#include "quillon/ql.h"

#include <dlfcn.h>
#include <stdexcept>
#include <string>

/**
 * The plug-in as a host has it: opened by its file, reached through its entry functions. It is never closed,
 * since what it has handed out lives until the process ends.
 */
class Plugin {
   static void* open() {
      auto opened = dlopen( QUILLON_PLUGIN, RTLD_NOW | RTLD_LOCAL );
      return opened ? opened : throw std::runtime_error( dlerror() );
   }

   template <typename Function>
   Function entry( const char* name ) const {
      auto address = dlsym( handle, name );
      return address ? reinterpret_cast<Function>( address ) : throw std::runtime_error( dlerror() );
   }

public:
   void* const handle = open();

#define QL_ENTRY( name ) decltype( &::ql_##name ) const name = entry<decltype( &::ql_##name )>( "ql_" #name )
   QL_ENTRY( system_init );
   QL_ENTRY( temp_sensor_init );
   QL_ENTRY( fan_init );
   QL_ENTRY( psu_init );
   QL_ENTRY( led_init );
   QL_ENTRY( slot_init );
   QL_ENTRY( xcvr_init );
   QL_ENTRY( gpio_init );
   QL_ENTRY( poe_port_init );
   QL_ENTRY( system_add );
   QL_ENTRY( temp_sensor_add );
   QL_ENTRY( fan_add );
   QL_ENTRY( psu_add );
   QL_ENTRY( led_add );
   QL_ENTRY( slot_add );
   QL_ENTRY( xcvr_add );
   QL_ENTRY( gpio_add );
   QL_ENTRY( poe_port_add );
#undef QL_ENTRY
};

#endif
