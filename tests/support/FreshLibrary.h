#ifndef FRESH_LIBRARY_H
#define FRESH_LIBRARY_H

#include "Components/HardwareDevice.h"
#include "Ham/Ham.h"
#include "HostServices.h"
#include "Topology.h"

#include <cstdlib>

/** Starts each test as in a process that has just loaded the library: no topology, no device, no simulation.
 */
class FreshLibrary : public Host::Test {
protected:
   FreshLibrary() {
      unsetenv( "SIMULATION_VMID" );
      Utils::isInSimulation = -1;
      Component::DeviceBase::devices.clear();
      delete Topology::_topology;
      Topology::_topology = nullptr;
      Topology::_topology_index.clear();
      Topology::_topology_json.clear();
   }
};

#endif
