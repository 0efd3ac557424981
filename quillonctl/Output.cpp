#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

void write( const std::string& text ) {
   if ( fwrite( text.data(), 1, text.size(), stdout ) != text.size() || fflush( stdout ) != 0 ) {
      throw std::system_error( errno, std::generic_category(), "cannot write the output" );
   }
}
