// PoE ports of the scripted plug-in. The script's number is the state of a port; what it measures is fixed.

#include "ScriptedKinds.h"

#include <cstring>

namespace {

ql_poe_port_state stateOf( const Script& script ) {
   return static_cast<ql_poe_port_state>( static_cast<int>( script.number ) );
}

ql_status getState( ql_poe_port* port, ql_poe_port_state* state, ql_poe_port_state* primary,
   ql_poe_port_state* alternative, ql_poe_port_pair_state* pairs ) {
   auto& script = scriptOfRecord( port );
   auto status = answer( script );
   *state = stateOf( script );
   *primary = script.word == "denied" ? QL_POE_PORT_REQUESTING : *state;
   *alternative = QL_POE_PORT_DETECTING;
   *pairs = QL_POE_PAIR_STATE_1;
   return status;
}

ql_status getClass( ql_poe_port* port, ql_poe_device_class* pdClass, ql_poe_device_class* primary,
   ql_poe_device_class* alternative ) {
   auto isNone = scriptOfRecord( port ).word == "mismatch";
   *pdClass = *primary = *alternative = isNone ? QL_POE_CLASS_INVALID : QL_POE_CLASS_4;
   return QL_STATUS_OK;
}

ql_status getPower( ql_poe_port* port, float* total, float* primary, float* alternative ) {
   if ( scriptOfRecord( port ).word == "noPower" ) {
      ql_trace( 3, "execute: failure in response request 0: timed out" );
      ql_trace( 0, "Error: Failed to read PoE chip" );
      return QL_STATUS_IO_ERROR;
   }
   *total = *primary = stateOf( scriptOfRecord( port ) ) == QL_POE_PORT_POWERED ? 22.1F : 0;
   *alternative = 0;
   return QL_STATUS_OK;
}

ql_status getVoltage( ql_poe_port*, float* volts ) {
   *volts = 53.9F;
   return QL_STATUS_OK;
}

ql_status getCurrent( ql_poe_port*, float* amperes ) {
   *amperes = 0.41F;
   return QL_STATUS_OK;
}

ql_status getTemperature( ql_poe_port*, float* degrees ) {
   *degrees = 41.25F;
   return QL_STATUS_OK;
}

ql_status getCrc( ql_poe_port*, bool* isOk ) {
   *isOk = true;
   return QL_STATUS_OK;
}

constexpr const char* heading = "Port 1\nPort Information                                      Data Status\n"
                                "--------------------------------------------------    --------------\n";

/** A report of a few fields, or one in which they are wrong or missing. */
size_t getReport( ql_poe_port* port, char** text ) {
   auto& script = scriptOfRecord( port );
   std::string report = heading;
   if ( script.word == "noReport" ) {
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      report += "Violation type: n/a                                   SMBus error\n"
                "User defined power limit: n/a                         SMBus error\n"
                "Port MPSS mask: n/a                                   SMBus error\n\n";
   } else {
      report += script.word == "user" ? "Violation type: user defined                          valid\n"
                                      : "Violation type: class based                           valid\n";
      report += "User defined power limit: 16.00W                      valid\n";
      report += script.word == "masked" ? "Port MPSS mask: 0x0012                                valid\n\n"
                                        : "Port MPSS mask: 0x0000                                valid\n\n";
   }
   *text = strdup( report.c_str() );
   return report.size();
}

size_t getDebug( const ql_poe_port* port, char** text, bool isRaw ) {
   if ( !isRaw ) {
      return getReport( const_cast<ql_poe_port*>( port ), text );
   }
   std::string report = "Port 1\n";
   for ( int i = scriptOfRecord( port ).word == "noReport" ? 12 : 0; i < 14; ++i ) {
      report += "20 ff 00 00 00 00 00 01 00 0a 05 2f\n";
   }
   *text = strdup( report.c_str() );
   return report.size();
}

ql_status init( ql_poe_port* port ) { return set( port, "poe init", 1 ); }

ql_status setPse( ql_poe_port* port, bool isOn ) { return set( port, "poe pse", isOn ); }

ql_status powerOn( ql_poe_port* port, bool isOn ) { return set( port, "poe power", isOn ); }

ql_status setLegacy( ql_poe_port* port, bool isOn ) { return set( port, "poe legacy", isOn ); }

ql_status setLimit( ql_poe_port* port, ql_poe_power_limit_mode mode, float watts ) {
   ql_trace( 4, "poe limit %d %.1f", static_cast<int>( mode ), static_cast<double>( watts ) );
   return answer( scriptOfRecord( port ) );
}

ql_status setShutOff( ql_poe_port* port, uint8_t supply, bool isOn ) {
   ql_trace( 4, "poe shut-off %d %d", supply, isOn );
   return answer( scriptOfRecord( port ) );
}

ql_status reprogram( ql_poe_port* port, bool isSkipped, char** revision ) {
   ql_trace( 4, "poe firmware %d", isSkipped );
   *revision = strdup( "0x01.05" );
   return answer( scriptOfRecord( port ) );
}

const ql_poe_port_ops ops = { sizeof( ql_poe_port_ops ), getDebug, init, reprogram, setPse, setLimit,
   setShutOff, powerOn, setLegacy, getState, getClass, getPower, getVoltage, getCurrent, getTemperature,
   getCrc, getReport };

} // namespace

ql_poe_port* ql_poe_port_add( const char* args ) { return addScripted<ql_poe_port>( args, &ops ); }
