#include "CompleteCommand.h"

#include "Output.h"
#include "Task.h"

#include <algorithm>
#include <charconv>

namespace {

using Words = std::vector<std::string>;

Words namesOfAll( const Board& board ) {
   Words names;
   std::transform( board.objects.begin(), board.objects.end(), std::back_inserter( names ),
      []( auto& object ) { return object.name; } );
   return names;
}

/** What may stand behind a command and further words. */
Words behind( const Options& options, const std::string& command, const Words& words ) {
   if ( command == "status" || command == "watch" ) {
      return namesOfAll( Board::load( options.board ) );
   }
   auto all = kinds();
   auto kind =
      std::find_if( all.begin(), all.end(), [&]( auto candidate ) { return candidate->command == command; } );
   return kind == all.end() ? Words {} : nextWords( Board::load( options.board ), **kind, words );
}

} // namespace

int completeCommand( const Options& options, const Words& commands, const Words& flags, const Words& words ) {
   size_t place = 0;
   auto number = words.empty() ? "" : words.front();
   auto [stop, error] = std::from_chars( number.data(), number.data() + number.size(), place );
   if ( error != std::errc() || stop != number.data() + number.size() || place + 1 >= words.size() ) {
      throw InputError( { "complete needs the place of a word, and that many words and one more" } );
   }
   auto& current = words[place + 1];
   Words before( words.begin() + 1, words.begin() + 1 + static_cast<ptrdiff_t>( place ) );

   auto candidates = current.starts_with( '-' ) ? flags
                     : before.empty()
                        ? commands
                        : behind( options, before.front(), { before.begin() + 1, before.end() } );
   std::string text;
   for ( auto& candidate : candidates ) {
      if ( candidate.starts_with( current ) ) {
         text += candidate + '\n';
      }
   }
   write( text );
   return exitGood;
}
