// A server that is killed again and again under a busy host, which works through the library's own register
// access and socket.

#include "BusyHost.h"
#include "Server.h"
#include "Usage.h"

#include <fmt/format.h>

#include <csignal>
#include <random>
#include <thread>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto limit = 500ms;
/** How late a busy machine may let a process run. */
constexpr auto lateness = 400ms;

/** A server that can be killed and started again in its place. */
class MortalServer {
public:
   /** Tells by a mark on its chip which start it is. */
   void start( uint32_t mark ) {
      directory_.write( "emulator.json", BusyHost::board( mark ) );
      process_.emplace(
         Process::Arguments { QUILLON_SMBUSD, "--emulate", directory_ / "", "--socket", socket },
         environmentWith( manager_ ) );
      auto ready = manager_.next();
      EXPECT_TRUE( ready.starts_with( "READY=1" ) ) << ready;
   }

   void send( int signal ) { process_->send( signal ); }

   void kill() {
      process_->send( SIGKILL );
      EXPECT_EQ( process_->wait().signal, SIGKILL );
   }

private:
   const Directory directory_;

public:
   const std::string socket = directory_ / "smbus.sock";

private:
   const Manager manager_ { directory_ / "notify.sock" };
   std::optional<Process> process_;
};

class Kill : public testing::Test {
protected:
   Kill() {
      server.start( 0 );
      host.emplace( server.socket, limit );
      host->look( 0 );
   }

   /** The next start; from then on no request may fail. */
   void restart() {
      server.start( ++starts );
      host->look( starts );
   }

   /** In the middle of whatever the host asks just then. */
   void killUnderABusyHost() {
      std::this_thread::sleep_for( std::chrono::microseconds( random() % 3000 ) );
      host->lookAway();
      server.kill();
      std::this_thread::sleep_for( std::chrono::microseconds( random() % 3000 ) );
      restart();
   }

   /** So that the host finds out with its next request. */
   void killUnderAnIdleHost() {
      host->pause();
      server.kill();
      server.start( ++starts );
      host->resume( starts );
   }

   /** While it stands still, and a request waits for it. */
   void killAStandingServer() {
      host->lookAway();
      server.send( SIGSTOP );
      std::this_thread::sleep_for( 20ms );
      server.kill();
      restart();
   }

   /** After it has answered a request for which its host has waited too long. */
   void killAServerThatWasLate() {
      host->lookAway();
      server.send( SIGSTOP );
      EXPECT_TRUE( host->awaitFailure() );
      server.send( SIGCONT );
      std::this_thread::sleep_for( 20ms );
      host->look( starts );
      EXPECT_TRUE( host->awaitSuccess() );
      killUnderABusyHost();
   }

   uint32_t starts = 0;
   MortalServer server;
   std::optional<BusyHost> host;
   std::mt19937 random { 1 };
};

} // namespace

TEST_F( Kill, OfTheServerCostsNoRequestButThoseUnderWay ) {
   const int kills = numberFrom( "QUILLON_STRESS_KILLS", 200 );
   ASSERT_TRUE( host->awaitSuccess() );
   auto before = host->usage();
   fmt::print( "host before the first kill: {}\n", textOf( before ) );
   auto begin = Clock::now();
   for ( int number = 1; number <= kills; ++number ) {
      SCOPED_TRACE( number );
      // Of forty, one after a late answer and four of a server that stands; of the others, every second meets
      // an idle host.
      if ( number % 40 == 10 ) {
         killAServerThatWasLate();
      } else if ( number % 10 == 5 ) {
         killAStandingServer();
      } else if ( number % 2 ) {
         killUnderABusyHost();
      } else {
         killUnderAnIdleHost();
      }
      ASSERT_TRUE( host->awaitSuccess() );
      if ( number * 4 / kills != ( number - 1 ) * 4 / kills ) {
         fmt::print( "after {} kills: {}\n", number, textOf( host->usage() ) );
      }
   }
   auto usage = host->usage();
   auto seen = host->stop();
   fmt::print( "{} kills in {}; {} right answers, {} wrong; {} requests failed under way, {} others; longest "
               "call {} of {}\n",
      kills, textOf( Clock::now() - begin ), seen.right, seen.wrong, seen.excused, seen.unexcused,
      textOf( seen.longest ), textOf( limit ) );

   EXPECT_EQ( seen.wrong, 0U ) << "an answer was taken for another request's";
   EXPECT_EQ( seen.unexcused, 0U ) << "a request failed while the server was there";
   EXPECT_GT( seen.excused, 0U );
   EXPECT_LT( seen.longest, limit + lateness );
   EXPECT_EQ( usage.descriptors, before.descriptors );
   EXPECT_LT( usage.kilobytes, before.kilobytes + 1024 );
}
