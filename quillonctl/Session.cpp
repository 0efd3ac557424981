#include "Session.h"

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
   try {
      return Supervisor::run( inChild, onCrash );
   } catch ( const HostError& error ) {
      return withoutLibrary( error );
   }
}
