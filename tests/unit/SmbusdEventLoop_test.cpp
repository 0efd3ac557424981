#include "smbusd/EventLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

using namespace Smbusd;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

/** The two ends of a connection, and what the loop says of the first. */
class Pair final : public EventLoop::Watcher {
public:
   using Watch = EventLoop::Slot ( EventLoop::* )( int, short, EventLoop::Watcher& );

   explicit Pair( EventLoop& loop, short events = POLLIN, Watch watch = &EventLoop::watch ) {
      int fds[2];
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds ), 0 );
      watched = Descriptor( fds[0] );
      other = Descriptor( fds[1] );
      slot = ( loop.*watch )( fds[0], events, *this );
   }

   void ready( short events ) override {
      seen.push_back( events );
      if ( then ) {
         then();
      }
   }

   void poke() { EXPECT_EQ( write( other.get(), "x", 1 ), 1 ); }

   Descriptor watched;
   Descriptor other;
   EventLoop::Slot slot;
   std::vector<short> seen;
   std::function<void()> then;
};

} // namespace

TEST( SmbusdEventLoop, TellsAWatcherWhatItsDescriptorHas ) {
   EventLoop loop;
   Pair pair( loop );
   pair.poke();
   loop.runOnce();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN ) );
}

TEST( SmbusdEventLoop, TellsOfAnEndThatNobodyAskedFor ) {
   EventLoop loop;
   Pair pair( loop, 0 );
   pair.other = Descriptor();
   loop.runOnce();
   EXPECT_THAT( pair.seen, ElementsAre( POLLHUP ) );
}

TEST( SmbusdEventLoop, KeepsSilentAboutWhatIsNotWanted ) {
   EventLoop loop;
   Pair pair( loop );
   loop.want( pair.slot, 0 );
   pair.poke();
   loop.after( 1ms, [] {} );
   loop.runOnce();
   EXPECT_TRUE( pair.seen.empty() );
}

TEST( SmbusdEventLoop, TellsAgainWhatADescriptorStillHas ) {
   EventLoop loop;
   Pair pair( loop );
   pair.poke();
   loop.runOnce();
   loop.runOnce();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN, POLLIN ) );
}

TEST( SmbusdEventLoop, TellsChangesOnce ) {
   EventLoop loop;
   Pair pair( loop, POLLIN, &EventLoop::watchChanges );
   auto wait = [&] {
      loop.after( 1ms, [] {} );
      loop.runOnce();
   };
   pair.poke();
   wait();
   wait();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN ) );
   pair.poke();
   wait();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN, POLLIN ) ) << "more has come";
   loop.again( pair.slot );
   wait();
   wait();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN, POLLIN, POLLIN ) ) << "it was asked for";
   loop.want( pair.slot, 0 );
   loop.want( pair.slot, POLLIN );
   wait();
   wait();
   EXPECT_THAT( pair.seen, ElementsAre( POLLIN, POLLIN, POLLIN, POLLIN ) ) << "it is wanted anew";
   pair.other = Descriptor();
   wait();
   EXPECT_EQ( pair.seen.back(), POLLIN | POLLHUP );
}

TEST( SmbusdEventLoop, ForgetsADescriptorThatIsNotWatchedAnyMore ) {
   EventLoop loop;
   Pair pair( loop );
   pair.poke();
   loop.unwatch( pair.slot );
   loop.after( 1ms, [] {} );
   loop.runOnce();
   EXPECT_TRUE( pair.seen.empty() );
}

TEST( SmbusdEventLoop, LetsAWatcherTakeAnotherOneAway ) {
   EventLoop loop;
   Pair first( loop );
   Pair second( loop );
   first.then = [&] { loop.unwatch( second.slot ); };
   first.poke();
   second.poke();
   loop.runOnce();
   EXPECT_EQ( first.seen.size(), 1U );
   EXPECT_TRUE( second.seen.empty() );
}

TEST( SmbusdEventLoop, GivesANewcomerInAFreedSlotNoOldEvents ) {
   EventLoop loop;
   Pair first( loop );
   Pair second( loop );
   std::unique_ptr<Pair> third;
   first.then = [&] {
      loop.unwatch( second.slot );
      third = std::make_unique<Pair>( loop );
   };
   first.poke();
   second.poke();
   loop.runOnce();
   ASSERT_TRUE( third );
   EXPECT_EQ( third->slot, second.slot );
   EXPECT_TRUE( third->seen.empty() );
}

TEST( SmbusdEventLoop, RunsTimersInTheOrderOfTheirTimes ) {
   EventLoop loop;
   std::vector<int> order;
   auto begin = std::chrono::steady_clock::now();
   loop.after( 20ms, [&] {
      order.push_back( 20 );
      loop.stop();
   } );
   loop.after( 5ms, [&] { order.push_back( 5 ); } );
   loop.after( 10ms, [&] { order.push_back( 10 ); } );
   loop.run();
   EXPECT_THAT( order, ElementsAre( 5, 10, 20 ) );
   EXPECT_GE( std::chrono::steady_clock::now() - begin, 20ms );
}

TEST( SmbusdEventLoop, ServesDescriptorsBetweenTimersThatStartEachOther ) {
   EventLoop loop;
   Pair pair( loop );
   pair.then = [&] { loop.stop(); };
   std::function<void()> again = [&] { loop.after( 0ms, again ); };
   again();
   pair.poke();
   loop.run();
   EXPECT_FALSE( pair.seen.empty() );
}

TEST( SmbusdEventLoop, RunsWhatAnotherThreadPosts ) {
   EventLoop loop;
   auto own = std::this_thread::get_id();
   std::thread::id ran;
   std::jthread other( [&] {
      loop.post( [&] {
         ran = std::this_thread::get_id();
         loop.stop();
      } );
   } );
   loop.run();
   EXPECT_EQ( ran, own );
}

TEST( SmbusdEventLoop, RunsWhatAPostedTaskPostsInALaterRound ) {
   EventLoop loop;
   std::vector<int> order;
   loop.post( [&] {
      loop.post( [&] { order.push_back( 2 ); } );
      order.push_back( 1 );
   } );
   loop.runOnce();
   EXPECT_THAT( order, ElementsAre( 1 ) );
   loop.runOnce();
   EXPECT_THAT( order, ElementsAre( 1, 2 ) );
}
