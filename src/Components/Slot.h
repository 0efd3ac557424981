#ifndef COMPONENTS_SLOT_H
#define COMPONENTS_SLOT_H

#include "quillon/ql.h"

#include <cstdint>
#include <map>
#include <string>

namespace Component::LogicalDevice {

/** A slot, such as a fan tray's, as the host sees it. */
class Slot {
public:
   /** @param devArgs argument text of the host, not owned; it must outlive the slot */
   Slot( uint8_t id, const std::map<std::string, std::string>& driverArgs, const char* devArgs );
   virtual ~Slot() = default;
   /** @param text a new text from asprintf for the host to free; its meaning is the driver's */
   virtual ql_status getPresence( char** text ) = 0;

   static ql_status getPresenceCallback( ql_slot* record, char** text );
   static const ql_slot_ops ops_;

   ql_slot record;
   /** Counted from 0. */
   uint8_t id;
   std::map<std::string, std::string> driverArgs;
   const char* devArgs;
   /** Part of the layout that hosts know; nothing uses it. */
   std::string reserved;
};

} // namespace Component::LogicalDevice

#endif
