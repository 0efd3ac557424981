#include "smbusd/Scheduler.h"

#include "SmbusdFakes.h"

using namespace Smbusd;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** Transactions that each read from chips, told by the numbers of their busses. Their chips count from 0x10.
 */
class SmbusdScheduler : public testing::Test {
protected:
   /** Hands over a transaction that reads from these busses. */
   void submit( const std::vector<uint8_t>& busses ) {
      Smbus::TransactionRequest message;
      for ( auto number : busses ) {
         addRequest( message, Smbus::READ, addressWord( nextChip_, number ), 1 );
      }
      job = std::make_shared<Scheduler::Job>( [this, chip = nextChip_] { ended.push_back( chip ); } );
      ASSERT_TRUE( job->transaction.parse( serialised( message ) ) );
      ASSERT_TRUE( job->transaction.plan( backend ) );
      scheduler.run( job );
      ++nextChip_;
   }

   void run( const std::vector<uint8_t>& busses ) {
      submit( busses );
      settle();
   }

   /** Lets what was put off run. */
   void settle() {
      for ( int i = 0; i < 3; ++i ) {
         loop.post( [] {} );
         loop.runOnce();
      }
   }

   EventLoop loop;
   FakeBackend backend;
   FakeBus& three = backend.make( 3 );
   FakeBus& five = backend.make( 5 );
   Scheduler scheduler { loop };
   /** What was handed over last. */
   std::shared_ptr<Scheduler::Job> job;
   /** The chips of the transactions that have ended. */
   std::vector<int> ended;

private:
   uint8_t nextChip_ = 0x10;
};

} // namespace

TEST_F( SmbusdScheduler, RunsATransactionOnAnIdleBusAtOnce ) {
   submit( { 3 } );
   EXPECT_THAT( ended, ElementsAre( 0x10 ) );
}

TEST_F( SmbusdScheduler, RunsATransactionWithoutBusses ) {
   submit( {} );
   EXPECT_THAT( ended, ElementsAre( 0x10 ) );
}

TEST_F( SmbusdScheduler, RunsOneTransactionAtATimeOnABus ) {
   three.holding = true;
   run( { 3, 3 } );
   run( { 3 } );
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00" ) );
   three.release();
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x10 reg 0x00" ) );
   three.release();
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x10 reg 0x00", "0x11 reg 0x00" ) );
}

TEST_F( SmbusdScheduler, RunsTransactionsOfABusInOrderOfArrival ) {
   three.holding = true;
   for ( int i = 0; i < 4; ++i ) {
      run( { 3 } );
   }
   for ( int i = 0; i < 4; ++i ) {
      ASSERT_TRUE( three.holds() );
      three.release();
      settle();
   }
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11, 0x12, 0x13 ) );
}

TEST_F( SmbusdScheduler, LetsNoNewcomerPassOneThatIsAboutToStart ) {
   three.holding = true;
   run( { 3 } );
   run( { 3 } );
   three.release();
   submit( { 3 } );
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x11 reg 0x00" ) );
}

TEST_F( SmbusdScheduler, RunsTransactionsOfDifferentBussesSideBySide ) {
   three.holding = true;
   run( { 3 } );
   run( { 5 } );
   EXPECT_THAT( ended, ElementsAre( 0x11 ) );
}

TEST_F( SmbusdScheduler, StartsATransactionWhenItHasAllItsBusses ) {
   three.holding = five.holding = true;
   run( { 3 } );
   run( { 5 } );
   run( { 3, 5 } );
   three.release();
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00" ) );
   five.release();
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x12 reg 0x00" ) );
   EXPECT_THAT( five.log, ElementsAre( "0x11 reg 0x00" ) );
}

TEST_F( SmbusdScheduler, HoldsAllBussesOfATransactionToItsEnd ) {
   three.holding = true;
   run( { 5, 3 } );
   run( { 5 } );
   EXPECT_THAT( five.log, ElementsAre( "0x10 reg 0x00" ) );
   EXPECT_THAT( ended, IsEmpty() );
   three.release();
   settle();
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11 ) );
}

TEST_F( SmbusdScheduler, NeverLetsTwoTransactionsWaitForEachOther ) {
   three.holding = five.holding = true;
   run( { 3 } );
   run( { 3, 5 } );
   run( { 5, 3 } );
   for ( int i = 0; i < 5; ++i ) {
      for ( auto bus : { &three, &five } ) {
         if ( bus->holds() ) {
            bus->release();
         }
         settle();
      }
   }
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11, 0x12 ) );
}

TEST_F( SmbusdScheduler, CarriesOnAfterATransactionThatFails ) {
   three.holding = true;
   three.outcomes.assign( 3, { I2c::Result::TimedOut } );
   run( { 3 } );
   run( { 3 } );
   for ( int i = 0; i < 4; ++i ) {
      three.release();
      settle();
   }
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11 ) );
}

TEST_F( SmbusdScheduler, RunsAJobAgainFromItsEnd ) {
   Smbus::TransactionRequest message;
   addRequest( message, Smbus::READ, addressWord( 0x20, 3 ), 1 );
   auto start = [&] {
      EXPECT_TRUE( job->transaction.parse( serialised( message ) ) );
      EXPECT_TRUE( job->transaction.plan( backend ) );
      scheduler.run( job );
   };
   job = std::make_shared<Scheduler::Job>( [&] {
      if ( three.log.size() < 3 ) {
         start();
      }
   } );
   start();
   EXPECT_THAT( three.log, ElementsAre( "0x20 reg 0x00", "0x20 reg 0x00", "0x20 reg 0x00" ) );
}

TEST_F( SmbusdScheduler, RunsAJobToItsEndThatNobodyElseHas ) {
   three.holding = true;
   run( { 3 } );
   run( { 3 } );
   job.reset();
   three.release();
   settle();
   three.release();
   settle();
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11 ) );
}

TEST_F( SmbusdScheduler, ForgetsATransactionThatIsAbandonedBeforeItBegins ) {
   three.holding = true;
   run( { 3 } );
   run( { 3 } );
   std::weak_ptr<Scheduler::Job> abandoned = job;
   scheduler.abandon( job );
   run( { 3 } );
   EXPECT_TRUE( abandoned.expired() );
   three.release();
   settle();
   three.release();
   settle();
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x12 reg 0x00" ) );
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x12 ) );
}

TEST_F( SmbusdScheduler, RunsAnAbandonedTransactionThatHasBegunToItsEnd ) {
   three.holding = true;
   run( { 3, 3 } );
   scheduler.abandon( job );
   run( { 3 } );
   for ( int i = 0; i < 3; ++i ) {
      ASSERT_TRUE( three.holds() );
      three.release();
      settle();
   }
   EXPECT_THAT( three.log, ElementsAre( "0x10 reg 0x00", "0x10 reg 0x00", "0x11 reg 0x00" ) );
   EXPECT_THAT( ended, ElementsAre( 0x11 ) ) << "nobody is told of the end of an abandoned one";
}

TEST_F( SmbusdScheduler, GivesTheBusThatAnAbandonedTransactionHadReservedToTheNext ) {
   three.holding = true;
   run( { 3 } );
   run( { 3, 5 } );
   auto waiting = job;
   run( { 5 } );
   EXPECT_THAT( five.log, IsEmpty() );
   scheduler.abandon( waiting );
   settle();
   EXPECT_THAT( five.log, ElementsAre( "0x12 reg 0x00" ) );
   EXPECT_THAT( ended, ElementsAre( 0x12 ) );
   three.release();
   settle();
   EXPECT_THAT( ended, ElementsAre( 0x12, 0x10 ) );
}

TEST_F( SmbusdScheduler, AbandonsNothingWhereNothingRuns ) {
   run( { 3 } );
   scheduler.abandon( job );
   run( { 3 } );
   EXPECT_THAT( ended, ElementsAre( 0x10, 0x11 ) );
}

TEST_F( SmbusdScheduler, RunsALongQueueWithoutDeepRecursion ) {
   three.holding = true;
   run( { 3 } );
   three.holding = false;
   for ( int i = 0; i < 20000; ++i ) {
      submit( { 3 } );
   }
   three.release();
   EXPECT_TRUE( runUntil( loop, [this] { return ended.size() == 20001; } ) );
}
