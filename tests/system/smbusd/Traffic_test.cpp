#include "Server.h"

TEST( SmbusServer, AnswersFromTheChips ) {
   Server server;
   auto response = server.client().ask( reading( 3, 0x48, 0, 2 ) );
   EXPECT_TRUE( response.has_failed() );
   EXPECT_FALSE( response.failed() );
   ASSERT_EQ( response.response_size(), 1 );
   EXPECT_EQ( response.response( 0 ).data(), "\x18\x80" );
}

TEST( SmbusServer, KeepsWhatIsWrittenToAChip ) {
   Server server;
   auto client = server.client();
   auto written = client.ask( writing( 3, 0x48, 3, "\x2A\x80" ) );
   EXPECT_FALSE( written.failed() );
   ASSERT_EQ( written.response_size(), 1 );
   EXPECT_EQ( written.response( 0 ).data(), "" );
   EXPECT_EQ( client.ask( reading( 3, 0x48, 3, 2 ) ).response( 0 ).data(), "\x2A\x80" );
}

TEST( SmbusServer, AnswersTheRequestsOfAMessageInOrder ) {
   Server server;
   auto message = reading( 3, 0x48, 0, 2 );
   *message.add_request() = reading( 5, 0x49, 0, 2 ).request( 0 );
   *message.add_request() = reading( 3, 0x48, 1, 1 ).request( 0 );
   auto response = server.client().ask( message );
   ASSERT_EQ( response.response_size(), 3 );
   EXPECT_EQ( response.response( 0 ).data(), "\x18\x80" );
   EXPECT_EQ( response.response( 1 ).data(), std::string( "\x28\x00", 2 ) );
   EXPECT_EQ( response.response( 2 ).data(), std::string( "\x00", 1 ) );
}

TEST( SmbusServer, AnswersMessageAfterMessageOfAClient ) {
   Server server;
   auto client = server.client();
   client.send( frame( reading( 3, 0x48, 0, 2 ) ) + frame( reading( 5, 0x49, 0, 2 ) ) );
   EXPECT_EQ( client.answer().response( 0 ).data(), "\x18\x80" );
   EXPECT_EQ( client.answer().response( 0 ).data(), std::string( "\x28\x00", 2 ) );
}

TEST( SmbusServer, AnswersAMessageWithoutRequests ) {
   Server server;
   auto client = server.client();
   client.send( std::string( 4, '\0' ) );
   EXPECT_EQ( client.receive( 6 ), std::string( "\0\0\0\x02\x18\0", 6 ) );
}

TEST( SmbusServer, TellsWhichRequestFailedAndWhy ) {
   Server server;
   auto message = reading( 3, 0x48, 0, 2 );
   *message.add_request() = reading( 3, 0x50, 0, 2 ).request( 0 );
   auto response = server.client().ask( message );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.reason(), "request 2: i2c-3 0x50 reg 0x00: no acknowledge" );
}

TEST( SmbusServer, TellsThatThereIsNoSuchBus ) {
   Server server;
   auto response = server.client().ask( reading( 9, 0x48, 0, 2 ) );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.reason(), "request 1: i2c-9 0x48 reg 0x00: no such bus" );
}

TEST( SmbusServer, KeepsTheConnectionAfterARequestThatIsNone ) {
   Server server;
   auto client = server.client();
   auto message = reading( 3, 0x48, 0, 2 );
   message.mutable_request( 0 )->clear_type();
   auto response = client.ask( message );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.reason(), "request 1: no known request type" );
   EXPECT_FALSE( client.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, TriesAFailingRequestTwiceMore ) {
   Server server;
   EXPECT_EQ( server.control( "fault inlet nack 2" ), "ok" );
   EXPECT_FALSE( server.client().ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   EXPECT_EQ( server.control( "fault inlet nack 3" ), "ok" );
   EXPECT_TRUE( server.client().ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   EXPECT_EQ( server.control( "faults" ), "ok" );
}

TEST( SmbusServer, TriesAsOftenAsTheMessageSays ) {
   Server server;
   EXPECT_EQ( server.control( "fault inlet nack 2" ), "ok" );
   auto message = reading( 3, 0x48, 0, 2 );
   message.set_retries( 0 );
   EXPECT_TRUE( server.client().ask( message ).failed() );
   EXPECT_TRUE( server.client().ask( message ).failed() );
   EXPECT_FALSE( server.client().ask( message ).failed() );
}

TEST( SmbusServer, ShowsWhatIsSetAtTheBench ) {
   Server server;
   EXPECT_EQ( server.control( "set inlet.temperature 42.5" ), "ok" );
   EXPECT_EQ( server.client().ask( reading( 3, 0x48, 0, 2 ) ).response( 0 ).data(), "\x2A\x80" );
}
