#include "Serve.h"

#include "EmulatedBackend.h"
#include "EventLoop.h"
#include "I2cDev/AdapterBackend.h"
#include "Log.h"
#include "Scheduler.h"
#include "Server.h"
#include "StopSignals.h"

#include "emulator/BoardFile.h"

#include <fmt/format.h>
#include <google/protobuf/stubs/logging.h>
#include <systemd/sd-daemon.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace Smbusd {

namespace {

/** What protobuf has to say of clients' messages, such as text that is no UTF-8, is for developers. */
void logProtobuf( google::protobuf::LogLevel, const char*, int, const std::string& text ) {
   Log::debug( "protobuf: {}", text );
}

void runLoop( EventLoop& loop, const Options& options ) {
   Log::info( "serving {}", options.socket );
   sd_notifyf( 0, "READY=1\nSTATUS=Serving %s", options.socket.c_str() );
   loop.run();
   sd_notify( 0, "STOPPING=1" );
}

/** Before the reader of a document meets its absence: it does not know what a person may do about that. */
template <typename Error>
void requireReadable( const std::string& file, const char* remedy ) {
   if ( access( file.c_str(), R_OK ) != 0 ) {
      throw Error( fmt::format( "{}: {}; {}", file, strerror( errno ), remedy ) );
   }
}

// The order in both: a server goes first, and its sockets with it; then a backend, which waits for transfers
// under way; then the transactions that these have come from.

void serveBoard( EventLoop& loop, const Options& options ) {
   Scheduler scheduler( loop );
   auto file = std::filesystem::path( options.emulate ) / "emulator.json";
   requireReadable<Emulator::BoardFileError>(
      file, "name a folder with a readable emulator.json with --emulate" );
   auto board = Emulator::loadBoard(
      file, [&loop] { return std::chrono::nanoseconds( loop.now().time_since_epoch() ); } );
   EmulatedBackend backend( loop, board );
   Server server( loop );
   server.serveBusses( options.socket, backend, scheduler );
   if ( !options.control.empty() ) {
      server.serveControl( options.control, board );
   }
   runLoop( loop, options );
}

void serveAdapters( EventLoop& loop, const Options& options ) {
   Scheduler scheduler( loop );
   I2cDev::RealKernel kernel;
   requireReadable<I2cDev::MapFileError>( options.i2cMap, "name a readable map of adapters with --i2c" );
   auto map = I2cDev::loadMap( options.i2cMap );
   I2cDev::warnOfUnusable( kernel, map );
   I2cDev::AdapterBackend backend( loop, kernel, map );
   Server server( loop );
   server.serveBusses( options.socket, backend, scheduler );
   runLoop( loop, options );
}

} // namespace

int serve( const Options& options ) {
   Log::threshold = options.logLevel;
   // Whoever reads the log may go away; the server stays.
   std::signal( SIGPIPE, SIG_IGN );
   google::protobuf::SetLogHandler( logProtobuf );
   try {
      EventLoop loop;
      StopSignals signals( loop );
      options.emulate.empty() ? serveAdapters( loop, options ) : serveBoard( loop, options );
      return 0;
   } catch ( const Emulator::BoardFileError& error ) {
      Log::error( "{}", error.what() );
      return usageError;
   } catch ( const I2cDev::MapFileError& error ) {
      Log::error( "{}", error.what() );
      return usageError;
   } catch ( const std::exception& error ) {
      Log::error( "{}", error.what() );
      return 1;
   }
}

} // namespace Smbusd
