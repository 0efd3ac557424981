#include "CommandLine.h"
#include "Serve.h"

#include "common/StandardStreams.h"

#include <variant>

int main( int argc, char** argv ) {
   Common::holdStandardStreams();
   auto parsed = Smbusd::parseCommandLine( argc, argv );
   auto options = std::get_if<Smbusd::Options>( &parsed );
   return options ? Smbusd::serve( *options ) : std::get<int>( parsed );
}
