#include "EmulatorBus.h"

#include "emulator/ChipFactory.h"
#include "emulator/Control.h"
#include "emulator/Model.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Emulator;
using namespace std::string_literals;

namespace {

/** Something happens to it. */
class Plug : public Model {
public:
   Plug() {
      addProperty( "in", [this] { return in_ ? "1" : "0"; } );
   }

   std::string part() const override { return "plug"; }

   bool write( std::span<const uint8_t> ) override { return true; }

   void read( std::span<uint8_t> bytes ) override { std::ranges::fill( bytes, 0xFF ); }

   void reset() override {}

   std::string actions() const override { return "in; out"; }

   void act( std::span<const std::string_view> words ) override {
      if ( words[0] != "in" && words[0] != "out" ) {
         Chip::act( words );
      }
      in_ = words[0] == "in";
   }

private:
   bool in_ = false;
};

Board makeBoard() {
   Board board;
   board.add( { "inlet", 3, 0x48, makeChip( "pct2075" ) } );
   board.add( { "outlet", 3, 0x49, makeChip( "pct2075" ) } );
   board.add( { "cpld", 5, 0x30, makeChip( "registers", { { "size", "2" } } ) } );
   board.add( { "plug", 6, 0x20, std::make_unique<Plug>() } );
   board.find( "inlet" )->chip->set( "temperature", "24.5" );
   return board;
}

class EmulatorControl : public ::testing::Test {
protected:
   std::string say( std::string_view line ) { return control( board, line ); }

   Board board = makeBoard();
};

struct Row {
   std::string line;
   std::string answer;
};

const Row rows[] = {
   { "list", "ok inlet 3/0x48 pct2075; outlet 3/0x49 pct2075; cpld 5/0x30 registers; plug 6/0x20 plug" },
   { "list inlet", "ok temperature=24.5 os=0 thyst=75 tos=80" },
   { "get inlet", "ok temperature=24.5 os=0 thyst=75 tos=80" },
   { "get 3/0x48", "ok temperature=24.5 os=0 thyst=75 tos=80" },
   { "get 3/72", "ok temperature=24.5 os=0 thyst=75 tos=80" },
   { "get cpld", "ok r0x00=0x00 r0x01=0x00" },
   { "get inlet.temperature", "ok 24.5" },
   { "get 3/0x48.temperature", "ok 24.5" },
   { "get inlet.os", "ok 0" },
   { "  get\tinlet.os \r\n", "ok 0" },
   { "set inlet.temperature 71.5", "ok" },
   { "set 3/0x49.temperature -40", "ok" },
   { "set cpld.r0x01 0x5c", "ok" },
   { "reset inlet", "ok" },
   { "reset 5/0x30", "ok" },
   { "fault inlet nack", "ok" },
   { "fault inlet nack 3", "ok" },
   { "fault 3/0x49 busy 1", "ok" },
   { "fault 3 arbitration", "ok" },
   { "fault 3 hang 500ms", "ok" },
   { "fault 3 hang 2s 2", "ok" },
   { "fault cpld slow 1.5s", "ok" },
   { "fault cpld corrupt", "ok" },
   { "fault cpld checksum 4294967295", "ok" },
   { "fault inlet clear", "ok" },
   { "fault 5 clear", "ok" },
   { "faults", "ok" },
   { "plug in", "ok" },
   { "6/0x20 in", "ok" },
   { "help inlet", "ok no actions" },
   { "help plug", "ok in; out" },
   { "help", "ok list [CHIP]; get CHIP[.PROPERTY]; set CHIP.PROPERTY VALUE; reset CHIP; "
             "fault PLACE KIND [DURATION] [N]; faults; help [CHIP]; CHIP ACTION; PLACE is a chip or a bus; "
             "KIND is busy, arbitration, nack, hang, slow, corrupt, checksum or clear" },

   { "", "error empty line; try help" },
   { " \t\r\n", "error empty line; try help" },
   { "lst", "error no command lst; did you mean list?" },
   { "reboot", "error no command reboot" },
   { "LIST", "error no command LIST" },
   { "list inlet outlet", "error usage: list [CHIP]" },
   { "list inlt", "error no chip inlt; did you mean inlet?" },
   { "list inlet.os", "error no chip inlet.os" },
   { "get", "error usage: get CHIP[.PROPERTY]" },
   { "get inlt", "error no chip inlt; did you mean inlet?" },
   { "get inlt.temperature", "error no chip inlt; did you mean inlet?" },
   { "get 3/0x4f", "error no chip 3/0x4f" },
   { "get 3/0x148", "error no chip 3/0x148" },
   { "get 4/0x48", "error no chip 4/0x48" },
   { "get 3", "error no chip 3" },
   { "get 3/", "error no chip 3/" },
   { "get /", "error no chip /" },
   { "get .", "error no chip \"\"" },
   { "get inlet.", "error no property \"\"" },
   { "get inlet.temprature", "error no property temprature; did you mean temperature?" },
   { "get inlet.os.x", "error no property os.x" },
   { "set", "error usage: set CHIP.PROPERTY VALUE" },
   { "set inlet.temperature", "error usage: set CHIP.PROPERTY VALUE" },
   { "set inlet.temperature 1 2", "error usage: set CHIP.PROPERTY VALUE" },
   { "set inlet 71.5", "error inlet names no property" },
   { "set inlet.os 1", "error property os can't be set" },
   { "set inlet.tos 1", "error property tos can't be set" },
   { "set inlet.colour 1", "error no property colour" },
   { "set outlt.temperature 1", "error no chip outlt; did you mean outlet?" },
   { "set inlet.temperature warm", "error temperature must be a number from -55 to 125, not warm" },
   { "set inlet.temperature 125.1", "error temperature must be a number from -55 to 125, not 125.1" },
   { "set inlet.temperature nan", "error temperature must be a number from -55 to 125, not nan" },
   { "set inlet.temperature inf", "error temperature must be a number from -55 to 125, not inf" },
   { "set inlet.temperature 20C", "error temperature must be a number from -55 to 125, not 20C" },
   { "set cpld.r0x01 256", "error r0x01 must be a whole number from 0 to 255, not 256" },
   { "set cpld.r0x02 1", "error no property r0x02" },
   { "reset", "error usage: reset CHIP" },
   { "reset board", "error no chip board" },
   { "reset 3", "error no chip 3" },
   { "fault", "error usage: fault PLACE KIND [DURATION] [N]" },
   { "fault inlet", "error usage: fault PLACE KIND [DURATION] [N]" },
   { "fault inlet slow 1s 2 3", "error usage: fault PLACE KIND [DURATION] [N]" },
   { "fault inlt nack", "error no chip inlt; did you mean inlet?" },
   { "fault 4 nack", "error no bus 4" },
   { "fault 3/0x50 nack", "error no chip 3/0x50" },
   { "fault inlet nak", "error no fault nak; did you mean nack?" },
   { "fault inlet fire", "error no fault fire" },
   { "fault inlet nack 0", "error the number of transfers must be a whole number from 1 on, not 0" },
   { "fault inlet nack -1", "error the number of transfers must be a whole number from 1 on, not -1" },
   { "fault inlet nack 4294967296",
      "error the number of transfers must be a whole number from 1 on, not 4294967296" },
   { "fault inlet nack 1 2", "error 2 behind nack" },
   { "fault inlet clear 1", "error 1 behind clear" },
   { "fault inlet hang", "error hang needs a duration such as 500ms or 2s, at most an hour" },
   { "fault inlet hang 2", "error hang needs a duration such as 500ms or 2s, at most an hour" },
   { "fault inlet slow 3601s", "error slow needs a duration such as 500ms or 2s, at most an hour" },
   { "fault inlet slow nans", "error slow needs a duration such as 500ms or 2s, at most an hour" },
   { "fault inlet slow 1s x", "error the number of transfers must be a whole number from 1 on, not x" },
   { "faults inlet", "error usage: faults" },
   { "help me", "error no chip me" },
   { "help inlet outlet", "error usage: help [CHIP]" },
   { "inlt detach", "error no command inlt; did you mean inlet?" },
   { "inlet", "error no actions" },
   { "inlet detach", "error no action detach" },
   { "3/0x48 detach", "error no action detach" },
   { "3/0x4f detach", "error no chip 3/0x4f" },
   { "plug", "error actions: in; out" },
   { "plug sideways \xff", "error no action sideways" },

   { "list\0"s, "error no command list\\x00; did you mean list?" },
   { "\0"s, "error no command \\x00" },
   { "get \xff\xfe", "error no chip \\xff\\xfe" },
   { "get \xc3\xa9.x", "error no chip \\xc3\\xa9" },
   { "get \x1b[2J", "error no chip \\x1b[2J" },
   { "set inlet.temperature 1\0"s, "error temperature must be a number from -55 to 125, not 1\\x00" },
   { "get " + std::string( 50, 'x' ), "error no chip " + std::string( 40, 'x' ) + "..." },
};

} // namespace

TEST_F( EmulatorControl, AnswersEachLineAsTheTableTells ) {
   for ( auto& row : rows ) {
      board = makeBoard();
      EXPECT_EQ( say( row.line ), row.answer ) << row.line;
   }
}

TEST_F( EmulatorControl, SetsWhatTheBusThenReads ) {
   EXPECT_EQ( say( "set inlet.temperature 71.5" ), "ok" );
   EXPECT_EQ( say( "get inlet.temperature" ), "ok 71.5" );
   std::vector<I2c::Message> messages { writing( { 0x00 } ), reading( 2 ) };
   board.transfer( 3, 0x48, messages );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0x47, 0x80 } ) );
}

TEST_F( EmulatorControl, LeavesAPropertyAloneWhenItsValueIsRefused ) {
   say( "set inlet.temperature 200" );
   EXPECT_EQ( say( "get inlet.temperature" ), "ok 24.5" );
}

TEST_F( EmulatorControl, ResetsTheChipAndKeepsItsTemperature ) {
   sendTo( *board.find( "inlet" )->chip, { 0x03, 0x10, 0x00 } );
   EXPECT_EQ( say( "list inlet" ), "ok temperature=24.5 os=1 thyst=75 tos=16" );
   EXPECT_EQ( say( "reset inlet" ), "ok" );
   EXPECT_EQ( say( "list inlet" ), "ok temperature=24.5 os=0 thyst=75 tos=80" );
}

TEST_F( EmulatorControl, ListsFaultsAsTheyCanBeGiven ) {
   for ( auto line : { "fault 3/0x48 hang 500ms 2", "fault inlet nack", "fault 3 slow 1.5s",
            "fault cpld corrupt 7", "fault 5 checksum", "fault 5 busy 1", "fault 0x5 arbitration" } ) {
      EXPECT_EQ( say( line ), "ok" ) << line;
   }
   EXPECT_EQ( say( "faults" ), "ok 3 slow 1500ms; inlet nack; inlet hang 500ms 2; 5 busy 1; 5 arbitration; 5 "
                               "checksum; cpld corrupt 7" );
}

TEST_F( EmulatorControl, ClearsTheFaultsOfAPlace ) {
   for ( auto line : { "fault inlet nack", "fault inlet slow 1s", "fault 3 busy", "fault 3/0x48 clear" } ) {
      EXPECT_EQ( say( line ), "ok" ) << line;
   }
   EXPECT_EQ( say( "faults" ), "ok 3 busy" );
   EXPECT_EQ( say( "fault 3 clear" ), "ok" );
   EXPECT_EQ( say( "faults" ), "ok" );
}

TEST_F( EmulatorControl, PutsFaultsWhereTheBoardMeetsThem ) {
   EXPECT_EQ( say( "fault outlet hang 2s 1" ), "ok" );
   std::vector<I2c::Message> messages { reading( 2 ) };
   auto transfer = board.transfer( 3, 0x49, messages );
   EXPECT_EQ( transfer.result, I2c::Result::TimedOut );
   EXPECT_EQ( transfer.duration, std::chrono::seconds( 2 ) );
   EXPECT_EQ( say( "faults" ), "ok" );
}

TEST_F( EmulatorControl, LetsAChipActOnWhatTheBenchSays ) {
   EXPECT_EQ( say( "plug in" ), "ok" );
   EXPECT_EQ( say( "get plug.in" ), "ok 1" );
   EXPECT_EQ( say( "plug out" ), "ok" );
   EXPECT_EQ( say( "get plug.in" ), "ok 0" );
}

TEST_F( EmulatorControl, ListsAnEmptyBoard ) {
   Board empty;
   EXPECT_EQ( control( empty, "list" ), "ok" );
   EXPECT_EQ( control( empty, "get inlet" ), "error no chip inlet" );
}

namespace {

/** An answer is one line of printable ASCII, of sensible length, that starts with its verdict. */
void expectAnswer( const std::string& answer, const std::string& line ) {
   bool printable = std::ranges::all_of( answer, []( char c ) { return c >= ' ' && c <= '~'; } );
   EXPECT_TRUE( printable ) << ::testing::PrintToString( line ) << " gave " << answer;
   EXPECT_LT( answer.size(), 400U );
   EXPECT_TRUE( answer == "ok" || answer.starts_with( "ok " ) || answer.starts_with( "error " ) ) << answer;
}

} // namespace

TEST_F( EmulatorControl, AnswersStrayBytesAnywhereInOneLine ) {
   for ( auto& row : rows ) {
      for ( size_t position = 0; position <= row.line.size(); ++position ) {
         for ( char byte : "\t\n\r\x1b ./-0sx\x7f\x80\xc3\xff"s + '\0' ) {
            auto line = row.line;
            line.insert( position, 1, byte );
            expectAnswer( say( line ), line );
         }
      }
   }
}

TEST_F( EmulatorControl, AnswersVeryLongLines ) {
   const std::string longWord( 1 << 20, 'x' );
   for ( auto& line : { longWord, "get " + longWord, "get inlet." + longWord,
            "set inlet.temperature " + longWord, "set inlet.temperature " + std::string( 1 << 20, '1' ),
            "fault " + longWord + " nack", "fault inlet " + longWord, "fault inlet nack " + longWord,
            "fault inlet slow " + longWord + "s", std::string( 1 << 20, ' ' ), std::string( 1 << 20, '\0' ),
            "help" + std::string( 1 << 20, ' ' ) + "me" } ) {
      expectAnswer( say( line ), line.substr( 0, 40 ) );
   }
}
