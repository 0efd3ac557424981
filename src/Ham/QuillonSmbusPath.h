#ifndef HAM_QUILLON_SMBUS_PATH_H
#define HAM_QUILLON_SMBUS_PATH_H

#include "Ham/QuillonSmbusHam.h"
#include "Topology.h"

#include <cstdint>

namespace Ham {

/**
 * Turns a place in the topology into a Ham: finds the target, and lets each node on the way up add what it
 * knows. An outer node overwrites what an inner one has set, so that the bus is the physical one on the
 * master and the medium the outermost.
 */
class QuillonSmbusVisitor : public Topology::TopologyVisitor {
public:
   using TopologyVisitor::visit;
   bool visit( const Topology::Component* component ) override;
   bool visit( const Topology::Device* candidate ) override;
   bool visit( const Topology::Mux* mux ) override;
   bool visit( const Topology::Bus* node ) override;
   bool visit( const Topology::Accelerator* accelerator ) override;
   bool visit( const Topology::SCD* medium ) override;
   bool visit( const Topology::I2C* medium ) override;
   bool visit( const Topology::IOPort* medium ) override;
   bool visit( const Topology::Celestica* medium ) override;
   bool visit( const Topology::PLM* medium ) override;
   bool visit( const Topology::SccSpi* medium ) override;
   bool visit( const Topology::FbDomFpga* medium ) override;

   /** From here on each node visited lies on the target's path. */
   bool found = false;
   /** The result; null while the target has not been met. */
   QuillonSmbusHam* ham = nullptr;
   /** Id of the bus visited last: a multiplexer's channel when the walk climbs through it. */
   uint32_t lastBus = 0xFFFFFFFF;
};

/** Looks for a device by its did, or by a component of it. */
class QuillonSmbusDriverVisitor : public QuillonSmbusVisitor {
public:
   using QuillonSmbusVisitor::visit;
   bool visit( const Topology::Component* component ) override;
   bool visit( const Topology::Device* candidate ) override;

   const Drivers::DriverArgs* args = nullptr;
};

/** Looks for a bus: that very object, not one with an equal id. */
class QuillonSmbusBusIdVisitor : public QuillonSmbusVisitor {
public:
   using QuillonSmbusVisitor::visit;
   bool visit( const Topology::Bus* node ) override;

   const Topology::Bus* bus = nullptr;
   /** Chip address on that bus. */
   const uint32_t* address = nullptr;
};

} // namespace Ham

#endif
