#include "Poe.h"

#include <charconv>
#include <cstdlib>

namespace Poe {

namespace {

ql_poe_port* portOf( void* record ) { return static_cast<ql_poe_port*>( record ); }

/** What a setting gives: its values, or why it could not be made. */
Reading outcome( std::string_view action, ql_status status, std::vector<Value> values ) {
   return status == QL_STATUS_OK ? Reading { std::move( values ), "ok", {} }
                                 : Calls::failed( unanswered( action, status ) );
}

Reading switchPower( void* record, bool isOn ) {
   auto port = portOf( record );
   auto status = Calls::call( port->ops, &ql_poe_port_ops::power_on, port, isOn );
   return outcome( isOn ? "switch it on" : "switch it off", status, { isOn ? "on" : "off" } );
}

std::optional<float> wattsOf( const std::string& text ) {
   // No class takes more on all pairs; the chip has steps of 0.2 W.
   constexpr float least = 0.2F, most = 90;
   float watts = 0;
   auto end = text.data() + text.size();
   auto [stop, error] = std::from_chars( text.data(), end, watts );
   auto isRight = error == std::errc() && stop == end && watts >= least && watts <= most;
   return isRight ? std::optional( watts ) : std::nullopt;
}

/** The bits of the power supplies in a port's mask; on some boards all have the same. */
constexpr unsigned supplyBits[] = { 0x02, 0x04, 0x10 };
constexpr unsigned commonBit = 0x01;

bool isIn( unsigned mask, size_t supply ) { return mask & ( supplyBits[supply] | commonBit ); }

/**
 * The library knows only of what this process has set, and sends nothing for what it believes to be set. So
 * it is first told what the chip has.
 */
ql_status replace( ql_poe_port* port, unsigned mask, size_t supply, bool isOn ) {
   auto set = [&]( size_t number, bool value ) {
      return Calls::call(
         port->ops, &ql_poe_port_ops::set_shut_off_with_psu, port, static_cast<uint8_t>( number ), value );
   };
   for ( size_t number = 0; number < std::size( supplyBits ); ++number ) {
      if ( isIn( mask, number ) ) {
         if ( auto status = set( number, true ) ) {
            return status;
         }
      }
   }
   return set( supply, isOn );
}

} // namespace

Reading powerOn( void* record, const ObjectEntry&, const Arguments& ) { return switchPower( record, true ); }

Reading powerOff( void* record, const ObjectEntry&, const Arguments& ) {
   return switchPower( record, false );
}

Reading setPse( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto port = portOf( record );
   auto isOn = arguments.front() == "on";
   auto status = Calls::call( port->ops, &ql_poe_port_ops::set_pse, port, isOn );
   return outcome( "set the power sourcing", status, { isOn } );
}

Reading setLegacy( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto port = portOf( record );
   auto isOn = arguments.front() == "on";
   auto status = Calls::call( port->ops, &ql_poe_port_ops::set_legacy_detect, port, isOn );
   return outcome( "set the legacy detection", status, { isOn } );
}

std::string wantedLimit( const ObjectEntry&, const std::string& text ) {
   return text == "class" || wattsOf( text ) ? "" : "class, or a number of watts from 0.2 to 90";
}

/** The limit that comes of it is read back: the library adds 3 percent, and the chip ends at 31 W. */
Reading setLimit( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto port = portOf( record );
   auto watts = wattsOf( arguments.front() );
   auto mode = watts ? QL_POE_LIMIT_USER : QL_POE_LIMIT_CLASS;
   auto status = Calls::call( port->ops, &ql_poe_port_ops::set_limit, port, mode, watts.value_or( 0 ) );
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( unanswered( "set the limit", status ) );
   }
   auto limit = limitOf( port );
   return limit ? Reading { { limit->by, limit->watts ? Value( *limit->watts ) : Value() }, "ok", {} }
                : Calls::failed( unanswered( "read the limit that was set", QL_STATUS_IO_ERROR ) );
}

Reading setShutOff( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto port = portOf( record );
   auto supply = static_cast<size_t>( arguments[0][0] - '1' );
   auto isOn = arguments[1] == "on";
   auto text = reportField( reportOf( port, false ), "Port MPSS mask" );
   if ( !text ) {
      return Calls::failed( unanswered( "read the shut-off mask", QL_STATUS_IO_ERROR ) );
   }
   auto mask = static_cast<unsigned>( std::strtoul( text->c_str(), nullptr, 16 ) );
   auto status = isIn( mask, supply ) == isOn ? QL_STATUS_OK : replace( port, mask, supply, isOn );
   return outcome( "set the shut-off mask", status, { static_cast<double>( supply + 1 ), isOn } );
}

Reading init( void* record, const ObjectEntry&, const Arguments& ) {
   auto port = portOf( record );
   auto status = Calls::call( port->ops, &ql_poe_port_ops::port_init, port );
   return status == QL_STATUS_OK ? Reading { { true }, "ok", {} }
                                 : Calls::failed( failure( "start the port", status ) );
}

} // namespace Poe
