#ifndef SMBUSD_I2C_DEV_DEVICE_H
#define SMBUSD_I2C_DEV_DEVICE_H

#include "Adapters.h"
#include "Kernel.h"

#include "smbusd/Bus.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace Smbusd::I2cDev {

/**
 * The device of an adapter. It is opened by the first transfer, and anew by the next one after a failure that
 * may mean that the adapter is gone; a name is looked up each time. Transfers block.
 */
class Device {
public:
   Device( Kernel& kernel, AdapterReference adapter, std::filesystem::path devices = sysfsDevices );
   ~Device();
   Device( const Device& ) = delete;
   Device& operator=( const Device& ) = delete;

   /** "i2c-3"; for an adapter that is known by a name, and has not been found so far, the name. */
   std::string name() const;

   Outcome transfer( Operation& operation );

private:
   Outcome open();
   Outcome findNumber();
   void close();
   Outcome failed( int error );

   Kernel& kernel_;
   const AdapterReference adapter_;
   const std::filesystem::path devices_;
   std::string name_;
   int fd_ = -1;
   unsigned long functions_ = 0;
};

} // namespace Smbusd::I2cDev

#endif
