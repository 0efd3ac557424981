#include "EmulatorBus.h"

#include "emulator/Board.h"
#include "emulator/ChipFactory.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;
using I2c::Result;
using Kind = Fault::Kind;

namespace {

constexpr FaultPlace bus { 3 };
constexpr FaultPlace inlet { 3, 0x48 };

class EmulatorFaults : public ::testing::Test {
protected:
   EmulatorFaults() {
      board.add( { "inlet", 3, 0x48, makeChip( "pct2075" ) } );
      board.add( { "outlet", 3, 0x49, makeChip( "pct2075" ) } );
      board.add( { "cpld", 5, 0x30, makeChip( "registers", { { "size", "8" }, { "r0x00", "2" } } ) } );
      board.find( "inlet" )->chip->set( "temperature", "24.5" );
      board.find( "outlet" )->chip->set( "temperature", "24.5" );
   }

   /** Reads a temperature, as 0x18 0x80 unless a fault acts. */
   Transfer read( uint8_t address = 0x48 ) {
      std::vector<I2c::Message> messages { writing( { 0x00 } ), reading( 2 ) };
      auto transfer = board.transfer( 3, address, messages );
      bytes = messages[1].bytes;
      return transfer;
   }

   Result readResult( uint8_t address = 0x48 ) { return read( address ).result; }

   const Bytes right { 0x18, 0x80 };
   Board board;
   Bytes bytes;
};

struct Row {
   const char* name;
   Fault fault;
   Result result;
   std::chrono::nanoseconds duration;
   Bytes bytes;
};

// 0x18 with bit 7 wrong is 0x98, 0x80 with bit 0 wrong is 0x81.
const Row rows[] = {
   { "busy", { Kind::Busy }, Result::BusBusy, 0s, {} },
   { "arbitration", { Kind::Arbitration }, Result::ArbitrationLost, 0s, {} },
   { "nack", { Kind::Nack }, Result::NoAcknowledge, 0s, {} },
   { "hang", { Kind::Hang, 2s }, Result::TimedOut, 2s, {} },
   { "slow", { Kind::Slow, 500ms }, Result::Ok, 500ms, { 0x18, 0x80 } },
   { "corrupt", { Kind::Corrupt }, Result::Ok, 0s, { 0x98, 0x80 } },
   { "checksum", { Kind::Checksum }, Result::Ok, 0s, { 0x18, 0x81 } },
};

} // namespace

TEST_F( EmulatorFaults, OfAChipActAsTheTableTellsUntilCleared ) {
   for ( auto& row : rows ) {
      board.faults.put( inlet, row.fault );
      for ( int turn = 0; turn < 3; ++turn ) {
         auto transfer = read();
         EXPECT_EQ( transfer.result, row.result ) << row.name;
         EXPECT_EQ( transfer.duration, row.duration ) << row.name;
         EXPECT_EQ( bytes, row.bytes ) << row.name;
      }
      EXPECT_EQ( readResult( 0x49 ), Result::Ok ) << row.name;
      EXPECT_EQ( bytes, right ) << row.name;
      board.faults.clear( inlet );
      EXPECT_EQ( readResult(), Result::Ok ) << row.name;
      EXPECT_EQ( bytes, right ) << row.name;
   }
}

TEST_F( EmulatorFaults, OfABusActOnAllItsChips ) {
   for ( auto& row : rows ) {
      board.faults.put( bus, row.fault );
      for ( uint8_t address : Bytes { 0x48, 0x49 } ) {
         auto transfer = read( address );
         EXPECT_EQ( transfer.result, row.result ) << row.name;
         EXPECT_EQ( transfer.duration, row.duration ) << row.name;
         EXPECT_EQ( bytes, row.bytes ) << row.name;
      }
      board.faults.clear( bus );
   }
}

TEST_F( EmulatorFaults, OfABusLeaveOtherBussesAlone ) {
   board.faults.put( bus, { Kind::Busy } );
   std::vector<I2c::Message> messages { reading( 1 ) };
   EXPECT_EQ( board.transfer( 5, 0x30, messages ).result, Result::Ok );
}

TEST_F( EmulatorFaults, EndAfterTheirNumberOfTransfers ) {
   for ( auto& row : rows ) {
      auto twice = row.fault;
      twice.transfers = 2;
      board.faults.put( inlet, twice );
      for ( int turn = 0; turn < 2; ++turn ) {
         EXPECT_EQ( readResult(), row.result ) << row.name;
         EXPECT_EQ( bytes, row.bytes ) << row.name;
      }
      EXPECT_EQ( readResult(), Result::Ok ) << row.name;
      EXPECT_EQ( bytes, right ) << row.name;
      EXPECT_TRUE( board.faults.all().empty() ) << row.name;
   }
}

TEST_F( EmulatorFaults, OfABusCountTheTransfersOfAllItsChips ) {
   board.faults.put( bus, { Kind::Nack, {}, 2 } );
   EXPECT_EQ( readResult( 0x48 ), Result::NoAcknowledge );
   EXPECT_EQ( readResult( 0x49 ), Result::NoAcknowledge );
   EXPECT_EQ( readResult( 0x48 ), Result::Ok );
}

TEST_F( EmulatorFaults, OfABusComeBeforeThoseOfTheChip ) {
   board.faults.put( inlet, { Kind::Busy, {}, 1 } );
   board.faults.put( bus, { Kind::Hang, 2s, 1 } );
   EXPECT_EQ( readResult(), Result::TimedOut );
   EXPECT_EQ( readResult(), Result::BusBusy );
   EXPECT_EQ( readResult(), Result::Ok );
}

TEST_F( EmulatorFaults, ThatFailATransferComeInTheOrderInWhichItMeetsThem ) {
   for ( auto kind : { Kind::Hang, Kind::Nack, Kind::Arbitration, Kind::Busy } ) {
      board.faults.put( inlet, { kind, {}, 1 } );
   }
   EXPECT_EQ( readResult(), Result::BusBusy );
   EXPECT_EQ( readResult(), Result::ArbitrationLost );
   EXPECT_EQ( readResult(), Result::NoAcknowledge );
   EXPECT_EQ( readResult(), Result::TimedOut );
   EXPECT_EQ( readResult(), Result::Ok );
}

TEST_F( EmulatorFaults, OfDifferentKindsActTogether ) {
   board.faults.put( inlet, { Kind::Slow, 500ms } );
   board.faults.put( inlet, { Kind::Corrupt } );
   board.faults.put( inlet, { Kind::Checksum } );
   EXPECT_EQ( read().duration, 500ms );
   EXPECT_EQ( bytes, ( Bytes { 0x98, 0x81 } ) );
}

TEST_F( EmulatorFaults, OfAKindActOnceOnATransfer ) {
   board.faults.put( bus, { Kind::Corrupt, {}, 1 } );
   board.faults.put( inlet, { Kind::Corrupt, {}, 1 } );
   for ( int turn = 0; turn < 2; ++turn ) {
      read();
      EXPECT_EQ( bytes, ( Bytes { 0x98, 0x80 } ) );
   }
   read();
   EXPECT_EQ( bytes, right );
}

TEST_F( EmulatorFaults, TakeThePlaceOfOneOfTheirKind ) {
   board.faults.put( inlet, { Kind::Slow, 2s } );
   board.faults.put( inlet, { Kind::Slow, 500ms, 1 } );
   EXPECT_EQ( read().duration, 500ms );
   EXPECT_EQ( read().duration, 0s );
}

TEST_F( EmulatorFaults, AreClearedAtTheirVeryPlace ) {
   board.faults.put( bus, { Kind::Slow, 2s } );
   board.faults.put( inlet, { Kind::Nack } );
   board.faults.clear( bus );
   EXPECT_EQ( readResult(), Result::NoAcknowledge );
   board.faults.clear( inlet );
   EXPECT_EQ( readResult(), Result::Ok );
}

TEST_F( EmulatorFaults, SpoilTheOneByteOfAReadTwiceWithoutMakingItRight ) {
   board.faults.put( inlet, { Kind::Corrupt } );
   board.faults.put( inlet, { Kind::Checksum } );
   std::vector<I2c::Message> messages { writing( { 0x00 } ), reading( 1 ) };
   board.transfer( 3, 0x48, messages );
   EXPECT_EQ( messages[1].bytes, Bytes { 0x99 } );
}

TEST_F( EmulatorFaults, SpoilTheFirstAndTheLastByteOfAWholeTransfer ) {
   board.faults.put( inlet, { Kind::Corrupt } );
   board.faults.put( inlet, { Kind::Checksum } );
   std::vector<I2c::Message> messages { reading( 2 ), reading( 2 ), reading( 0 ) };
   board.transfer( 3, 0x48, messages );
   EXPECT_EQ( messages[0].bytes, ( Bytes { 0x98, 0x80 } ) );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0x18, 0x81 } ) );
}

TEST_F( EmulatorFaults, CorruptTheCountOfABlock ) {
   board.faults.put( { 5 }, { Kind::Corrupt, {}, 1 } );
   std::vector<I2c::Message> messages { writing( { 0 } ), readingBlock() };
   EXPECT_EQ( board.transfer( 5, 0x30, messages ).result, Result::BadBlock );
   EXPECT_EQ( board.transfer( 5, 0x30, messages ).result, Result::Ok );
   EXPECT_EQ( messages[1].bytes, ( Bytes { 0, 0 } ) );
}

TEST_F( EmulatorFaults, AreNotUsedUpByATransferOnWhichTheyDoNotAct ) {
   board.faults.put( inlet, { Kind::Nack, {}, 1 } );
   board.faults.put( inlet, { Kind::Slow, 2s, 1 } );
   board.faults.put( inlet, { Kind::Corrupt, {}, 1 } );
   board.faults.put( inlet, { Kind::Checksum, {}, 1 } );
   EXPECT_EQ( readResult(), Result::NoAcknowledge );
   std::vector<I2c::Message> writeOnly { writing( { 0x00 } ) };
   EXPECT_EQ( board.transfer( 3, 0x48, writeOnly ).duration, 2s );
   EXPECT_EQ( read().duration, 0s );
   EXPECT_EQ( bytes, ( Bytes { 0x98, 0x81 } ) );
}

TEST_F( EmulatorFaults, SpoilNoLastByteOfATransferThatFails ) {
   board.faults.put( inlet, { Kind::Checksum, {}, 1 } );
   std::vector<I2c::Message> messages { reading( 2 ), writing( { 0x99 } ) };
   EXPECT_EQ( board.transfer( 3, 0x48, messages ).result, Result::NoAcknowledge );
   EXPECT_EQ( messages[0].bytes, right );
   read();
   EXPECT_EQ( bytes, ( Bytes { 0x18, 0x81 } ) );
}

TEST_F( EmulatorFaults, ThatFailATransferKeepItFromTheChip ) {
   for ( auto kind : { Kind::Busy, Kind::Arbitration, Kind::Nack, Kind::Hang } ) {
      board.faults.put( inlet, { kind, {}, 1 } );
      std::vector<I2c::Message> messages { writing( { 0x03, 0x10, 0x00 } ) };
      EXPECT_NE( board.transfer( 3, 0x48, messages ).result, Result::Ok );
      EXPECT_EQ( board.find( "inlet" )->chip->get( "tos" ), "80" );
   }
}

TEST_F( EmulatorFaults, OfABusMeetATransferToAnAddressWithoutAChip ) {
   board.faults.put( bus, { Kind::Busy } );
   EXPECT_EQ( readResult( 0x50 ), Result::BusBusy );
}

TEST_F( EmulatorFaults, StayWhenTheChipIsReset ) {
   board.faults.put( inlet, { Kind::Nack } );
   board.find( "inlet" )->chip->reset();
   EXPECT_EQ( readResult(), Result::NoAcknowledge );
}
