// Measures how much of a PoE command's time the controller's protocol asks for, on the emulated board of 48
// ports, and prints a table.
//
//   quillon-poe-bench            what counts
//   quillon-poe-bench --smoke    once, to see that everything works; the times mean nothing

#include "Programs.h"
#include "Table.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double wantedShare = 0.05;

/** Runs quillonctl to its end. @return whether it went well */
bool quillonctl( Words words ) {
   words.insert( words.begin(), QUILLONCTL );
   auto child = fork();
   if ( child == 0 ) {
      // Tables are not what is looked at here.
      dup2( open( "/dev/null", O_WRONLY ), STDOUT_FILENO );
      become( words );
   }
   int status = 0;
   waitpid( child, &status, 0 );
   return WIFEXITED( status ) && WEXITSTATUS( status ) == 0;
}

struct Times {
   double whole = 0;
   double waits = 0;

   double share() const { return 1 - waits / whole; }
};

/** The run with the smallest share outside of the waits, the one that was disturbed least. */
Times measure( const std::string& waitsFile, const Words& words, int rounds ) {
   Times best;
   for ( int i = 0; i < rounds; ++i ) {
      std::filesystem::remove( waitsFile );
      auto begin = std::chrono::steady_clock::now();
      auto isGood = quillonctl( words );
      Times times { std::chrono::duration<double>( std::chrono::steady_clock::now() - begin ).count() };
      std::ifstream( waitsFile ) >> times.waits;
      if ( !isGood || times.waits <= 0 ) {
         fmt::print( stderr, "quillon-poe-bench: quillonctl {} failed\n", fmt::join( words, " " ) );
         exit( 1 );
      }
      if ( best.whole == 0 || times.share() < best.share() ) {
         best = times;
      }
   }
   return best;
}

} // namespace

int main( int argc, char** argv ) {
   auto isSmoke = std::find( argv + 1, argv + argc, std::string_view( "--smoke" ) ) != argv + argc;
   TemporaryFolder folder;
   auto waitsFile = folder.path() + "/waits";
   Server server( BOARD );
   setenv( "QUILLON_BOARD", BOARD, 1 );
   setenv( "WAITS_FILE", waitsFile.c_str(), 1 );
   if ( !quillonctl( { "poe", "port*", "init" } ) || !quillonctl( { "poe", "port*", "pse", "on" } ) ) {
      fmt::print( stderr, "quillon-poe-bench: the ports can't be started\n" );
      return 1;
   }
   setenv( "LD_PRELOAD", COUNT_WAITS, 1 );
   std::vector<Words> commands { { "poe", "status" } };
   if ( !isSmoke ) {
      commands.push_back( { "poe", "status", "--all" } );
   }
   std::vector<Row> rows;
   for ( auto& words : commands ) {
      auto times = measure( waitsFile, words, isSmoke ? 1 : 5 );
      rows.push_back( { fmt::format( "{} without its waits, to the whole", fmt::join( words, " " ) ),
         inSeconds( times.whole - times.waits ), inSeconds( times.whole ), wantedShare } );
   }
   printTable( rows );
   return 0;
}
