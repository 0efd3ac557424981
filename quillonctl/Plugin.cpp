#include "Plugin.h"

#include "Errors.h"

#include <fmt/format.h>

#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

namespace {

/** Why a file could not be loaded, as dlopen has it, and what to do about it. */
std::string whyNot( const std::string& path, const std::string& reason ) {
   // The loader begins with the file that it means.
   if ( !reason.starts_with( path + ":" ) ) {
      return fmt::format( "cannot load the plug-in {}, which needs {}; put that file beside the plug-in, or "
                          "name another plug-in with --plugin",
         path, reason );
   }
   auto isClosed = std::filesystem::exists( path ) && access( path.c_str(), R_OK ) != 0;
   return fmt::format( "cannot load the plug-in: {}; {}", reason,
      isClosed ? "make the file readable, or name another with --plugin"
               : "name the right file with --plugin" );
}

/** Without a slash in it, dlopen would look for a name in the system's folders. */
std::string wholePath( const std::string& path ) {
   if ( path.empty() ) {
      throw HostError(
         QL_STATUS_FAILED, "the name of the plug-in is empty; name the right file with --plugin" );
   }
   return std::filesystem::absolute( path ).lexically_normal();
}

} // namespace

Plugin::Plugin( const std::string& path )
   : path_( wholePath( path ) ), handle_( dlopen( path_.c_str(), RTLD_NOW | RTLD_LOCAL ) ) {
   if ( !handle_ ) {
      throw HostError( QL_STATUS_FAILED, whyNot( path_, dlerror() ) );
   }
}

void* Plugin::symbol( const std::string& name ) const {
   auto address = dlsym( handle_, name.c_str() );
   if ( !address ) {
      throw HostError( QL_STATUS_FAILED,
         fmt::format( "{} is no platform library: it lacks the symbol {}; name the right file with --plugin",
            path_, name ) );
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
