#include "Gant.h"

namespace Gant {

LogHandle::LogHandle( const LogDescriptor* message, double interval, double ratio, unsigned a, unsigned b )
   : descriptor( message ), seconds( interval ), rate( ratio ), first( a ), second( b ) {}

LogHandle::~LogHandle() = default;

Lumo::String LogMsg::genRecommendedAction( const Lumo::String& levels ) {
   static const char* const actions[] = {
      "No action is required.",
      "If this event recurs, contact your customer support representative.",
      "Contact your customer support representative.",
   };
   Lumo::String text;
   for ( auto level = levels.charPtr(); *level; ++level ) {
      if ( *level >= 1 && *level <= 3 ) {
         text += actions[*level - 1];
      }
   }
   return text;
}

Lumo::String RecommendedActionMacro::text( unsigned level ) {
   const char levels[] = { static_cast<char>( level ), '\0' };
   return LogMsg::genRecommendedAction( levels );
}

} // namespace Gant
