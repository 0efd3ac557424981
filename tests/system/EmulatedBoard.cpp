#include "EmulatedBoard.h"

#include <chrono>
#include <thread>

EmulatedBoardTest::EmulatedBoardTest() {
   environment["QUILLON_SMBUS_SOCKET"] = folder / "smbus.sock";
   environment["QUILLON_SMBUS_CONTROL"] = folder / "control.sock";
   startServer();
}

void EmulatedBoardTest::startServer( const std::string& board ) {
   server.reset();
   std::filesystem::remove( folder / "control.sock" );
   auto program = std::filesystem::path( QUILLONCTL ).parent_path() / "quillon-smbusd";
   server = std::make_unique<Process>( Process::Arguments { program, "--emulate", board, "--control",
                                          folder / "control.sock", "--log-level", "warning" },
      environment );
   while ( !std::filesystem::exists( folder / "control.sock" ) ) {
      std::this_thread::sleep_for( std::chrono::milliseconds( 2 ) );
   }
}

Result EmulatedBoardTest::emu( const Process::Arguments& words ) const {
   Process::Arguments arguments = { "emu" };
   arguments.insert( arguments.end(), words.begin(), words.end() );
   return run( arguments );
}
