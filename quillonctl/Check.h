#ifndef CHECK_H
#define CHECK_H

#include "Inventory.h"
#include "JsonFile.h"

#include <string>
#include <vector>

/**
 * Checks the documents of a board: against their schemas, and what a schema cannot say. An error is what
 * breaks a contract of the library, what it refuses, or what can only be a mistake; a warning is what it
 * takes for something else than the document seems to say.
 */
namespace Check {

/** Checks topology.json and objects.json; null for one that could not be parsed. */
void documents( const JsonFile* topology, const JsonFile* objects, Findings& findings );

/** Checks the description of the emulated board. */
void emulator( const JsonFile& file, Findings& findings );

/** Checks the map of the topology's busses to adapters. */
void adapters( const JsonFile& file, Findings& findings );

/** From the topology on; in each file from top to bottom. */
void sort( Findings& findings );

/** A document under check. */
class Subject {
public:
   /** @param findings what is known of its schema's breaches; the others are added */
   Subject( const JsonFile& file, Findings& findings );

   const JsonFile& file() const { return file_; }

   /** Whether neither the value at a place nor anything in it breaks the schema. */
   bool isSound( const std::string& pointer ) const;

   /** Whether nothing at all does. */
   bool isSound() const { return broken_.empty(); }

   void error( const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   void warning(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   void warningAtKey(
      const std::string& pointer, const std::string& reason, const std::string& repair = "" ) const;
   /** Warns of the keys in a value that the schema at `place` does not have. */
   void unread( const std::string& place, const rapidjson::Value& value, const std::string& pointer ) const;

private:
   const JsonFile& file_;
   Findings& findings_;
   std::vector<std::string> broken_;
};

/** An object of a device, as far as it keeps its schema. */
struct Object {
   std::string pointer;
   std::string kind;
   std::string name;
   /** The argument document. */
   const rapidjson::Value* args;
   uint32_t did;
   /** Empty for none. */
   std::string driver;
};

void topology( const Subject& subject, const Inventory& inventory );

/** Checks that a device can be reached, for somebody at a place in a document who wants it. */
void reach( const Subject& subject, const std::string& pointer, const Inventory::Device& device );

/**
 * Checks the objects.
 * @param topology null when there is none to go by
 * @return those of devices
 */
std::vector<Object> objects( const Subject& subject, const Inventory* topology );

/** Checks what objects have in common with each other and should not, or the other way round. */
void neighbours( const Subject& subject, const std::vector<Object>& objects );

/** Checks an argument document, which a device of the topology with a driver is as well. */
void arguments( const Subject& subject, const std::string& pointer, const rapidjson::Value& args );

/** Checks the values that the driver of an object reads of its argument document. */
void driverArguments( const Subject& subject, const Object& object );

bool isMultiDevice( const rapidjson::Value& args );

/** Whether an argument document takes away the device's access to hardware. */
bool deniesHam( const rapidjson::Value& args );

/** A number that the library keeps `bits` bits of, if it is one: an integer, or a text of its digits. */
std::optional<int64_t> kept( const rapidjson::Value& value, int bits );

} // namespace Check

#endif
