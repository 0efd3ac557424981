#include "Components/Fan.h"

namespace Component::LogicalDevice {

const ql_fan_ops Fan::ops_ = {
   .size = sizeof( ql_fan_ops ),
   .debug_info = debugInfoCallback,
   .get_rpm = getRpmCallback,
   .set_rpm = setRpmCallback,
};
static_assert( sizeof( ql_fan_ops ) == 32 );

Fan::Fan() {
   record.ops = &ops_;
   record.owner = this;
}

ql_status Fan::debugInfo( char** ) const { return QL_STATUS_OK; }

ql_status Fan::debugInfoCallback( const ql_fan* record, char** text ) {
   ql_trace( 4, "%s(%p)", "debugInfoCallback", static_cast<const void*>( record ) );
   return static_cast<const Fan*>( record->owner )->debugInfo( text );
}

ql_status Fan::getRpmCallback( ql_fan* record, int* rpm ) {
   ql_trace( 4, "%s(%p)", "getRpmCallback", static_cast<void*>( record ) );
   return static_cast<Fan*>( record->owner )->getRpm( rpm );
}

ql_status Fan::setRpmCallback( ql_fan* record, int rpm ) {
   ql_trace( 4, "%s(%p, %d)", "setRpmCallback", static_cast<void*>( record ), rpm );
   return static_cast<Fan*>( record->owner )->setRpm( rpm );
}

} // namespace Component::LogicalDevice
