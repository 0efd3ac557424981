// Measures the start of quillonctl to its first output, and its greatest memory, beside `sensors` of
// lm-sensors, and prints a table.
//
//   quillon-start-bench            what counts
//   quillon-start-bench --smoke    once, to see that everything works; the times mean nothing

#include "Programs.h"
#include "Table.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string_view>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

struct Run {
   double toFirstOutput;
   double memory;
   bool isGood;
};

/** Takes all that a command writes, on both of its streams. Nothing for a program that is not there. */
std::optional<Run> run( const Words& words ) {
   int ends[2];
   if ( pipe( ends ) != 0 ) {
      abort();
   }
   auto begin = Clock::now();
   auto child = fork();
   if ( child == 0 ) {
      dup2( ends[1], STDOUT_FILENO );
      dup2( ends[1], STDERR_FILENO );
      close( ends[0] );
      close( ends[1] );
      become( words );
   }
   close( ends[1] );
   char bytes[4096];
   auto hasSpoken = read( ends[0], bytes, sizeof( bytes ) ) > 0;
   std::chrono::duration<double> time = Clock::now() - begin;
   while ( read( ends[0], bytes, sizeof( bytes ) ) > 0 ) {
   }
   close( ends[0] );
   int status = 0;
   rusage usage {};
   wait4( child, &status, 0, &usage );
   if ( !hasSpoken ) {
      return {};
   }
   return Run { time.count(), static_cast<double>( usage.ru_maxrss ) * 1024, status == 0 };
}

/** The best of several runs, each number by itself. */
std::optional<Run> best( const Words& words, int rounds ) {
   auto least = run( words );
   for ( int i = 1; i < rounds && least; ++i ) {
      if ( auto next = run( words ) ) {
         least->toFirstOutput = std::min( least->toFirstOutput, next->toFirstOutput );
         least->memory = std::min( least->memory, next->memory );
         least->isGood &= next->isGood;
      }
   }
   return least;
}

struct Pair {
   Words ours;
   Words theirs;
};

const std::vector<Pair> pairs {
   { { "--version" }, { "--version" } },
   { { "--help" }, { "--help" } },
   { { "status", "inlet", "outlet", "asic" }, {} },
};

} // namespace

int main( int argc, char** argv ) {
   auto isSmoke = std::find( argv + 1, argv + argc, std::string_view( "--smoke" ) ) != argv + argc;
   Server server( BOARD );
   setenv( "QUILLON_BOARD", BOARD, 1 );
   std::vector<Row> rows;
   for ( auto& [ourWords, theirWords] : pairs ) {
      auto ours = ourWords, theirs = theirWords;
      ours.insert( ours.begin(), QUILLONCTL );
      theirs.insert( theirs.begin(), "sensors" );
      auto rounds = isSmoke ? 1 : 50;
      auto measured = best( ours, rounds ), beside = best( theirs, rounds );
      auto name = fmt::format( "quillonctl {}, to {}", fmt::join( ourWords, " " ), fmt::join( theirs, " " ) );
      // Without a chip, sensors fails.
      if ( !measured || !measured->isGood ) {
         fmt::print( stderr, "quillon-start-bench: quillonctl {} failed\n", fmt::join( ourWords, " " ) );
         return 1;
      }
      auto add = [&]( const char* what, auto figure, auto member ) {
         rows.push_back( { fmt::format( "{}: {}", name, what ), figure( ( *measured ).*member ),
            beside ? figure( ( *beside ).*member ) : notInstalled() } );
      };
      add( "start", inSeconds, &Run::toFirstOutput );
      add( "memory", inBytes, &Run::memory );
   }
   printTable( rows );
   return 0;
}
