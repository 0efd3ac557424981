// Counts the instructions that a callback costs above the trace call and the virtual call, and prints a
// table. Callgrind counts them: the program starts itself under valgrind.
//
//   quillon-callback-bench [--smoke]    both do the same

#include "Callbacks.h"
#include "Programs.h"
#include "Table.h"

#include <fmt/format.h>
#include <valgrind/callgrind.h>

#include <fstream>
#include <string_view>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double wantedInstructions = 20;
constexpr int times = 1000;

/** Has the calls of one kind counted, in a file of their own. */
void count( void ( *call )( int ) ) {
   // A first call of a function looks for it in all libraries.
   call( 1 );
   CALLGRIND_ZERO_STATS;
   call( times );
   CALLGRIND_DUMP_STATS;
}

void countAll() {
   for ( auto& callback : callbacks() ) {
      count( callback.asHost );
      count( callback.asDriver );
   }
}

bool runUnderValgrind( const std::string& program, const std::string& files ) {
   auto child = fork();
   if ( child == 0 ) {
      become(
         { "valgrind", "--quiet", "--tool=callgrind", "--callgrind-out-file=" + files, program, "--count" } );
   }
   int status = 0;
   waitpid( child, &status, 0 );
   return status == 0;
}

/** What a file of callgrind has counted for a call, by its line "totals: N", or 0 without that. */
double instructionsIn( const std::string& path ) {
   std::ifstream file( path );
   for ( std::string word; file >> word; ) {
      if ( double total = 0; word == "totals:" && file >> total ) {
         return total / times;
      }
   }
   return 0;
}

} // namespace

int main( int argc, char** argv ) {
   if ( argc > 1 && argv[1] == std::string_view( "--count" ) ) {
      countAll();
      return 0;
   }
   TemporaryFolder folder;
   auto files = folder.path() + "/count";
   if ( !runUnderValgrind( argv[0], files ) ) {
      fmt::print( stderr, "quillon-callback-bench: valgrind failed\n" );
      return 1;
   }
   std::vector<Row> rows;
   int file = 0;
   for ( auto& callback : callbacks() ) {
      auto asHost = instructionsIn( fmt::format( "{}.{}", files, ++file ) );
      auto asDriver = instructionsIn( fmt::format( "{}.{}", files, ++file ) );
      if ( asHost <= asDriver || asDriver <= 0 ) {
         fmt::print( stderr, "quillon-callback-bench: {} was not counted\n", callback.name );
         return 1;
      }
      rows.push_back( { fmt::format( "callback {}, its own", callback.name ),
         inInstructions( asHost - asDriver ), {}, wantedInstructions } );
   }
   printTable( rows );
   return 0;
}
