#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <map>

namespace Smbusd {

namespace {

const std::map<std::string, Log::Level> levels {
   { "error", Log::Level::Error },
   { "warning", Log::Level::Warning },
   { "info", Log::Level::Info },
   { "debug", Log::Level::Debug },
};

std::string checkNotEmpty( const std::string& value ) { return value.empty() ? "must not be empty" : ""; }

void describe( CLI::App& app, Options& options ) {
   app.set_version_flag( "--version", "quillon-smbusd " QUILLON_VERSION );
   auto emulate = app.add_option( "--emulate", options.emulate, "Emulate the board of DIR/emulator.json" );
   emulate->type_name( "DIR" )->check( checkNotEmpty );
   app.add_option( "--i2c", options.i2cMap, "Use the kernel's I2C adapters as the map file says" )
      ->type_name( "MAP.json" )
      ->check( checkNotEmpty )
      ->excludes( emulate );
   app.add_option( "--socket", options.socket, "Socket to serve" )
      ->envname( "QUILLON_SMBUS_SOCKET" )
      ->type_name( "PATH" )
      ->check( checkNotEmpty )
      ->capture_default_str();
   app.add_option( "--control", options.control, "Socket for the bench of the emulated board" )
      ->type_name( "PATH" )
      ->check( checkNotEmpty )
      ->needs( emulate );
   app.add_option_function<std::string>(
         "--log-level", [&]( const std::string& name ) { options.logLevel = levels.at( name ); },
         "error, warning, info (the default) or debug" )
      ->type_name( "LEVEL" )
      ->check( CLI::IsMember( &levels ).description( "" ) );
   app.footer( "Exactly one of --emulate and --i2c says which busses there are." );
}

int refuse( const std::string& why ) {
   std::cerr << "quillon-smbusd: " << why << "; see quillon-smbusd --help\n";
   return usageError;
}

/** @return the exit status of a program that had something to tell */
int checkOutput() {
   if ( std::cout.flush() ) {
      return 0;
   }
   std::cerr << "quillon-smbusd: cannot write the output: " << strerror( errno ) << "\n";
   return 1;
}

} // namespace

std::variant<Options, int> parseCommandLine( int argc, const char* const* argv ) {
   Options options;
   CLI::App app( "SMBus server of the Selvane platform library", "quillon-smbusd" );
   describe( app, options );
   try {
      app.parse( argc, argv );
   } catch ( const CLI::Success& success ) {
      app.exit( success );
      return checkOutput();
   } catch ( const CLI::ParseError& error ) {
      return refuse( error.what() );
   }
   if ( options.emulate.empty() && options.i2cMap.empty() ) {
      return refuse( "give --emulate DIR or --i2c MAP.json" );
   }
   return options;
}

} // namespace Smbusd
