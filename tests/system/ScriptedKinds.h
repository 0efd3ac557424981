#ifndef SCRIPTED_KINDS_H
#define SCRIPTED_KINDS_H

#include "Script.h"

#include <map>

/** What the files of the scripted plug-in's kinds share. */

/** The scripts by record: a system has no pointer for its own. */
std::map<const void*, Script>& scripts();

inline const Script& scriptOfRecord( const void* record ) { return scripts().at( record ); }

/** Traces what is written, and does what the script says. */
ql_status set( const void* record, const char* what, int value );

template <typename Record, typename Ops>
Record* addScripted( const char* args, const Ops* ops ) {
   auto script = scriptOf( args );
   if ( !begin( script ) ) {
      return nullptr;
   }
   // As with a real plug-in, objects live until the process ends.
   auto record = new Record {};
   record->ops = script.word == "noTable" ? nullptr : ops;
   scripts()[record] = script;
   return record;
}

#endif
