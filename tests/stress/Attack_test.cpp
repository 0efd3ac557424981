// The server between clients who want answers and others who mean it harm, all at once.

#include "Attackers.h"
#include "Server.h"
#include "Usage.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <list>
#include <thread>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t clientCount = 64;
constexpr size_t attackerCount = 16;
constexpr uint8_t clientBusses = 4;
constexpr uint8_t firstChip = 0x10;

/** What one attacker can make the server hold: a message of 1 MiB in a buffer of twice that, what 45000 small
 * requests take when they are unpacked, and their answer. */
constexpr size_t kilobytesOfAnAttacker = 24 * 1024;

constexpr uint8_t serialReg = 0x00;
constexpr uint8_t markReg = 0x10;

/** A chip for each client, with the client's number in a register; and one for the attackers. */
std::string boardText() {
   std::vector<std::string> chips;
   for ( size_t i = 0; i < clientCount; ++i ) {
      chips.push_back( fmt::format(
         R"({{ "name": "c{}", "part": "registers", "bus": {}, "address": {}, "options": {{ "r{:#04x}": {} }} }})",
         i, i % clientBusses, firstChip + i, markReg, i + 1 ) );
   }
   chips.push_back( fmt::format( R"({{ "name": "attacked", "part": "registers", "bus": {}, "address": {} }})",
      attackedBus, attackedChip ) );
   return fmt::format( R"({{ "chips": [ {} ] }})", fmt::join( chips, ", " ) );
}

/** What became of a client's requests. */
struct Record {
   size_t right = 0;
   size_t wrong = 0;
   Clock::duration longest {};
};

/** One that leaves a number on its chip and wants it back with the chip's mark, each time another number. */
class HonestClient {
public:
   HonestClient( const std::string& socket, size_t number )
      : client_( socket )
      , number_( number )
      , bus_( static_cast<uint8_t>( number % clientBusses ) )
      , chip_( static_cast<uint8_t>( firstChip + number ) ) {}

   void ask() {
      auto serial = nextSerial();
      auto message = writing( bus_, chip_, serialReg, serial );
      *message.add_request() = reading( bus_, chip_, serialReg, 4 ).request( 0 );
      *message.add_request() = reading( bus_, chip_, markReg, 1 ).request( 0 );
      auto begin = Clock::now();
      auto response = client_.ask( message );
      record.longest = std::max( record.longest, Clock::now() - begin );
      bool right = !response.failed() && response.response_size() == 3 &&
                   response.response( 1 ).data() == serial &&
                   response.response( 2 ).data() == std::string( 1, static_cast<char>( number_ + 1 ) );
      ++( right ? record.right : record.wrong );
   }

   Record record;

private:
   std::string nextSerial() {
      ++turn_;
      return { static_cast<char>( number_ ), static_cast<char>( turn_ >> 16 ),
         static_cast<char>( turn_ >> 8 ), static_cast<char>( turn_ ) };
   }

   Client client_;
   const size_t number_;
   const uint8_t bus_;
   const uint8_t chip_;
   uint32_t turn_ = 0;
};

/** 64 clients and 16 attackers, from the start of the object until its end. */
class Crowd {
public:
   explicit Crowd( const std::string& socket ) : attacks( attackers.size() ) {
      for ( size_t i = 0; i < clientCount; ++i ) {
         clients_.emplace_back( socket, i ).ask();
      }
      for ( auto& client : clients_ ) {
         threads_.emplace_back( [&client]( const std::stop_token& stop ) {
            while ( !stop.stop_requested() ) {
               client.ask();
            }
         } );
      }
      for ( size_t i = 0; i < attackerCount; ++i ) {
         threads_.emplace_back( [this, &socket, i]( const std::stop_token& stop ) {
            std::mt19937 random( static_cast<unsigned>( i ) );
            for ( auto turn = i; !stop.stop_requested(); turn += attackerCount ) {
               attackers[turn % attackers.size()].attack( socket, random );
               ++attacks[turn % attackers.size()];
            }
         } );
      }
   }

   void disperse() {
      for ( auto& thread : threads_ ) {
         thread.request_stop();
      }
      threads_.clear();
      for ( auto& client : clients_ ) {
         records.push_back( client.record );
      }
      clients_.clear();
   }

   /** Of each client, when the crowd has dispersed. */
   std::vector<Record> records;
   std::vector<std::atomic<size_t>> attacks;

private:
   std::list<HonestClient> clients_;
   std::vector<std::jthread> threads_;
};

/** The server, without a word about the bad manners of its clients. */
struct QuietServer : Server {
   QuietServer() : Server( boardText(), { "/bin/sh", "-c", "exec \"$0\" \"$@\" --log-level error" } ) {}
};

/** What all clients together have seen. */
struct Summary {
   explicit Summary( const std::vector<Record>& records ) {
      for ( auto& record : records ) {
         right += record.right;
         wrong += record.wrong;
         least = std::min( least, record.right );
         most = std::max( most, record.right );
         longest = std::max( longest, record.longest );
      }
   }

   size_t right = 0;
   size_t wrong = 0;
   /** Right answers of one client. */
   size_t least = SIZE_MAX;
   size_t most = 0;
   Clock::duration longest {};
};

void print( const Crowd& crowd, const Summary& seen ) {
   fmt::print( "{} right answers, {} wrong, {} to {} a client, longest wait {}\n", seen.right, seen.wrong,
      seen.least, seen.most, textOf( seen.longest ) );
   for ( size_t i = 0; i < attackers.size(); ++i ) {
      fmt::print( "   {:6} x {}\n", crowd.attacks[i].load(), attackers[i].name );
   }
}

/** Until the server has noticed that everybody has gone. */
void awaitDescriptors( pid_t process, size_t count ) {
   for ( auto end = Clock::now() + 5s; Clock::now() < end && countDescriptors( process ) != count; ) {
      std::this_thread::sleep_for( 10ms );
   }
}

} // namespace

TEST( Attack, LeavesEveryClientItsRightAnswersInTime ) {
   const auto duration = numberFrom( "QUILLON_STRESS_SECONDS", 3 ) * 1000ms;
   QuietServer server;
   auto witness = server.client();
   EXPECT_FALSE( witness.ask( reading( 0, firstChip, markReg, 1 ) ).failed() );
   auto process = witness.server();
   auto before = usageOf( process );
   fmt::print( "server before the attack: {}\n", textOf( before ) );

   size_t peak = 0;
   Crowd crowd( server.socket );
   for ( int quarter = 1; quarter <= 4; ++quarter ) {
      for ( auto end = Clock::now() + duration / 4; Clock::now() < end; ) {
         std::this_thread::sleep_for( 10ms );
         peak = std::max( peak, usageOf( process ).kilobytes );
      }
      fmt::print( "after {}: {}, at most {} KiB\n", textOf( quarter * duration / 4 ),
         textOf( usageOf( process ) ), peak );
   }
   crowd.disperse();
   const Summary seen( crowd.records );
   print( crowd, seen );
   awaitDescriptors( process, before.descriptors );
   fmt::print( "server after the attack: {}\n", textOf( usageOf( process ) ) );

   EXPECT_GT( seen.right, clientCount );
   EXPECT_EQ( seen.wrong, 0U );
   EXPECT_THAT( crowd.attacks, testing::Each( testing::Gt( 0U ) ) );
   // Ten more or less are chance.
   EXPECT_GT( seen.least + 10, seen.most / 2 ) << "somebody starves";
   EXPECT_LT( seen.longest, 5s );
   EXPECT_LT( peak, before.kilobytes + attackerCount * kilobytesOfAnAttacker );
   EXPECT_EQ( countDescriptors( process ), before.descriptors );
   EXPECT_FALSE( witness.ask( reading( 0, firstChip, markReg, 1 ) ).failed() );
   EXPECT_EQ( server.stop( SIGTERM ).exitStatus, 0 );
}
