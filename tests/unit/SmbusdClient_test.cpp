#include "smbusd/SmbusClient.h"

#include "SmbusdFakes.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Smbusd;
using testing::ElementsAre;

namespace {

/** A client of the server, over a real connection. The peer is the test. */
class SmbusdClient : public testing::Test {
protected:
   SmbusdClient() {
      int fds[2];
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds ), 0 );
      peer = Descriptor( fds[0] );
      client = std::make_shared<SmbusClient>( loop, Descriptor( fds[1] ), backend, scheduler );
      client->ended = [this]( Connection& ) {
         ended = true;
         loop.post( [last = std::move( client )] {} );
      };
   }

   static Smbus::TransactionRequest reading( uint32_t size, uint8_t bus = 3 ) {
      Smbus::TransactionRequest message;
      addRequest( message, Smbus::READ, addressWord( 0x48, bus ), size );
      return message;
   }

   void send( std::span<const uint8_t> bytes ) {
      ASSERT_EQ( ::send( peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL ),
         static_cast<ssize_t>( bytes.size() ) );
   }

   /** What has come so far, after the loop has had its turn. */
   std::vector<uint8_t> received() {
      settle();
      std::vector<uint8_t> bytes( 2 << 20 );
      auto count = recv( peer.get(), bytes.data(), bytes.size(), 0 );
      bytes.resize( count < 0 ? 0 : static_cast<size_t>( count ) );
      return bytes;
   }

   /** The next bytes, however slowly they come. */
   std::vector<uint8_t> receive( size_t size ) {
      std::vector<uint8_t> all;
      EXPECT_TRUE( runUntil( loop, [&] {
         auto part = received();
         all.insert( all.end(), part.begin(), part.end() );
         return all.size() >= size;
      } ) );
      return all;
   }

   void settle() {
      for ( int i = 0; i < 3; ++i ) {
         loop.after( std::chrono::milliseconds( 0 ), [] {} );
         loop.runOnce();
      }
   }

   EventLoop loop;
   FakeBackend backend;
   FakeBus& bus = backend.make( 3 );
   Scheduler scheduler { loop };
   Descriptor peer;
   std::shared_ptr<SmbusClient> client;
   bool ended = false;
};

/** The frame of the answer to reading( 2 ). */
const std::vector<uint8_t> answerOfTwo { 0, 0, 0, 8, 0x0A, 4, 0x0A, 2, 1, 2, 0x18, 0 };

} // namespace

TEST_F( SmbusdClient, GetsAnAnswerToItsFrame ) {
   send( framed( reading( 2 ) ) );
   EXPECT_EQ( received(), answerOfTwo );
}

TEST_F( SmbusdClient, MaySendItsFrameByteByByte ) {
   auto frame = framed( reading( 2 ) );
   for ( auto byte : frame ) {
      EXPECT_TRUE( received().empty() );
      send( { &byte, 1 } );
   }
   EXPECT_EQ( received(), answerOfTwo );
}

TEST_F( SmbusdClient, MaySendManyFramesAtOnce ) {
   std::vector<uint8_t> frames;
   std::vector<uint8_t> answers;
   for ( int i = 0; i < 1000; ++i ) {
      auto frame = framed( reading( 2 ) );
      frames.insert( frames.end(), frame.begin(), frame.end() );
      answers.insert( answers.end(), answerOfTwo.begin(), answerOfTwo.end() );
   }
   send( frames );
   EXPECT_EQ( receive( answers.size() ), answers );
}

TEST_F( SmbusdClient, MaySendAnEmptyMessage ) {
   send( std::vector<uint8_t> { 0, 0, 0, 0 } );
   EXPECT_EQ( received(), ( std::vector<uint8_t> { 0, 0, 0, 2, 0x18, 0 } ) );
}

TEST_F( SmbusdClient, MaySendShortMessagesAfterLongOnes ) {
   auto withName = []( Smbus::TransactionRequest message ) {
      message.set_client( std::string( 10000, 'n' ) );
      return message;
   };
   for ( int i = 0; i < 3; ++i ) {
      send( framed( withName( {} ) ) );
      EXPECT_EQ( received(), ( std::vector<uint8_t> { 0, 0, 0, 2, 0x18, 0 } ) );
      send( framed( withName( reading( 8192 ) ) ) );
      EXPECT_GT( receive( 8192 ).size(), 8192U );
      send( framed( reading( 2 ) ) );
      EXPECT_EQ( received(), answerOfTwo );
   }
}

TEST_F( SmbusdClient, KeepsTheConnectionAfterATransactionThatIsRefused ) {
   Smbus::TransactionRequest message;
   message.add_request()->set_type( Smbus::READ );
   send( framed( message ) );
   Smbus::TransactionResponse response;
   response.set_failed( true );
   response.set_reason( "request 1: no address" );
   EXPECT_EQ( received(), framed( response ) );
   send( framed( reading( 2 ) ) );
   EXPECT_EQ( received(), answerOfTwo );
}

TEST_F( SmbusdClient, IsDroppedForALengthOverTheLimit ) {
   send( std::vector<uint8_t> { 0x00, 0x10, 0x00, 0x01 } );
   settle();
   EXPECT_TRUE( ended );
}

TEST_F( SmbusdClient, IsNotDroppedForALengthAtTheLimit ) {
   send( std::vector<uint8_t> { 0x00, 0x10, 0x00, 0x00 } );
   settle();
   EXPECT_FALSE( ended );
}

TEST_F( SmbusdClient, IsDroppedForAMessageThatCannotBeParsed ) {
   send( std::vector<uint8_t> { 0, 0, 0, 3, 0xFF, 0xFF, 0xFF } );
   settle();
   EXPECT_TRUE( ended );
   EXPECT_TRUE( bus.log.empty() );
}

TEST_F( SmbusdClient, MaySendAMessageAtTheLimit ) {
   Smbus::TransactionRequest message;
   message.set_client( std::string( Frame::maxPayload - 4, 'x' ) );
   auto frame = framed( message );
   ASSERT_EQ( frame.size(), Frame::headerSize + Frame::maxPayload );
   for ( size_t sent = 0; sent < frame.size(); ) {
      auto count = ::send( peer.get(), frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL );
      sent += count < 0 ? 0 : static_cast<size_t>( count );
      settle();
   }
   EXPECT_EQ( received(), ( std::vector<uint8_t> { 0, 0, 0, 2, 0x18, 0 } ) );
}

TEST_F( SmbusdClient, IsNotReadWhileItsTransactionRuns ) {
   bus.holding = true;
   send( framed( reading( 2 ) ) );
   settle();
   ASSERT_TRUE( bus.holds() );
   send( framed( reading( 1 ) ) );
   settle();
   int unread = 0;
   EXPECT_EQ( ioctl( peer.get(), TIOCOUTQ, &unread ), 0 );
   EXPECT_GT( unread, 0 );
   bus.release();
   EXPECT_EQ( received(), answerOfTwo );
   ASSERT_TRUE( bus.holds() );
   bus.release();
   EXPECT_EQ( received(), ( std::vector<uint8_t> { 0, 0, 0, 7, 0x0A, 3, 0x0A, 1, 1, 0x18, 0 } ) );
}

TEST_F( SmbusdClient, ThatVanishesLeavesItsTransactionToRunOn ) {
   bus.holding = true;
   auto message = reading( 2 );
   addRequest( message, Smbus::READ, addressWord( 0x49, 3 ), 1 );
   send( framed( message ) );
   settle();
   peer = Descriptor();
   settle();
   EXPECT_TRUE( ended );
   bus.release();
   ASSERT_TRUE( bus.holds() );
   bus.release();
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00", "0x49 reg 0x00" ) );
}

TEST_F( SmbusdClient, ThatSendsAndVanishesIsDroppedAfterItsTransaction ) {
   send( framed( reading( 2 ) ) );
   peer = Descriptor();
   settle();
   EXPECT_THAT( bus.log, ElementsAre( "0x48 reg 0x00" ) );
   EXPECT_TRUE( ended );
}

TEST_F( SmbusdClient, ThatHasEndedItsSideStillGetsItsAnswer ) {
   bus.holding = true;
   send( framed( reading( 2 ) ) );
   shutdown( peer.get(), SHUT_WR );
   settle();
   bus.release();
   EXPECT_EQ( received(), answerOfTwo );
   settle();
   EXPECT_TRUE( ended );
}

TEST_F( SmbusdClient, ThatEndsItsSideRightBehindItsFrameIsDroppedAfterItsAnswer ) {
   send( framed( reading( 2 ) ) );
   shutdown( peer.get(), SHUT_WR );
   EXPECT_EQ( received(), answerOfTwo );
   settle();
   EXPECT_TRUE( ended );
}

TEST_F( SmbusdClient, MaySendAsMuchAsThereIsRoomFor ) {
   auto frame = framed( reading( 2 ) );
   std::vector<uint8_t> frames;
   std::vector<uint8_t> answers;
   auto add = [&] {
      frames.insert( frames.end(), frame.begin(), frame.end() );
      answers.insert( answers.end(), answerOfTwo.begin(), answerOfTwo.end() );
   };
   while ( frames.size() < InputBuffer::usualSize ) {
      add();
   }
   auto behind = frames.size() - InputBuffer::usualSize;
   EXPECT_GT( behind, 0U ) << "the last frame is to be cut";
   send( frames );
   EXPECT_EQ( receive( answers.size() ), answers );
}

TEST_F( SmbusdClient, ThatReadsSlowlyGetsTheWholeAnswer ) {
   Smbus::TransactionRequest message;
   for ( int i = 0; i < 120; ++i ) {
      addRequest( message, Smbus::READ, addressWord( 0x48, 3 ), 8192 );
   }
   send( framed( message ) );
   // 8192 bytes with a tag and a length of two bytes, twice, and the flag.
   auto answer = receive( 4 + 120 * ( 8192 + 6 ) + 2 );
   ASSERT_EQ( answer.size(), 4 + 120 * ( 8192 + 6 ) + 2 );
   Smbus::TransactionResponse response;
   ASSERT_TRUE( response.ParseFromArray( answer.data() + 4, static_cast<int>( answer.size() - 4 ) ) );
   EXPECT_EQ( response.response_size(), 120 );
   send( framed( reading( 2 ) ) );
   EXPECT_EQ( received(), answerOfTwo );
}

TEST_F( SmbusdClient, IsDroppedWhenItVanishesBeforeItsAnswer ) {
   Smbus::TransactionRequest message;
   for ( int i = 0; i < 120; ++i ) {
      addRequest( message, Smbus::READ, addressWord( 0x48, 3 ), 8192 );
   }
   send( framed( message ) );
   settle();
   EXPECT_FALSE( ended );
   peer = Descriptor();
   settle();
   EXPECT_TRUE( ended );
}
