#include "Plugin.h"

#include "Errors.h"

#include <fmt/format.h>

#include <filesystem>

#include <dlfcn.h>

Plugin::Plugin( const std::string& path )
   // Without a slash in it, dlopen would look for the name in the system's folders.
   : path_( std::filesystem::absolute( path ).lexically_normal() )
   , handle_( dlopen( path_.c_str(), RTLD_NOW | RTLD_LOCAL ) ) {
   if ( !handle_ ) {
      throw HostError( QL_STATUS_FAILED,
         fmt::format( "cannot load the plug-in: {}; name the right file with --plugin", dlerror() ) );
   }
}

void* Plugin::symbol( const std::string& name ) const {
   auto address = dlsym( handle_, name.c_str() );
   if ( !address ) {
      throw HostError( QL_STATUS_FAILED,
         fmt::format(
            "{} is no plug-in of this kind: it lacks {}; name the right file with --plugin", path_, name ) );
   }
   return address;
}

void Plugin::require( std::string_view kind ) const {
   symbol( fmt::format( "ql_{}_init", kind ) );
   symbol( fmt::format( "ql_{}_add", kind ) );
}

ql_status Plugin::init( std::string_view kind, const std::string& topology ) const {
   return entry<ql_status( const char* )>( fmt::format( "ql_{}_init", kind ) )( topology.c_str() );
}
