#include "CreationBenchmarks.h"

#include "Components/HardwareDevice.h"
#include "Ham/Ham.h"
#include "Ham/QuillonSmbusPath.h"
#include "TopologyText.h"

#include <fmt/format.h>

namespace {

constexpr double wantedShare = 1.0 / 3;

/** Devices that are made stay for good, so the repetitions are few. */
constexpr int repetitions = 20;

void createDevices( benchmark::State& state, int devices ) {
   auto topology = flatTopologyText( devices );
   ql_temp_sensor_init( topology.c_str() );
   std::vector<std::string> arguments;
   for ( int did = 1; did <= devices; ++did ) {
      arguments.push_back( fmt::format(
         R"({{"did": {0}, "driver": "PCT2075", "name": "Sensor{0}", "address": {{"address": 72}}}})", did ) );
   }
   for ( auto _ : state ) {
      Component::DeviceBase::devices.clear();
      for ( auto& text : arguments ) {
         if ( !ql_temp_sensor_add( text.c_str(), 65, 75 ) ) {
            return state.SkipWithError( "a device is not added" );
         }
      }
   }
}

/** The search for a device's Ham, and that for its path. The second one makes a Ham too, which counts here.
 */
bool walk( uint32_t did ) {
   Ham::SearchVisitor search;
   search.uid = Drivers::DriverArgs::noUid;
   search.did = did;
   Topology::_topology->accept( &search );
   Drivers::DriverArgs args;
   args.uid = Drivers::DriverArgs::noUid;
   args.did = did;
   Ham::QuillonSmbusDriverVisitor path;
   path.args = &args;
   Topology::_topology->accept( &path );
   // A Ham stays for good.
   static auto& hams = *new std::vector<Ham::QuillonSmbusHam*>;
   hams.push_back( path.ham );
   return search.found && path.ham;
}

void walkToDevices( benchmark::State& state, int devices ) {
   auto topology = flatTopologyText( devices );
   ql_temp_sensor_init( topology.c_str() );
   for ( auto _ : state ) {
      for ( int did = 1; did <= devices; ++did ) {
         if ( !walk( static_cast<uint32_t>( did ) ) ) {
            return state.SkipWithError( "a device is not found" );
         }
      }
   }
}

/** The walk to a device meets those before it, and itself, its bus, the medium that is the bus, and the root.
 */
double nodesOfWalks( double devices ) { return 2 * ( devices * ( devices + 1 ) / 2 + 3 * devices ); }

} // namespace

void registerCreationBenchmarks( int devices, bool smoke ) {
   auto add = [=]( const char* name, auto function ) {
      benchmark::RegisterBenchmark(
         fmt::format( "{}/{}", name, devices ).c_str(), [=]( auto& state ) { function( state, devices ); } )
         ->Iterations( 1 )
         ->Repetitions( smoke ? 1 : repetitions );
   };
   add( "create devices", createDevices );
   add( "walk to devices", walkToDevices );
}

std::vector<Row> creationRows( int devices, const Times& times ) {
   auto create = fmt::format( "create devices/{}", devices ),
        walks = fmt::format( "walk to devices/{}", devices );
   if ( !times.has( create ) || !times.has( walks ) ) {
      return {};
   }
   auto time = times.processor( walks );
   return {
      { fmt::format( "walks of creating {0} among {0}, to the whole", devices ), inSeconds( time ),
         inSeconds( times.processor( create ) ), wantedShare },
      { "a node of such a walk", inSeconds( time / nodesOfWalks( devices ) ) },
   };
}
