#include "Topology.h"

namespace Topology {

Topology* _topology = nullptr;
std::map<std::string, std::shared_ptr<Node>> _topology_index;
std::string _topology_json;

namespace {

template <typename Child>
const Child* childOf( const std::shared_ptr<Child>& child ) {
   return child.get();
}

template <typename Child>
const Child* childOf( const std::pair<const uint32_t, std::shared_ptr<Child>>& entry ) {
   return entry.second.get();
}

/** False as soon as a child has stopped the walk; the children behind it are not visited. */
template <typename Children>
bool acceptAll( const Children& children, TopologyVisitor* visitor ) {
   for ( auto& child : children ) {
      if ( !childOf( child )->accept( visitor ) ) {
         return false;
      }
   }
   return true;
}

/** Ancestors of the node that stopped the walk are visited too, but can't start it again. */
template <typename Visited>
bool visitAfter( bool goOn, const Visited* node, TopologyVisitor* visitor ) {
   bool answer = visitor->visit( node );
   return goOn && answer;
}

} // namespace

bool Component::accept( TopologyVisitor* visitor ) const { return visitor->visit( this ); }

bool Device::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( components, visitor ), this, visitor );
}

bool Mux::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( busses, visitor ), this, visitor );
}

bool Bus::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( devices, visitor ) && acceptAll( muxes, visitor ), this, visitor );
}

bool Accelerator::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( busses, visitor ), this, visitor );
}

bool SCD::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( accelerators, visitor ), this, visitor );
}

bool Celestica::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( accelerators, visitor ), this, visitor );
}

bool LinuxFs::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( devices, visitor ), this, visitor );
}

bool FbDomFpga::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( busses, visitor ), this, visitor );
}

bool I2C::accept( TopologyVisitor* visitor ) const {
   return visitAfter( Bus::accept( visitor ), this, visitor );
}

bool IOPort::accept( TopologyVisitor* visitor ) const {
   return visitAfter( Bus::accept( visitor ), this, visitor );
}

bool PLM::accept( TopologyVisitor* visitor ) const {
   return visitAfter( Bus::accept( visitor ), this, visitor );
}

bool SccSpi::accept( TopologyVisitor* visitor ) const {
   return visitAfter( Bus::accept( visitor ), this, visitor );
}

bool Topology::accept( TopologyVisitor* visitor ) const {
   return visitAfter( acceptAll( nodes, visitor ), this, visitor );
}

bool SearchDeviceVisitor::visit( const Device* candidate ) {
   if ( candidate->did != id ) {
      return true;
   }
   ql_trace( 2, "Device %u found in topology", id );
   device = candidate;
   found = true;
   return false;
}

Node* getNodeByLabel( const char* label ) {
   auto entry = _topology_index.find( label );
   return entry == _topology_index.end() ? nullptr : entry->second.get();
}

Device* getDeviceByLabel( const char* label ) { return dynamic_cast<Device*>( getNodeByLabel( label ) ); }

Bus* getBusByLabel( const char* label ) { return dynamic_cast<Bus*>( getNodeByLabel( label ) ); }

Device* findDevice( uint32_t did ) {
   SearchDeviceVisitor search;
   search.id = did;
   _topology->accept( &search );
   return const_cast<Device*>( search.device );
}

bool isDeviceObject( const char* text ) { return text[0] == '{'; }

} // namespace Topology
