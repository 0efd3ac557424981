#ifndef DRIVERS_DRIVERS_H
#define DRIVERS_DRIVERS_H

#include "Ham/HamAddress.h"

#include <rapidjson/fwd.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace Component {
class DeviceBase;
}

namespace Ham {
class Ham;
}

namespace Drivers {

/**
 * The record by which a device is asked for: which device, which driver, how it is addressed, and the
 * driver's named values. It is read from a JSON object, the argument text of an add function or a device of
 * the topology document.
 */
struct DriverArgs {
   /** `uid` of a record that names no component. */
   static constexpr uint32_t noUid = 0xFFFFFFFF;

   /** Key of Drivers::drivers; empty when the document says null. */
   std::string driver;
   uint32_t uid = 0;
   uint32_t did = 0;
   /** Not read for a multi-device. */
   HamAddress address {};
   /** The driver's named values as text, whatever their JSON type was. */
   std::map<std::string, std::string> driverArgs;
   /** The text that the record was parsed from, not owned; null for a record made from a JSON value. */
   const char* jsonText = nullptr;
   bool isMultiDevice = false;
   /** Argument text of each part of a multi-device, by the part's key. */
   std::map<std::string, std::string> multiDeviceArgs;
   bool provideHam = false;

   /** False, after a line for ql_trace, when the text is no JSON; the record then keeps what it had. */
   bool parseJSON( const char* text );
   /** A value that breaks the document's rules ends the process. */
   void parseJSON( const rapidjson::Value& json );
   static std::shared_ptr<DriverArgs> fromJSON( const rapidjson::Value& json );
};

using DriverFactory = std::function<Component::DeviceBase*( const DriverArgs&, Ham::Ham* )>;

/** The drivers of this library by name; filled at load. */
extern std::map<std::string, DriverFactory> drivers;

} // namespace Drivers

#endif
