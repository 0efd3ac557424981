#include "Components/Slot.h"

namespace Component::LogicalDevice {

const ql_slot_ops Slot::ops_ = {
   .size = sizeof( ql_slot_ops ),
   .get_presence = getPresenceCallback,
};
static_assert( sizeof( ql_slot_ops ) == 16 );

Slot::Slot( uint8_t slotId, const std::map<std::string, std::string>& args, const char* argsText )
   : id( slotId ), driverArgs( args ), devArgs( argsText ) {
   record.ops = &ops_;
   record.owner = this;
}

ql_status Slot::getPresenceCallback( ql_slot* record, char** text ) {
   ql_trace( 4, "%s(%p)", "getPresenceCallback", static_cast<void*>( record ) );
   return static_cast<Slot*>( record->owner )->getPresence( text );
}

} // namespace Component::LogicalDevice
