#include "Poe.h"

#include "JsonFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace Poe {

namespace {

/** Where the library looks for firmware files. */
constexpr const char* firmwareFolder = "/usr/share/firmware/";

struct Answer {
   ql_status status;
   std::string revision;
};

/** The revision that the controller runs, after an update if one is wanted. */
Answer askFirmware( ql_poe_port* port, bool isUpdate ) {
   char* text = nullptr;
   auto status = Calls::call( port->ops, &ql_poe_port_ops::reprogram_firmware, port, !isUpdate, &text );
   Answer answer { status, text ? text : "" };
   free( text );
   return answer;
}

/** Why there is no firmware file that the library could take, if that is so: it ends the process then. */
std::string obstacle( const ObjectEntry& object ) {
   rapidjson::Document args;
   args.Parse( object.args.c_str() );
   auto name = member( args["driverArgs"], "firmwarePath" );
   if ( !name || !name->IsString() ) {
      return fmt::format( "the driverArgs of {} name no firmwarePath in objects.json", object.name );
   }
   auto path = firmwareFolder + textOf( *name );
   std::ifstream file( path, std::ios::binary );
   char revision[2];
   if ( !file ) {
      return fmt::format( "cannot read {}: {}", path, strerror( errno ) );
   }
   if ( !file.read( revision, sizeof( revision ) ) ) {
      return fmt::format( "{} holds no firmware", path );
   }
   return "";
}

} // namespace

Reading showFirmware( void* record, const ObjectEntry&, const Arguments& ) {
   auto answer = askFirmware( static_cast<ql_poe_port*>( record ), false );
   return answer.status == QL_STATUS_OK
             ? Reading { { answer.revision }, "ok", {} }
             : Calls::failed( unanswered( "read the firmware's revision", answer.status ) );
}

Reading updateFirmware( void* record, const ObjectEntry& object, const Arguments& ) {
   auto reason = obstacle( object );
   if ( !reason.empty() ) {
      return Calls::failed( { QL_STATUS_INVALID_ARGUMENT, "cannot update the firmware: " + reason } );
   }
   auto port = static_cast<ql_poe_port*>( record );
   auto before = askFirmware( port, false );
   auto update = askFirmware( port, true );
   auto cause = unanswered( "update the firmware", update.status );
   auto isLoaded = HostServices::lastLine().starts_with( "New firmware revision " );
   // A controller that ran nothing makes a failure of its first answer, also when all went well then.
   auto after = askFirmware( port, false );
   if ( update.status != QL_STATUS_OK && !( isLoaded && after.status == QL_STATUS_OK ) ) {
      return Calls::failed( cause );
   }
   return { { after.revision, before.status == QL_STATUS_OK ? Value( before.revision ) : Value() }, "ok",
      {} };
}

} // namespace Poe
