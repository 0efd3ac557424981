#ifndef GANT_H
#define GANT_H

#include "Lumo.h"

#include <cstdint>

/** The switch system's logging library, as far as the platform library uses it. */
namespace Gant {

/** A log message that a library declares, by a record in its section .noctal_logmsg. The texts are constants.
 */
struct LogDescriptor {
   const char* name;
   const char* format;
   const char* explanation;
   const char* recommendedAction;
   uint64_t number;
};

static_assert( sizeof( LogDescriptor ) == 40 );

/** What a library logs a declared message through. */
class LogHandle {
public:
   /**
    * @param descriptor not owned; must outlive the handle
    * @param seconds, rate, first, second are stored for the logging library
    */
   LogHandle( const LogDescriptor* descriptor, double seconds, double rate, unsigned first, unsigned second );
   ~LogHandle();
   LogHandle( const LogHandle& ) = delete;
   LogHandle& operator=( const LogHandle& ) = delete;

   const LogDescriptor* descriptor;
   double seconds;
   double rate;
   unsigned first;
   unsigned second;
};

class LogMsg {
public:
   /** @param levels a text whose characters are levels, the bytes 0x01 to 0x03 */
   static Lumo::String genRecommendedAction( const Lumo::String& levels );
};

class RecommendedActionMacro {
public:
   /** What a person is to do after an event of a level from 1 to 3. */
   static Lumo::String text( unsigned level );
};

} // namespace Gant

#endif
