#include "Drivers/Selvane/SelvaneSystem.h"

#include "Components/HardwareDevice.h"
#include "Drivers/Helpers.h"
#include "Drivers/Selvane/ReloadCauses.h"
#include "Ham/Ham.h"
#include "Quillon.h"

#include <cassert>
#include <cstdio>
#include <cstring>

namespace {

// CPLD registers, 8 bits each.
constexpr uint32_t minorVersionReg = 0x00;
constexpr uint32_t majorVersionReg = 0x01;
constexpr uint32_t rebootActionReg = 0x06;
constexpr uint32_t resetReasonReg = 0x60;
constexpr uint8_t regSize = 1;

constexpr uint8_t keepPoeAtReboot = 0;
constexpr uint8_t resetPoeAtReboot = 1;

const ql_system_ops systemOps = {
   .size = sizeof( ql_system_ops ),
   .poweroff = ql_system_poweroff,
   .powercycle = ql_system_powercycle,
   .get_reload_cause = ql_system_get_reload_cause,
   .poe_reboot_action = ql_system_poe_reboot_action,
   .get_chip_info = ql_system_get_chip_info,
   .reserved = nullptr,
};
static_assert( sizeof( ql_system_ops ) == 56 );

Ham::Ham* cpldHam() {
   auto cpld = Drivers::getHardwareDeviceByLabel( "CpuCpld", "Dummy" );
   assert( cpld );
   auto ham = cpld->ham;
   assert( ham );
   return ham;
}

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

ql_status ql_system_get_reload_cause( ql_system*, char ( *reason )[100], time_t*, char ( * )[500] ) {
   auto ham = cpldHam();
   uint8_t value = 0;
   auto readStatus = ham->read8( resetReasonReg, &value, regSize );
   auto clearStatus = ham->write8( resetReasonReg, 0, false, regSize );
   if ( readStatus != QL_STATUS_OK ) {
      ql_trace( 0, "Reading Reset Reason Register FAILED" );
      return readStatus;
   }
   if ( clearStatus != QL_STATUS_OK ) {
      ql_trace( 0, "Clearing Reset Reason Register FAILED" );
      return clearStatus;
   }
   ql_trace( 0, "Reset Event Register: 0x60\tRegister Value: %#x", value );
   auto event = resetEvents.find( value );
   if ( event == resetEvents.end() && value == 0 ) {
      return QL_STATUS_FAILED;
   }
   auto& text = event == resetEvents.end() ? ReloadCauses::unknown : event->second;
   strcpy( *reason, text.charPtr() );
   return QL_STATUS_OK;
}

ql_status ql_system_poe_reboot_action( ql_system*, bool keepPoe ) {
   auto action = keepPoe ? keepPoeAtReboot : resetPoeAtReboot;
   auto status = cpldHam()->write8( rebootActionReg, action, false, regSize );
   ql_trace( 0, keepPoe ? "Updating reboot action config register to NOT reset Poe"
                        : "Updating reboot action config register to reset Poe" );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Writing Reboot action config register FAILED" );
   }
   return status;
}

ql_status ql_system_get_chip_info( ql_system*, char ( *version )[8] ) {
   ql_trace( 0, "ql_system_get_chip_info" );
   auto ham = cpldHam();
   uint8_t minor = 0;
   auto status = ham->read8( minorVersionReg, &minor, regSize );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Reading CPLD minor version Register FAILED" );
      return status;
   }
   uint8_t major = 0;
   status = ham->read8( majorVersionReg, &major, regSize );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Reading CPLD major version Register FAILED" );
      return status;
   }
   snprintf( *version, sizeof( *version ), "0x%02x.%02x", major, minor );
   return QL_STATUS_OK;
}
