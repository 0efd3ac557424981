#ifndef COMPONENTS_FAN_H
#define COMPONENTS_FAN_H

#include "quillon/ql.h"

namespace Component::LogicalDevice {

/** A fan as the host sees it; a driver reads and drives the chip. Revolutions per minute. */
class Fan {
public:
   Fan();
   virtual ~Fan() = default;
   /** A driver that writes `*text` allocates it with asprintf for the host to free. */
   virtual ql_status debugInfo( char** text ) const;
   virtual ql_status getRpm( int* rpm ) = 0;
   virtual ql_status setRpm( int rpm ) = 0;

   static ql_status debugInfoCallback( const ql_fan* record, char** text );
   static ql_status getRpmCallback( ql_fan* record, int* rpm );
   static ql_status setRpmCallback( ql_fan* record, int rpm );
   static const ql_fan_ops ops_;

   ql_fan record;
};

} // namespace Component::LogicalDevice

#endif
