#include "EmulatorController.h"

#include "emulator/Board.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;

/** Reset, the firmware image, and the map of the ports. */
namespace {

constexpr char status[] = "20 FF 00 FF FF FF FF FF FF FF FF 17";
constexpr char clear[] = "E0 C0 FF FF FF FF FF FF FF FF FF 97";
constexpr char load[] = "E0 40 FF FF FF FF FF FF FF FF FF 17";
constexpr char mapInForce[] = "E0 F0 FF FF FF FF FF FF FF FF FF C7";

constexpr char factoryStatus[] = "20 FF 00 00 00 00 00 01 00 0A 05 2F";
/** Neither revision nor image, and the map of the factory in force. */
constexpr char failedStatus[] = "20 FF 00 00 00 00 00 00 00 08 00 27";
constexpr char noImage[] = "AF 00 00 00 00 00 00 00 00 00 00 AF";
constexpr char refused[] = "AC 00 00 00 00 00 00 00 00 00 00 AC";
constexpr char storing[] = "AB 00 00 00 00 00 00 00 00 00 00 AB";
constexpr char nothing[] = "FF FF FF FF FF FF FF FF FF FF FF FF";

class EmulatorBcm59121Firmware : public ::testing::Test {
protected:
   /** A block of the memory's register. */
   bool block( Bytes bytes ) {
      bytes.insert( bytes.begin(), 0xE0 );
      return sendTo( chip, bytes );
   }

   void clearImage() {
      ASSERT_TRUE( chip.send( clear ) );
      chip.advance( 4s );
   }

   /** A host waits a second before the load and 8 s after it. */
   void loadImage() {
      chip.advance( 1s );
      ASSERT_TRUE( chip.send( load ) );
      chip.advance( 8s );
   }

   Controller chip;
};

} // namespace

TEST_F( EmulatorBcm59121Firmware, IsReplacedByWhatIsWrittenBlockByBlock ) {
   EXPECT_EQ( chip.ask( status ), factoryStatus );
   EXPECT_EQ( chip.ask( clear ), "E0 C0 00 00 00 00 00 00 00 00 00 A0" );
   chip.advance( 4s );
   Bytes first( 35, 0x11 );
   first[0] = 0x9C;
   first[1] = 0x07;
   EXPECT_TRUE( block( first ) );
   EXPECT_TRUE( block( Bytes( 35, 0x22 ) ) );
   loadImage();
   EXPECT_EQ( chip.reply(), nothing ) << "a load has no reply";
   EXPECT_EQ( chip.ask( status ), "20 FF 00 00 00 00 00 9C 00 0A 07 CC" );
   EXPECT_EQ( chip.get( "firmware" ), "0x9c.07" );
}

TEST_F( EmulatorBcm59121Firmware, TakesSecondsToClearAndToLoad ) {
   ASSERT_TRUE( chip.send( clear ) );
   EXPECT_EQ( chip.get( "firmware" ), "clearing" );
   chip.advance( 2999ms );
   EXPECT_EQ( chip.get( "firmware" ), "clearing" );
   EXPECT_FALSE( block( { 0x01, 0x02 } ) );
   chip.advance( 1ms );
   EXPECT_EQ( chip.get( "firmware" ), "none" );
   EXPECT_TRUE( block( { 0x01, 0x02 } ) );
   chip.advance( 1s );
   ASSERT_TRUE( chip.send( load ) );
   EXPECT_FALSE( block( { 0x01, 0x02 } ) );
   chip.advance( 5999ms );
   EXPECT_EQ( chip.get( "firmware" ), "loading" );
   chip.advance( 1ms );
   EXPECT_EQ( chip.get( "firmware" ), "0x01.02" );
}

TEST_F( EmulatorBcm59121Firmware, MayHaveBlocksThatLookLikeMessages ) {
   clearImage();
   EXPECT_TRUE( block( { 0x05, 0x06 } ) );
   EXPECT_TRUE( block( Bytes( 11, 0x00 ) ) ) << "12 bytes without a checksum";
   EXPECT_TRUE( chip.send( "E0 41 FF FF FF FF FF FF FF FF FF 18" ) ) << "12 bytes with a checksum";
   loadImage();
   EXPECT_EQ( chip.get( "firmware" ), "0x05.06" );
}

TEST_F( EmulatorBcm59121Firmware, AnswersEverythingElseWithTheSameErrorWhileNoImageRuns ) {
   chip.bench( "chip lose-firmware" );
   EXPECT_EQ( chip.get( "firmware" ), "none" );
   for ( auto message : { status, "21 FF 05 FF FF FF FF FF FF FF FF 1D", mapInForce,
            "00 FF 02 01 FF FF FF FF FF FF FF FB", "04 FF FF FF FF FF FF FF FF FF FF FA" } ) {
      EXPECT_EQ( chip.ask( message ), noImage ) << message;
   }
   EXPECT_EQ( chip.ask( clear ), "E0 C0 00 00 00 00 00 00 00 00 00 A0" );
   EXPECT_EQ( chip.ask( status ), noImage ) << "while it is cleared";
   chip.advance( 4s );
   ASSERT_TRUE( block( { 0x01, 0x02 } ) );
   ASSERT_TRUE( chip.send( load ) );
   EXPECT_EQ( chip.ask( status ), noImage ) << "while it is loaded";
}

TEST_F( EmulatorBcm59121Firmware, DoesNotRunWithoutARevision ) {
   clearImage();
   loadImage();
   EXPECT_EQ( chip.ask( status ), failedStatus ) << "without a block";
   EXPECT_EQ( chip.get( "firmware" ), "failed" );
   ASSERT_TRUE( block( { 0x01 } ) );
   loadImage();
   EXPECT_EQ( chip.ask( status ), failedStatus ) << "with one byte";
   loadImage();
   EXPECT_EQ( chip.ask( status ), failedStatus ) << "a second time";
}

TEST_F( EmulatorBcm59121Firmware, OfALoadThatFailsLeavesTheSystemStatusAlone ) {
   clearImage();
   loadImage();
   EXPECT_EQ( chip.ask( "21 FF 05 FF FF FF FF FF FF FF FF 1D" ), noImage );
   EXPECT_EQ( chip.ask( "00 FF 02 01 FF FF FF FF FF FF FF FB" ), noImage );
   EXPECT_EQ( chip.ask( clear ), "E0 C0 00 00 00 00 00 00 00 00 00 A0" );
   EXPECT_EQ( chip.ask( status ), noImage ) << "while it is cleared again";
}

TEST_F( EmulatorBcm59121Firmware, IsLostWhenAResetFollowsALoadThatFails ) {
   clearImage();
   loadImage();
   chip.reset();
   chip.advance( 1s );
   EXPECT_EQ( chip.ask( status ), noImage );
}

TEST_F( EmulatorBcm59121Firmware, IsNotLoadedBeforeItsLastBlockIsStored ) {
   for ( auto [pause, state] : { std::pair( 749ms, "failed" ), std::pair( 750ms, "0x01.02" ) } ) {
      clearImage();
      ASSERT_TRUE( block( { 0x01, 0x02 } ) );
      chip.advance( 700ms );
      ASSERT_TRUE( block( { 0x03 } ) );
      chip.advance( pause );
      ASSERT_TRUE( chip.send( load ) );
      chip.advance( 8s );
      EXPECT_EQ( chip.get( "firmware" ), state ) << pause.count();
   }
}

TEST_F( EmulatorBcm59121Firmware, TakesNoBlockWhileAnImageRuns ) {
   EXPECT_EQ( chip.ask( "E0 01 02" ), "AE 00 00 00 00 00 00 00 00 00 00 AE" );
   EXPECT_EQ( chip.get( "firmware" ), "0x01.05" );
}

TEST_F( EmulatorBcm59121Firmware, TakesThePowerAndTheSettingsWithIt ) {
   for ( auto action : { "lose", "clear", "load" } ) {
      Controller fresh;
      fresh.power( 1, "class=4" );
      fresh.tell( 0x17, { 9 } );
      if ( action == std::string( "lose" ) ) {
         fresh.bench( "chip lose-firmware" );
      } else {
         fresh.ask( action == std::string( "clear" ) ? clear : load );
      }
      EXPECT_EQ( fresh.state( 1 ), "disabled" ) << action;
      EXPECT_EQ( fresh.get( "allocated" ), "0" ) << action;
      EXPECT_EQ( fresh.get( "port1.enabled" ), "0" ) << action;
      EXPECT_EQ( fresh.get( "r0x17" ), "0x00" ) << action;
      EXPECT_EQ( fresh.get( "port1.device" ), "single" ) << action;
   }
}

TEST_F( EmulatorBcm59121Firmware, IsKeptThroughAReset ) {
   clearImage();
   ASSERT_TRUE( block( { 0x33, 0x44 } ) );
   loadImage();
   chip.reset();
   chip.advance( 1s );
   EXPECT_EQ( chip.get( "firmware" ), "0x33.44" );
   EXPECT_NE( chip.ask( status ), noImage );
}

TEST_F( EmulatorBcm59121Firmware, DoesNotRunAfterAResetInTheMiddle ) {
   chip.ask( clear );
   chip.reset();
   chip.advance( 1s );
   EXPECT_EQ( chip.ask( status ), noImage );
   ASSERT_TRUE( block( { 0x33, 0x44 } ) );
   ASSERT_TRUE( chip.send( load ) );
   chip.reset();
   chip.advance( 10s );
   EXPECT_EQ( chip.ask( status ), noImage );
}

TEST_F( EmulatorBcm59121Firmware, CanBeLostDuringAReset ) {
   chip.set( "reset", "1" );
   chip.bench( "chip lose-firmware" );
   chip.set( "reset", "0" );
   chip.advance( 1s );
   EXPECT_EQ( chip.ask( status ), noImage );
}

namespace {

class EmulatorBcm59121Reset : public EmulatorBcm59121Firmware {};

} // namespace

TEST_F( EmulatorBcm59121Reset, KeepsItFromTheBus ) {
   EXPECT_TRUE( chip.listens() );
   chip.set( "reset", "1" );
   EXPECT_EQ( chip.get( "reset" ), "1" );
   EXPECT_FALSE( chip.listens() );
   chip.advance( 1h );
   EXPECT_FALSE( chip.listens() );
}

TEST_F( EmulatorBcm59121Reset, IsFollowedByHalfASecondOfBooting ) {
   chip.set( "reset", "1" );
   chip.advance( 1h );
   chip.set( "reset", "0" );
   chip.advance( 499ms );
   EXPECT_FALSE( chip.listens() );
   chip.advance( 1ms );
   EXPECT_TRUE( chip.listens() );
   EXPECT_EQ( chip.reply(), nothing );
   EXPECT_EQ( chip.ask( status ), factoryStatus );
}

TEST_F( EmulatorBcm59121Reset, RestoresSettingsAndKeepsDevices ) {
   chip.power( 1, "class=4" );
   chip.tell( 0x16, { 0, 80 } );
   chip.tell( 0x15, { 0, 2 } );
   chip.tell( 0x4E, { 1, 1 } );
   chip.set( "reset", "1" );
   EXPECT_EQ( chip.state( 1 ), "disabled" );
   chip.set( "reset", "0" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "disabled" );
   EXPECT_EQ( chip.get( "port1.limit" ), "class" );
   EXPECT_EQ( chip.get( "crc_reset" ), "0" );
   EXPECT_EQ( chip.get( "port1.device" ), "single" );
   chip.enable( 1 );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}

TEST_F( EmulatorBcm59121Reset, ThatIsNotReleasedIsNoSecondReset ) {
   chip.enable( 1 );
   chip.set( "reset", "0" );
   EXPECT_TRUE( chip.listens() );
   EXPECT_EQ( chip.get( "port1.enabled" ), "1" );
}

TEST( EmulatorBcm59121PowerOn, IsFollowedByHalfASecondOfBootingToo ) {
   Bcm59121 chip( Options {} );
   EXPECT_FALSE( chip.listens() );
   chip.advance( 500ms );
   EXPECT_TRUE( chip.listens() );
}

TEST( EmulatorBcm59121OnABoard, IsNotAcknowledgedWhileItIsInReset ) {
   std::chrono::nanoseconds now = 0s;
   Board board( [&] { return now; } );
   board.add( { "poe", 4, 0x20, std::make_unique<Bcm59121>( Options {} ) } );
   now += 1s;
   std::vector<I2c::Message> messages { writing( { 0xFF } ), reading( 12 ) };
   EXPECT_EQ( board.transfer( 4, 0x20, messages ).result, I2c::Result::Ok );
   board.find( "poe" )->chip->set( "reset", "1" );
   EXPECT_EQ( board.transfer( 4, 0x20, messages ).result, I2c::Result::NoAcknowledge );
}

namespace {

class EmulatorBcm59121PortMap : public EmulatorBcm59121Firmware {
protected:
   // A host waits 400 ms after each step but a row.
   bool begin( uint8_t ports ) { return step( 0x02, { 2, ports } ); }

   bool add( uint8_t port, uint8_t isFourPair, uint8_t group, uint8_t primary, uint8_t alternative ) {
      return isDone( chip.tell( 0x0E, { port, isFourPair, group, primary, alternative, 1, 0, 1 } ) );
   }

   bool end() { return step( 0x02, { 3 } ); }

   bool putInForce() { return step( 0xE0, {}, 0xF0 ); }

   bool step( uint8_t command, const Bytes& arguments, uint8_t subCommand = 0xFF ) {
      bool done = isDone( chip.tell( command, arguments, subCommand ) );
      chip.advance( 400ms );
      return done;
   }

   /** Byte 9 of the system status. */
   int flags() { return chip.tell( 0x20, { 0 } )[9]; }

   static bool isDone( const Bytes& reply ) { return reply[0] != 0xAC && reply[0] != 0xAB; }
};

} // namespace

TEST_F( EmulatorBcm59121PortMap, OfTheFactoryIsInForceWhenItHas4PairPorts ) {
   EXPECT_EQ( flags(), 0x0A );
   Controller twoPair( Options { { "ports", "12" } } );
   EXPECT_EQ( twoPair.tell( 0x20, { 0 } )[9], 0x02 );
}

TEST_F( EmulatorBcm59121PortMap, OfTheFactoryHasGroupsOf8Channels ) {
   struct Row {
      const char* ports;
      const char* twoPairPorts;
      uint8_t groups;
   };

   const Row rows[] = { { "8", "8", 1 }, { "9", "9", 2 }, { "12", "8", 2 }, { "48", "40", 7 },
      { "48", "0", 12 }, { "9", "5", 2 }, { "48", "48", 6 } };
   for ( auto& row : rows ) {
      Controller sized( { { "ports", row.ports }, { "two_pair_ports", row.twoPairPorts } } );
      EXPECT_EQ( sized.tell( 0x2D, { static_cast<uint8_t>( row.groups - 1 ) } )[0], 0x2D ) << row.ports;
      EXPECT_EQ( sized.tell( 0x2D, { row.groups } )[0], 0xAC ) << row.ports << " " << row.twoPairPorts;
   }
}

TEST_F( EmulatorBcm59121PortMap, IsTakenRowByRow ) {
   EXPECT_EQ( chip.ask( "02 FF 02 03 FF FF FF FF FF FF FF FF" ), "02 FF 00 00 00 00 00 00 00 00 00 01" );
   chip.advance( 400ms );
   EXPECT_EQ( chip.ask( "0E FF 00 00 00 00 00 01 00 01 FF 0E" ), "0E FF 00 00 00 00 00 00 00 00 00 0D" );
   EXPECT_TRUE( add( 1, 1, 0, 2, 3 ) );
   EXPECT_TRUE( add( 2, 0, 0, 1, 1 ) );
   EXPECT_EQ( chip.ask( "02 FF 03 FF FF FF FF FF FF FF FF FC" ), "02 FF 00 00 00 00 00 00 00 00 00 01" );
   chip.advance( 400ms );
   chip.power( 9, "class=6" );
   EXPECT_EQ( chip.state( 9 ), "powered" ) << "nothing is in force yet";
   EXPECT_EQ( chip.ask( mapInForce ), "E0 F0 00 00 00 00 00 00 00 00 00 D0" );
   chip.advance( 400ms );
   EXPECT_EQ( flags(), 0x0A );
   EXPECT_EQ( chip.state( 9 ), "disabled" );
   EXPECT_EQ( chip.tell( 0x21, { 2 } )[0], 0x21 );
   EXPECT_EQ( chip.tell( 0x21, { 3 } )[0], 0xAC );
   chip.power( 2, "class=6" );
   EXPECT_EQ( chip.tell( 0x21, { 1 } )[9], 3 ) << "both channels have power";
}

TEST_F( EmulatorBcm59121PortMap, IsKeptThroughAReset ) {
   begin( 1 );
   add( 0, 1, 0, 0, 1 );
   end();
   putInForce();
   chip.reset();
   chip.advance( 1s );
   EXPECT_EQ( chip.tell( 0x21, { 1 } )[0], 0xAC );
   EXPECT_EQ( chip.tell( 0x26, { 0 } )[3], 4 ) << "the power mode of a 4-pair port";
}

TEST_F( EmulatorBcm59121PortMap, TakesTimeToStoreEachStepButARow ) {
   auto expectStoring = [&]( const char* step ) {
      EXPECT_EQ( chip.ask( status ), storing ) << step;
      // Twice 20 ms have passed.
      chip.advance( 259ms );
      EXPECT_EQ( chip.ask( status ), storing ) << step;
      EXPECT_EQ( flags(), 0x0A ) << step;
   };
   chip.tell( 0x02, { 2, 1 } );
   expectStoring( "announcement" );
   EXPECT_TRUE( add( 0, 1, 0, 0, 1 ) );
   EXPECT_EQ( flags(), 0x0A ) << "a row";
   chip.tell( 0x02, { 3 } );
   expectStoring( "end" );
   chip.tell( 0xE0, {}, 0xF0 );
   expectStoring( "in force" );
}

TEST_F( EmulatorBcm59121PortMap, IsGivenAnewAfterAResetInTheMiddle ) {
   EXPECT_TRUE( begin( 1 ) );
   EXPECT_TRUE( add( 0, 1, 0, 0, 1 ) );
   chip.tell( 0x02, { 3 } );
   chip.reset();
   chip.advance( 500ms );
   EXPECT_EQ( chip.ask( mapInForce ), refused );
   EXPECT_EQ( flags(), 0x0A );
}

TEST_F( EmulatorBcm59121PortMap, KeepsTheSettingsAndTakesThePower ) {
   chip.tell( 0x0A, { 0x6D, 0x01, 0x2F, 0x01 } );
   chip.tell( 0x17, { 0x33 } );
   chip.tell( 0x4E, { 1, 1 } );
   chip.tell( 0x10, { 0, 3 } );
   chip.tell( 0x1C, { 0, 5 } );
   chip.tell( 0x1E, { 0, 0x04 } );
   chip.tell( 0x16, { 0, 80 } );
   chip.tell( 0x15, { 0, 2 } );
   chip.power( 1, "class=4 draw=10" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   begin( 2 );
   add( 0, 1, 0, 0, 1 );
   add( 1, 0, 0, 2, 2 );
   end();
   chip.set( "group1.crc", "0x03" );
   EXPECT_TRUE( isDone( chip.tell( 0xE0, {}, 0xF0 ) ) );
   EXPECT_EQ( chip.get( "r0x0a" ), "0x6d012f01" );
   EXPECT_EQ( chip.get( "r0x17" ), "0x33" );
   EXPECT_EQ( chip.get( "crc_reset" ), "1" );
   EXPECT_EQ( chip.get( "group1.crc" ), "0x03" );
   EXPECT_EQ( chip.get( "port1.enabled" ), "1" );
   EXPECT_EQ( chip.get( "port1.detection" ), "legacy-4-point" );
   EXPECT_EQ( chip.get( "port1.mode" ), "802.3bt-type3" );
   EXPECT_EQ( chip.get( "port1.mpss" ), "0x04" );
   EXPECT_EQ( chip.get( "port1.limit" ), "16" );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
   EXPECT_EQ( chip.get( "allocated" ), "0" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}

TEST_F( EmulatorBcm59121PortMap, RefusesStepsThatCannotBe ) {
   EXPECT_FALSE( begin( 0 ) );
   EXPECT_FALSE( begin( 13 ) ) << "more ports than the board has";
   EXPECT_FALSE( add( 0, 0, 0, 0, 0 ) ) << "before the start";
   EXPECT_FALSE( end() );
   EXPECT_TRUE( begin( 2 ) );
   EXPECT_FALSE( end() ) << "without rows";
   EXPECT_FALSE( add( 2, 0, 0, 0, 0 ) ) << "a port that was not announced";
   EXPECT_FALSE( add( 0, 0, 16, 0, 0 ) ) << "no such group";
   EXPECT_FALSE( add( 0, 0, 0, 8, 8 ) ) << "no such channel";
   EXPECT_FALSE( add( 0, 1, 0, 7, 8 ) ) << "no such alternative channel";
   EXPECT_FALSE( add( 0, 0, 0, 0, 1 ) ) << "two channels of a 2-pair port";
   EXPECT_FALSE( add( 0, 1, 0, 1, 1 ) ) << "one channel of a 4-pair port";
   EXPECT_FALSE( add( 0, 2, 0, 0, 1 ) ) << "neither 2-pair nor 4-pair";
   for ( Bytes constants : { Bytes { 0, 0, 1 }, Bytes { 1, 1, 1 }, Bytes { 1, 0, 0 } } ) {
      Bytes row { 0, 1, 0, 0, 1 };
      row.insert( row.end(), constants.begin(), constants.end() );
      EXPECT_FALSE( isDone( chip.tell( 0x0E, row ) ) ) << textOf( constants );
   }
   EXPECT_TRUE( add( 0, 1, 0, 0, 1 ) );
   EXPECT_FALSE( end() ) << "a row is missing";
   EXPECT_TRUE( add( 1, 0, 0, 1, 1 ) );
   EXPECT_FALSE( end() ) << "a channel twice";
   EXPECT_FALSE( putInForce() );
   EXPECT_TRUE( add( 1, 0, 0, 2, 2 ) );
   EXPECT_FALSE( isDone( chip.tell( 0x02, { 3, 2 } ) ) ) << "an end with a number of ports";
   EXPECT_TRUE( end() );
   EXPECT_FALSE( add( 1, 0, 0, 3, 3 ) ) << "after the end";
   EXPECT_TRUE( putInForce() );
   EXPECT_EQ( chip.ask( mapInForce ), refused ) << "a second time";
}
