#include "Ham/SimHam.h"

#include "Drivers/Drivers.h"
#include "FieldOrder.h"
#include "OwnedSimHam.h"
#include "Simulation.h"

#include <gmock/gmock.h>

#include <type_traits>

using Host::TraceLine;
using testing::ElementsAre;
using Utils::ExpectedVal;

namespace {

/** Registers 0x1 (one byte, 2a), 0x2 (two bytes, 2000) and 0x5 (a text of four). */
class SimHam : public SimulatedChip {
protected:
   SimHam() {
      expect(
         { { 1, ExpectedVal( 0x2A, 1 ) }, { 2, ExpectedVal( 0x2000, 2 ) }, { 5, ExpectedVal( "text" ) } } );
   }

   static TraceLine warning( const std::string& reg ) {
      return { 0, "WARNING: Simulated Driver Chip doesn't yet have expectedVal set for register " + reg +
                     " using SIMULATION_HAM()\n" };
   }

   /** Queues a read of a register as the only request, and gives its number. */
   uint32_t queue( uint32_t reg ) {
      ham.prepare();
      return ham.addRead8( reg, 1 );
   }
};

/** A device whose driver has no table. */
class SimHamWithoutTable : public SimHam {
protected:
   SimHamWithoutTable() {
      ham.simFileExists_ = false;
      expect( {} );
   }
};

class NewSimHam : public testing::Test {
protected:
   OwnedSimHam ham = takeSimHam( Ham::SimHam::create( {}, {} ) );
};

} // namespace

TEST_F( NewSimHam, IsAHamWithoutAnythingInIt ) {
   static_assert( std::is_base_of_v<Ham::Ham, Ham::SimHam> );
   ASSERT_NE( ham, nullptr );
   EXPECT_EQ( ham->retryCount, 0U );
   EXPECT_FALSE( ham->retryCountIsSet );
   EXPECT_EQ( ham->expected, nullptr );
   EXPECT_TRUE( ham->regOffsets.empty() );
   EXPECT_EQ( ham->driverName, "" );
   EXPECT_EQ( ham->deviceName, "" );
   EXPECT_EQ( ham->currentReg, 0U );
   EXPECT_FALSE( ham->simFileExists_ );
   EXPECT_EQ( ham->simFileSize, 0U );
   EXPECT_EQ( ham->simFileName_, "" );
   EXPECT_EQ( ham->responseId, 0U );
   EXPECT_TRUE( ham->queuedRegs.empty() );
}

TEST_F( NewSimHam, HasItsFieldsInTheAgreedOrder ) {
   EXPECT_TRUE( inOrder( ham->retryCountIsSet, ham->expected, ham->regOffsets, ham->driverName,
      ham->deviceName, ham->currentReg, ham->simFileExists_, ham->simFileSize, ham->simFileName_,
      ham->responseId, ham->queuedRegs ) );
}

TEST_F( NewSimHam, CountsItsFirstRequestFrom1UnlessItIsPrepared ) { EXPECT_EQ( ham->addRead8( 3, 1 ), 1U ); }

TEST_F( NewSimHam, SucceedsAndReadsZeroBeforeItHasATable ) {
   uint8_t value = 0x55;
   EXPECT_EQ( ham->read8( 3, &value, 1 ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( SimHam, InitDoesNothing ) {
   ham.init();
   EXPECT_THAT( Host::traces, ElementsAre() );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
}

TEST_F( SimHam, StartsEveryRequestTheSameWay ) {
   ham.prepare();
   ham.requestInit( 9 );
   ham.requestInit( 4 );
   EXPECT_EQ( ham.currentReg, 4U );
   EXPECT_THAT( ham.queuedRegs, ElementsAre( 9, 4 ) );
   EXPECT_EQ( ham.responseId, 1U );
}

TEST_F( SimHam, CountsEveryRequestButASendByte ) {
   ham.prepare();
   EXPECT_EQ( ham.addRead8( 10, 1 ), 0U );
   EXPECT_EQ( ham.addRead16( 11, 1 ), 1U );
   EXPECT_EQ( ham.addReadBlock( 12, 1 ), 2U );
   EXPECT_EQ( ham.addRead( 13, 4, false, 1 ), 3U );
   EXPECT_EQ( ham.addProcessCall( 14, 0xFFFF, 1 ), 4U );
   EXPECT_EQ( ham.addRecvByte(), 5U );
   ham.addSendByte( 15, false );
   ham.addWrite8( 16, 0, false, 1 );
   ham.addWrite16( 17, 0, false, 1 );
   std::string text;
   ham.addWrite( 18, &text, 0, false, 1 );
   ham.addWriteBlock( 19, &text, 0, false, 1 );
   EXPECT_EQ( ham.responseId, 9U );
   EXPECT_THAT( ham.queuedRegs, ElementsAre( 10, 11, 12, 13, 14, 0, 16, 17, 18, 19 ) );
}

TEST_F( SimHam, TakesTheRegisterOfEveryRequestAsTheCurrentOne ) {
   std::string text;
   ham.addRead8( 10, 1 );
   EXPECT_EQ( ham.currentReg, 10U );
   ham.addRead16( 11, 1 );
   EXPECT_EQ( ham.currentReg, 11U );
   ham.addReadBlock( 12, 1 );
   EXPECT_EQ( ham.currentReg, 12U );
   ham.addRead( 13, 4, false, 1 );
   EXPECT_EQ( ham.currentReg, 13U );
   ham.addProcessCall( 14, 0, 1 );
   EXPECT_EQ( ham.currentReg, 14U );
   ham.addRecvByte();
   EXPECT_EQ( ham.currentReg, 0U );
   ham.addWrite8( 16, 0, false, 1 );
   EXPECT_EQ( ham.currentReg, 16U );
   ham.addWrite16( 17, 0, false, 1 );
   EXPECT_EQ( ham.currentReg, 17U );
   ham.addWrite( 18, &text, 0, false, 1 );
   EXPECT_EQ( ham.currentReg, 18U );
   ham.addWriteBlock( 19, &text, 0, false, 1 );
   EXPECT_EQ( ham.currentReg, 19U );
   ham.addSendByte( 20, false );
   EXPECT_EQ( ham.currentReg, 19U );
}

TEST_F( SimHam, ForgetsItsRequestsWhenItIsPrepared ) {
   ham.addRead8( 1, 1 );
   ham.prepare();
   EXPECT_TRUE( ham.queuedRegs.empty() );
   EXPECT_EQ( ham.responseId, 0xFFFFFFFFU );
   EXPECT_EQ( ham.currentReg, 1U );
}

TEST_F( SimHam, KnowsWhetherTheCurrentRegisterIsInItsTable ) {
   ham.currentReg = 5;
   EXPECT_TRUE( ham.isAddrSimulated() );
   ham.currentReg = 4;
   EXPECT_FALSE( ham.isAddrSimulated() );
}

TEST_F( SimHam, ReadsNumbersOfTheirOwnWidth ) {
   uint8_t byte = 0;
   uint16_t word = 0;
   EXPECT_EQ( ham.read8( 1, &byte, 1 ), QL_STATUS_OK );
   EXPECT_EQ( ham.read16( 2, &word, 1 ), QL_STATUS_OK );
   EXPECT_EQ( byte, 0x2A );
   EXPECT_EQ( word, 0x2000 );
}

TEST_F( SimHam, ReadsAWordFromAByteWithAllOnesBehindIt ) { EXPECT_EQ( ham.get16( queue( 1 ) ), 0x2AFF ); }

TEST_F( SimHam, ReadsAByteFromAWordAsItsHighByte ) { EXPECT_EQ( ham.get8( queue( 2 ) ), 0x20 ); }

TEST_F( SimHam, ReadsDigitsOfBothCases ) {
   rewrite( "Chip", "2AaBcDtext\n" );
   EXPECT_EQ( ham.get8( queue( 1 ) ), 0x2A );
   EXPECT_EQ( ham.get16( queue( 2 ) ), 0xABCD );
}

TEST_F( SimHam, ReadsABlockAsTheCharactersOfTheFile ) {
   EXPECT_EQ( ham.getBlock( queue( 2 ), 4 ), "2000" );
   EXPECT_EQ( ham.getBlock( queue( 2 ), 2 ), "20" );
   EXPECT_EQ( ham.getBlock( queue( 2 ), 6 ), "2000ff" );
   EXPECT_EQ( ham.getBlock( queue( 5 ), 6 ), "text\xFF\xFF" );
   EXPECT_EQ( ham.getBlock( queue( 5 ), 0 ), "" );
}

TEST_F( SimHam, ReadsRegister0WhenItReceivesAByte ) {
   expect( { { 0, ExpectedVal( 0x77, 1 ) } } );
   uint8_t value = 0;
   EXPECT_EQ( ham.recvByte( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0x77 );
}

TEST_F( SimHam, ReadsAndWritesNothingInAProcessCall ) {
   uint16_t result = 0;
   EXPECT_EQ( ham.processCall( 2, 0x1234, &result, 1 ), QL_STATUS_OK );
   EXPECT_EQ( result, 0x2000 );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
}

TEST_F( SimHam, AnswersTheReadsOfABatchInAnyOrder ) {
   ham.prepare();
   auto byte = ham.addRead8( 1, 1 );
   auto word = ham.addRead16( 2, 1 );
   auto block = ham.addReadBlock( 5, 1 );
   EXPECT_EQ( ham.execute(), QL_STATUS_OK );
   EXPECT_EQ( ham.getBlock( block, 4 ), "text" );
   EXPECT_EQ( ham.currentReg, 5U );
   EXPECT_EQ( ham.get8( byte ), 0x2A );
   EXPECT_EQ( ham.currentReg, 1U );
   EXPECT_EQ( ham.get16( word ), 0x2000 );
   EXPECT_EQ( ham.currentReg, 2U );
}

TEST_F( SimHam, WarnsOfAReadOfARegisterThatItsTableLacks ) {
   auto id = queue( 0x1F );
   EXPECT_EQ( ham.get8( id ), 0 );
   EXPECT_EQ( ham.get16( id ), 0 );
   EXPECT_EQ( ham.getBlock( id, 4 ), "" );
   EXPECT_THAT( Host::traces, ElementsAre( warning( "0x1f" ), warning( "0x1f" ), warning( "0x1f" ) ) );
}

TEST_F( SimHam, ReadsZeroForANumberThatNoRequestHasGot ) {
   auto id = queue( 1 ) + 1;
   EXPECT_EQ( ham.get8( id ), 0 );
   EXPECT_EQ( ham.get16( id ), 0 );
   EXPECT_EQ( ham.getBlock( id, 4 ), "" );
   EXPECT_THAT( Host::traces,
      ElementsAre( warning( "0xffffffff" ), warning( "0xffffffff" ), warning( "0xffffffff" ) ) );
}

TEST_F( SimHam, WritesNumbersOfTheirOwnWidthAtOnce ) {
   ham.prepare();
   ham.addWrite8( 1, 0xB, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "0b2000text\n" );
   ham.addWrite16( 2, 0xCD, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "0b00cdtext\n" );
}

TEST_F( SimHam, WritesZeroToAWordAsFourZeros ) {
   EXPECT_EQ( ham.write16( 2, 0, false, 1 ), QL_STATUS_OK );
   EXPECT_EQ( contentOf( "Chip" ), "2a0000text\n" );
}

TEST_F( SimHam, WritesWhateverFlagAndRegisterSizeAre ) {
   ham.addWrite8( 1, 0xEE, true, 4 );
   ham.addWrite16( 2, 0xEEEE, true, 0 );
   EXPECT_EQ( contentOf( "Chip" ), "eeeeeetext\n" );
}

TEST_F( SimHam, WritesNoNumberOfAnotherWidthAndSaysNothing ) {
   ham.addWrite8( 2, 0, false, 1 );
   ham.addWrite8( 5, 0, false, 1 );
   ham.addWrite16( 1, 0, false, 1 );
   ham.addWrite16( 5, 0, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SimHam, WritesTheStringObjectThatItsDataPointsTo ) {
   std::string text = "TEXT";
   ham.addWrite( 5, &text, 4, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000TEXT\n" );
   text = "1234";
   ham.addWriteBlock( 2, &text, 2, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "2a1234TEXT\n" );
}

TEST_F( SimHam, WritesNoBlockOfAnotherSizeAndSaysNothing ) {
   std::string text = "1234";
   ham.addWrite( 2, &text, 4, false, 1 );
   ham.addWriteBlock( 5, &text, 5, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SimHam, WarnsOfAWriteToARegisterThatItsTableLacks ) {
   std::string text = "1";
   ham.addWrite8( 0xA, 0, false, 1 );
   ham.addWrite16( 0xB, 0, false, 1 );
   ham.addWrite( 0xC, &text, 1, false, 1 );
   ham.addWriteBlock( 0xD, &text, 1, false, 1 );
   EXPECT_THAT(
      Host::traces, ElementsAre( warning( "0xa" ), warning( "0xb" ), warning( "0xc" ), warning( "0xd" ) ) );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
}

TEST_F( SimHam, SendsAByteWithoutAnyEffect ) {
   ham.addSendByte( 1, false );
   EXPECT_EQ( contentOf( "Chip" ), "2a2000text\n" );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( SimHam, JudgesASendByteByTheRegisterBeforeIt ) {
   queue( 1 );
   EXPECT_EQ( ham.sendByte( 9, false ), QL_STATUS_OK );
   queue( 9 );
   EXPECT_EQ( ham.sendByte( 1, false ), QL_STATUS_IO_ERROR );
}

TEST_F( SimHam, FailsOnARegisterThatItsTableLacks ) {
   uint8_t value = 0x55;
   EXPECT_EQ( ham.read8( 9, &value, 1 ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( value, 0x55 );
   EXPECT_EQ( ham.write8( 9, 0, false, 1 ), QL_STATUS_IO_ERROR );
}

TEST_F( SimHam, JudgesABatchByItsLastRegisterAlone ) {
   ham.prepare();
   ham.addRead8( 9, 1 );
   ham.addRead8( 1, 1 );
   EXPECT_EQ( ham.execute(), QL_STATUS_OK );
   ham.addRead8( 9, 1 );
   EXPECT_EQ( ham.execute(), QL_STATUS_IO_ERROR );
}

TEST_F( SimHam, JudgesByTheRegisterOfALaterGet ) {
   ham.prepare();
   ham.addRead8( 1, 1 );
   ham.addRead8( 9, 1 );
   ham.get8( 0 );
   EXPECT_EQ( ham.execute(), QL_STATUS_OK );
   ham.get8( 1 );
   EXPECT_EQ( ham.execute(), QL_STATUS_IO_ERROR );
}

TEST_F( SimHam, KeepsAWriteWhenTheBatchFails ) {
   ham.prepare();
   ham.addWrite8( 1, 0xEE, false, 1 );
   ham.addRead8( 9, 1 );
   EXPECT_EQ( ham.execute(), QL_STATUS_IO_ERROR );
   EXPECT_EQ( contentOf( "Chip" ), "ee2000text\n" );
}

TEST_F( SimHam, HasNoAccessOver32Bits ) {
   uint32_t value = 0;
   EXPECT_THROW( ham.addRead32( 2, 1 ), NotImplementedException );
   EXPECT_THROW( ham.addWrite32( 2, 0, false, 1 ), NotImplementedException );
   EXPECT_THROW( ham.get32( 0 ), NotImplementedException );
   try {
      ham.read32( 2, &value, 1 );
      FAIL() << "nothing thrown";
   } catch ( const NotImplementedException& exception ) {
      EXPECT_STREQ( exception.what(), "Not implemented addRead32" );
   }
}

TEST_F( SimHamWithoutTable, AlwaysSucceeds ) {
   queue( 9 );
   EXPECT_EQ( ham.execute(), QL_STATUS_OK );
   EXPECT_EQ( ham.write8( 9, 1, false, 1 ), QL_STATUS_OK );
   uint16_t value = 0x5555;
   EXPECT_EQ( ham.read16( 9, &value, 1 ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( SimHamWithoutTable, WarnsOfEveryAccess ) {
   std::string text = "1";
   auto id = queue( 9 );
   ham.get8( id );
   ham.get16( id );
   ham.getBlock( id, 4 );
   ham.addWrite8( 9, 0, false, 1 );
   ham.addWrite16( 9, 0, false, 1 );
   ham.addWrite( 9, &text, 1, false, 1 );
   ham.addWriteBlock( 9, &text, 1, false, 1 );
   EXPECT_EQ( Host::traces, std::vector<TraceLine>( 7, warning( "0x9" ) ) );
}
