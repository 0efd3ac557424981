#include "Server.h"

#include <csignal>

using namespace std::chrono_literals;

namespace {

Smbus::TransactionRequest once( Smbus::TransactionRequest message ) {
   message.set_retries( 0 );
   return message;
}

} // namespace

TEST( SmbusServer, ServesABusWhileAnotherHangs ) {
   Server server;
   EXPECT_EQ( server.control( "fault 3 hang 1s" ), "ok" );
   auto unlucky = server.client();
   unlucky.send( frame( once( reading( 3, 0x48, 0, 2 ) ) ) );
   auto lucky = server.client();
   for ( int i = 0; i < 50; ++i ) {
      EXPECT_FALSE( lucky.ask( reading( 5, 0x49, 0, 2 ) ).failed() );
   }
   EXPECT_FALSE( unlucky.hasAnswer( 0ms ) );
   auto response = unlucky.answer();
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.reason(), "request 1: i2c-3 0x48 reg 0x00: timed out" );
}

TEST( SmbusServer, LetsTransactionsOfABusWaitForEachOther ) {
   Server server;
   EXPECT_EQ( server.control( "fault inlet slow 200ms 1" ), "ok" );
   auto first = server.client();
   auto second = server.client();
   auto begin = std::chrono::steady_clock::now();
   first.send( frame( writing( 3, 0x48, 3, "\x2A\x80" ) ) );
   EXPECT_FALSE( first.hasAnswer( 20ms ) );
   EXPECT_EQ( second.ask( reading( 3, 0x48, 3, 2 ) ).response( 0 ).data(), "\x2A\x80" );
   EXPECT_GE( std::chrono::steady_clock::now() - begin, 200ms );
   EXPECT_TRUE( first.hasAnswer( 0ms ) );
   EXPECT_FALSE( first.answer().failed() );
}

TEST( SmbusServer, TakesAsLongAsASlowChip ) {
   Server server;
   EXPECT_EQ( server.control( "fault inlet slow 100ms" ), "ok" );
   auto client = server.client();
   auto message = reading( 3, 0x48, 0, 2 );
   *message.add_request() = message.request( 0 );
   auto begin = std::chrono::steady_clock::now();
   auto response = client.ask( message );
   EXPECT_GE( std::chrono::steady_clock::now() - begin, 200ms );
   EXPECT_FALSE( response.failed() );
   EXPECT_EQ( response.response_size(), 2 );
}

TEST( SmbusServer, NamesEveryFaultOfTheBusInItsOwnWords ) {
   Server server;
   auto client = server.client();
   const std::pair<const char*, const char*> faults[] = {
      { "busy", "bus busy" },
      { "arbitration", "arbitration lost" },
      { "nack", "no acknowledge" },
      { "hang 10ms", "timed out" },
   };
   for ( auto& [fault, words] : faults ) {
      EXPECT_EQ( server.control( std::string( "fault inlet " ) + fault ), "ok" );
      EXPECT_EQ( client.ask( reading( 3, 0x48, 0, 2 ) ).reason(),
         std::string( "request 1: i2c-3 0x48 reg 0x00: " ) + words );
      EXPECT_EQ( server.control( "fault inlet clear" ), "ok" );
   }
   EXPECT_FALSE( client.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, ReachesTheKernelsAdapters ) {
   Directory directory;
   Manager manager( directory / "notify.sock" );
   auto map =
      directory.write( "map.json", R"({ "busses": [ { "master": "I2C", "bus": 3, "adapter": 250 } ] })" );
   auto socket = directory / "smbus.sock";
   Process process( { QUILLON_SMBUSD, "--i2c", map, "--socket", socket }, environmentWith( manager ) );
   ASSERT_TRUE( manager.next().starts_with( "READY=1" ) );
   Client client( socket );
   EXPECT_EQ( client.ask( reading( 3, 0x48, 0, 2 ) ).reason(),
      "request 1: i2c-250 0x48 reg 0x00: no such bus (/dev/i2c-250: No such file or directory; load i2c-dev, "
      "or correct the map of adapters)" );
   EXPECT_EQ( client.ask( reading( 4, 0x48, 0, 2 ) ).reason(),
      "request 1: bus 4 (I2C, pci 0x0, accelerator 0) 0x48 reg 0x00: no such bus" );
   process.send( SIGTERM );
   EXPECT_EQ( process.wait().exitStatus, 0 );
}
