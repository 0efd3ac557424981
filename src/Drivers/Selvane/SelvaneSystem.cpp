#include "Drivers/Selvane/SelvaneSystem.h"

#include "Quillon.h"

namespace {

const ql_system_ops systemOps = {
   .size = sizeof( ql_system_ops ),
   .poweroff = ql_system_poweroff,
   .powercycle = ql_system_powercycle,
   .get_reload_cause = nullptr,
   .poe_reboot_action = nullptr,
   .get_chip_info = nullptr,
   .reserved = nullptr,
};
static_assert( sizeof( ql_system_ops ) == 56 );

} // namespace

ql_status ql_system_init( const char* topology ) {
   return quillonLibraryInit( "ql_system_init", topology, socketTries );
}

ql_system* ql_system_add( const char* args ) {
   ql_trace( 0, "SelvaneSystem::ql_system_add( '%s' )", args );
   return new ql_system { .reserved = 0, .ops = &systemOps };
}

ql_status ql_system_poweroff( ql_system* ) { return QL_STATUS_NOT_SUPPORTED; }

ql_status ql_system_powercycle( ql_system* ) { return QL_STATUS_NOT_SUPPORTED; }
