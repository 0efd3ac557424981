#include "Output.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

void write( const std::string& text ) {
   if ( fwrite( text.data(), 1, text.size(), stdout ) != text.size() || fflush( stdout ) != 0 ) {
      throw OutputError( fmt::format( "cannot write the output: {}", strerror( errno ) ) );
   }
}
