#ifndef CHECK_H
#define CHECK_H

#include "Inventory.h"
#include "JsonFile.h"

#include <string>
#include <vector>

/**
 * Checks what a schema cannot say, in documents that keep theirs. A finding is what breaks a contract of the
 * library, or can only be a mistake.
 */
namespace Check {

void topology( const JsonFile& file, const Inventory& inventory, std::vector<Finding>& findings );

/** Checks the objects, which stand on a topology. */
void objects( const JsonFile& file, const Inventory& topology, std::vector<Finding>& findings );

/** Checks an argument document, which a device of the topology with a driver is as well. */
void arguments( const JsonFile& file, const std::string& pointer, const rapidjson::Value& args,
   std::vector<Finding>& findings );

/** Checks what the driver of an object reads of its argument document, one that the library has. */
void driverArguments( const JsonFile& file, const std::string& pointer, const std::string& kind,
   const rapidjson::Value& args, std::vector<Finding>& findings );

/** Whether an argument document takes away the device's access to hardware. */
bool deniesHam( const rapidjson::Value& args );

} // namespace Check

#endif
