#ifndef SMBUSD_I2C_DEV_ADAPTER_BACKEND_H
#define SMBUSD_I2C_DEV_ADAPTER_BACKEND_H

#include "Kernel.h"
#include "MapFile.h"

#include "smbusd/Bus.h"
#include "smbusd/EventLoop.h"

#include <filesystem>
#include <map>
#include <memory>

namespace Smbusd::I2cDev {

/** The kernel's I2C adapters, each with a thread of its own, since their transfers block. */
class AdapterBackend : public Backend {
public:
   AdapterBackend( EventLoop& loop, Kernel& kernel, const BusMap& map );
   ~AdapterBackend() override;

   Bus* find( const BusKey& key ) override;

private:
   /** Busses that share an adapter share its queue and its thread. */
   std::map<AdapterReference, std::unique_ptr<Bus>> adapters_;
   std::map<BusKey, Bus*> busses_;
};

/** Logs which adapters of a map can't be opened now, and why. They are tried anew when they are used. */
void warnOfUnusable( Kernel& kernel, const BusMap& map, const std::filesystem::path& devices = sysfsDevices );

} // namespace Smbusd::I2cDev

#endif
