#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

void complainOf( const std::vector<const StatusLine*>& failed ) {
   // A board has several objects of some kinds, and hundreds of none; one reason for many is told once.
   constexpr ptrdiff_t many = 5;
   std::set<std::string> told;
   for ( auto line : failed ) {
      auto& message = line->reading.failure->message;
      auto count = std::count_if( failed.begin(), failed.end(),
         [&]( auto other ) { return other->reading.failure->message == message; } );
      if ( count < many ) {
         complain( fmt::format( "{}: {}", line->object->name, message ) );
      } else if ( told.insert( message ).second ) {
         complain( fmt::format( "{} and {} others: {}", line->object->name, count - 1, message ) );
      }
   }
}
