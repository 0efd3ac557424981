#include "HostServices.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ostream>

void ql_timer::fire() {
   armed = false;
   function( argument );
}

namespace Host {

std::vector<TraceLine> traces;
std::vector<std::unique_ptr<ql_timer>> timers;
int timerSetResult = 0;
bool timerAddFails = false;
bool echoTraces = false;

std::ostream& operator<<( std::ostream& stream, const TraceLine& line ) {
   return stream << line.level << ": " << line.text;
}

std::vector<std::string> tracesOf( int level ) {
   std::vector<std::string> lines;
   for ( auto& line : traces ) {
      if ( line.level == level ) {
         lines.push_back( line.text );
      }
   }
   return lines;
}

bool hasTraced( int level, const std::string& text ) {
   return std::find( traces.begin(), traces.end(), TraceLine { level, text } ) != traces.end();
}

void reset() {
   traces.clear();
   timers.clear();
   timerSetResult = 0;
   timerAddFails = false;
   echoTraces = false;
}

} // namespace Host

void ql_trace( int level, const char* format, ... ) {
   va_list args;
   va_start( args, format );
   char* text = nullptr;
   auto length = vasprintf( &text, format, args );
   va_end( args );
   if ( length < 0 ) {
      abort();
   }
   Host::traces.push_back( { level, text } );
   if ( Host::echoTraces ) {
      fprintf( stderr, "%d: %s\n", level, text );
   }
   free( text );
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   if ( Host::timerAddFails ) {
      return nullptr;
   }
   Host::timers.push_back( std::make_unique<ql_timer>( ql_timer { function, argument, {} } ) );
   return Host::timers.back().get();
}

int ql_timer_set( ql_timer* timer, uint32_t interval ) {
   timer->settings.push_back( interval );
   if ( Host::timerSetResult == 0 ) {
      timer->armed = true;
   }
   return Host::timerSetResult;
}

void ql_timer_delete( ql_timer* timer ) { timer->deleted = true; }
