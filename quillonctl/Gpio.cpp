#include "Calls.h"

namespace {

constexpr Field fields[] = { { "value", "VALUE" } };

Reading read( void* record, const ObjectEntry& ) {
   Reading reading { { {} }, "failed", {} };
   auto gpio = static_cast<ql_gpio*>( record );
   if ( !gpio ) {
      return reading;
   }
   uint32_t value = 0;
   auto status = Calls::call( gpio->ops, &ql_gpio_ops::bit_read, gpio, &value );
   if ( status != QL_STATUS_OK ) {
      reading.failure = Calls::failure( "read the bit", status );
      return reading;
   }
   reading.values.front() = static_cast<double>( value );
   reading.state = "ok";
   return reading;
}

template <auto Slot, int value>
Reading write( void* record, const ObjectEntry&, const Arguments& ) {
   auto gpio = static_cast<ql_gpio*>( record );
   auto status = Calls::call( gpio->ops, Slot, gpio );
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "write the bit", status ) );
   }
   return { { static_cast<double>( value ) }, "ok", {} };
}

const Command commands[] = {
   { "get", {}, "Shows the bit", fields,
      []( auto record, auto& gpio, auto& ) { return read( record, gpio ); } },
   { "set", {}, "Makes it 1", fields, write<&ql_gpio_ops::bit_set, 1>, "{0} was set" },
   { "clear", {}, "Makes it 0", fields, write<&ql_gpio_ops::bit_clear, 0>, "{0} was cleared" },
};

} // namespace

const Kind gpioKind = { "gpio", "GPIOs", fields, Calls::add<ql_gpio>, read, "gpio",
   "Shows, sets or clears a bit", commands };
