#include "Calls.h"

namespace {

constexpr Field fields[] = { { "version", "VERSION" } };

Reading read( void* record, const ObjectEntry& ) {
   Reading reading { { {} }, "failed", {} };
   auto system = static_cast<ql_system*>( record );
   if ( !system ) {
      return reading;
   }
   char version[8] = {};
   auto status = Calls::call( system->ops, &ql_system_ops::get_chip_info, system, &version );
   if ( status != QL_STATUS_OK ) {
      reading.failure = Calls::failure( "read the version", status );
      return reading;
   }
   reading.values.front() = std::string( version );
   reading.state = "ok";
   return reading;
}

} // namespace

const Kind systemKind = { "system", "System", fields, Calls::add<ql_system>, read, true };
