#include "smbusd/ControlClient.h"

#include "SmbusdFakes.h"

#include "emulator/BoardFile.h"

#include <sys/socket.h>

using namespace Smbusd;

namespace {

/** A line of so many characters, and its end. */
std::string lineOf( size_t length ) {
   std::string line( length + 1, 'x' );
   line.back() = '\n';
   return line;
}

/** Somebody at the bench of a board with one sensor, "inlet". */
class SmbusdControlClient : public testing::Test {
protected:
   SmbusdControlClient() {
      int fds[2];
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds ), 0 );
      peer = Descriptor( fds[0] );
      client = std::make_shared<ControlClient>( loop, Descriptor( fds[1] ), board );
      client->ended = [this]( Connection& ) {
         ended = true;
         loop.post( [last = std::move( client )] {} );
      };
   }

   std::string ask( const std::string& text ) {
      EXPECT_EQ(
         send( peer.get(), text.data(), text.size(), MSG_NOSIGNAL ), static_cast<ssize_t>( text.size() ) );
      for ( int i = 0; i < 3; ++i ) {
         loop.after( std::chrono::milliseconds( 0 ), [] {} );
         loop.runOnce();
      }
      std::string answer( 65536, '\0' );
      auto count = recv( peer.get(), answer.data(), answer.size(), 0 );
      answer.resize( count < 0 ? 0 : static_cast<size_t>( count ) );
      return answer;
   }

   EventLoop loop;
   Emulator::Board board = Emulator::parseBoard( "emulator.json",
      R"({ "chips": [ { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72 } ] })" );
   Descriptor peer;
   std::shared_ptr<ControlClient> client;
   bool ended = false;
};

} // namespace

TEST_F( SmbusdControlClient, GetsALineForALine ) {
   EXPECT_EQ( ask( "set inlet.temperature 42.5\n" ), "ok\n" );
   EXPECT_EQ( ask( "get inlet.temperature\n" ), "ok 42.5\n" );
}

TEST_F( SmbusdControlClient, MaySendALineInPieces ) {
   EXPECT_EQ( ask( "set inlet.temp" ), "" );
   EXPECT_EQ( ask( "erature 42.5\n" ), "ok\n" );
}

TEST_F( SmbusdControlClient, MaySendLinesAtOnce ) {
   EXPECT_EQ( ask( "set inlet.temperature 42.5\nget inlet.temperature\n" ), "ok\nok 42.5\n" );
}

TEST_F( SmbusdControlClient, GetsAReasonForALineThatIsNoCommand ) {
   EXPECT_EQ( ask( "sett inlet.temperature 42.5\n" ).substr( 0, 6 ), "error " );
   EXPECT_FALSE( ended );
}

TEST_F( SmbusdControlClient, MaySendALineOfTheLongestLength ) {
   EXPECT_EQ( ask( lineOf( ControlClient::maxLine ) ).substr( 0, 6 ), "error " );
   EXPECT_FALSE( ended );
}

TEST_F( SmbusdControlClient, IsDroppedForALineThatIsTooLong ) {
   ask( lineOf( ControlClient::maxLine + 1 ) );
   EXPECT_TRUE( ended );
}

TEST_F( SmbusdControlClient, IsDroppedForALineThatNeverEnds ) {
   ask( std::string( ControlClient::maxLine + 1, 'x' ) );
   EXPECT_TRUE( ended );
}
