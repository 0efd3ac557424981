/**
 * Loaded before all else into quillonctl and the server, this makes time pass ten times as fast for both, so
 * that the controller's waits of seconds keep their proportions and a test does not take them. Firmware files
 * are looked for in the folder FIRMWARE_FOLDER.
 */
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr long factor = 10;
constexpr long billion = 1'000'000'000;

void pause( long nanoseconds ) {
   auto left = nanoseconds / factor;
   timespec time { left / billion, left % billion };
   clock_nanosleep( CLOCK_MONOTONIC, 0, &time, nullptr );
}

} // namespace

extern "C" {

int usleep( useconds_t time ) {
   pause( time * 1000L );
   return 0;
}

unsigned sleep( unsigned seconds ) {
   pause( seconds * billion );
   return 0;
}

int clock_gettime( clockid_t clock, timespec* time ) {
   auto result = static_cast<int>( syscall( SYS_clock_gettime, clock, time ) );
   if ( result == 0 && clock == CLOCK_MONOTONIC ) {
      auto nanoseconds = time->tv_nsec * factor;
      *time = { time->tv_sec * factor + nanoseconds / billion, nanoseconds % billion };
   }
   return result;
}

/** What the standard library's file streams open files with. */
FILE* fopen64( const char* path, const char* mode ) {
   using Open = FILE* ( * )( const char*, const char* );
   static auto next = reinterpret_cast<Open>( dlsym( RTLD_NEXT, "fopen64" ) );
   const std::string place = "/usr/share/firmware/";
   std::string wanted = path;
   auto folder = getenv( "FIRMWARE_FOLDER" );
   if ( folder && wanted.starts_with( place ) ) {
      wanted = std::string( folder ) + '/' + wanted.substr( place.size() );
   }
   return next( wanted.c_str(), mode );
}
}
