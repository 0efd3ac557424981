#include "Calls.h"

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

} // namespace

const Kind ledKind = { "led", "LEDs", fields, Calls::add<ql_led>, read };
