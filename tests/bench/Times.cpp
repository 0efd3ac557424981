#include "Times.h"

#include <string_view>
#include <vector>

bool runBenchmarks( int argc, char** argv, Order order, Times& times ) {
   std::string interleaving = "--benchmark_enable_random_interleaving=";
   interleaving += order == Order::Random ? "true" : "false";
   std::vector<char*> arguments( argv, argv + argc );
   arguments.insert( arguments.begin() + 1, interleaving.data() );
   auto count = static_cast<int>( arguments.size() );
   arguments.push_back( nullptr );
   benchmark::SetDefaultTimeUnit( benchmark::kMicrosecond );
   benchmark::Initialize( &count, arguments.data() );
   return !benchmark::ReportUnrecognizedArguments( count, arguments.data() ) &&
          benchmark::RunSpecifiedBenchmarks( &times ) != 0 && !times.failed;
}

bool takeOption( int& argc, char** argv, const char* option ) {
   auto end = std::remove( argv + 1, argv + argc, std::string_view( option ) );
   bool found = end != argv + argc;
   argc = static_cast<int>( end - argv );
   return found;
}
