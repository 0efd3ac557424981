#include "Calls.h"

#include "Statuses.h"

namespace Calls {

Failure failure( std::string_view action, ql_status status ) {
   auto reason = HostServices::lastLine();
   return { status,
      fmt::format( "cannot {}: {}", action, reason.empty() ? wordsOf( status ).meaning : reason ) };
}

Reading failed( const Failure& failure ) { return { {}, "failed", failure }; }

} // namespace Calls
