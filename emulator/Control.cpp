#include "Control.h"

#include "FaultText.h"
#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace Emulator {

namespace {

using Words = std::vector<std::string_view>;

template <typename... Arguments>
std::invalid_argument failure( fmt::format_string<Arguments...> text, Arguments&&... arguments ) {
   return std::invalid_argument( fmt::format( text, std::forward<Arguments>( arguments )... ) );
}

Words split( std::string_view line ) {
   constexpr std::string_view blanks = " \t\r\n\v\f";
   Words words;
   while ( true ) {
      auto begin = line.find_first_not_of( blanks );
      if ( begin == line.npos ) {
         return words;
      }
      line.remove_prefix( begin );
      auto end = std::min( line.find_first_of( blanks ), line.size() );
      words.push_back( line.substr( 0, end ) );
      line.remove_prefix( end );
   }
}

/** The chip at a "BUS/ADDRESS", in which there is a slash, or null. */
Board::Place* chipAt( Board& board, std::string_view text ) {
   auto slash = text.find( '/' );
   auto bus = parseUnsigned( text.substr( 0, slash ) );
   auto address = parseUnsigned( text.substr( slash + 1 ) );
   return bus && address && *address <= 0x7F ? board.at( *bus, static_cast<uint8_t>( *address ) ) : nullptr;
}

/** A name has no slash. */
Board::Place& findChip( Board& board, std::string_view text ) {
   if ( text.find( '/' ) == text.npos ) {
      return board.named( text );
   }
   auto chip = chipAt( board, text );
   if ( !chip ) {
      throw failure( "no chip {}", printable( text ) );
   }
   return *chip;
}

std::string propertiesOf( const Chip& chip ) {
   std::vector<std::string> values;
   for ( auto& property : chip.properties() ) {
      values.push_back( fmt::format( "{}={}", property, chip.get( property ) ) );
   }
   return join( values, " " );
}

std::string get( Board& board, const Words& words ) {
   auto dot = words[0].find( '.' );
   auto& chip = *findChip( board, words[0].substr( 0, dot ) ).chip;
   return dot == words[0].npos ? propertiesOf( chip ) : chip.get( std::string( words[0].substr( dot + 1 ) ) );
}

std::string list( Board& board, const Words& words ) {
   if ( !words.empty() ) {
      return propertiesOf( *findChip( board, words[0] ).chip );
   }
   std::vector<std::string> chips;
   for ( auto& place : board.places() ) {
      chips.push_back(
         fmt::format( "{} {} {}", place.name, formatPlace( place.bus, place.address ), place.chip->part() ) );
   }
   return join( chips, "; " );
}

std::string set( Board& board, const Words& words ) {
   auto dot = words[0].find( '.' );
   auto& chip = *findChip( board, words[0].substr( 0, dot ) ).chip;
   if ( dot == words[0].npos ) {
      throw failure( "{} names no property", printable( words[0] ) );
   }
   chip.set( std::string( words[0].substr( dot + 1 ) ), std::string( words[1] ) );
   return "";
}

std::string reset( Board& board, const Words& words ) {
   findChip( board, words[0] ).chip->reset();
   return "";
}

/** A number alone is a bus. */
FaultPlace findFaultPlace( Board& board, std::string_view text ) {
   auto bus = parseUnsigned( text );
   if ( !bus ) {
      auto& chip = findChip( board, text );
      return { chip.bus, chip.address };
   }
   if ( !board.hasBus( *bus ) ) {
      throw failure( "no bus {}", *bus );
   }
   return { *bus };
}

std::string fault( Board& board, const Words& words ) {
   auto place = findFaultPlace( board, words[0] );
   if ( words[1] != "clear" ) {
      board.faults.put( place, parseFault( std::span( words ).subspan( 1 ) ) );
   } else if ( words.size() == 2 ) {
      board.faults.clear( place );
   } else {
      throw failure( "{} behind clear", printable( words[2] ) );
   }
   return "";
}

std::string faults( Board& board, const Words& ) {
   std::vector<std::string> texts;
   for ( auto& [place, kinds] : board.faults.all() ) {
      auto chip = place.address ? board.at( place.bus, *place.address ) : nullptr;
      auto name = chip ? chip->name : fmt::format( "{}", place.bus );
      for ( auto& [kind, fault] : kinds ) {
         texts.push_back( fmt::format( "{} {}", name, format( fault ) ) );
      }
   }
   return join( texts, "; " );
}

std::string help( Board& board, const Words& words );

struct Command {
   std::string_view name;
   std::string_view arguments;
   size_t least;
   size_t most;
   /** Gets the words behind the command's name. */
   std::string ( *run )( Board& board, const Words& words );
};

constexpr Command commands[] = {
   { "list", " [CHIP]", 0, 1, list },
   { "get", " CHIP[.PROPERTY]", 1, 1, get },
   { "set", " CHIP.PROPERTY VALUE", 2, 2, set },
   { "reset", " CHIP", 1, 1, reset },
   { "fault", " PLACE KIND [DURATION] [N]", 2, 4, fault },
   { "faults", "", 0, 0, faults },
   { "help", " [CHIP]", 0, 1, help },
};

std::string help( Board& board, const Words& words ) {
   if ( !words.empty() ) {
      auto actions = findChip( board, words[0] ).chip->actions();
      return actions.empty() ? "no actions" : actions;
   }
   std::vector<std::string> texts;
   for ( auto& command : commands ) {
      texts.push_back( fmt::format( "{}{}", command.name, command.arguments ) );
   }
   texts.push_back( "CHIP ACTION" );
   return fmt::format(
      "{}; PLACE is a chip or a bus; KIND is {} or clear", join( texts, "; " ), join( faultKinds(), ", " ) );
}

std::string run( Board& board, const Command& command, const Words& words ) {
   if ( words.size() < command.least || words.size() > command.most ) {
      throw failure( "usage: {}{}", command.name, command.arguments );
   }
   return command.run( board, words );
}

std::string act( Chip& chip, const Words& words ) {
   if ( words.empty() ) {
      auto actions = chip.actions();
      throw failure( "{}", actions.empty() ? "no actions" : "actions: " + actions );
   }
   chip.act( words );
   return "";
}

std::invalid_argument unknownCommand( const Board& board, std::string_view word ) {
   std::vector<std::string> names;
   for ( auto& command : commands ) {
      names.emplace_back( command.name );
   }
   for ( auto& place : board.places() ) {
      names.push_back( place.name );
   }
   return failure( "no command {}{}", printable( word ), suggestion( word, names ) );
}

std::string answer( Board& board, std::string_view line ) {
   auto words = split( line );
   if ( words.empty() ) {
      throw failure( "empty line; try help" );
   }
   auto first = words[0];
   words.erase( words.begin() );
   auto command = std::ranges::find( commands, first, &Command::name );
   if ( command != std::end( commands ) ) {
      return run( board, *command, words );
   }
   if ( first.find( '/' ) != first.npos || board.find( std::string( first ) ) ) {
      return act( *findChip( board, first ).chip, words );
   }
   throw unknownCommand( board, first );
}

} // namespace

std::string control( Board& board, std::string_view line ) {
   board.advance();
   try {
      auto text = answer( board, line );
      board.settle();
      return text.empty() ? "ok" : "ok " + text;
   } catch ( const std::exception& error ) {
      return fmt::format( "error {}", error.what() );
   }
}

} // namespace Emulator
