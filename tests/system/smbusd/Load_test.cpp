#include "Server.h"

#include <fmt/format.h>

#include <thread>

namespace {

constexpr int clientCount = 64;
constexpr int firstChip = 0x10;

/** A sensor for each client, as warm as the client's number. */
std::string manySensors() {
   std::vector<std::string> chips;
   for ( int i = 0; i < clientCount; ++i ) {
      chips.push_back( fmt::format(
         R"({{ "name": "s{}", "part": "pct2075", "bus": {}, "address": {}, "set": {{ "temperature": {} }} }})",
         i, i % 4, firstChip + i, i ) );
   }
   return fmt::format( R"({{ "chips": [ {} ] }})", fmt::join( chips, ", " ) );
}

} // namespace

TEST( SmbusServer, GivesEachOfManyClientsItsOwnAnswers ) {
   Server server( manySensors() );
   std::vector<std::jthread> threads;
   std::vector<int> good( clientCount );
   for ( int i = 0; i < clientCount; ++i ) {
      threads.emplace_back( [&, i] {
         auto client = server.client();
         auto message = reading( static_cast<uint8_t>( i % 4 ), static_cast<uint8_t>( firstChip + i ), 0, 2 );
         for ( int turn = 0; turn < 100; ++turn ) {
            auto response = client.ask( message );
            good[static_cast<size_t>( i )] +=
               response.response_size() == 1 &&
               response.response( 0 ).data() == std::string { static_cast<char>( i ), '\0' };
         }
      } );
   }
   threads.clear();
   EXPECT_THAT( good, testing::Each( 100 ) );
}

TEST( SmbusServer, KeepsNoDescriptorOfThoseWhoHaveGone ) {
   Server server;
   auto witness = server.client();
   EXPECT_FALSE( witness.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   auto before = countDescriptors( witness.server() );
   for ( int i = 0; i < 1000; ++i ) {
      auto client = server.client();
      if ( i % 3 == 0 ) {
         EXPECT_FALSE( client.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
      } else if ( i % 3 == 1 ) {
         client.send( "nonsense" );
      }
   }
   // Those who went unheard have to be noticed first.
   for ( int i = 0; i < 100 && countDescriptors( witness.server() ) != before; ++i ) {
      EXPECT_FALSE( witness.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
      std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) );
   }
   EXPECT_EQ( countDescriptors( witness.server() ), before );
}

TEST( SmbusServer, LetsNewcomersWaitWhenItHasNoDescriptorLeft ) {
   Server server( Server::board, { "/bin/sh", "-c", "ulimit -n 32 && exec \"$0\" \"$@\"" } );
   auto witness = server.client();
   EXPECT_FALSE( witness.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   std::vector<Client> crowd;
   for ( int i = 0; i < 40; ++i ) {
      crowd.push_back( server.client() );
   }
   auto& last = crowd.back();
   last.send( frame( reading( 3, 0x48, 0, 2 ) ) );

   auto before = processorTime( witness.server() );
   EXPECT_FALSE( last.hasAnswer( std::chrono::milliseconds( 500 ) ) );
   EXPECT_LT( processorTime( witness.server() ) - before, std::chrono::milliseconds( 250 ) );
   EXPECT_FALSE( witness.ask( reading( 3, 0x48, 0, 2 ) ).failed() );

   // How many it had room for depends on the descriptors that it was started with.
   crowd.erase( crowd.begin(), crowd.end() - 1 );
   EXPECT_EQ( crowd.back().answer().response( 0 ).data(), "\x18\x80" );
}
