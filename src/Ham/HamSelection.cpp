#include "Ham/Ham.h"

#include "Drivers/Drivers.h"

#include <cassert>

namespace Ham {

Ham* createHam( const Drivers::DriverArgs& args ) {
   auto topology = Topology::_topology;
   assert( topology );
   ql_trace( 0, "looking for component %u of device %u in topology", args.uid, args.did );
   SearchVisitor search;
   search.uid = args.uid;
   search.did = args.did;
   topology->accept( &search );
   if ( !search.found ) {
      ql_trace( 0, "could not find component uid %d in topology", static_cast<int>( args.uid ) );
      return nullptr;
   }
   auto name = Utils::simulationIsOn() ? std::string( "SimHam" ) : search.hamName;
   ql_trace( 0, "creating %s HAM using topology information", name.c_str() );
   auto ham = Ham::create( name, *topology, args );
   if ( !ham ) {
      ql_trace( 0, "failed to create HAM" );
   }
   return ham;
}

bool SearchVisitor::visit( const Topology::Component* component ) {
   if ( component->uid != uid ) {
      return true;
   }
   ql_trace( 2, "Component %u found in tree", component->uid );
   found = true;
   return false;
}

bool SearchVisitor::visit( const Topology::Device* candidate ) {
   bool isTarget = uid == Drivers::DriverArgs::noUid && candidate->did == did;
   if ( !found && !isTarget ) {
      return true;
   }
   ql_trace( 2, "Device %u contain the component", candidate->did );
   device = candidate;
   found = true;
   return false;
}

bool SearchVisitor::visit( const Topology::Mux* mux ) {
   if ( !found ) {
      return true;
   }
   ql_trace( 2, "Mux using device %d", static_cast<int>( mux->did ) );
   return false;
}

bool SearchVisitor::visit( const Topology::Bus* bus ) {
   if ( found ) {
      ql_trace( 2, "BusId %u", bus->id );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::Accelerator* accelerator ) {
   if ( found ) {
      ql_trace( 2, "AccelId %u", accelerator->id );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::SCD* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "SCD %u %08X", medium->id, medium->pci );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::I2C* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "I2C bus %u", medium->id );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::IOPort* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "IOPort" );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::Celestica* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "Celestica" );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::PLM* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "PLM" );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::SccSpi* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "SccSpi" );
   }
   return true;
}

bool SearchVisitor::visit( const Topology::FbDomFpga* medium ) {
   if ( found ) {
      hamName = medium->ham;
      ql_trace( 2, "FbDomFpga" );
   }
   return true;
}

} // namespace Ham
