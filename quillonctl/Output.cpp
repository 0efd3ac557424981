#include "Output.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

void write( const std::string& text ) {
   if ( fwrite( text.data(), 1, text.size(), stdout ) != text.size() || fflush( stdout ) != 0 ) {
      throw OutputError( fmt::format( "cannot write the output: {}", strerror( errno ) ) );
   }
}

bool colourIsWelcome() {
   auto refusal = getenv( "NO_COLOR" );
   return isatty( STDOUT_FILENO ) && ( !refusal || !*refusal );
}
