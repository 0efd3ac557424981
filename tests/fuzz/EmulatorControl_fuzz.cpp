/*
 * A session at the control socket of an emulated board, one line of the input a command. Time passes between
 * the lines, and a master talks to the chips. Every answer is one line of printable ASCII.
 */

#include "emulator/Board.h"
#include "emulator/ChipFactory.h"
#include "emulator/Control.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <string_view>
#include <vector>

using namespace Emulator;

namespace {

/** A chip of each part, at addresses from 0x20 on. */
Board boardOfAllParts( Board::Clock clock ) {
   Board board( std::move( clock ) );
   uint8_t address = 0x20;
   for ( auto& part : parts() ) {
      board.add( { part, 3, address++, makeChip( part ) } );
   }
   return board;
}

void talkToAll( Board& board ) {
   for ( auto& place : board.places() ) {
      std::vector<I2c::Message> messages( 2 );
      messages[0] = { I2c::Message::Kind::Write, { 0x30 } };
      messages[1] = { I2c::Message::Kind::Read, {}, 16 };
      board.transfer( place.bus, place.address, messages );
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   std::chrono::nanoseconds now {};
   auto board = boardOfAllParts( [&] { return now; } );
   std::string_view rest( reinterpret_cast<const char*>( data ), size );
   while ( !rest.empty() ) {
      auto line = rest.substr( 0, rest.find( '\n' ) );
      rest.remove_prefix( std::min( line.size() + 1, rest.size() ) );
      auto answer = control( board, line );
      assert( answer == "ok" || answer.starts_with( "ok " ) || answer.starts_with( "error " ) );
      assert( std::ranges::all_of( answer, []( char c ) { return c >= ' ' && c <= '~'; } ) );
      now += std::chrono::milliseconds( 700 );
      talkToAll( board );
   }
   return 0;
}
