// Measures how much of a PoE command's time the controller's protocol asks for, on the emulated board of 48
// ports, and prints a table.
//
//   quillon-poe-bench            what counts
//   quillon-poe-bench --smoke    once, to see that everything works; the times mean nothing

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

constexpr double wantedShare = 0.05;

pid_t start( Words words ) {
   auto child = fork();
   if ( child == 0 ) {
      // Tables are not what is looked at here.
      dup2( open( "/dev/null", O_WRONLY ), STDOUT_FILENO );
      std::vector<char*> arguments;
      std::transform( words.begin(), words.end(), std::back_inserter( arguments ),
         []( auto& word ) { return word.data(); } );
      arguments.push_back( nullptr );
      execv( arguments.front(), arguments.data() );
      _exit( 127 );
   }
   return child;
}

/** Runs quillonctl to its end. @return whether it went well */
bool quillonctl( Words words ) {
   words.insert( words.begin(), QUILLONCTL );
   int status = 0;
   waitpid( start( words ), &status, 0 );
   return WIFEXITED( status ) && WEXITSTATUS( status ) == 0;
}

/** The server with the emulated board, in a folder of its own. */
class Server {
public:
   Server() : folder_( ( std::filesystem::temp_directory_path() / "quillon-bench-XXXXXX" ).string() ) {
      if ( !mkdtemp( folder_.data() ) ) {
         abort();
      }
      auto socket = folder_ + "/smbus.sock";
      setenv( "QUILLON_SMBUS_SOCKET", socket.c_str(), 1 );
      setenv( "QUILLON_BOARD", BOARD, 1 );
      setenv( "WAITS_FILE", waitsFile().c_str(), 1 );
      process_ = start( { SMBUSD, "--emulate", BOARD, "--log-level", "error" } );
      for ( int i = 0; i < 2000 && !std::filesystem::exists( socket ); ++i ) {
         usleep( 1000 );
      }
   }

   ~Server() {
      kill( process_, SIGTERM );
      waitpid( process_, nullptr, 0 );
      std::filesystem::remove_all( folder_ );
   }

   Server( const Server& ) = delete;
   Server& operator=( const Server& ) = delete;

   std::string waitsFile() const { return folder_ + "/waits"; }

private:
   std::string folder_;
   pid_t process_ = -1;
};

struct Times {
   double whole = 0;
   double waits = 0;

   double share() const { return 1 - waits / whole; }
};

/** The run with the smallest share outside of the waits, the one that was disturbed least. */
Times measure( const Server& server, const Words& words, int rounds ) {
   Times best;
   for ( int i = 0; i < rounds; ++i ) {
      std::filesystem::remove( server.waitsFile() );
      auto begin = std::chrono::steady_clock::now();
      auto isGood = quillonctl( words );
      Times times { std::chrono::duration<double>( std::chrono::steady_clock::now() - begin ).count() };
      std::ifstream( server.waitsFile() ) >> times.waits;
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
   Server server;
   if ( !quillonctl( { "poe", "port*", "init" } ) || !quillonctl( { "poe", "port*", "pse", "on" } ) ) {
      fmt::print( stderr, "quillon-poe-bench: the ports can't be started\n" );
      return 1;
   }
   setenv( "LD_PRELOAD", COUNT_WAITS, 1 );
   std::vector<Words> commands { { "poe", "status" } };
   if ( !isSmoke ) {
      commands.push_back( { "poe", "status", "--all" } );
   }
   constexpr auto row = "{:<24}{:>12}{:>12}{:>10}{:>8}  {}\n";
   fmt::print( row, "command", "time", "waits", "else", "wanted", "verdict" );
   for ( auto& words : commands ) {
      auto times = measure( server, words, isSmoke ? 1 : 5 );
      fmt::print( row, fmt::format( "{}", fmt::join( words, " " ) ),
         fmt::format( "{:.0f} ms", times.whole * 1e3 ), fmt::format( "{:.0f} ms", times.waits * 1e3 ),
         fmt::format( "{:.1f} %", times.share() * 100 ), fmt::format( "{:.0f} %", wantedShare * 100 ),
         times.share() <= wantedShare ? "good" : "too slow" );
   }
   return 0;
}
