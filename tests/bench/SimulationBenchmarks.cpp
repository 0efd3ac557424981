#include "Benchmarks.h"
#include "Components/HardwareDevice.h"
#include "TopologyText.h"

#include "quillon/ql.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace {

// A simulated access leaves a mapping behind for the life of the process, and Linux grants a process 65530:
// these counts keep all repetitions together below that.
constexpr int addIterations = 2;
constexpr int readIterations = 2000;

ql_temp_sensor* addSensor( int did ) {
   auto text = fmt::format(
      R"({{"did": {0}, "driver": "PCT2075", "name": "Sensor{0}", "address": {{"address": 72}}}})", did );
   return ql_temp_sensor_add( text.c_str(), 65, 75 );
}

void forgetDevices() { Component::DeviceBase::devices.clear(); }

void addDevices( benchmark::State& state, int devices ) {
   auto topology = flatTopologyText( devices );
   ql_temp_sensor_init( topology.c_str() );
   for ( auto _ : state ) {
      forgetDevices();
      for ( int did = 1; did <= devices; ++did ) {
         if ( !addSensor( did ) ) {
            return state.SkipWithError( "a device is not added" );
         }
      }
   }
}

void readRegister( benchmark::State& state ) {
   auto topology = flatTopologyText( 1 );
   ql_temp_sensor_init( topology.c_str() );
   forgetDevices();
   auto sensor = addSensor( 1 );
   for ( auto _ : state ) {
      float degrees = 0;
      if ( sensor->ops->get_temperature( sensor, &degrees ) != QL_STATUS_OK || degrees != 0.125F ) {
         return state.SkipWithError( "the register is not read" );
      }
   }
}

} // namespace

std::vector<Comparison> registerSimulationBenchmarks( int devices ) {
   auto add = "add devices in simulation/" + std::to_string( devices );
   std::string read = "read a simulated register";
   benchmark::RegisterBenchmark( add.c_str(), addDevices, devices )
      ->Iterations( addIterations )
      ->Repetitions( repetitions );
   benchmark::RegisterBenchmark( read.c_str(), readRegister )
      ->Iterations( readIterations )
      ->Repetitions( repetitions );
   return { { add, "", {} }, { read, "", {} } };
}
