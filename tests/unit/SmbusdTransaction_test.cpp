#include "smbusd/Transaction.h"

#include "SmbusdFakes.h"

using namespace Smbusd;
using testing::ElementsAre;

namespace {

/** A transaction on a loop and two busses, 3 and 5. */
class SmbusdTransaction : public testing::Test {
protected:
   /** Takes the message and runs it until it ends or a bus holds it. @return whether it was planned */
   bool start() {
      EXPECT_TRUE( transaction.parse( serialised( message ) ) );
      if ( !transaction.plan( backend ) ) {
         return false;
      }
      transaction.run( loop, [this] { ended = true; } );
      EXPECT_TRUE( runUntil( loop, [this] { return ended || bus.holds(); } ) );
      return true;
   }

   void addRead( uint8_t chip, uint8_t number = 3, uint32_t size = 2 ) {
      addRequest( message, Smbus::READ, addressWord( chip, number ), size );
   }

   void expectFailure( const std::string& reason ) {
      EXPECT_TRUE( transaction.response().failed() );
      EXPECT_EQ( transaction.response().reason(), reason );
      EXPECT_EQ( transaction.response().response_size(), 0 );
   }

   EventLoop loop;
   FakeBackend backend;
   FakeBus& bus = backend.make( 3 );
   FakeBus& otherBus = backend.make( 5 );
   Smbus::TransactionRequest message;
   Transaction transaction;
   bool ended = false;
};

const Outcome noAcknowledge { I2c::Result::NoAcknowledge };

} // namespace

TEST_F( SmbusdTransaction, AnswersEveryRequestInOrder ) {
   addRead( 0x48, 3, 2 );
   addRequest( message, Smbus::WRITE, addressWord( 0x48, 3, 1 ), 1, "\x07" );
   addRead( 0x49, 3, 1 );
   ASSERT_TRUE( start() );
   EXPECT_TRUE( ended );
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00", "0x48 reg 0x01", "0x49 reg 0x00" ) );
   ASSERT_EQ( transaction.response().response_size(), 3 );
   EXPECT_EQ( transaction.response().response( 0 ).data(), "\x01\x02" );
   EXPECT_EQ( transaction.response().response( 1 ).data(), "" );
   EXPECT_EQ( transaction.response().response( 2 ).data(), "\x01" );
}

TEST_F( SmbusdTransaction, ThatSucceedsSaysSo ) {
   addRead( 0x48 );
   ASSERT_TRUE( start() );
   EXPECT_TRUE( transaction.response().has_failed() );
   EXPECT_FALSE( transaction.response().failed() );
   EXPECT_FALSE( transaction.response().has_reason() );
}

TEST_F( SmbusdTransaction, WithoutRequestsSucceedsWithoutAnswers ) {
   ASSERT_TRUE( start() );
   EXPECT_TRUE( ended );
   EXPECT_TRUE( transaction.response().has_failed() );
   EXPECT_FALSE( transaction.response().failed() );
   EXPECT_EQ( transaction.response().response_size(), 0 );
}

TEST_F( SmbusdTransaction, TakesNoBytesThatAreNoMessage ) {
   EXPECT_FALSE( transaction.parse( std::vector<uint8_t> { 0xFF, 0xFF, 0xFF } ) );
}

TEST_F( SmbusdTransaction, GoesToTheBusOfEachRequest ) {
   addRead( 0x48, 5 );
   addRead( 0x49, 3 );
   addRead( 0x4A, 5 );
   ASSERT_TRUE( start() );
   EXPECT_THAT( bus.log, ElementsAre( "0x49 reg 0x00" ) );
   EXPECT_THAT( otherBus.log, ElementsAre( "0x48 reg 0x00", "0x4a reg 0x00" ) );
   EXPECT_THAT( transaction.busses(), ElementsAre( &otherBus, &bus ) );
}

TEST_F( SmbusdTransaction, TriesAFailingRequestTwiceMore ) {
   addRead( 0x48 );
   bus.outcomes = { noAcknowledge, noAcknowledge };
   ASSERT_TRUE( start() );
   EXPECT_EQ( bus.log.size(), 3U );
   EXPECT_FALSE( transaction.response().failed() );
   EXPECT_EQ( transaction.response().response( 0 ).data(), "\x01\x02" );
}

TEST_F( SmbusdTransaction, FailsWhenTryingAgainDoesNotHelp ) {
   addRead( 0x48 );
   bus.outcomes = { noAcknowledge, noAcknowledge, noAcknowledge };
   ASSERT_TRUE( start() );
   EXPECT_TRUE( ended );
   EXPECT_EQ( bus.log.size(), 3U );
   expectFailure( "request 1: i2c-3 0x48 reg 0x00: no acknowledge" );
}

TEST_F( SmbusdTransaction, TriesAsOftenAsTheMessageSays ) {
   addRead( 0x48 );
   message.set_retries( 4 );
   bus.outcomes.assign( 10, noAcknowledge );
   ASSERT_TRUE( start() );
   EXPECT_EQ( bus.log.size(), 5U );
}

TEST_F( SmbusdTransaction, TriesOnceWithZeroRetries ) {
   addRead( 0x48 );
   message.set_retries( 0 );
   bus.outcomes = { noAcknowledge };
   ASSERT_TRUE( start() );
   EXPECT_EQ( bus.log.size(), 1U );
   expectFailure( "request 1: i2c-3 0x48 reg 0x00: no acknowledge" );
}

TEST_F( SmbusdTransaction, TriesAHundredTimesMoreAtMost ) {
   addRead( 0x48 );
   message.set_retries( 4000000000 );
   bus.outcomes.assign( 200, noAcknowledge );
   ASSERT_TRUE( start() );
   EXPECT_EQ( bus.log.size(), 101U );
}

TEST_F( SmbusdTransaction, GivesEveryRequestItsOwnRetries ) {
   addRead( 0x48 );
   addRead( 0x49 );
   bus.outcomes = { noAcknowledge, noAcknowledge, {}, noAcknowledge, noAcknowledge };
   ASSERT_TRUE( start() );
   EXPECT_EQ( bus.log.size(), 6U );
   EXPECT_FALSE( transaction.response().failed() );
}

TEST_F( SmbusdTransaction, StopsAtTheRequestThatFails ) {
   addRead( 0x48 );
   addRead( 0x49 );
   addRead( 0x4A );
   message.set_retries( 0 );
   bus.outcomes = { {}, noAcknowledge };
   ASSERT_TRUE( start() );
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00", "0x49 reg 0x00" ) );
   expectFailure( "request 2: i2c-3 0x49 reg 0x00: no acknowledge" );
}

TEST_F( SmbusdTransaction, NamesEveryCauseInItsOwnWords ) {
   const std::pair<I2c::Result, const char*> rows[] = {
      { I2c::Result::NoAcknowledge, "no acknowledge" },
      { I2c::Result::BusBusy, "bus busy" },
      { I2c::Result::ArbitrationLost, "arbitration lost" },
      { I2c::Result::BadBlock, "bad block length" },
      { I2c::Result::TimedOut, "timed out" },
      { I2c::Result::NotPermitted, "not permitted" },
      { I2c::Result::HeldByDriver, "held by a kernel driver" },
      { I2c::Result::NotSupported, "not supported by the adapter" },
      { I2c::Result::NoBus, "no such bus" },
      { I2c::Result::IoError, "I/O error" },
   };
   addRead( 0x48 );
   for ( auto& [result, words] : rows ) {
      transaction = {};
      bus.outcomes.assign( 3, { result } );
      ASSERT_TRUE( start() );
      expectFailure( std::string( "request 1: i2c-3 0x48 reg 0x00: " ) + words );
   }
}

TEST_F( SmbusdTransaction, TellsWhatTheBusHasToAdd ) {
   addRead( 0x48 );
   bus.outcomes.assign( 3, { I2c::Result::NotSupported, "register number of 2 bytes" } );
   ASSERT_TRUE( start() );
   expectFailure(
      "request 1: i2c-3 0x48 reg 0x00: not supported by the adapter (register number of 2 bytes)" );
}

TEST_F( SmbusdTransaction, WaitsForABusThatTakesTime ) {
   addRead( 0x48 );
   addRead( 0x49 );
   bus.holding = true;
   ASSERT_TRUE( start() );
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00" ) );
   bus.release();
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00", "0x49 reg 0x00" ) );
   EXPECT_FALSE( ended );
   bus.release();
   EXPECT_TRUE( ended );
   EXPECT_EQ( transaction.response().response_size(), 2 );
}

TEST_F( SmbusdTransaction, TriesAgainOnABusThatTakesTime ) {
   addRead( 0x48 );
   bus.holding = true;
   bus.outcomes = { noAcknowledge };
   ASSERT_TRUE( start() );
   bus.release();
   EXPECT_EQ( bus.log.size(), 2U );
   bus.release();
   EXPECT_TRUE( ended );
   EXPECT_FALSE( transaction.response().failed() );
}

TEST_F( SmbusdTransaction, StartsAnewWithTheNextMessage ) {
   addRead( 0x48, 3, 2 );
   addRead( 0x49, 5, 8 );
   bus.outcomes.assign( 3, noAcknowledge );
   ASSERT_TRUE( start() );
   expectFailure( "request 1: i2c-3 0x48 reg 0x00: no acknowledge" );

   message.Clear();
   addRead( 0x4A, 5, 1 );
   message.set_retries( 0 );
   bus.log.clear();
   ASSERT_TRUE( start() );
   EXPECT_FALSE( transaction.response().failed() );
   EXPECT_FALSE( transaction.response().has_reason() );
   ASSERT_EQ( transaction.response().response_size(), 1 );
   EXPECT_EQ( transaction.response().response( 0 ).data(), "\x01" );
   EXPECT_THAT( bus.log, ElementsAre() );
   EXPECT_THAT( otherBus.log, ElementsAre( "0x4a reg 0x00" ) );
   EXPECT_THAT( transaction.busses(), ElementsAre( &otherBus ) );
}

TEST_F( SmbusdTransaction, LetsOthersInBetweenRequestsThatTakeLong ) {
   for ( int i = 0; i < 20; ++i ) {
      addRead( 0x48 );
   }
   bus.work = std::chrono::milliseconds( 2 );
   size_t done = 0;
   loop.post( [&] { done = bus.log.size(); } );
   ASSERT_TRUE( start() );
   EXPECT_GT( done, 0U );
   EXPECT_LT( done, 10U );
   EXPECT_TRUE( ended );
   EXPECT_EQ( transaction.response().response_size(), 20 );
}

TEST_F( SmbusdTransaction, HasTurnsAsLongAsThoseOfOthers ) {
   constexpr size_t few = 300, many = 10 * few;
   for ( size_t i = 0; i < many; ++i ) {
      addRead( 0x48 );
   }
   Transaction other;
   ASSERT_TRUE( other.parse( serialised( message ) ) );
   ASSERT_TRUE( other.plan( backend ) );
   message.Clear();
   for ( size_t i = 0; i < few; ++i ) {
      addRead( 0x48, 5 );
   }
   // Some 60 µs with the kernel's slack, so that a turn has more requests than go between two looks at the
   // clock.
   bus.work = otherBus.work = std::chrono::microseconds( 1 );
   bool otherEnded = false;
   other.run( loop, [&] { otherEnded = true; } );
   ASSERT_TRUE( start() );
   EXPECT_FALSE( otherEnded );
   EXPECT_LT( bus.log.size(), 2 * few );
}

TEST_F( SmbusdTransaction, TouchesNoBusWhenOneOfItsRequestsIsNone ) {
   addRead( 0x48 );
   addRequest( message, Smbus::WRITE, addressWord( 0x48, 3 ), 2, "\x07" );
   EXPECT_FALSE( start() );
   EXPECT_TRUE( bus.log.empty() );
   expectFailure( "request 2: write of size 2 with 1 bytes of data" );
}

TEST_F( SmbusdTransaction, TouchesNoBusWhenOneOfItsBussesIsNotThere ) {
   addRead( 0x48 );
   auto& request = addRequest( message, Smbus::READ, addressWord( 0x48, 9 ) | uint64_t { 4 } << 46, 1 );
   request.set_mastertype( Smbus::SCD );
   request.set_pciaddress( 0x700 );
   EXPECT_FALSE( start() );
   EXPECT_TRUE( bus.log.empty() );
   expectFailure( "request 2: bus 9 (SCD, pci 0x700, accelerator 4) 0x48 reg 0x00: no such bus" );
}

TEST_F( SmbusdTransaction, RefusesToPromiseMoreThanAFrameHolds ) {
   for ( int i = 0; i < 128; ++i ) {
      addRead( 0x48, 3, 8192 );
   }
   EXPECT_FALSE( start() );
   EXPECT_TRUE( bus.log.empty() );
   expectFailure( "request 128: the answers would exceed 1048576 bytes" );
}

TEST_F( SmbusdTransaction, AnswersWithWhatJustFitsInAFrame ) {
   for ( int i = 0; i < 127; ++i ) {
      addRead( 0x48, 3, 8192 );
   }
   ASSERT_TRUE( start() );
   ASSERT_TRUE( ended );
   EXPECT_LE( transaction.response().ByteSizeLong(), Frame::maxPayload );
   EXPECT_GT( transaction.response().ByteSizeLong(), 127U * 8192 );
}
