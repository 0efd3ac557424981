#include "Kind.h"

#include "HostServices.h"
#include "Plugin.h"
#include "Statuses.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace {

/** The add function of a kind that takes an argument document and nothing else. */
template <typename Record>
void* add( const Plugin& plugin, const ObjectEntry& object ) {
   auto function = plugin.entry<Record*( const char* )>( fmt::format( "ql_{}_add", object.kind->name ) );
   return function( object.args.c_str() );
}

/** Of these kinds it only counts that an object could be made. */
Reading readNothing( void*, const ObjectEntry& ) { return { {}, "ok", {} }; }

template <typename Record>
constexpr Kind plainKind( std::string_view name, std::string_view title ) {
   return { name, title, {}, add<Record>, readNothing };
}

constexpr auto systemKind = plainKind<ql_system>( "system", "System" );
constexpr auto fanKind = plainKind<ql_fan>( "fan", "Fans" );
constexpr auto psuKind = plainKind<ql_psu>( "psu", "Power supplies" );
constexpr auto slotKind = plainKind<ql_slot>( "slot", "Slots" );
constexpr auto xcvrKind = plainKind<ql_xcvr>( "xcvr", "Transceivers" );
constexpr auto poePortKind = plainKind<ql_poe_port>( "poe_port", "PoE ports" );
constexpr auto ledKind = plainKind<ql_led>( "led", "LEDs" );
constexpr auto gpioKind = plainKind<ql_gpio>( "gpio", "GPIOs" );

constexpr std::array allKinds = { &systemKind, &tempSensorKind, &fanKind, &psuKind, &slotKind, &xcvrKind,
   &poePortKind, &ledKind, &gpioKind };

} // namespace

std::span<const Kind* const> kinds() { return allKinds; }

const Kind* findKind( std::string_view name ) {
   auto found =
      std::find_if( allKinds.begin(), allKinds.end(), [=]( auto kind ) { return kind->name == name; } );
   return found == allKinds.end() ? nullptr : *found;
}

Failure readFailure( std::string_view what, ql_status status ) {
   auto reason = HostServices::lastLine();
   return { status,
      fmt::format( "cannot read the {}: {}", what, reason.empty() ? wordsOf( status ).meaning : reason ) };
}
