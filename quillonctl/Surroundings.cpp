#include "Surroundings.h"

#include "Errors.h"
#include "Unreachable.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Surroundings {

namespace {

constexpr const char* simulationVariable = "SIMULATION_VMID";

std::string fromEnvironment( const char* variable, const char* otherwise ) {
   auto value = getenv( variable );
   return value ? value : otherwise;
}

/** 0, or the errno of why nobody answers on a socket. */
int tryConnect( const std::string& path ) {
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   if ( path.size() >= sizeof( address.sun_path ) ) {
      return ENAMETOOLONG;
   }
   path.copy( address.sun_path, path.size() );
   auto socket = ::socket( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 );
   if ( socket < 0 ) {
      return errno;
   }
   auto failed = connect( socket, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ) != 0;
   auto reason = errno;
   close( socket );
   // EAGAIN: a server is there, and has more callers waiting than it takes at once.
   return failed && reason != EAGAIN ? reason : 0;
}

} // namespace

fs::path programFolder() {
   std::error_code error;
   return fs::read_symlink( "/proc/self/exe", error ).parent_path();
}

void simulate() { setenv( simulationVariable, "1", 0 ); }

bool isSimulation() { return getenv( simulationVariable ); }

void requireSimulationFolder() {
   auto folder = fromEnvironment( "QUILLONLIB_SIMDIR", "/tmp/QuillonSimulationDevices" );
   std::error_code error;
   fs::create_directories( folder, error );
   if ( !error && access( folder.c_str(), W_OK | X_OK ) != 0 ) {
      error.assign( errno, std::generic_category() );
   }
   if ( error ) {
      throw HostError( QL_STATUS_IO_ERROR,
         fmt::format(
            "cannot write to the folder of the simulation, {}: {}; name another in QUILLONLIB_SIMDIR", folder,
            error.message() ) );
   }
}

fs::path serverSocket() {
   auto path = fromEnvironment( "QUILLON_SMBUS_SOCKET", "" );
   return path.empty() ? "/run/quillon/smbus.sock" : path;
}

void requireServer() {
   auto path = serverSocket().string();
   if ( auto reason = tryConnect( path ) ) {
      throw HostError(
         QL_STATUS_IO_ERROR, unreachable( "SMBus server", path, reason,
                                "start quillon-smbusd, name its socket with --socket, or use --sim" ) );
   }
}

} // namespace Surroundings
