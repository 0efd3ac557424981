#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

std::vector<std::string> complaintsOf( const std::vector<const StatusLine*>& failed ) {
   // A board has several objects of some kinds, and hundreds of none; one reason for many is told once.
   constexpr ptrdiff_t many = 5;
   std::set<std::string> told;
   std::vector<std::string> sentences;
   for ( auto line : failed ) {
      auto& message = line->reading.failure->message;
      auto count = std::count_if( failed.begin(), failed.end(),
         [&]( auto other ) { return other->reading.failure->message == message; } );
      if ( count < many ) {
         sentences.push_back( fmt::format( "{}: {}", line->object->name, message ) );
      } else if ( told.insert( message ).second ) {
         sentences.push_back( fmt::format( "{} and {} others: {}", line->object->name, count - 1, message ) );
      }
   }
   return sentences;
}

void complainOf( const std::vector<const StatusLine*>& failed ) {
   for ( auto& sentence : complaintsOf( failed ) ) {
      complain( sentence );
   }
}

bool Complaints::tell( const std::vector<StatusLine>& lines ) {
   auto good = true;
   std::vector<const StatusLine*> failed;
   for ( auto& line : lines ) {
      auto& told = told_[line.object];
      auto& failure = line.reading.failure;
      auto message = failure ? failure->message : "";
      if ( failure && message != told ) {
         failed.push_back( &line );
      }
      told = message;
      good = good && !failure;
   }
   complainOf( failed );
   return good;
}
