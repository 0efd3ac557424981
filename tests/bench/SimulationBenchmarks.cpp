#include "SimulationBenchmarks.h"

#include "quillon/ql.h"

namespace {

constexpr auto name = "read a simulated register";

// A simulated access leaves a mapping behind for the life of the process, and Linux grants a process 65530:
// all repetitions together stay below that.
constexpr int iterations = 2000;
constexpr int repetitions = 5;

ql_temp_sensor* sensor() {
   ql_temp_sensor_init(
      R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 0, "devices": [ { "did": 1 } ] } ])" );
   return ql_temp_sensor_add(
      R"({ "did": 1, "driver": "PCT2075", "name": "inlet", "address": { "address": 72 } })", 65, 75 );
}

void readRegister( benchmark::State& state ) {
   auto inlet = sensor();
   for ( auto _ : state ) {
      float degrees = 0;
      if ( inlet->ops->get_temperature( inlet, &degrees ) != QL_STATUS_OK || degrees != 0.125F ) {
         return state.SkipWithError( "the register is not read" );
      }
   }
}

} // namespace

void registerSimulationBenchmarks() {
   benchmark::RegisterBenchmark( name, readRegister )->Iterations( iterations )->Repetitions( repetitions );
}

std::vector<Row> simulationRows( const Times& times ) {
   return times.has( name ) ? std::vector<Row> { { name, inSeconds( times.processor( name ) ) } }
                            : std::vector<Row> {};
}
