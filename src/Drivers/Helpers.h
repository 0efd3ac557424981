#ifndef DRIVERS_HELPERS_H
#define DRIVERS_HELPERS_H

#include "quillon/ql.h"

#include <cstdint>
#include <string>

namespace Component {
class HardwareDevice;

namespace LogicalDevice {
class Gpio;
}
} // namespace Component

namespace Drivers {

/**
 * Fills in a template text whose placeholders are keys in curly braces. Order of calls: start, any number of
 * set, then one of str and charPtr. A broken order or a key that the template does not hold ends the process.
 */
class FormatFdl {
public:
   explicit FormatFdl( const std::string& text );

   /** Begins anew with the bare template. */
   void start();
   /** Replaces every placeholder of a key. The value must not hold the placeholder itself. @return true */
   bool set( std::string key, std::string value );
   std::string str();
   /** The text itself, owned by this object and good until the next start. */
   const char* charPtr();

private:
   bool active_ = false;
   std::string template_;
   std::string result_;
};

/** Whether all bytes add up to zero modulo 256. */
bool zeroChecksum( std::string& data );

/** The text without blanks and tabs at its ends. */
std::string trim( const std::string& text );

/**
 * The device of a topology label, made if need be; never null. An unknown label ends the process.
 * @param driverName driver of a device that the topology gives none; kept from then on
 */
Component::HardwareDevice* getHardwareDeviceByLabel( const char* label, std::string driverName );

/** A new register bit on a device, owned by the caller; never null. */
Component::LogicalDevice::Gpio* getRegGpioForDevice(
   Component::HardwareDevice* device, uint32_t reg, uint32_t bit );
Component::LogicalDevice::Gpio* getRegGpioForDevice( const char* label, uint32_t reg, uint32_t bit );

/**
 * Runs a shell command under a time limit and blocks until it ends.
 * @param output what the command wrote, also when it failed
 * @retval QL_STATUS_IO_ERROR the time was up
 * @retval QL_STATUS_FAILED it could not run, was killed, or ended with another code than 0
 */
ql_status runCmd( const char* cmd, std::string& output, unsigned long timeoutSeconds );

/**
 * An argument text with one more name in its "driverArgs".
 * @param result on success, a text that the caller frees
 * @return false when `json` is no JSON
 */
bool insertDriverArg( const char* json, char** result, const char* key, const char* value );

} // namespace Drivers

#endif
