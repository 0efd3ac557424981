#include "Calls.h"

#include <cstdlib>

namespace {

constexpr Field fields[] = {
   { "present", "PRESENT" },
   { "model", "MODEL" },
   { "serial", "SERIAL" },
   { "identification", "" },
};

/** What an identification text assigns: KEY = 'VALUE' in a line of its own. The value may hold quotes. */
Value assigned( const std::string& text, const std::string& key ) {
   auto begin = text.find( "\n" + key + " = '" );
   if ( begin == std::string::npos ) {
      return {};
   }
   begin = text.find( '\'', begin ) + 1;
   auto end = text.find( "'\n", begin );
   return end == std::string::npos ? Value {} : text.substr( begin, end - begin );
}

Reading read( void* record, const ObjectEntry& ) {
   Reading reading { { {}, {}, {}, {} }, "failed", {} };
   auto slot = static_cast<ql_slot*>( record );
   if ( !slot ) {
      return reading;
   }
   char* text = nullptr;
   auto status = Calls::call( slot->ops, &ql_slot_ops::get_presence, slot, &text );
   if ( status != QL_STATUS_OK ) {
      reading.failure = Calls::failure( "read the presence", status );
      return reading;
   }
   std::string identification = text ? text : "";
   free( text );
   reading.values = { true, assigned( identification, "fanTray.modelName" ),
      assigned( identification, "fanTray.serialNum" ), identification };
   reading.state = "ok";
   return reading;
}

const Command commands[] = {
   { "", {}, "Shows what is in it", fields,
      []( auto record, auto& slot, auto& ) { return read( record, slot ); } },
};

} // namespace

const Kind slotKind = { "slot", "Slots", fields, Calls::add<ql_slot>, read, "slot", "Shows what is in a slot",
   commands };
