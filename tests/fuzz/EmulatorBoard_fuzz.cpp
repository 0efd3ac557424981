/* A board's document for the emulator: it gives a board, or words that tell what is wrong. */

#include "emulator/BoardFile.h"

#include <cassert>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   try {
      auto board = Emulator::parseBoard( "board.json", { reinterpret_cast<const char*>( data ), size } );
      for ( auto& place : board.places() ) {
         assert( board.at( place.bus, place.address ) == board.find( place.name ) );
      }
   } catch ( const Emulator::BoardFileError& error ) {
      assert( strncmp( error.what(), "board.json", 10 ) == 0 );
   }
   return 0;
}
