#include "Usage.h"

#include "Server.h"

#include <fmt/format.h>

#include <cstdlib>
#include <fstream>

#include <unistd.h>

Usage usageOf( pid_t process ) {
   // In pages: the whole size, then what is resident.
   std::ifstream stream( fmt::format( "/proc/{}/statm", process ) );
   size_t size = 0;
   size_t resident = 0;
   stream >> size >> resident;
   return { resident * static_cast<size_t>( sysconf( _SC_PAGESIZE ) ) / 1024, countDescriptors( process ) };
}

std::string textOf( const Usage& usage ) {
   return fmt::format( "{} KiB, {} descriptors", usage.kilobytes, usage.descriptors );
}

std::string textOf( std::chrono::steady_clock::duration time ) {
   return fmt::format( "{} ms", std::chrono::ceil<std::chrono::milliseconds>( time ).count() );
}

int numberFrom( const char* variable, int byDefault ) {
   auto text = getenv( variable );
   return text ? std::stoi( text ) : byDefault;
}
