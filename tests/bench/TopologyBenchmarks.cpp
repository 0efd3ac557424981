#include "Benchmarks.h"
#include "TopologyText.h"

#include "quillon/ql.h"

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>

#include <array>

namespace {

/** Loading is to take at most this many times what parsing the text takes. */
constexpr double wantedRatio = 3;

/** Two texts in turn: the same text again is not loaded. */
class Texts {
public:
   explicit Texts( int devices ) : texts_ { topologyText( devices, 1 ), topologyText( devices, 2 ) } {}

   const char* next() { return texts_[turn_++ % texts_.size()].c_str(); }

private:
   std::array<std::string, 2> texts_;
   size_t turn_ = 0;
};

bool load( const char* text ) { return ql_system_init( text ) == QL_STATUS_OK; }

/** The load of a host that starts: there is no tree yet. */
void loadTopology( benchmark::State& state, int devices ) {
   Texts texts( devices );
   for ( auto _ : state ) {
      state.PauseTiming();
      bool isEmpty = load( "[]" );
      state.ResumeTiming();
      if ( !isEmpty || !load( texts.next() ) ) {
         return state.SkipWithError( "the topology is not loaded" );
      }
   }
}

/** The load of another text, which deletes the tree that is there. */
void replaceTopology( benchmark::State& state, int devices ) {
   Texts texts( devices );
   for ( auto _ : state ) {
      if ( !load( texts.next() ) ) {
         return state.SkipWithError( "the topology is not loaded" );
      }
   }
}

/** What the JSON library alone takes for the same text. */
void parseTopology( benchmark::State& state, int devices ) {
   Texts texts( devices );
   for ( auto _ : state ) {
      rapidjson::Document document;
      document.Parse( texts.next() );
      if ( document.HasParseError() ) {
         return state.SkipWithError( "the topology is not parsed" );
      }
      benchmark::DoNotOptimize( document );
   }
}

} // namespace

std::vector<Comparison> registerTopologyBenchmarks( int devices ) {
   auto suffix = "/" + std::to_string( devices );
   auto parse = "parse topology" + suffix, load = "load topology" + suffix,
        replace = "replace topology" + suffix;
   benchmark::RegisterBenchmark( parse.c_str(), parseTopology, devices )->Repetitions( repetitions );
   benchmark::RegisterBenchmark( load.c_str(), loadTopology, devices )->Repetitions( repetitions );
   benchmark::RegisterBenchmark( replace.c_str(), replaceTopology, devices )->Repetitions( repetitions );
   return { { load, parse, wantedRatio }, { replace, parse, wantedRatio } };
}
