#include "StackBenchmarks.h"

#include "Ham/QuillonSmbusHam.h"
#include "PingPong.h"
#include "Quillon.h"

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr size_t frameHead = 4;
constexpr int clients = 8;
/** Many short runs: some of them meet a moment in which nothing else disturbs the machine. */
constexpr int shortRuns = 40;
constexpr double shortTime = 0.01;

Ham::QuillonSmbusHam* sensorHam() {
   HamAddress address {};
   address.address = 0x48;
   address.bus = 3;
   static auto ham =
      static_cast<Ham::QuillonSmbusHam*>( Ham::QuillonSmbusHam::createFromAddress( address, { 0 } ) );
   return ham;
}

/** One batch of so many reads of the temperature. */
bool readBatch( int reads ) {
   auto ham = sensorHam();
   ham->prepare();
   Ham::Ham::ResponseId last = 0;
   for ( int i = 0; i < reads; ++i ) {
      last = ham->addRead16( 0, 1 );
   }
   return ham->execute() == QL_STATUS_OK && ham->get16( last ) != 0;
}

ql_temp_sensor* sensor() {
   static auto added = [] {
      ql_temp_sensor_init(
         R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 3, "devices": [ { "did": 1 } ] } ])" );
      return ql_temp_sensor_add(
         R"({ "did": 1, "driver": "PCT2075", "address": { "address": 72 } })", 65, 75 );
   }();
   return added;
}

void readRegister( benchmark::State& state ) {
   auto inlet = sensor();
   for ( auto _ : state ) {
      float degrees = 0;
      if ( inlet->ops->get_temperature( inlet, &degrees ) != QL_STATUS_OK ) {
         return state.SkipWithError( "the register is not read" );
      }
   }
}

/** The bare exchange of as many bytes as a register read takes. */
void pingPong( benchmark::State& state ) {
   if ( !readBatch( 1 ) ) {
      return state.SkipWithError( "the register is not read" );
   }
   PingPong bare(
      frameHead + sensorHam()->request_.ByteSizeLong(), frameHead + sensorHam()->response_.ByteSizeLong() );
   for ( auto _ : state ) {
      if ( !bare.ask() ) {
         return state.SkipWithError( "there is no answer" );
      }
   }
}

void batch( benchmark::State& state, int reads ) {
   for ( auto _ : state ) {
      if ( !readBatch( reads ) ) {
         return state.SkipWithError( "the batch is not read" );
      }
   }
}

/** As many exchanges in all for each round, shared by so many clients at once. */
void atOnce( benchmark::State& state, int processes, int exchanges ) {
   for ( auto _ : state ) {
      for ( int i = 0; i < processes; ++i ) {
         if ( fork() == 0 ) {
            // A connection of its own.
            _qlSock->cleanup();
            bool good = true;
            for ( int n = 0; n < exchanges / processes; ++n ) {
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

} // namespace

std::vector<Comparison> registerStackBenchmarks( bool smoke ) {
   auto add = []( const char* name, auto function, auto... args ) {
      return benchmark::RegisterBenchmark( name, function, args... )
         ->UseRealTime()
         ->Repetitions( repetitions );
   };
   auto addShort = [&]( auto... args ) {
      auto added = add( args... );
      if ( !smoke ) {
         added->Repetitions( shortRuns )->MinTime( shortTime );
      }
   };
   int exchanges = smoke ? 80 : 8000;
   sensor();
   addShort( "bare ping-pong", pingPong );
   addShort( "read a register", readRegister );
   addShort( "batch of 1 read", batch, 1 );
   addShort( "batch of 64 reads", batch, 64 );
   add( "exchanges of 1 client", atOnce, 1, exchanges );
   add( "exchanges of 8 clients at once", atOnce, clients, exchanges );
   return {
      { "bare ping-pong", "", {} },
      { "read a register", "bare ping-pong", 1.5 },
      { "batch of 64 reads", "batch of 1 read", 3 },
      { "exchanges of 8 clients at once", "exchanges of 1 client", {} },
   };
}
