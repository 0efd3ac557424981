#include "Server.h"

#include <csignal>
#include <random>

namespace {

/** Whether the server still does its work for others. */
void expectService( const Server& server ) {
   EXPECT_EQ( server.client().ask( reading( 3, 0x48, 0, 2 ) ).response( 0 ).data(), "\x18\x80" );
}

/** A message whose answer is larger than what a socket holds. */
Smbus::TransactionRequest askingMuch() {
   Smbus::TransactionRequest message;
   for ( int i = 0; i < 120; ++i ) {
      *message.add_request() = reading( 3, 0x48, 0, 8192 ).request( 0 );
   }
   return message;
}

} // namespace

TEST( SmbusServer, DropsWhoSendsWhatIsNoMessage ) {
   Server server;
   auto other = server.client();
   auto client = server.client();
   client.send( std::string( "\0\0\0\x03\xFF\xFF\xFF", 7 ) );
   EXPECT_TRUE( client.isDropped() );
   EXPECT_FALSE( other.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, DropsWhoAnnouncesTooMuch ) {
   Server server;
   auto other = server.client();
   auto client = server.client();
   client.send( std::string( "\x00\x10\x00\x01", 4 ) );
   EXPECT_TRUE( client.isDropped() );
   EXPECT_FALSE( other.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, DropsWhoSpeaksAnotherProtocol ) {
   Server server;
   auto client = server.client();
   client.send( "GET / HTTP/1.1\r\n\r\n" );
   EXPECT_TRUE( client.isDropped() );
   expectService( server );
}

TEST( SmbusServer, TakesTextThatIsNoneWithoutAWord ) {
   Server server;
   auto bytes = frame( reading( 3, 0x48, 0, 2 ) );
   // Field 3, the client's name, of one byte.
   bytes[3] = static_cast<char>( bytes[3] + 3 );
   auto client = server.client();
   client.send( bytes + "\x1a\x01\xff" );
   EXPECT_EQ( client.answer().response( 0 ).data(), "\x18\x80" );
   EXPECT_EQ( server.stop( SIGTERM ).err,
      "quillon-smbusd: serving " + server.socket + "\nquillon-smbusd: SIGTERM, ending\n" );
}

TEST( SmbusServer, SurvivesWhateverIsSent ) {
   Server server;
   std::mt19937 random( 1 );
   for ( int i = 0; i < 300; ++i ) {
      // A length that is right, and bytes that mostly are no message.
      std::string bytes( random() % 200, '\0' );
      for ( auto& byte : bytes ) {
         byte = static_cast<char>( random() % ( i % 2 ? 256 : 32 ) );
      }
      auto client = server.client();
      client.send( std::string( 3, '\0' ) + static_cast<char>( bytes.size() ) + bytes );
   }
   expectService( server );
}

TEST( SmbusServer, WaitsForTheRestOfAFrameWithoutHarmToOthers ) {
   Server server;
   auto client = server.client();
   auto bytes = frame( reading( 3, 0x48, 0, 2 ) );
   client.send( bytes.substr( 0, bytes.size() / 2 ) );
   EXPECT_FALSE( client.hasAnswer( std::chrono::milliseconds( 200 ) ) );
   expectService( server );
   client.send( bytes.substr( bytes.size() / 2 ) );
   EXPECT_EQ( client.answer().response( 0 ).data(), "\x18\x80" );
}

TEST( SmbusServer, SurvivesWhoVanishesInTheMiddleOfAFrame ) {
   Server server;
   for ( int i = 0; i < 20; ++i ) {
      server.client().send( std::string( "\0\0\0\x20\x0A", 5 ) );
   }
   expectService( server );
}

TEST( SmbusServer, SurvivesWhoVanishesInTheMiddleOfAnAnswer ) {
   Server server;
   for ( int i = 0; i < 20; ++i ) {
      auto client = server.client();
      client.send( frame( askingMuch() ) );
      EXPECT_EQ( client.receive( 100 ).size(), 100U );
   }
   expectService( server );
}

TEST( SmbusServer, SurvivesWhoVanishesBeforeItsAnswer ) {
   Server server;
   EXPECT_EQ( server.control( "fault outlet slow 100ms" ), "ok" );
   {
      auto client = server.client();
      client.send( frame( reading( 5, 0x49, 0, 2 ) ) );
      EXPECT_FALSE( client.hasAnswer( std::chrono::milliseconds( 20 ) ) );
   }
   // This one waits until the transaction of the other has ended.
   EXPECT_FALSE( server.client().ask( reading( 5, 0x49, 0, 2 ) ).failed() );
}

TEST( SmbusServer, LetsNobodyPileUpWorkByVanishing ) {
   Server server;
   EXPECT_EQ( server.control( "fault outlet slow 200ms" ), "ok" );
   for ( int i = 0; i < 20; ++i ) {
      server.client().send( frame( reading( 5, 0x49, 0, 2 ) ) );
   }
   auto begin = std::chrono::steady_clock::now();
   EXPECT_FALSE( server.client().ask( reading( 5, 0x49, 0, 2 ) ).failed() );
   // The first has begun, and perhaps another that had not been missed yet.
   EXPECT_LT( std::chrono::steady_clock::now() - begin, std::chrono::seconds( 2 ) );
}

TEST( SmbusServer, LetsASlowReaderWaitForItselfAlone ) {
   Server server;
   auto slow = server.client();
   slow.send( frame( askingMuch() ) );
   for ( int i = 0; i < 20; ++i ) {
      expectService( server );
   }
   EXPECT_EQ( slow.answer().response_size(), 120 );
}

TEST( SmbusServer, DropsWhoSendsALineWithoutEndToTheBench ) {
   Server server;
   Client client( server.controlSocket );
   client.send( std::string( 5000, 'x' ) );
   EXPECT_TRUE( client.isDropped() );
   EXPECT_EQ( server.control( "get inlet.temperature" ), "ok 24.5" );
}

TEST( SmbusServer, AnswersBytesAtTheBenchThatAreNoCommand ) {
   Server server;
   Client client( server.controlSocket );
   EXPECT_TRUE( client.askLine( std::string( "\x00\xFF\x01 \x80", 5 ) ).starts_with( "error " ) );
   EXPECT_EQ( client.askLine( "get inlet.temperature" ), "ok 24.5" );
}
