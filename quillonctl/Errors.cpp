#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

std::string forTerminal( std::string text ) {
   std::replace_if(
      text.begin(), text.end(), []( unsigned char c ) { return c < ' ' || c == 0x7F; }, '?' );
   return text;
}

void complain( const std::string& sentence ) {
   fmt::print( stderr, "quillonctl: {}\n", forTerminal( sentence ) );
}
