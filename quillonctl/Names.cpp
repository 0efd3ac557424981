#include "Names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

#include <fnmatch.h>

namespace {

bool matches( const std::string& pattern, const ObjectEntry& object ) {
   return fnmatch( pattern.c_str(), object.name.c_str(), 0 ) == 0;
}

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

std::vector<const ObjectEntry*> choose( const Board& board, const std::vector<std::string>& patterns ) {
   std::vector<std::string> all;
   std::transform( board.objects.begin(), board.objects.end(), std::back_inserter( all ),
      []( auto& object ) { return object.name; } );
   std::vector<std::string> unknown;
   for ( auto& pattern : patterns ) {
      auto hits = std::any_of( board.objects.begin(), board.objects.end(),
         [&]( auto& object ) { return matches( pattern, object ); } );
      if ( !hits ) {
         unknown.push_back( fmt::format(
            "the board {} has no object {}; {}", board.name, pattern, suggestion( pattern, all ) ) );
      }
   }
   if ( !unknown.empty() ) {
      throw InputError( unknown );
   }
   std::vector<const ObjectEntry*> chosen;
   for ( auto& object : board.objects ) {
      auto wanted = [&]( auto& pattern ) { return matches( pattern, object ); };
      if ( patterns.empty() || std::any_of( patterns.begin(), patterns.end(), wanted ) ) {
         chosen.push_back( &object );
      }
   }
   return chosen;
}

std::vector<std::string> namesOf( const Board& board, const Kind& kind ) {
   std::vector<std::string> names;
   for ( auto& object : board.objects ) {
      if ( object.kind == &kind ) {
         names.push_back( object.name );
      }
   }
   return names;
}

std::vector<const ObjectEntry*> find( const Board& board, const Kind& kind, const std::string& pattern,
   const std::vector<std::string>& others ) {
   std::vector<const ObjectEntry*> found;
   for ( auto& object : board.objects ) {
      if ( object.kind == &kind && matches( pattern, object ) ) {
         found.push_back( &object );
      }
   }
   if ( found.empty() ) {
      auto words = namesOf( board, kind );
      words.insert( words.end(), others.begin(), others.end() );
      throw InputError( { fmt::format(
         "the board {} has no {} {}; {}", board.name, kind.name, pattern, suggestion( pattern, words ) ) } );
   }
   return found;
}

const ObjectEntry& theOnly( const Board& board, const Kind& kind ) {
   static const ObjectEntry notAskedFor { &kind, std::string( kind.name ), {}, {}, {}, {}, "{}" };
   auto found = std::find_if(
      board.objects.begin(), board.objects.end(), [&]( auto& object ) { return object.kind == &kind; } );
   return found == board.objects.end() ? notAskedFor : *found;
}

std::string suggestion( const std::string& wrong, const std::vector<std::string>& words ) {
   std::multimap<size_t, std::string> near;
   for ( auto& word : words ) {
      auto far = distance( wrong, word );
      if ( far <= std::max<size_t>( 2, wrong.size() / 3 ) && far < std::max( wrong.size(), word.size() ) ) {
         near.emplace( far, word );
      }
   }
   if ( near.empty() ) {
      constexpr size_t listable = 20;
      if ( words.empty() ) {
         return "there are none";
      }
      return words.size() > listable
                ? "status without a name shows all"
                : fmt::format( "there {} {}", words.size() == 1 ? "is" : "are", fmt::join( words, ", " ) );
   }
   std::vector<std::string> nearest;
   for ( auto it = near.begin(); it != near.end() && nearest.size() < 3; ++it ) {
      nearest.push_back( it->second );
   }
   return fmt::format( "did you mean {}?", fmt::join( nearest, " or " ) );
}
