/*
 * A text for the topology: no JSON is refused and changes nothing; of what `quillonctl check` passes all
 * devices and labels are found, unless one bus behind a multiplexer took the place of another.
 */

#include "CheckedLibrary.h"
#include "Host.h"

#include "Inventory.h"
#include "Topology.h"

#include <cassert>
#include <set>

namespace {

class DeviceCount : public Topology::TopologyVisitor {
public:
   using TopologyVisitor::visit;

   bool visit( const Topology::Device* ) override {
      ++count;
      return true;
   }

   size_t count = 0;
};

/** What lies on a bus that another took the place of is not in the tree. */
bool losesBus( const Inventory& inventory ) {
   for ( auto& [pointer, array, isBehindMux] : inventory.siblings ) {
      std::set<int64_t> ids;
      for ( auto& bus : array->GetArray() ) {
         if ( !ids.insert( bus["id"].GetInt64() ).second ) {
            return true;
         }
      }
   }
   return false;
}

void lookUpAll( const Inventory& inventory ) {
   DeviceCount devices;
   Topology::_topology->accept( &devices );
   assert( devices.count == inventory.devices.size() );
   for ( auto& device : inventory.devices ) {
      auto found = Topology::findDevice( device.did );
      assert( found && found->did == device.did );
   }
   for ( auto& label : inventory.labels ) {
      auto text = label.text.c_str();
      assert( Topology::getNodeByLabel( text ) );
      assert( !Topology::getDeviceByLabel( text ) || !Topology::getBusByLabel( text ) );
   }
   assert( Topology::getDeviceByLabel( cpldLabel ) );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   // The library takes a C string.
   std::string text = std::string( reinterpret_cast<const char*>( data ), size ).c_str();
   if ( !isNestedShallowly( text ) ) {
      return -1;
   }
   rapidjson::Document document;
   document.Parse( text.c_str() );
   auto isJson = !document.HasParseError();
   if ( isJson && !checkPasses( text, R"({ "objects": [] })" ) ) {
      return 0;
   }
   Host::Turn turn;
   auto before = Topology::_topology;
   auto status = Topology::loadTopology( text.c_str() );
   if ( isJson ) {
      assert( status == QL_STATUS_OK && Topology::_topology_json == text );
      auto inventory = takeInventory( document );
      if ( !losesBus( inventory ) ) {
         lookUpAll( inventory );
      }
   } else {
      assert( status == QL_STATUS_INVALID_ARGUMENT && Topology::_topology == before );
   }
   return 0;
}
