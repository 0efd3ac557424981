#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

void complain( const std::string& sentence ) {
   auto line = sentence;
   // Keys of documents and words of the library may hold anything, and the line is for a terminal.
   std::replace_if(
      line.begin(), line.end(), []( unsigned char c ) { return c < ' ' || c == 0x7F; }, '?' );
   fmt::print( stderr, "quillonctl: {}\n", line );
}
