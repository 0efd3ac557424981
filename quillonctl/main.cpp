#include "Board.h"
#include "CheckCommand.h"
#include "CompleteCommand.h"
#include "EmuCommand.h"
#include "Errors.h"
#include "HostServices.h"
#include "Nearest.h"
#include "ObjectCommand.h"
#include "Output.h"
#include "ServeCommand.h"
#include "StatusCommand.h"
#include "Surroundings.h"
#include "Task.h"
#include "WatchCommand.h"

#include "common/StandardStreams.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>

namespace {

constexpr const char* footer = R"(
Exit status: 0 all is well, 1 something reported a failure, 2 wrong usage or wrong documents,
3 with --fail-on-alert: all was read, and something is past a limit.

Examples:
  quillonctl --sim status                    everything, without hardware
  quillonctl status 'in*' --interval 2       some objects, every two seconds
  quillonctl watch                           a screen of what changes
  quillonctl --json status | jq .objects     for scripts
  quillonctl fan fan1 rpm 9000               asks a fan for a speed
  quillonctl xcvr sfp1                       the signals of a module
  quillonctl poe status                      the PoE ports that have something plugged in
  quillonctl poe 'port[1-8]' on              power for eight ports
  quillonctl serve                           metrics and a page, on port 9633
  quillonctl check boards/selvane            looks for mistakes in the documents
  quillonctl emu set inlet.temperature 71.5  warms a sensor of the emulated board)";

std::string besideProgram( const char* path ) {
   return ( Surroundings::programFolder() / path ).lexically_normal().string();
}

/** What is wrong with a number of seconds, or nothing. */
std::string wrongInterval( const std::string& text ) {
   double seconds = 0;
   auto end = text.data() + text.size();
   auto [stop, error] = std::from_chars( text.data(), end, seconds );
   auto isRight = error == std::errc() && stop == end && seconds >= 0.001 && seconds <= 86400;
   return isRight ? "" : fmt::format( "must be a number of seconds from 0.001 to 86400, not {}", text );
}

class CommandLine {
public:
   CommandLine()
      : app_( "Shows the hardware of a Selvane switch through its platform library.", "quillonctl" ) {
      options_.board = besideProgram( QUILLON_BOARDS "/selvane" );
      options_.plugin = besideProgram( QUILLON_LIBRARIES "/libQuillonDriversSelvane.so" );
      app_.fallthrough();
      // Behind the first command the word of another may be the name of an object.
      app_.require_subcommand( 0, 1 );
      app_.footer( footer );
      app_.set_version_flag( "--version", "quillonctl " QUILLON_VERSION );
      app_.add_option( "--board", options_.board, "Folder with topology.json and objects.json" )
         ->type_name( "DIR" )
         ->envname( "QUILLON_BOARD" )
         ->default_str( options_.board );
      app_.add_option( "--plugin", options_.plugin, "File of the platform library" )
         ->type_name( "PATH" )
         ->envname( "QUILLON_PLUGIN" )
         ->default_str( options_.plugin );
      app_.add_flag( "--sim", options_.simulation, "Simulates the hardware with files, without a server" );
      app_.add_option( "--socket", options_.socket, "Socket of the SMBus server" )
         ->type_name( "PATH" )
         ->envname( "QUILLON_SMBUS_SOCKET" );
      app_
         .add_option(
            "--trace", options_.traceLevel, "Shows the library's trace lines up to this level, 0 to 6" )
         ->type_name( "LEVEL" )
         ->check( CLI::Range( 0, 6 ) );
      app_.add_option( "--control", control_, "Control socket of the emulated board" )
         ->type_name( "PATH" )
         ->envname( "QUILLON_SMBUS_CONTROL" )
         ->capture_default_str();
      app_.add_flag( "--json", options_.json, "Writes JSON, a document a line" );

      auto status = app_.add_subcommand( "status", "Shows the objects of the board and how they are" );
      status->add_option( "NAME", status_.names, "Objects to show; shell patterns are fine" )
         ->type_name( "" );
      auto interval = status->add_option( "--interval", status_.interval, "Shows them again and again" )
                         ->type_name( "SECONDS" )
                         ->check( CLI::Validator( wrongInterval, "" ) );
      status->add_option( "--count", status_.count, "Ends after that many times" )
         ->type_name( "N" )
         ->check( CLI::Range( 1U, 1000000000U ) )
         ->needs( interval );
      status->add_flag(
         "--fail-on-alert", status_.failOnAlert, "Exit status 3 when something is past a limit" );

      watchCommand_ = app_.add_subcommand( "watch", "Shows the objects of the board as they change" );
      watchCommand_->add_option( "NAME", watch_.names, "Objects to show; shell patterns are fine" )
         ->type_name( "" );
      watchCommand_
         ->add_option( "--interval", watch_.pace.interval, "From one look to the next, 2 unless given" )
         ->type_name( "SECONDS" )
         ->check( CLI::Validator( wrongInterval, "" ) );
      watchCommand_->add_option( "--count", watch_.pace.count, "Ends after that many looks" )
         ->type_name( "N" )
         ->check( CLI::Range( 1U, 1000000000U ) );

      serveCommand_ = app_.add_subcommand( "serve", "Serves metrics for Prometheus, and a page for people" );
      serveCommand_->add_option( "--listen", serve_.listen, "Address and port; 0.0.0.0 is for everybody" )
         ->type_name( "ADDRESS:PORT" )
         ->capture_default_str();
      serveCommand_->add_option( "--interval", serve_.interval, "From one reading of an object to the next" )
         ->type_name( "SECONDS" )
         ->check( CLI::Range( 0.1, 3600.0 ) )
         ->capture_default_str();

      for ( auto kind : kinds() ) {
         if ( !kind->commands.empty() ) {
            addCommandsOf( *kind );
         }
      }

      check_ = app_.add_subcommand( "check", "Looks for mistakes in the documents of the board" );
      check_->add_option( "DIR", options_.board, "Folder of the board, instead of that of --board" )
         ->type_name( "" );

      emu_ = app_.add_subcommand(
         "emu", "Gives a line to the emulated board, such as: set inlet.temperature 71.5" );
      // What follows belongs to the board, numbers with a minus sign too.
      emu_->prefix_command()->fallthrough( false );
      emu_->footer(
         "Without a line the board tells which it takes. Options of quillonctl stand before emu." );

      complete_ = app_.add_subcommand( "complete", "Tells what a word of a command line may become" );
      complete_->prefix_command()->fallthrough( false );
      complete_->group( "" ); // for the completion of shells, not for people
   }

   int run( int argc, char** argv ) {
      try {
         return execute( argc, argv );
      } catch ( const InputError& error ) {
         return refuse( error.sentences, exitUsage );
      } catch ( const OutputError& ) {
         throw;
      } catch ( const std::exception& error ) {
         return refuse( { error.what() }, exitFailure );
      }
   }

private:
   int execute( int argc, char** argv ) {
      try {
         app_.parse( argc, argv );
      } catch ( const CLI::ParseError& error ) {
         // What stands behind a mistake is not parsed.
         options_.json = std::find( argv, argv + argc, std::string_view( "--json" ) ) != argv + argc;
         return answer( error );
      }
      if ( app_.get_subcommands().empty() ) {
         refuseUsage( "there is no command" );
      }
      if ( emu_->parsed() ) {
         return emuCommand( control_, emu_->remaining(), options_.json );
      }
      if ( complete_->parsed() ) {
         auto words = complete_->remaining();
         auto command = words.size() > 2 ? words[1] : "";
         return completeCommand( options_, commandWords(), flagsOf( command ), words );
      }
      if ( check_->parsed() ) {
         return checkCommand( options_ );
      }
      prepare();
      if ( serveCommand_->parsed() ) {
         return serveCommand( options_, serve_ );
      }
      for ( auto& [kind, command] : objectCommands_ ) {
         if ( command->parsed() ) {
            words_.insert( words_.end(), flags_.begin(), flags_.end() );
            return objectCommand( options_, *kind, words_ );
         }
      }
      if ( watchCommand_->parsed() ) {
         return watchCommand( options_, watch_ );
      }
      return statusCommand( options_, status_ );
   }

   /** Says why nothing could be done, in JSON too if that is asked for. */
   int refuse( const std::vector<std::string>& sentences, int exitStatus ) const {
      for ( auto& sentence : sentences ) {
         complain( sentence );
      }
      if ( options_.json ) {
         write( asJson( boardName( options_.board ), {}, sentences ) );
      }
      return exitStatus;
   }

   void addCommandsOf( const Kind& kind ) {
      auto command = app_.add_subcommand( std::string( kind.command ), std::string( kind.help ) );
      command->add_option( "WORDS", words_, "See below" )->type_name( "" );
      for ( auto& flag : ::flagsOf( kind ) ) {
         // A word like the others, which stands behind them.
         command->add_flag_callback( flag, [this, flag] { flags_.push_back( flag ); } )->group( "" );
      }
      std::string forms = "\nCommands:\n";
      for ( auto& row : kind.commands ) {
         forms += fmt::format( "  quillonctl {}\n      {}\n", formOf( kind, row ), row.help );
      }
      command->footer( forms );
      objectCommands_[&kind] = command;
   }

   /** The commands that help shows. */
   std::vector<std::string> commandWords() {
      std::vector<std::string> words;
      for ( auto command : app_.get_subcommands( {} ) ) {
         if ( !command->get_group().empty() ) {
            words.push_back( command->get_name() );
         }
      }
      return words;
   }

   /** The options that may stand beside a command. */
   std::vector<std::string> flagsOf( const std::string& command ) {
      auto options = app_.get_options();
      for ( auto named : app_.get_subcommands( [&]( auto app ) { return app->get_name() == command; } ) ) {
         auto more = named->get_options( []( auto option ) { return !option->get_positional(); } );
         options.insert( options.end(), more.begin(), more.end() );
      }
      std::vector<std::string> words;
      for ( auto option : options ) {
         auto word = "--" + option->get_lnames().front();
         if ( std::find( words.begin(), words.end(), word ) == words.end() ) {
            words.push_back( word );
         }
      }
      return words;
   }

   /** Help and version are what was asked for, everything else is a mistake. */
   int answer( const CLI::ParseError& error ) {
      if ( error.get_exit_code() == static_cast<int>( CLI::ExitCodes::Success ) ) {
         std::ostringstream text;
         auto status = app_.exit( error, text, text );
         write( text.str() );
         return status;
      }
      if ( error.get_exit_code() == static_cast<int>( CLI::ExitCodes::ExtrasError ) ) {
         refuseExtra();
      }
      refuseUsage( error.what() );
   }

   /** Of words that are none of ours, the first counts: what stands behind it may be meant for it. */
   [[noreturn]] void refuseExtra() {
      auto extra = app_.remaining( true ).front();
      auto parsed = app_.get_subcommands();
      auto better = extra.starts_with( '-' )
                       ? didYouMean( extra.substr( 0, extra.find( '=' ) ),
                            flagsOf( parsed.empty() ? "" : parsed.front()->get_name() ) )
                    : parsed.empty() ? didYouMean( extra, commandWords() )
                                     : "";
      auto mistake = fmt::format( "The following argument was not expected: {}", extra );
      if ( better.empty() ) {
         refuseUsage( mistake );
      }
      throw InputError( { fmt::format( "{}; {}", mistake, better ) } );
   }

   [[noreturn]] static void refuseUsage( const std::string& mistake ) {
      throw InputError( { mistake + "; see quillonctl --help" } );
   }

   void prepare() {
      HostServices::showTraces( options_.traceLevel );
      if ( options_.simulation ) {
         Surroundings::simulate();
      }
      if ( !options_.socket.empty() ) {
         setenv( "QUILLON_SMBUS_SOCKET", options_.socket.c_str(), 1 );
      }
   }

   CLI::App app_;
   Options options_;
   StatusOptions status_;
   std::string control_ = "/run/quillon/control.sock";
   WatchOptions watch_;
   CLI::App* watchCommand_ = nullptr;
   ServeOptions serve_;
   CLI::App* serveCommand_ = nullptr;
   CLI::App* check_ = nullptr;
   CLI::App* emu_ = nullptr;
   CLI::App* complete_ = nullptr;
   std::map<const Kind*, CLI::App*> objectCommands_;
   /** What stands behind the word of a command for one object. */
   std::vector<std::string> words_;
   std::vector<std::string> flags_;
};

} // namespace

int main( int argc, char** argv ) {
   Common::holdStandardStreams();
   try {
      return CommandLine().run( argc, argv );
   } catch ( const std::exception& error ) {
      complain( error.what() );
      return exitFailure;
   }
}
