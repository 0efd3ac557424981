#ifndef CALLS_H
#define CALLS_H

#include "Command.h"
#include "HostServices.h"
#include "Kind.h"
#include "Plugin.h"

#include <fmt/format.h>

/** How the files of the kinds call the library. */
namespace Calls {

/** The add function of a kind that takes an argument document and nothing else. */
template <typename Record>
void* add( const Plugin& plugin, const ObjectEntry& object ) {
   auto function = plugin.entry<Record*( const char* )>( fmt::format( "ql_{}_add", object.kind->name ) );
   return function( object.args.c_str() );
}

/** Whether a table has a callback: the slot must lie within the table's size and hold a pointer. */
template <typename Ops, typename Slot>
bool hasSlot( const Ops* ops, Slot Ops::*slot ) {
   if ( !ops ) {
      return false;
   }
   auto begin = reinterpret_cast<const char*>( ops );
   auto end = reinterpret_cast<const char*>( &( ops->*slot ) + 1 );
   return static_cast<size_t>( end - begin ) <= ops->size && ops->*slot;
}

/** Calls back through a table. @return QL_STATUS_NOT_SUPPORTED where the table has no such callback */
template <typename Ops, typename... Parameters, typename... Arguments>
ql_status call( const Ops* ops, ql_status ( *Ops::*slot )( Parameters... ), Arguments... arguments ) {
   HostServices::forgetLine();
   return hasSlot( ops, slot ) ? ( ops->*slot )( arguments... ) : QL_STATUS_NOT_SUPPORTED;
}

/**
 * Why a call failed: what the plug-in has traced of it, or else what the status means.
 * @param action what could not be done: "read the temperature"
 */
Failure failure( std::string_view action, ql_status status );

/** What a command gives that failed. */
Reading failed( const Failure& failure );

} // namespace Calls

#endif
