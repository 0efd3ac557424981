#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

std::string forTerminal( std::string text ) {
   std::replace_if(
      text.begin(), text.end(), []( unsigned char c ) { return c < ' ' || c == 0x7F; }, '?' );
   return text;
}

void writeToErrors( const std::string& text ) {
   // Whoever throws of this has nowhere to say it, and loses what stdout was to get.
   fwrite( text.data(), 1, text.size(), stderr );
}

void complain( const std::string& sentence ) {
   writeToErrors( fmt::format( "quillonctl: {}\n", forTerminal( sentence ) ) );
}
