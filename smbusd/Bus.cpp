#include "Bus.h"

#include "Address.h"

#include <fmt/format.h>

namespace Smbusd {

std::string describe( const Outcome& outcome ) {
   auto words = I2c::describe( outcome.result );
   return outcome.detail.empty() ? words : fmt::format( "{} ({})", words, outcome.detail );
}

BusKey busOf( const Smbus::Request& request ) {
   auto address = decodeAddress( request.address() );
   return { request.mastertype(), request.pciaddress(), address.accelerator, address.bus };
}

std::string describe( const BusKey& key ) {
   return fmt::format( "bus {} ({}, pci 0x{:x}, accelerator {})", key.bus,
      Smbus::MasterType_Name( key.master ), key.pci, key.accelerator );
}

} // namespace Smbusd
