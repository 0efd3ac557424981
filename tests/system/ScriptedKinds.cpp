// The kinds of the scripted plug-in but for temperature sensors and PoE ports. What is written shows as a
// trace line.

#include "ScriptedKinds.h"

#include <cstdio>
#include <cstring>
#include <string>

std::map<const void*, Script>& scripts() {
   static std::map<const void*, Script> all;
   return all;
}

ql_status set( const void* record, const char* what, int value ) {
   ql_trace( 4, "%s %d", what, value );
   return answer( scriptOfRecord( record ) );
}

namespace {

/** A signal or value that was asked for: the script's number. */
template <typename Number>
ql_status get( const void* record, Number* value ) {
   auto& script = scriptOfRecord( record );
   auto status = answer( script );
   if ( status == QL_STATUS_OK ) {
      *value = static_cast<Number>( script.number );
   }
   return status;
}

ql_status getRpm( ql_fan* fan, int* rpm ) { return get( fan, rpm ); }

ql_status setRpm( ql_fan* fan, int rpm ) { return set( fan, "rpm", rpm ); }

const ql_fan_ops fanOps = { sizeof( ql_fan_ops ), nullptr, getRpm, setRpm };

ql_status setLight( ql_led* led, ql_led_status status ) {
   return set( led, "light", static_cast<int>( status ) );
}

const ql_led_ops ledOps = { sizeof( ql_led_ops ), setLight };

ql_status getSlot( ql_slot* slot, char** text ) {
   auto status = answer( scriptOfRecord( slot ) );
   if ( status == QL_STATUS_OK ) {
      *text = strdup( "FruFactoryIds: QLDevice\nslotId = 2\nfanTray.modelName = 'FAN-1'F'\n"
                      "fanTray.serialNum = 'S0'\nfan.libPath = ''\n" );
   }
   return status;
}

const ql_slot_ops slotOps = { sizeof( ql_slot_ops ), getSlot };

/** The script's number holds the signals: bit 0 absent, 1 fault, 2 loss of signal, 3 disable. */
ql_status getSignal( const ql_xcvr* xcvr, int bit, int* value ) {
   auto status = get( xcvr, value );
   if ( status == QL_STATUS_OK ) {
      *value = *value >> bit & 1;
   }
   return status;
}

ql_status getPresence( ql_xcvr* xcvr ) {
   int absent = 0;
   auto status = getSignal( xcvr, 0, &absent );
   return status == QL_STATUS_OK && absent ? QL_STATUS_NOT_PRESENT : status;
}

ql_status getTxFault( ql_xcvr* xcvr, int* value ) { return getSignal( xcvr, 1, value ); }

ql_status getRxLos( ql_xcvr* xcvr, int* value ) { return getSignal( xcvr, 2, value ); }

ql_status getTxDisable( ql_xcvr* xcvr, int* value ) { return getSignal( xcvr, 3, value ); }

ql_status setTxDisable( ql_xcvr* xcvr, int value ) { return set( xcvr, "tx disable", value ); }

ql_status refuseTxDisable( ql_xcvr* xcvr, int value ) {
   set( xcvr, "tx disable", value );
   return QL_STATUS_FAILED;
}

ql_xcvr_ops xcvrOps( const Script& script ) {
   ql_xcvr_ops ops {};
   ops.size = sizeof( ops );
   if ( script.word == "qsfp" ) {
      ops.kind = QL_XCVR_QSFP;
      ops.by_kind.qsfp.size = sizeof( ql_qsfp_ops );
      ops.by_kind.qsfp.get_presence = getPresence;
   } else {
      ops.kind = QL_XCVR_SFP;
      ops.by_kind.sfp = { sizeof( ql_sfp_ops ), getPresence, getTxFault, getRxLos, getTxDisable,
         script.word == "refuses" ? refuseTxDisable : setTxDisable };
   }
   return ops;
}

ql_status setBit( ql_gpio* gpio ) { return set( gpio, "bit", 1 ); }

ql_status clearBit( ql_gpio* gpio ) { return set( gpio, "bit", 0 ); }

ql_status readBit( ql_gpio* gpio, uint32_t* value ) { return get( gpio, value ); }

const ql_gpio_ops gpioOps = { sizeof( ql_gpio_ops ), setBit, clearBit, readBit };

ql_status reloadCause( ql_system* system, char ( *reason )[100], time_t*, char ( * )[500] ) {
   auto status = answer( scriptOfRecord( system ) );
   if ( status == QL_STATUS_OK ) {
      snprintf( *reason, sizeof( *reason ), "The switch was told to." );
   }
   return status;
}

ql_status rebootAction( ql_system* system, bool keep ) { return set( system, "keep poe", keep ); }

ql_status chipInfo( ql_system* system, char ( *version )[8] ) {
   auto status = answer( scriptOfRecord( system ) );
   if ( status == QL_STATUS_OK ) {
      snprintf( *version, sizeof( *version ), "0x01.2a" );
   }
   return status;
}

const ql_system_ops systemOps = { sizeof( ql_system_ops ), nullptr, nullptr, reloadCause, rebootAction,
   chipInfo, nullptr };

const ql_psu_ops psuOps = { sizeof( ql_psu_ops ), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
   nullptr, nullptr };

} // namespace

ql_system* ql_system_add( const char* args ) { return addScripted<ql_system>( args, &systemOps ); }

ql_fan* ql_fan_add( const char* args ) { return addScripted<ql_fan>( args, &fanOps ); }

ql_psu* ql_psu_add( const char* args ) { return addScripted<ql_psu>( args, &psuOps ); }

ql_led* ql_led_add( const char* args ) { return addScripted<ql_led>( args, &ledOps ); }

ql_slot* ql_slot_add( const char* args ) { return addScripted<ql_slot>( args, &slotOps ); }

ql_gpio* ql_gpio_add( const char* args ) { return addScripted<ql_gpio>( args, &gpioOps ); }

ql_xcvr* ql_xcvr_add( const char* args ) {
   return addScripted<ql_xcvr>( args, new ql_xcvr_ops( xcvrOps( scriptOf( args ) ) ) );
}
