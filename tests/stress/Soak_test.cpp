// A host that goes on and on: callbacks of every kind through the library, the socket and the server to the
// emulated chips of the switch's own board, half of them while a fault is there.

#include "Callbacks.h"
#include "LeapingClock.h"
#include "Server.h"
#include "Usage.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

#include <malloc.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/** Longer than any callback takes while nothing is wrong. */
constexpr auto limit = 5s;

/** Callbacks with a fault, and then as many without. */
constexpr size_t phase = 100;
/** Between two answers that come too late. */
constexpr size_t roundsBetweenLateAnswers = 100;

struct FaultKind {
   const char* line;
   Harm harm;
};

constexpr FaultKind faultKinds[] = {
   { "nack", Harm::Refused },
   { "hang 1ms", Harm::Refused },
   { "corrupt", Harm::Corrupt },
   { "checksum", Harm::Checksum },
   // Slow, but in time.
   { "slow 1ms", Harm::None },
};

/** Where a fault is put, and the chips that it meets there. */
struct Place {
   const char* name;
   std::set<std::string> chips;
};

const Place places[] = {
   { "inlet", { "inlet" } },
   { "fans", { "fans" } },
   { "cpld", { "cpld" } },
   { "poe", { "poe" } },
   // Whole busses.
   { "3", { "inlet", "outlet", "asic", "poe-temp", "fans" } },
   { "5", { "cpld" } },
};

/** What this process and the server hold, and of the memory of this one what is in use. */
struct Mark {
   explicit Mark( pid_t process )
      : host( usageOf( getpid() ) ), heap( mallinfo2().uordblks ), server( usageOf( process ) ) {}

   Usage host;
   size_t heap;
   Usage server;
};

class Soak : public testing::Test {
protected:
   Soak() {
      unsetenv( "SIMULATION_VMID" );
      setenv( "QUILLON_SMBUS_SOCKET", server.socket.c_str(), 1 );
      setTimeLimit( limit );
      board.emplace();
      callbacks = makeCallbacks( *board );
   }

   static void setTimeLimit( std::chrono::milliseconds time ) {
      setenv( "QUILLON_SMBUS_TIMEOUT_MS", std::to_string( time.count() ).c_str(), 1 );
   }

   void tell( const std::string& line ) { ASSERT_EQ( bench.askLine( line ), "ok" ) << line; }

   const Callback& callback( const std::string& name ) const {
      return *std::ranges::find( callbacks, name, &Callback::name );
   }

   /** Makes a callback and looks at what it gives. */
   void make( const Callback& one, const Outcome& expected, const std::string& fault ) {
      if ( one.rarity > 1 ) {
         leap( 3s ); // past the time for which the controller's answers are kept
      }
      auto begin = Clock::now();
      auto outcome = one.call();
      auto took = Clock::now() - begin;
      if ( took > longest ) {
         longest = took;
         longestName = one.name;
      }
      ++made;
      ++statuses[outcome.status];
      EXPECT_EQ( outcome, expected ) << one.name << ", call " << made << ", " << fault;
   }

   /** Any callback. */
   const Callback& pick() {
      for ( ;; ) {
         auto& one = callbacks[random() % callbacks.size()];
         if ( random() % static_cast<unsigned>( one.rarity ) == 0 ) {
            return one;
         }
      }
   }

   void soundPhase() {
      for ( size_t i = 0; i < phase; ++i ) {
         auto& one = pick();
         make( one, one.good, "no fault" );
      }
   }

   /** One that the fault may be put to. */
   const Callback& pickFor( const FaultKind& kind, const Place& place ) {
      auto one = &pick();
      if ( !place.chips.contains( one->chip ) ) {
         one = &pick(); // so that more of them meet the fault
      }
      bool wrongBytes = kind.harm == Harm::Corrupt || kind.harm == Harm::Checksum;
      return wrongBytes && one->writesBack ? callback( "system version" ) : *one;
   }

   void faultyPhase( const FaultKind& kind, const Place& place ) {
      tell( fmt::format( "fault {} {}", place.name, kind.line ) );
      auto name = fmt::format( "{} at {}", kind.line, place.name );
      for ( size_t i = 0; i < phase; ++i ) {
         auto& one = pickFor( kind, place );
         bool met = place.chips.contains( one.chip );
         make( one, one.expected( met ? kind.harm : Harm::None ), name );
         ++faulty;
         meeting += met;
      }
      tell( fmt::format( "fault {} clear", place.name ) );
   }

   /** An answer for which its caller does not wait must not be taken for another's. */
   void lateAnswer() {
      tell( "fault inlet slow 600ms 1" );
      setTimeLimit( 20ms );
      make( callback( "inlet temperature" ), { QL_STATUS_IO_ERROR, "" }, "late" );
      setTimeLimit( limit );
      for ( auto name : { "asic temperature", "inlet temperature", "outlet temperature" } ) {
         make( callback( name ), callback( name ).good, "after a late answer" );
      }
      ++late;
   }

   /** A fault and then none. */
   void round() {
      auto number = rounds++;
      faultyPhase( faultKinds[number % std::size( faultKinds )], places[number % std::size( places )] );
      soundPhase();
      if ( number % roundsBetweenLateAnswers == 0 ) {
         lateAnswer();
      }
   }

   void print( const char* when, const Mark& mark ) {
      fmt::print( "{:>9} callbacks{}: host {}, {} KiB of it in use; server {}\n", made, when,
         textOf( mark.host ), mark.heap / 1024, textOf( mark.server ) );
   }

   void printSummary( std::chrono::system_clock::duration time ) {
      fmt::print(
         "{} callbacks of {} kinds in {} s; {} during faults, {} of them on a chip that had one; {} late "
         "answers\n",
         made, callbacks.size(), std::chrono::ceil<std::chrono::seconds>( time ).count(), faulty, meeting,
         late );
      for ( auto& [status, count] : statuses ) {
         fmt::print( "{:>9} x {}\n", count, nameOf( status ) );
      }
      fmt::print( "longest call {}: {}\n", textOf( longest ), longestName );
   }

   Server server { boardFile( "emulator.json" ) };
   Client bench { server.controlSocket };
   std::optional<SwitchBoard> board;
   std::vector<Callback> callbacks;
   std::mt19937 random { 1 };

   size_t rounds = 0;
   size_t made = 0;
   size_t faulty = 0;
   /** Those with a fault on their own chip. */
   size_t meeting = 0;
   size_t late = 0;
   std::map<ql_status, size_t> statuses;
   Clock::duration longest {};
   std::string longestName;
};

/** In KiB. A leak of two bytes in a callback would show in the long run. */
constexpr size_t tolerance = 1024;

void expectFlat( const Mark& now, const Mark& warm ) {
   EXPECT_EQ( now.host.descriptors, warm.host.descriptors );
   EXPECT_EQ( now.server.descriptors, warm.server.descriptors );
   EXPECT_LE( now.host.kilobytes, warm.host.kilobytes + tolerance );
   EXPECT_LE( now.server.kilobytes, warm.server.kilobytes + tolerance );
   EXPECT_LE( now.heap, warm.heap + 16 * 1024 );
}

} // namespace

TEST_F( Soak, GivesEveryStatusRightAndKeepsNothing ) {
   const auto total = static_cast<size_t>( numberFrom( "QUILLON_STRESS_CALLBACKS", 6000 ) );
   for ( auto& one : callbacks ) {
      make( one, one.good, "no fault" );
   }
   const auto begin = std::chrono::system_clock::now();
   const auto process = bench.server();
   while ( made < total / 10 ) {
      round();
      ASSERT_FALSE( HasFailure() );
   }
   const Mark warm( process );
   print( ", warm", warm );
   for ( size_t quarter = 1; quarter <= 4; ++quarter ) {
      while ( made < quarter * total / 4 ) {
         round();
         ASSERT_FALSE( HasFailure() );
      }
      const Mark mark( process );
      print( "", mark );
      expectFlat( mark, warm );
   }
   printSummary( std::chrono::system_clock::now() - begin );
   EXPECT_LT( longest, limit );
}
