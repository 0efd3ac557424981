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

constexpr Field causeFields[] = { { "reload_cause", "RELOAD CAUSE" } };

/** The register is empty: the library has told what it read there, and no more than that. */
bool isNoCause( ql_status status ) {
   return status == QL_STATUS_FAILED && HostServices::lastLine().starts_with( "Reset Event Register: " );
}

Reading reloadCause( void* record, const ObjectEntry&, const Arguments& ) {
   auto system = static_cast<ql_system*>( record );
   char reason[100] = {};
   time_t when = 0;
   char debugInfo[500] = {};
   auto status =
      Calls::call( system->ops, &ql_system_ops::get_reload_cause, system, &reason, &when, &debugInfo );
   if ( isNoCause( status ) ) {
      return Calls::failed( { status,
         "no reload cause: it is told once, and was told before, or nothing has restarted the switch" } );
   }
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "read the reload cause", status ) );
   }
   return { { std::string( reason ) }, "ok", {} };
}

constexpr Field rebootFields[] = { { "poe_reboot", "POE REBOOT" } };

Reading setPoeReboot( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto system = static_cast<ql_system*>( record );
   auto& action = arguments.front();
   auto status = Calls::call( system->ops, &ql_system_ops::poe_reboot_action, system, action == "keep" );
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "set the reboot action", status ) );
   }
   return { { action }, "ok", {} };
}

const Command commands[] = {
   { "version", {}, "Shows the version of the CPLD", fields,
      []( auto record, auto& system, auto& ) { return read( record, system ); } },
   { "reload-cause", {}, "Tells why the switch last restarted, once", causeFields, reloadCause },
   { "poe-reboot", { { .choices = { "keep", "reset" } } },
      "Decides what a reboot of the switch does with the PoE controller", rebootFields, setPoeReboot,
      "a reboot of the switch will {1} the PoE controller" },
};

} // namespace

const Kind systemKind = { "system", "System", fields, Calls::add<ql_system>, read, "system",
   "Version, reload cause and reboot action of the switch", commands, true, true };
