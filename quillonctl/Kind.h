#ifndef KIND_H
#define KIND_H

#include "Errors.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class Plugin;
struct Command;
struct Kind;

/** An object as objects.json asks for it. */
struct ObjectEntry {
   const Kind* kind;
   std::string name;
   /** Thresholds in degrees Celsius; only temperature sensors have them. */
   std::optional<double> alert;
   std::optional<double> critical;
   /** Speed at full drive, in revolutions per minute; only fans have it. */
   std::optional<int> maxRpm;
   /** The device of the topology; a system object has none. */
   std::optional<uint32_t> did;
   /** The argument document. The library may go on reading it for as long as the process lives. */
   std::string args;
};

/** A column of the table of a kind, and a member of its JSON objects. */
struct Field {
   std::string_view key;
   /** Empty for a text that is too long for a table. */
   std::string_view heading;
   std::string_view unit = {};
   /** Decimals of a number. */
   int decimals = 0;
};

/** Something that is known or not: a number, a yes or no, or a text. */
using Value = std::variant<std::monostate, double, bool, std::string>;

/** What is known of an object at one time. */
struct Reading {
   /** One for each field. */
   std::vector<Value> values;
   /** A word such as "ok"; "failed" with a failure. */
   std::string_view state;
   std::optional<Failure> failure;
};

/** All objects of a kind in a line or two, where they are too many to be shown unasked. */
struct Summary {
   /** Reads of an object what the summary needs, and the fields of the kind as far as that tells them. */
   Reading ( *read )( void* record, const ObjectEntry& object );
   std::string ( *text )( const std::vector<const Reading*>& readings );
};

/** Something that an operation of the library waits for. */
struct Step {
   /** How the trace line begins that the library gives before it. */
   std::string_view trace;
   std::string_view words;
   /** How long it takes. */
   unsigned seconds;
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
   /** The word that commands for objects of this kind begin with, if there are any. */
   std::string_view command = {};
   /** What these commands are for, in a few words. */
   std::string_view help = {};
   std::span<const Command> commands = {};
   /** Whether the library works on the platform's CPLD for such an object, which it finds by its label. */
   bool usesCpld = false;
   /** Whether there is but one such object, which commands do not name. */
   bool isSingle = false;
   /** Null for a kind whose objects are always shown. */
   const Summary* summary = nullptr;
   /** The waits of its operations, for somebody who looks on; without any, nothing is shown of them. */
   std::span<const Step> steps = {};
   /** Whether its device takes a request and gives the reply later, so that two hosts would mix them up. */
   bool needsSoleUse = false;
};

/** All kinds, in the order of the output. */
std::span<const Kind* const> kinds();

/** The step that a trace line begins, or null. */
const Step* findStep( std::string_view line );

/** The kind of a name, or null. */
const Kind* findKind( std::string_view name );

extern const Kind systemKind;
extern const Kind tempSensorKind;
extern const Kind fanKind;
extern const Kind slotKind;
extern const Kind xcvrKind;
extern const Kind ledKind;
extern const Kind poePortKind;
extern const Kind gpioKind;

#endif
