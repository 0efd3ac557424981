#include "TopologyBenchmarks.h"

#include "Programs.h"
#include "TopologyText.h"

#include "quillon/ql.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <map>
#include <string>
#include <utility>

#include <unistd.h>

namespace {

/** Loading is to take at most this many times what parsing the text takes. */
constexpr double wantedRatio = 2;

/** A device of the largest topology is to take at most this many times what one of the smallest takes. */
constexpr double wantedGrowth = 2;

/** The text of a topology, of which there are two: the same one again is not loaded. */
const char* textOf( int devices, int which ) {
   static std::map<std::pair<int, int>, std::string> texts;
   auto [text, isNew] = texts.try_emplace( { devices, which } );
   if ( isNew ) {
      text->second = topologyText( devices, which );
   }
   return text->second.c_str();
}

bool load( const char* text ) { return ql_system_init( text ) == QL_STATUS_OK; }

/** Runs the work with all that prepares it, and counts the work alone. */
template <typename Preparation, typename Work>
void measure( benchmark::State& state, Preparation prepare, Work work ) {
   for ( auto _ : state ) {
      auto isReady = prepare();
      auto begin = processorTimeOf( getpid() );
      auto isGood = work();
      state.SetIterationTime( processorTimeOf( getpid() ) - begin );
      if ( !isReady || !isGood ) {
         return state.SkipWithError( "the text is not taken" );
      }
   }
}

/** The load of a host that starts: there is no tree yet. */
void loadTopology( benchmark::State& state, int devices ) {
   auto text = textOf( devices, 1 );
   measure(
      state, [] { return load( "[]" ); }, [=] { return load( text ); } );
}

/** The load of another text, which deletes the tree that is there. */
void replaceTopology( benchmark::State& state, int devices ) {
   auto text = textOf( devices, 1 ), other = textOf( devices, 2 );
   measure(
      state, [=] { return load( other ); }, [=] { return load( text ); } );
}

/** What the JSON library alone takes for the same text. */
void parseTopology( benchmark::State& state, int devices ) {
   auto text = textOf( devices, 1 );
   auto parse = [=] {
      rapidjson::Document document;
      document.Parse( text );
      return !document.HasParseError();
   };
   measure(
      state, [] { return true; }, parse );
}

std::string nameOf( const char* benchmark, int devices ) {
   return benchmark + ( "/" + std::to_string( devices ) );
}

} // namespace

void registerTopologyBenchmarks( const std::vector<int>& sizes, bool smoke ) {
   for ( auto devices : sizes ) {
      auto add = [&]( const char* name, auto function ) {
         addShortRuns( nameOf( name, devices ), smoke, [=]( auto& state ) {
            function( state, devices );
         } )->UseManualTime();
      };
      add( "parse topology", parseTopology );
      add( "load topology", loadTopology );
      add( "replace topology", replaceTopology );
   }
}

std::vector<Row> topologyRows( const std::vector<int>& sizes, const Times& times ) {
   std::vector<Row> rows;
   auto add = [&]( const char* benchmark, int devices, std::optional<double> wanted ) {
      auto name = nameOf( benchmark, devices ), parse = nameOf( "parse topology", devices );
      if ( times.has( name ) && times.has( parse ) ) {
         rows.push_back( { name + " devices, to a parse", inSeconds( times.wall( name ) ),
            inSeconds( times.wall( parse ) ), wanted } );
      }
   };
   std::vector<Figure> perDevice;
   for ( auto devices : sizes ) {
      add( "load topology", devices, wantedRatio );
      add( "replace topology", devices, {} );
      if ( auto name = nameOf( "load topology", devices ); times.has( name ) ) {
         perDevice.push_back( inSeconds( times.wall( name ) / devices ) );
         rows.push_back( { fmt::format( "load topology/{}, a device", devices ), perDevice.back() } );
      }
   }
   if ( perDevice.size() == sizes.size() ) {
      rows.push_back( { fmt::format( "a device of {} to one of {}", sizes.back(), sizes.front() ),
         perDevice.back(), perDevice.front(), wantedGrowth } );
   }
   return rows;
}
