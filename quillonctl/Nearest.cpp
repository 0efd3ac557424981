#include "Nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace {

/** How many characters have to be inserted, deleted or replaced to get from one text to the other. */
size_t distance( const std::string& from, const std::string& to ) {
   std::vector<size_t> row( to.size() + 1 );
   std::iota( row.begin(), row.end(), size_t { 0 } );
   for ( size_t i = 0; i < from.size(); ++i ) {
      auto diagonal = std::exchange( row[0], i + 1 );
      for ( size_t j = 0; j < to.size(); ++j ) {
         auto replaced = diagonal + ( from[i] == to[j] ? 0 : 1 );
         diagonal = row[j + 1];
         row[j + 1] = std::min( { replaced, row[j] + 1, diagonal + 1 } );
      }
   }
   return row.back();
}

} // namespace

std::vector<std::string> nearest( const std::string& wrong, const std::vector<std::string>& words ) {
   std::multimap<size_t, std::string> near;
   for ( auto& word : words ) {
      auto far = distance( wrong, word );
      if ( far <= std::max<size_t>( 2, wrong.size() / 3 ) && far < std::max( wrong.size(), word.size() ) ) {
         near.emplace( far, word );
      }
   }
   std::vector<std::string> found;
   for ( auto it = near.begin(); it != near.end() && found.size() < 3; ++it ) {
      found.push_back( it->second );
   }
   return found;
}

std::string didYouMean( const std::string& wrong, const std::vector<std::string>& words ) {
   auto near = nearest( wrong, words );
   return near.empty() ? "" : fmt::format( "did you mean {}?", fmt::join( near, " or " ) );
}

std::string didYouMeanKey( const std::string& wrong, const std::vector<std::string>& keys ) {
   auto near = nearest( wrong, keys );
   return near.empty() ? "" : fmt::format( "did you mean \"{}\"?", fmt::join( near, "\" or \"" ) );
}
