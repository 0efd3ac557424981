#include "Calls.h"

namespace {

constexpr Field fields[] = { { "rpm", "SPEED", "rpm" }, { "max_rpm", "MAXIMUM", "rpm" } };

/**
 * Whether a fan hardly turns. A tachometer counts no further than to some slow speed, so that a fan that is
 * blocked seems to turn at that.
 */
bool isStalled( int rpm, int maxRpm ) { return rpm < maxRpm / 10; }

Failure speedFailure( ql_status status ) {
   if ( status == QL_STATUS_DEVICE_ERROR ) {
      return { status, "cannot read the speed: the fan stands still, or its tachometer does not count" };
   }
   return Calls::failure( "read the speed", status );
}

Reading read( void* record, const ObjectEntry& object ) {
   Reading reading { { {}, static_cast<double>( *object.maxRpm ) }, "failed", {} };
   auto fan = static_cast<ql_fan*>( record );
   if ( !fan ) {
      return reading;
   }
   int rpm = 0;
   auto status = Calls::call( fan->ops, &ql_fan_ops::get_rpm, fan, &rpm );
   if ( status != QL_STATUS_OK ) {
      reading.failure = speedFailure( status );
      return reading;
   }
   reading.values.front() = static_cast<double>( rpm );
   reading.state = isStalled( rpm, *object.maxRpm ) ? "stalled" : "ok";
   return reading;
}

} // namespace

const Kind fanKind = { "fan", "Fans", fields, Calls::add<ql_fan>, read };
