#include "EmulatorBus.h"

#include "emulator/Board.h"
#include "emulator/ChipFactory.h"
#include "emulator/Control.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <deque>
#include <stdexcept>

using namespace Emulator;
using namespace std::chrono_literals;
using I2c::Result;
using ::testing::ElementsAre;

namespace {

/** Notes what reaches it, and answers with the bytes that it was given. */
class NotingChip : public Chip {
public:
   std::vector<std::string> events;
   std::deque<uint8_t> answers;
   bool acknowledges = true;

   std::string part() const override { return "noting"; }

   void start() override { events.push_back( "start" ); }

   bool write( std::span<const uint8_t> bytes ) override {
      events.push_back( fmt::format( "write {:02x}", fmt::join( bytes, " " ) ) );
      return acknowledges;
   }

   void read( std::span<uint8_t> bytes ) override {
      events.push_back( fmt::format( "read {}", bytes.size() ) );
      std::ranges::fill( bytes, 0xFF );
      for ( auto& byte : bytes ) {
         if ( !answers.empty() ) {
            byte = answers.front();
            answers.pop_front();
         }
      }
   }

   void stop() override { events.push_back( "stop" ); }

   void reset() override {}

   std::vector<std::string> properties() const override { return {}; }

   std::string get( const std::string& ) const override { return ""; }

   void set( const std::string&, const std::string& ) override {}

   void advance( std::chrono::nanoseconds elapsed ) override { age += elapsed; }

   bool listens() const override { return !inReset; }

   bool inReset = false;

   std::chrono::nanoseconds age {};
};

class EmulatorBoard : public ::testing::Test {
protected:
   EmulatorBoard() {
      auto noting = std::make_unique<NotingChip>();
      chip = noting.get();
      board.add( { "noting", 3, 0x48, std::move( noting ) } );
   }

   Result transfer( std::vector<I2c::Message> sent ) {
      messages = std::move( sent );
      return board.transfer( 3, 0x48, messages ).result;
   }

   Board board;
   NotingChip* chip;
   std::vector<I2c::Message> messages;
};

} // namespace

TEST_F( EmulatorBoard, PutsARepeatedStartBetweenMessagesAndAStopAtTheEnd ) {
   chip->answers = { 0x18, 0x80 };
   EXPECT_EQ( transfer( { writing( { 0x00 } ), reading( 2 ) } ), Result::Ok );
   EXPECT_THAT( chip->events, ElementsAre( "start", "write 00", "start", "read 2", "stop" ) );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0x18, 0x80 } ) );
}

TEST_F( EmulatorBoard, StopsEachTransferByItself ) {
   transfer( { writing( { 0x00 } ) } );
   transfer( { reading( 1 ) } );
   EXPECT_THAT( chip->events, ElementsAre( "start", "write 00", "stop", "start", "read 1", "stop" ) );
}

TEST_F( EmulatorBoard, StopsAtAByteThatIsNotAcknowledged ) {
   chip->acknowledges = false;
   EXPECT_EQ( transfer( { writing( { 0x99 } ), reading( 1 ) } ), Result::NoAcknowledge );
   EXPECT_THAT( chip->events, ElementsAre( "start", "write 99", "stop" ) );
   EXPECT_EQ( messages[1].bytes, Bytes {} );
}

TEST_F( EmulatorBoard, ReadsABlockWithoutItsCount ) {
   chip->answers = { 3, 'a', 'b', 'c' };
   EXPECT_EQ( transfer( { writing( { 0x07 } ), readingBlock() } ), Result::Ok );
   EXPECT_THAT( chip->events, ElementsAre( "start", "write 07", "start", "read 1", "read 3", "stop" ) );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 'a', 'b', 'c' } ) );
}

TEST_F( EmulatorBoard, TakesBlockCountsFrom1To32 ) {
   const std::pair<uint8_t, Result> rows[] = {
      { 0, Result::BadBlock },
      { 1, Result::Ok },
      { 32, Result::Ok },
      { 33, Result::BadBlock },
      { 255, Result::BadBlock },
   };
   for ( auto& [count, result] : rows ) {
      chip->answers = { count };
      EXPECT_EQ( transfer( { readingBlock() } ), result ) << +count;
      EXPECT_EQ( messages[0].bytes.size(), result == Result::Ok ? count : 0U ) << +count;
   }
}

TEST_F( EmulatorBoard, LetsNoMessageBehindABadBlockReachTheChip ) {
   chip->answers = { 0 };
   EXPECT_EQ( transfer( { readingBlock(), reading( 1 ) } ), Result::BadBlock );
   EXPECT_THAT( chip->events, ElementsAre( "start", "read 1", "stop" ) );
}

TEST_F( EmulatorBoard, ProbesAnAddressWithAWriteOfNoBytes ) {
   EXPECT_EQ( transfer( { writing( {} ) } ), Result::Ok );
   messages = { writing( {} ) };
   EXPECT_EQ( board.transfer( 3, 0x49, messages ).result, Result::NoAcknowledge );
}

TEST_F( EmulatorBoard, GetsNoAcknowledgeFromAChipThatDoesNotAnswer ) {
   chip->inReset = true;
   EXPECT_EQ( transfer( { writing( {} ) } ), Result::NoAcknowledge );
   EXPECT_EQ( transfer( { reading( 1 ) } ), Result::NoAcknowledge );
   EXPECT_TRUE( chip->events.empty() );
}

TEST_F( EmulatorBoard, ForgetsWhatAMessageHeldBeforeItsRead ) {
   messages = { reading( 1 ) };
   messages[0].bytes = { 0x55, 0x66 };
   EXPECT_EQ( board.transfer( 3, 0x49, messages ).result, Result::NoAcknowledge );
   EXPECT_EQ( messages[0].bytes, Bytes {} );
}

TEST_F( EmulatorBoard, HasNoBusWithoutAChipOnIt ) {
   EXPECT_TRUE( board.hasBus( 3 ) );
   EXPECT_FALSE( board.hasBus( 4 ) );
   messages = { reading( 1 ) };
   EXPECT_EQ( board.transfer( 4, 0x48, messages ).result, Result::NoBus );
}

TEST_F( EmulatorBoard, TakesNoTimeWithoutAFault ) {
   messages = { reading( 2 ) };
   EXPECT_EQ( board.transfer( 3, 0x48, messages ).duration, std::chrono::nanoseconds( 0 ) );
}

TEST_F( EmulatorBoard, FindsChipsByNameAndByPlace ) {
   EXPECT_EQ( board.find( "noting" )->chip.get(), chip );
   EXPECT_EQ( board.at( 3, 0x48 )->chip.get(), chip );
   EXPECT_EQ( board.find( "inlet" ), nullptr );
   EXPECT_EQ( board.at( 3, 0x49 ), nullptr );
   EXPECT_EQ( board.at( 4, 0x48 ), nullptr );
}

TEST_F( EmulatorBoard, RefusesANameOrAPlaceThatIsTaken ) {
   struct Row {
      const char* name;
      uint8_t address;
      const char* words;
   };

   const Row rows[] = {
      { "noting", 0x49, "name noting is taken" },
      { "other", 0x48, "3/0x48 is the place of noting" },
   };
   for ( auto& row : rows ) {
      try {
         board.add( { row.name, 3, row.address, makeChip( "pct2075" ) } );
         ADD_FAILURE() << "it took the chip: " << row.words;
      } catch ( const std::invalid_argument& error ) {
         EXPECT_STREQ( error.what(), row.words );
      }
   }
   EXPECT_EQ( board.places().size(), 1U );
}

TEST_F( EmulatorBoard, HoldsTheSameAddressOnTwoBusses ) {
   board.add( { "other", 4, 0x48, makeChip( "pct2075" ) } );
   messages = { writing( { 0x03 } ), reading( 2 ) };
   EXPECT_EQ( board.transfer( 4, 0x48, messages ).result, Result::Ok );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0x50, 0x00 } ) );
   EXPECT_TRUE( chip->events.empty() );
}

TEST( EmulatorBoardWithASensor, ReadsItsRegisterBehindARepeatedStart ) {
   Board board;
   board.add( { "inlet", 3, 0x48, makeChip( "pct2075" ) } );
   board.find( "inlet" )->chip->set( "temperature", "24.5" );
   std::vector<I2c::Message> messages { writing( { 0x00 } ), reading( 2 ) };
   EXPECT_EQ( board.transfer( 3, 0x48, messages ).result, Result::Ok );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0x18, 0x80 } ) );
}

TEST( EmulatorBoardWithAClock, TellsEveryChipHowMuchTimeHasPassedBeforeATransfer ) {
   std::chrono::nanoseconds now = 5s;
   Board board( [&] { return now; } );
   std::vector<NotingChip*> chips;
   for ( uint8_t address : Bytes { 0x48, 0x49 } ) {
      auto chip = std::make_unique<NotingChip>();
      chips.push_back( chip.get() );
      board.add( { fmt::format( "chip{}", address ), 3, address, std::move( chip ) } );
   }
   now += 20ms;
   std::vector<I2c::Message> messages { reading( 1 ) };
   board.transfer( 3, 0x48, messages );
   now += 3ms;
   board.advance();
   for ( auto chip : chips ) {
      EXPECT_EQ( chip->age, 23ms );
   }
}

TEST( EmulatorBoardWithAClock, TellsItBeforeALineOfTheBench ) {
   std::chrono::nanoseconds now = 0s;
   Board board( [&] { return now; } );
   auto chip = std::make_unique<NotingChip>();
   auto& noting = *chip;
   board.add( { "noting", 3, 0x48, std::move( chip ) } );
   now += 1s;
   control( board, "list" );
   EXPECT_EQ( noting.age, 1s );
}

namespace {

/** Register 1 of "driving" is wired to register 0 of "driven". */
class EmulatorBoardWithAWire : public ::testing::Test {
protected:
   EmulatorBoardWithAWire() {
      board.add( { "driving", 5, 0x30, makeChip( "registers", { { "size", "2" }, { "r0x01", "7" } } ) } );
      board.add( { "driven", 5, 0x31, makeChip( "registers", { { "size", "2" } } ) } );
      board.connect( board.pin( "driving.r0x01" ), board.pin( "driven.r0x00" ) );
   }

   std::string driven() { return board.find( "driven" )->chip->get( "r0x00" ); }

   Board board;
};

} // namespace

TEST_F( EmulatorBoardWithAWire, CarriesTheFirstValue ) { EXPECT_EQ( driven(), "0x07" ); }

TEST_F( EmulatorBoardWithAWire, CarriesWhatATransferChanges ) {
   std::vector<I2c::Message> messages { writing( { 0x01, 0x5A } ) };
   ASSERT_EQ( board.transfer( 5, 0x30, messages ).result, Result::Ok );
   EXPECT_EQ( driven(), "0x5a" );
}

TEST_F( EmulatorBoardWithAWire, CarriesWhatTheBenchChanges ) {
   ASSERT_EQ( control( board, "set driving.r0x01 0x5a" ), "ok" );
   EXPECT_EQ( driven(), "0x5a" );
   ASSERT_EQ( control( board, "reset driving" ), "ok" );
   EXPECT_EQ( driven(), "0x07" );
}

TEST_F( EmulatorBoardWithAWire, CarriesWhatTimeChanges ) {
   board.find( "driving" )->chip->set( "r0x01", "0x5a" );
   board.advance();
   EXPECT_EQ( driven(), "0x5a" );
}

TEST_F( EmulatorBoardWithAWire, LeavesItsEndAloneWhileNothingChanges ) {
   ASSERT_EQ( control( board, "set driven.r0x00 1" ), "ok" );
   board.advance();
   EXPECT_EQ( driven(), "0x01" );
}

TEST_F( EmulatorBoardWithAWire, CarriesNothingBack ) {
   ASSERT_EQ( control( board, "set driven.r0x00 1" ), "ok" );
   EXPECT_EQ( board.find( "driving" )->chip->get( "r0x01" ), "0x07" );
}

TEST( EmulatorBoardWithAWireToASensor, LeavesItsEndAloneWhenThatRefusesAValue ) {
   Board board;
   board.add( { "warm", 3, 0x48, makeChip( "pct2075" ) } );
   board.add( { "driven", 5, 0x31, makeChip( "registers", { { "size", "1" } } ) } );
   board.connect( board.pin( "warm.temperature" ), board.pin( "driven.r0x00" ) );
   EXPECT_EQ( control( board, "set warm.temperature -1" ), "ok" );
   EXPECT_EQ( control( board, "get driven" ), "ok r0x00=0x19" );
   EXPECT_EQ( control( board, "set warm.temperature 30" ), "ok" );
   EXPECT_EQ( control( board, "get driven" ), "ok r0x00=0x1e" );
}
