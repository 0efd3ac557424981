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

} // namespace

const Kind gpioKind = { "gpio", "GPIOs", fields, Calls::add<ql_gpio>, read };
