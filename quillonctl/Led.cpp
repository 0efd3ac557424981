#include "Calls.h"

#include <algorithm>

namespace {

// The library sets LEDs and does not read them back.
constexpr Field fields[] = { { "settable", "SETTABLE" } };

Reading read( void* record, const ObjectEntry& ) {
   auto led = static_cast<ql_led*>( record );
   if ( !led ) {
      return { { {} }, "failed", {} };
   }
   return { { Calls::hasSlot( led->ops, &ql_led_ops::set_light_setting ) }, "ok", {} };
}

/** There is nothing to read of an LED that would be worth a row for each. */
std::string summarise( const std::vector<const Reading*>& readings ) {
   auto failed = std::count_if(
      readings.begin(), readings.end(), []( auto reading ) { return reading->failure.has_value(); } );
   auto text = fmt::format( "{} LED{}", readings.size(), readings.size() == 1 ? "" : "s" );
   return failed == 0 ? text + ": ok\n" : fmt::format( "{}: {} failed\n", text, failed );
}

constexpr Summary summary { read, summarise };

/** In the order of ql_led_status. */
const std::vector<std::string> settings = { "off", "good", "warning", "bad", "inactive", "unknown", "beacon",
   "release" };

constexpr Field settingFields[] = { { "setting", "SETTING" } };

Reading set( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto led = static_cast<ql_led*>( record );
   auto& setting = arguments.front();
   auto number = std::find( settings.begin(), settings.end(), setting ) - settings.begin();
   auto status =
      Calls::call( led->ops, &ql_led_ops::set_light_setting, led, static_cast<ql_led_status>( number ) );
   if ( status == QL_STATUS_INVALID_ARGUMENT ) {
      return Calls::failed( { status, fmt::format( "this LED has no setting {}", setting ) } );
   }
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "set the LED", status ) );
   }
   return { { setting }, "ok", {} };
}

const Command commands[] = {
   { "", { { .choices = settings } }, "Sets it", settingFields, set, "{0} was set to {1}" },
};

} // namespace

const Kind ledKind = { "led", "LEDs", fields, Calls::add<ql_led>, read, "led", "Sets an LED", commands, false,
   false, &summary };
