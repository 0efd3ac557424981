#include "Task.h"

#include "Names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

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

/** The words from which a command can be meant at a place, for those that the words before fit. */
Words choicesBehind( const Kind& kind, const Words& words, size_t place ) {
   Words all;
   for ( auto& command : kind.commands ) {
      if ( fits( command, words, place ) ) {
         for ( auto& choice : choicesAt( command, place ) ) {
            if ( std::find( all.begin(), all.end(), choice ) == all.end() ) {
               all.push_back( choice );
            }
         }
      }
   }
   return all;
}

Words formsOf( const Kind& kind ) {
   Words forms;
   for ( auto& command : kind.commands ) {
      forms.push_back( formOf( kind, command ) );
   }
   return forms;
}

/** Says which word is the first that no command of the kind has there. */
[[noreturn]] void refuse( const Kind& kind, const std::string& said, const Words& words ) {
   auto before = said;
   for ( size_t place = 0; place < words.size(); ++place ) {
      auto choices = choicesBehind( kind, words, place );
      auto isKnown = std::any_of( kind.commands.begin(), kind.commands.end(),
         [&]( auto& command ) { return fits( command, words, place + 1 ); } );
      if ( !isKnown && !choices.empty() ) {
         throw InputError( { fmt::format(
            "{} knows no {}; {}", before, words[place], suggestion( words[place], choices ) ) } );
      }
      before += ' ' + words[place];
   }
   throw InputError(
      { fmt::format( "{} is no whole command; use {}", before, fmt::join( formsOf( kind ), ", or " ) ) } );
}

void checkFreeArguments( const Task& task, const std::string& said ) {
   auto& word = task.command->word;
   auto before = word.empty() ? said : fmt::format( "{} {}", said, word );
   for ( size_t i = 0; i < task.arguments.size(); ++i ) {
      auto& argument = task.command->arguments[i];
      auto wanted = argument.wanted ? argument.wanted( *task.object, task.arguments[i] ) : "";
      if ( !wanted.empty() ) {
         throw InputError( { fmt::format(
            "{}: {} must be {}, not {}", before, argument.name, wanted, task.arguments[i] ) } );
      }
   }
}

} // namespace

Task taskOf( const Board& board, const Kind& kind, const Words& words ) {
   auto nameCount = kind.isSingle ? 0 : 1;
   if ( words.size() < static_cast<size_t>( nameCount ) ) {
      throw InputError( { fmt::format(
         "{} needs the name of an object; {}", kind.command, suggestion( "", namesOf( board, kind ) ) ) } );
   }
   auto& object = kind.isSingle ? theOnly( board, kind ) : find( board, kind, words.front() );
   Words rest( words.begin() + nameCount, words.end() );
   auto said = std::string( kind.command ) + ( kind.isSingle ? "" : ' ' + object.name );
   for ( auto& command : kind.commands ) {
      if ( lengthOf( command ) == rest.size() && fits( command, rest, rest.size() ) ) {
         Task task { &object, &command, { rest.begin() + ( command.word.empty() ? 0 : 1 ), rest.end() } };
         checkFreeArguments( task, said );
         return task;
      }
   }
   refuse( kind, said, rest );
}

std::string formOf( const Kind& kind, const Command& command ) {
   std::string form( kind.command );
   if ( !kind.isSingle ) {
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

Words nextWords( const Board& board, const Kind& kind, const Words& words ) {
   if ( !kind.isSingle && words.empty() ) {
      return namesOf( board, kind );
   }
   Words rest( words.begin() + ( kind.isSingle ? 0 : 1 ), words.end() );
   return choicesBehind( kind, rest, rest.size() );
}
