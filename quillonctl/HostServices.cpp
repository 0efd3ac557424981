#include "HostServices.h"

#include "Errors.h"
#include "EventLoop.h"

#include "quillon/ql.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace HostServices {

namespace {

int shownLevel = -1;
LastLine ownLine {};
LastLine* kept = &ownLine;
std::string pollFailure;
std::function<void( const std::string& )> hear = []( auto& ) {};

/** Levels 0 to 3 tell of failures and of transport; above are entries of functions and register lines. */
constexpr int deepestKept = 3;

/** Beginnings of lines that only hand on a failure whose own line came before. */
constexpr const char* echoes[] = {
   "factory function returned a null object",
   "failed to create Ham",
   "failed to create HAM",
   "Factory function returned, couldn't create HAM",
   "failed to parse json object as a device",
   "DeviceBase::create() failed",
   "newSlot() failed",
   "newLed() failed",
   "newFan() failed",
   "newPsu() failed",
   "newSfpXcvr() failed",
   "newQsfpXcvr() failed",
   "newCmisXcvr() failed",
   "Error: setting fan ",
   "Reading Reset Reason Register FAILED",
   "Clearing Reset Reason Register FAILED",
   "Reading CPLD minor version Register FAILED",
   "Reading CPLD major version Register FAILED",
   "Updating reboot action config register to ",
   "Writing Reboot action config register FAILED",
   "Error: Failed to write to PoE chip",
   "Taking PoE chip out of reset failed.",
   "Current firmware revision ",
   "Skipping PoE firmware reprogram.",
};

/** The first and the last line of a poll that fails; those that tell why stand between them. */
constexpr const char* pollBegin = "SelvaneXcvr::updateRegisterCache()";
constexpr const char* pollEnd = "Failed to poll information for SelvaneXcvr";

/** Behind it an error code may stand, which is news. */
constexpr const char* readFailed = "Error: Failed to read PoE chip";

bool isEcho( const std::string& line ) {
   return line == readFailed || std::any_of( std::begin( echoes ), std::end( echoes ),
                                   [&]( auto echo ) { return line.starts_with( echo ); } );
}

void record( const std::string& line ) {
   auto end = line.copy( kept->text, sizeof( kept->text ) - 1 );
   kept->text[end] = '\0';
}

void take( int level, const std::string& line ) {
   hear( line );
   if ( level <= shownLevel ) {
      writeToErrors( fmt::format( "trace {}: {}\n", level, line ) );
   }
   if ( line == pollBegin ) {
      record( "" );
   } else if ( line == pollEnd ) {
      pollFailure = kept->text;
   } else if ( level <= deepestKept && !isEcho( line ) ) {
      record( line );
   }
}

} // namespace

void showTraces( int level ) { shownLevel = level; }

void recordIn( LastLine& line ) { kept = &line; }

void listen( std::function<void( const std::string& )> listener ) { hear = std::move( listener ); }

std::string lastLine() { return kept->text; }

void forgetLine() { record( "" ); }

std::string lastPollFailure() { return pollFailure; }

} // namespace HostServices

void ql_trace( int level, const char* format, ... ) {
   va_list args;
   va_start( args, format );
   char* text = nullptr;
   auto length = vasprintf( &text, format, args );
   va_end( args );
   if ( length < 0 ) {
      return;
   }
   std::string line( text, static_cast<size_t>( length ) );
   free( text );
   // A few of the lines bring a line end of their own.
   line.erase( line.find_last_not_of( '\n' ) + 1 );
   HostServices::take( level, line );
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   return eventLoop().add( function, argument );
}

int ql_timer_set( ql_timer* timer, uint32_t interval ) {
   eventLoop().set( timer, std::chrono::milliseconds( interval ) );
   return 0;
}

void ql_timer_delete( ql_timer* timer ) { eventLoop().remove( timer ); }
