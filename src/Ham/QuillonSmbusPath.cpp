#include "Ham/QuillonSmbusPath.h"

#include "Components/HardwareDevice.h"
#include "Drivers/Drivers.h"

#include <cassert>
#include <set>

namespace Ham {

Ham* QuillonSmbusHam::create( const Topology::Topology& topology, const Drivers::DriverArgs& args ) {
   QuillonSmbusDriverVisitor search;
   search.args = &args;
   topology.accept( &search );
   return search.ham;
}

Ham* QuillonSmbusHam::createOnBus(
   const Topology::Topology& topology, const Topology::Bus* bus, const uint32_t& address ) {
   QuillonSmbusBusIdVisitor search;
   search.bus = bus;
   search.address = &address;
   topology.accept( &search );
   return search.ham;
}

namespace {

/** Marks a mux chip while its device is made. One that needs itself would never come to an end. */
class MuxUnderway {
public:
   explicit MuxUnderway( uint32_t did ) : did_( did ) {
      bool isNew = dids.insert( did ).second;
      assert( isNew );
   }

   ~MuxUnderway() { dids.erase( did_ ); }

   MuxUnderway( const MuxUnderway& ) = delete;
   MuxUnderway& operator=( const MuxUnderway& ) = delete;

private:
   static std::set<uint32_t> dids;

   uint32_t did_;
};

std::set<uint32_t> MuxUnderway::dids;

} // namespace

bool QuillonSmbusVisitor::visit( const Topology::Component* ) { return true; }

bool QuillonSmbusVisitor::visit( const Topology::Device* ) { return true; }

bool QuillonSmbusVisitor::visit( const Topology::Mux* mux ) {
   if ( !found ) {
      return true;
   }
   auto value = lastBus;
   ql_trace( 3, "Mux using device %u with value %u", mux->did, value );
   auto topoDev = Topology::findDevice( mux->did );
   assert( topoDev );
   if ( !topoDev->args ) {
      ql_trace( 3, "Device %u isn't declared inline", mux->did );
   }
   assert( topoDev->args );
   auto args = *topoDev->args;
   MuxUnderway underway( mux->did );
   auto muxDevice = Component::HardwareDevice::create( args, nullptr );
   assert( muxDevice );
   auto channel = muxDevice->newMux( args, value );
   assert( channel );
   ham->muxes.insert( ham->muxes.begin(), channel );
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::Bus* node ) {
   if ( found ) {
      ham->address.bus = node->id & 0x7F;
      lastBus = node->id;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::Accelerator* accelerator ) {
   if ( found ) {
      ham->address.accelerator = accelerator->id & 0x7F;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::SCD* medium ) {
   if ( found ) {
      ham->masterType = Smbus::SCD;
      ham->pciAddress = medium->pci;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::I2C* medium ) {
   if ( found ) {
      ham->masterType = medium->simulated ? Smbus::SIMULATED : Smbus::I2C;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::IOPort* ) {
   if ( found ) {
      ham->masterType = Smbus::IO_PORT;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::Celestica* ) {
   if ( found ) {
      ham->masterType = Smbus::CELESTICA;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::PLM* ) {
   if ( found ) {
      ham->masterType = Smbus::PLM;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::SccSpi* ) {
   if ( found ) {
      ham->masterType = Smbus::SCC_SPI;
   }
   return true;
}

bool QuillonSmbusVisitor::visit( const Topology::FbDomFpga* medium ) {
   if ( found ) {
      ham->masterType = Smbus::FB_DOM_FPGA;
      ham->pciAddress = medium->pci;
   }
   return true;
}

bool QuillonSmbusDriverVisitor::visit( const Topology::Component* component ) {
   if ( component->uid != args->uid ) {
      return true;
   }
   found = true;
   return false;
}

bool QuillonSmbusDriverVisitor::visit( const Topology::Device* candidate ) {
   bool isTarget = args->uid == Drivers::DriverArgs::noUid && candidate->did == args->did;
   if ( !found && !isTarget ) {
      return true;
   }
   found = true;
   ham = new QuillonSmbusHam;
   ham->address = args->address;
   ham->address.addrSize = 1;
   return false;
}

bool QuillonSmbusBusIdVisitor::visit( const Topology::Bus* node ) {
   if ( node != bus ) {
      return QuillonSmbusVisitor::visit( node );
   }
   found = true;
   ham = new QuillonSmbusHam;
   ham->address.address = *address & 0x7F;
   ham->address.addrSize = 1;
   QuillonSmbusVisitor::visit( node );
   return false;
}

} // namespace Ham
