#include "Task.h"

#include "Names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

namespace {

using Words = std::vector<std::string>;

/** The words that a command takes at a place behind the object's name; none where it takes any, or no more.
 */
Words choicesAt( const Command& command, size_t place ) {
   if ( !command.word.empty() && place == 0 ) {
      return { std::string( command.word ) };
   }
   auto index = place - ( command.word.empty() ? 0 : 1 );
   return index < command.arguments.size() ? command.arguments[index].choices : Words {};
}

size_t lengthOf( const Command& command ) {
   return command.arguments.size() + ( command.word.empty() ? 0 : 1 );
}

/** Whether a command can be meant by some words, or by the beginning of them. */
bool fits( const Command& command, const Words& words, size_t count ) {
   if ( count > lengthOf( command ) ) {
      return false;
   }
   for ( size_t place = 0; place < count; ++place ) {
      auto choices = choicesAt( command, place );
      if ( !choices.empty() && std::find( choices.begin(), choices.end(), words[place] ) == choices.end() ) {
         return false;
      }
   }
   return true;
}

/** Whether a command has the name of an object before its own words. */
bool takesName( const Kind& kind, const Command& command ) {
   return !kind.isSingle && command.scope == Scope::Named;
}

/** The commands of a kind that take the name of an object, or those that take none. */
std::vector<const Command*> commandsOf( const Kind& kind, bool named ) {
   std::vector<const Command*> commands;
   for ( auto& command : kind.commands ) {
      if ( takesName( kind, command ) == named ) {
         commands.push_back( &command );
      }
   }
   return commands;
}

using Commands = std::vector<const Command*>;

/** The words from which a command can be meant at a place, for those that the words before fit. */
Words choicesBehind( const Commands& commands, const Words& words, size_t place ) {
   Words all;
   for ( auto command : commands ) {
      if ( fits( *command, words, place ) ) {
         for ( auto& choice : choicesAt( *command, place ) ) {
            if ( std::find( all.begin(), all.end(), choice ) == all.end() ) {
               all.push_back( choice );
            }
         }
      }
   }
   return all;
}

/** Words that may stand where a name does. */
Words wordsInPlaceOfNames( const Kind& kind ) { return choicesBehind( commandsOf( kind, false ), {}, 0 ); }

bool contains( const Words& words, const std::string& word ) {
   return std::find( words.begin(), words.end(), word ) != words.end();
}

/** What is given of a task before the words of the command itself. */
struct Beginning {
   /** As it was said. */
   std::string said;
   Words rest;
   Commands commands;
};

Beginning beginningOf( const Board& board, const Kind& kind, const Words& words ) {
   auto others = wordsInPlaceOfNames( kind );
   if ( kind.isSingle || ( !words.empty() && contains( others, words.front() ) ) ) {
      return { std::string( kind.command ), words, commandsOf( kind, false ) };
   }
   if ( words.empty() ) {
      throw InputError(
         { fmt::format( "{} needs the name of an object{}{}; {}", kind.command, others.empty() ? "" : ", or ",
            fmt::join( others, ", or " ), suggestion( "", namesOf( board, kind ) ) ) } );
   }
   return { fmt::format( "{} {}", kind.command, words.front() ), { words.begin() + 1, words.end() },
      commandsOf( kind, true ) };
}

/** Says which word is the first that no command has there. */
[[noreturn]] void refuse( const Kind& kind, const Beginning& beginning ) {
   auto& [said, words, commands] = beginning;
   auto before = said;
   for ( size_t place = 0; place < words.size(); ++place ) {
      auto choices = choicesBehind( commands, words, place );
      auto isKnown = std::any_of( commands.begin(), commands.end(),
         [&, &given = words]( auto command ) { return fits( *command, given, place + 1 ); } );
      if ( !isKnown && !choices.empty() ) {
         throw InputError( { fmt::format(
            "{} knows no {}; {}", before, words[place], suggestion( words[place], choices ) ) } );
      }
      before += ' ' + words[place];
   }
   Words forms;
   std::transform( commands.begin(), commands.end(), std::back_inserter( forms ),
      [&]( auto command ) { return formOf( kind, *command ); } );
   throw InputError(
      { fmt::format( "{} is no whole command; use {}", before, fmt::join( forms, ", or " ) ) } );
}

std::vector<const ObjectEntry*> objectsOf(
   const Board& board, const Kind& kind, const Command& command, const Words& words ) {
   if ( kind.isSingle ) {
      return { &theOnly( board, kind ) };
   }
   if ( command.scope == Scope::Named ) {
      return find( board, kind, words.front(), {} );
   }
   std::vector<const ObjectEntry*> objects;
   for ( auto& object : board.objects ) {
      if ( object.kind == &kind ) {
         objects.push_back( &object );
      }
   }
   if ( objects.empty() ) {
      throw InputError( { fmt::format( "the board {} has no object of kind {}", board.name, kind.name ) } );
   }
   if ( command.scope == Scope::OnePerDevice ) {
      std::set<std::optional<uint32_t>> devices;
      std::erase_if( objects, [&]( auto object ) { return !devices.insert( object->did ).second; } );
   }
   return objects;
}

void checkFreeArguments( const Task& task, const std::string& said ) {
   auto& word = task.command->word;
   auto before = word.empty() ? said : fmt::format( "{} {}", said, word );
   for ( size_t i = 0; i < task.arguments.size(); ++i ) {
      auto& argument = task.command->arguments[i];
      for ( auto object : task.objects ) {
         auto wanted = argument.wanted ? argument.wanted( *object, task.arguments[i] ) : "";
         if ( !wanted.empty() ) {
            throw InputError( { fmt::format(
               "{}: {} must be {}, not {}", before, argument.name, wanted, task.arguments[i] ) } );
         }
      }
   }
}

} // namespace

Task taskOf( const Board& board, const Kind& kind, const Words& words ) {
   auto beginning = beginningOf( board, kind, words );
   auto& [said, rest, commands] = beginning;
   // A name that is wrong comes first, as it does on the command line.
   if ( !commands.empty() && takesName( kind, *commands.front() ) ) {
      find( board, kind, words.front(), wordsInPlaceOfNames( kind ) );
   }
   for ( auto command : commands ) {
      if ( lengthOf( *command ) == rest.size() && fits( *command, rest, rest.size() ) ) {
         Task task { objectsOf( board, kind, *command, words ), command,
            { rest.begin() + ( command->word.empty() ? 0 : 1 ), rest.end() } };
         checkFreeArguments( task, said );
         return task;
      }
   }
   refuse( kind, beginning );
}

std::string formOf( const Kind& kind, const Command& command ) {
   std::string form( kind.command );
   if ( takesName( kind, command ) ) {
      form += " NAME";
   }
   if ( !command.word.empty() ) {
      form += fmt::format( " {}", command.word );
   }
   for ( auto& argument : command.arguments ) {
      form += argument.choices.empty() ? fmt::format( " {}", argument.name )
                                       : fmt::format( " {}", fmt::join( argument.choices, "|" ) );
   }
   return form;
}

Words flagsOf( const Kind& kind ) {
   Words flags;
   for ( auto& command : kind.commands ) {
      for ( auto& argument : command.arguments ) {
         std::copy_if( argument.choices.begin(), argument.choices.end(), std::back_inserter( flags ),
            []( auto& choice ) { return choice.starts_with( "--" ); } );
      }
   }
   return flags;
}

Words nextWords( const Board& board, const Kind& kind, const Words& words ) {
   auto others = wordsInPlaceOfNames( kind );
   if ( !kind.isSingle && words.empty() ) {
      auto next = namesOf( board, kind );
      next.insert( next.end(), others.begin(), others.end() );
      return next;
   }
   auto named = !kind.isSingle && !contains( others, words.front() );
   Words rest( words.begin() + ( named ? 1 : 0 ), words.end() );
   return choicesBehind( commandsOf( kind, named ), rest, rest.size() );
}
