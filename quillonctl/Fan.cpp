#include "Calls.h"

#include <charconv>

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

Reading readSpeed( void* record, const ObjectEntry& object, const Arguments& ) {
   auto reading = read( record, object );
   reading.values.resize( 1 );
   return reading;
}

/** A speed that the fan can't have would be cut to 8 bits in the chip, which makes a slow one of it. */
std::string wantedSpeed( const ObjectEntry& fan, const std::string& text ) {
   int rpm = -1;
   auto end = text.data() + text.size();
   auto [stop, error] = std::from_chars( text.data(), end, rpm );
   auto isRight = error == std::errc() && stop == end && rpm >= 0 && rpm <= *fan.maxRpm;
   return isRight ? "" : fmt::format( "a whole number from 0 to {}", *fan.maxRpm );
}

constexpr Field requestFields[] = { { "requested_rpm", "REQUESTED", "rpm" } };

/** Takes effect in the course of seconds, which is not waited for. */
Reading requestSpeed( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto fan = static_cast<ql_fan*>( record );
   auto rpm = std::stoi( arguments.front() );
   auto status = Calls::call( fan->ops, &ql_fan_ops::set_rpm, fan, rpm );
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "set the speed", status ) );
   }
   return { { static_cast<double>( rpm ) }, "ok", {} };
}

const Command commands[] = {
   { "rpm", {}, "Shows the speed", std::span( fields, 1 ), readSpeed },
   { "rpm", { { .name = "RPM", .wanted = wantedSpeed } }, "Asks for a speed", requestFields, requestSpeed,
      "{0} was asked for {1} rpm" },
};

} // namespace

const Kind fanKind = { "fan", "Fans", fields, Calls::add<ql_fan>, read, "fan",
   "Shows or sets the speed of a fan", commands };
