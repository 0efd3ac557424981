#ifndef KIND_H
#define KIND_H

#include "Errors.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class Plugin;
struct Kind;

/** An object as objects.json asks for it. */
struct ObjectEntry {
   const Kind* kind;
   std::string name;
   /** Thresholds in degrees Celsius; only temperature sensors have them. */
   std::optional<double> alert;
   std::optional<double> critical;
   /** The argument document. The library may go on reading it for as long as the process lives. */
   std::string args;
};

/** A column of the table of a kind, and a member of its JSON objects. */
struct Field {
   std::string_view key;
   std::string_view heading;
   std::string_view unit;
   int decimals;
};

/** What is known of an object at one time. */
struct Reading {
   /** One for each field of the kind; none where there is no value. */
   std::vector<std::optional<double>> values;
   /** A word such as "ok"; "failed" with a failure. */
   std::string_view state;
   std::optional<Failure> failure;
};

/** A kind of object: how it is made and how it is read. */
struct Kind {
   /** As in objects.json and in the names of the entry functions. */
   std::string_view name;
   std::string_view title;
   std::span<const Field> fields;
   /** Calls the add function of the kind. @return the record, null on failure */
   void* ( *add )( const Plugin& plugin, const ObjectEntry& object );
   /**
    * Reads an object through its table.
    * @param record null for an object that could not be made, of which the settings alone are known
    */
   Reading ( *read )( void* record, const ObjectEntry& object );
};

/** All kinds, in the order of the output. */
std::span<const Kind* const> kinds();

/** The kind of a name, or null. */
const Kind* findKind( std::string_view name );

extern const Kind tempSensorKind;

/** Why a reading failed: what the plug-in has traced of it, or else what the status means. */
Failure readFailure( std::string_view what, ql_status status );

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

#endif
