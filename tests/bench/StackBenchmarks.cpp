#include "StackBenchmarks.h"

#include "Placement.h"
#include "Quillon.h"
#include "Transactions.h"

#include <fmt/format.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int clients = 8;

/** Transactions of all clients together. */
constexpr int transactionsOf( bool smoke ) { return smoke ? 80 : 8000; }

ql_temp_sensor* sensor() {
   static auto added = [] {
      ql_temp_sensor_init(
         R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 3, "devices": [ { "did": 1 } ] } ])" );
      return ql_temp_sensor_add(
         R"({ "did": 1, "driver": "PCT2075", "address": { "address": 72 } })", 65, 75 );
   }();
   return added;
}

void readRegister( benchmark::State& state, pid_t server, Placed placed ) {
   Placement placement( server, placed );
   auto inlet = sensor();
   for ( auto _ : state ) {
      float degrees = 0;
      if ( inlet->ops->get_temperature( inlet, &degrees ) != QL_STATUS_OK ) {
         return state.SkipWithError( "the register is not read" );
      }
   }
}

void pingPong( benchmark::State& state, Placed placed ) {
   auto bare = pingPongOfOneRead();
   Placement placement( bare->answerer(), placed );
   for ( auto _ : state ) {
      if ( !bare->ask() ) {
         return state.SkipWithError( "there is no answer" );
      }
   }
}

void batch( benchmark::State& state, pid_t server, Placed placed, int reads ) {
   Placement placement( server, placed );
   for ( auto _ : state ) {
      if ( !readBatch( reads ) ) {
         return state.SkipWithError( "the batch is not read" );
      }
   }
}

/** As many transactions in all for each round, shared by so many clients at once. */
void atOnce( benchmark::State& state, int processes, int transactions ) {
   for ( auto _ : state ) {
      for ( int i = 0; i < processes; ++i ) {
         if ( fork() == 0 ) {
            // A connection of its own.
            _qlSock->cleanup();
            bool good = true;
            for ( int n = 0; n < transactions / processes; ++n ) {
               good = good && readBatch( 1 );
            }
            _exit( good ? 0 : 1 );
         }
      }
      for ( int i = 0; i < processes; ++i ) {
         int status = 0;
         wait( &status );
         if ( status != 0 ) {
            return state.SkipWithError( "a client has failed" );
         }
      }
   }
}

struct Place {
   Placed placed;
   const char* name;
};

constexpr Place places[] = { { Placed::Together, "on one processor" }, { Placed::Apart, "on two" } };

} // namespace

void registerStackBenchmarks( pid_t server, bool smoke ) {
   // The socket is connected before the first benchmark.
   sensor();
   for ( auto [placed, where] : places ) {
      if ( !isPossible( placed ) ) {
         continue;
      }
      auto add = [&, where = where]( const char* name, auto function, auto... args ) {
         addShortRuns( fmt::format( "{} {}", name, where ), smoke, [=]( auto& state ) {
            function( state, args... );
         } )->UseRealTime();
      };
      add( "bare ping-pong", pingPong, placed );
      add( "read a register", readRegister, server, placed );
      add( "batch of 1 read", batch, server, placed, 1 );
      add( "batch of 64 reads", batch, server, placed, 64 );
   }
   for ( auto count : { 1, clients } ) {
      benchmark::RegisterBenchmark( fmt::format( "clients at once/{}", count ).c_str(),
         [=]( auto& state ) { atOnce( state, count, transactionsOf( smoke ) ); } )
         ->UseRealTime()
         ->Iterations( 1 )
         ->Repetitions( smoke ? 1 : 20 );
   }
}

std::vector<Row> stackRows( bool smoke, const Times& times ) {
   std::vector<Row> rows;
   auto add = [&]( const std::string& label, const std::string& name, const std::string& baseline,
                 auto figure, std::optional<double> wanted ) {
      if ( times.has( name ) && times.has( baseline ) ) {
         rows.push_back( { label, figure( times.wall( name ) ), figure( times.wall( baseline ) ), wanted } );
      }
   };
   auto rate = [=]( double time ) { return perSecond( transactionsOf( smoke ) / time ); };
   for ( auto& place : places ) {
      auto on = [&]( const char* name ) { return fmt::format( "{} {}", name, place.name ); };
      add( on( "register, to bare ping-pong," ), on( "read a register" ), on( "bare ping-pong" ), inSeconds,
         1.25 );
      add( on( "64 reads, to 1 read," ), on( "batch of 64 reads" ), on( "batch of 1 read" ), inSeconds, 2 );
   }
   add( "transactions of 8 clients, to those of 1", "clients at once/8", "clients at once/1", rate, {} );
   return rows;
}
