#include "Names.h"

#include "Nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include <fnmatch.h>

namespace {

bool matches( const std::string& pattern, const ObjectEntry& object ) {
   return fnmatch( pattern.c_str(), object.name.c_str(), 0 ) == 0;
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
   auto meant = didYouMean( wrong, words );
   if ( !meant.empty() ) {
      return meant;
   }
   constexpr size_t listable = 20;
   if ( words.empty() ) {
      return "there are none";
   }
   return words.size() > listable
             ? "status without a name shows all"
             : fmt::format( "there {} {}", words.size() == 1 ? "is" : "are", fmt::join( words, ", " ) );
}
