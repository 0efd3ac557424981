#include "Session.h"

#include "Waiting.h"

#include <unistd.h>

int Session::run( const Work& work, const WithoutLibrary& withoutLibrary ) {
   auto inChild = [&]( Supervisor::Progress& progress ) {
      try {
         Host host( options_.plugin, board_, objects_, crashes_, progress );
         return work( host, progress );
      } catch ( const HostError& error ) {
         return withoutLibrary( error );
      }
   };
   auto onCrash = [&]( const Supervisor::Crash& crash ) {
      crashes_[crash.object] = Failure { QL_STATUS_FAILED, crash.reason };
   };
   Waiting waiting( objects_ );
   // Among trace lines it would be lost, and they tell more.
   auto isShown = isatty( STDERR_FILENO ) && options_.traceLevel < 0;
   auto onTick = [&]( Supervisor::Progress& progress ) {
      auto text = isShown ? waiting.text( progress.object, progress.step ) : "";
      if ( !text.empty() ) {
         progress.shown.show( text );
      }
   };
   try {
      return Supervisor::run( inChild, onCrash, onTick );
   } catch ( const HostError& error ) {
      return withoutLibrary( error );
   }
}
