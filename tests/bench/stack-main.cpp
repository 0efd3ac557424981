// Measures the way from the library through the socket and the server to an emulated chip, in wall time, and
// prints a table at the end.
//
//   quillon-stack-bench            what counts
//   quillon-stack-bench --smoke    a little of it, to see that everything works; the times mean nothing
//
// Options of Google Benchmark are taken too.

#include "Report.h"
#include "StackBenchmarks.h"

#include "quillon/ql.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/wait.h>
#include <unistd.h>

// A host that drops every trace.
void ql_trace( int, const char*, ... ) {}

ql_timer* ql_timer_add( void ( * )( void* ), void* ) { return nullptr; }

int ql_timer_set( ql_timer*, uint32_t ) { return -1; }

void ql_timer_delete( ql_timer* ) {}

namespace {

/** The server, with one emulated sensor, in a directory of its own. */
class Server {
public:
   Server() : directory_( ( std::filesystem::temp_directory_path() / "quillon-bench-XXXXXX" ).string() ) {
      if ( !mkdtemp( directory_.data() ) ) {
         abort();
      }
      std::ofstream( directory_ + "/emulator.json" ) << R"({ "chips": [ { "name": "inlet", "part": "pct2075",
         "bus": 3, "address": 72, "set": { "temperature": 24.5 } } ] })";
      auto socket = directory_ + "/smbus.sock";
      setenv( "QUILLON_SMBUS_SOCKET", socket.c_str(), 1 );
      process_ = fork();
      if ( process_ == 0 ) {
         execl( SMBUSD, SMBUSD, "--emulate", directory_.c_str(), "--log-level", "error", nullptr );
         _exit( 127 );
      }
      for ( int i = 0; i < 2000 && !std::filesystem::exists( socket ); ++i ) {
         usleep( 1000 );
      }
   }

   ~Server() {
      kill( process_, SIGTERM );
      waitpid( process_, nullptr, 0 );
      std::filesystem::remove_all( directory_ );
   }

   Server( const Server& ) = delete;
   Server& operator=( const Server& ) = delete;

private:
   std::string directory_;
   pid_t process_ = -1;
};

} // namespace

int main( int argc, char** argv ) {
   auto end = std::remove( argv + 1, argv + argc, std::string_view( "--smoke" ) );
   bool smoke = end != argv + argc;
   argc = static_cast<int>( end - argv );
   benchmark::SetDefaultTimeUnit( benchmark::kMicrosecond );
   benchmark::Initialize( &argc, argv );
   if ( benchmark::ReportUnrecognizedArguments( argc, argv ) ) {
      return 2;
   }
   Server server;
   auto comparisons = registerStackBenchmarks( smoke );
   Times times( Times::Clock::Wall );
   auto count = benchmark::RunSpecifiedBenchmarks( &times );
   printTable( comparisons, times );
   return count == 0 || times.failed ? 1 : 0;
}
