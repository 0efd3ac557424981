#ifndef COMMAND_H
#define COMMAND_H

#include "Kind.h"

/** The words behind the word of a command. */
using Arguments = std::vector<std::string>;

/** A word that a command takes: one of some, or a free one. */
struct Argument {
   /** As help shows a free one: "RPM". */
   std::string_view name = {};
   std::vector<std::string> choices = {};
   /** What a free one must be if a text is not: "a whole number from 0 to 20000"; nothing for a right one. */
   std::string ( *wanted )( const ObjectEntry& object, const std::string& text ) = nullptr;
};

/** Which objects a command is for. */
enum class Scope {
   /** Those that its first word, a name or a shell pattern, is for. */
   Named,
   /** All of the kind; the command's own word comes first. */
   All,
   /** The same, but of those that share a device the first. */
   OnePerDevice
};

/**
 * Something that quillonctl does with objects: `fan NAME rpm 9000`. To add one, give its kind another row,
 * in the file of the kind; a kind without commands gets a table of them, named in its Kind, and the word that
 * they begin with. Help, checks of the words, completion, and output in text and JSON follow from the row.
 */
struct Command {
   /** The word behind the object's name; none for a command that begins with its arguments. */
   std::string_view word;
   std::vector<Argument> arguments;
   std::string_view help;
   /** What the reading holds. */
   std::span<const Field> fields;
   /**
    * Does it.
    * @param record not null
    * @param arguments as many as the command takes, each of them right
    * @return a value for each field, or a failure
    */
   Reading ( *run )( void* record, const ObjectEntry& object, const Arguments& arguments );
   /** What to say when it is done, of {0}, the object's name, and {1}, the arguments; else the values show.
    */
   std::string_view done = {};
   Scope scope = Scope::Named;
   /** Whether a reading is worth a row of the table; none where each is. */
   bool ( *isWorthARow )( const Reading& reading ) = nullptr;
};

#endif
