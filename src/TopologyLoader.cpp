#include "Topology.h"

#include "Drivers/Drivers.h"
#include "Json.h"

#include <rapidjson/error/en.h>

#include <cassert>
#include <string_view>

namespace Topology {

ql_status loadTopology( const char* json ) {
   // Its length is counted once: the text may have many megabytes.
   std::string_view text = json;
   if ( _topology && _topology_json == text ) {
      ql_trace( 2, "topology is the same as the previously loaded one (using it)" );
      return QL_STATUS_OK;
   }
   ql_trace( 2, "loading topology json" );
   // The document's strings stay in the text, which they change.
   std::string copy( text );
   rapidjson::Document document;
   document.ParseInsitu( copy.data() );
   if ( document.HasParseError() ) {
      ql_trace( 2, "failed to load topology from json: %s offset %zd",
         rapidjson::GetParseError_En( document.GetParseError() ), document.GetErrorOffset() );
      return QL_STATUS_INVALID_ARGUMENT;
   }
   if ( _topology ) {
      delete _topology;
      _topology = nullptr;
      _topology_index.clear();
   }
   _topology = Topology::fromJSON( document );
   if ( !_topology ) {
      ql_trace( 2, "failed to create topology tree" );
      return QL_STATUS_FAILED;
   }
   _topology_json = text;
   return QL_STATUS_OK;
}

void fillAddressFromJSON( const rapidjson::Value& json, HamAddress& addr ) {
   Json::Object value( json );
   assert( value.IsObject() );
   assert( value.HasMember( "address" ) );
   addr = {};
   addr.addrSize = 1;
   addr.address = value["address"].GetUint() & 0x7F;
   if ( auto delay = value.find( "writeDelay" ) ) {
      addr.writeDelay = delay->GetUint() & 3;
   }
   if ( auto delay = value.find( "readDelay" ) ) {
      addr.readDelay = delay->GetUint() & 3;
   }
   if ( auto timeout = value.find( "busTimeout" ) ) {
      addr.busTimeout = timeout->GetUint() & 7;
   }
   if ( auto delay = value.find( "extraDelay" ) ) {
      addr.extraDelay = delay->GetUint() & 1;
   }
   if ( auto size = value.find( "addrSize" ) ) {
      addr.addrSize = size->GetUint() & 3;
      // The stored field decides, so a size of 4 does not pass: it has been cut to 0.
      assert( addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4 );
   }
   if ( auto accelerator = value.find( "accel" ) ) {
      addr.accelerator = accelerator->GetUint() & 0x7F;
   }
   if ( auto noStop = value.find( "writeNoStopReadCurrent" ) ) {
      addr.writeNoStopReadCurrent = noStop->GetBool();
   }
}

void Node::init( const std::shared_ptr<Node>& node, const rapidjson::Value& value ) {
   Json::Object json( value );
   if ( auto label = json.find( "label" ) ) {
      _topology_index.insert_or_assign( Json::text( *label ), node );
   }
}

std::shared_ptr<Component> Component::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto component = std::make_shared<Component>();
   assert( json.IsObject() );
   assert( json.HasMember( "uid" ) );
   component->uid = json["uid"].GetUint();
   Node::init( component, value );
   return component;
}

namespace {

/** Appends the children in an array of objects, if the parent has it. */
template <typename Child>
void appendAll( std::vector<std::shared_ptr<Child>>& children, const rapidjson::Value* array ) {
   if ( !array ) {
      return;
   }
   children.reserve( array->Size() );
   for ( auto it = array->Begin(); it != array->End(); ++it ) {
      assert( it->IsObject() );
      children.push_back( Child::fromJSON( *it ) );
   }
}

} // namespace

std::shared_ptr<Device> Device::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto device = std::make_shared<Device>();
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   device->did = json["did"].GetUint();
   Node::init( device, value );
   if ( json.find( "driver" ) ) {
      device->args = Drivers::DriverArgs::fromJSON( value );
   }
   appendAll( device->components, json.find( "components" ) );
   return device;
}

std::shared_ptr<Mux> Mux::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto mux = std::make_shared<Mux>();
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   Node::init( mux, value );
   mux->did = json["did"].GetUint();
   if ( auto busses = json.find( "busses" ) ) {
      for ( auto it = busses->Begin(); it != busses->End(); ++it ) {
         assert( it->IsObject() );
         auto bus = Bus::fromJSON( *it );
         mux->busses[bus->id] = bus;
      }
   }
   return mux;
}

std::shared_ptr<Bus> Bus::fromJSON( const rapidjson::Value& json ) {
   auto bus = std::make_shared<Bus>();
   Bus::init( bus, json );
   return bus;
}

void Bus::init( const std::shared_ptr<Bus>& bus, const rapidjson::Value& value ) {
   Json::Object json( value );
   assert( json.IsObject() );
   assert( json.HasMember( "id" ) );
   Node::init( bus, value );
   bus->id = static_cast<uint32_t>( json["id"].GetInt() );
   appendAll( bus->devices, json.find( "devices" ) );
   appendAll( bus->muxes, json.find( "muxes" ) );
}

std::shared_ptr<Accelerator> Accelerator::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto accel = std::make_shared<Accelerator>();
   assert( json.IsObject() );
   assert( json.HasMember( "id" ) );
   Node::init( accel, value );
   accel->id = json["id"].GetUint();
   if ( json.HasMember( "busses" ) ) {
      auto& busses = json["busses"];
      assert( busses.IsArray() );
      for ( auto& element : busses.GetArray() ) {
         auto bus = Bus::fromJSON( element );
         assert( accel->busses.find( bus->id ) == accel->busses.end() );
         accel->busses[bus->id] = bus;
      }
   }
   return accel;
}

std::shared_ptr<SCD> SCD::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto scd = std::make_shared<SCD>();
   Node::init( scd, value );
   assert( json.IsObject() );
   assert( json.HasMember( "pci" ) );
   scd->pci = json["pci"].GetUint();
   if ( json.HasMember( "accelerators" ) ) {
      auto& accels = json["accelerators"];
      assert( accels.IsArray() );
      for ( auto& element : accels.GetArray() ) {
         auto accel = Accelerator::fromJSON( element );
         assert( scd->accelerators.find( accel->id ) == scd->accelerators.end() );
         scd->accelerators[accel->id] = accel;
      }
   }
   return scd;
}

std::shared_ptr<Celestica> Celestica::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto cel = std::make_shared<Celestica>();
   Node::init( cel, value );
   if ( json.HasMember( "accelerators" ) ) {
      auto& accels = json["accelerators"];
      assert( accels.IsArray() );
      for ( auto& element : accels.GetArray() ) {
         auto accel = Accelerator::fromJSON( element );
         assert( cel->accelerators.find( accel->id ) == cel->accelerators.end() );
         cel->accelerators[accel->id] = accel;
      }
   }
   return cel;
}

std::shared_ptr<LinuxFs> LinuxFs::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto linuxFs = std::make_shared<LinuxFs>();
   Node::init( linuxFs, value );
   appendAll( linuxFs->devices, json.find( "devices" ) );
   return linuxFs;
}

std::shared_ptr<FbDomFpga> FbDomFpga::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto fbdomfpga = std::make_shared<FbDomFpga>();
   Node::init( fbdomfpga, value );
   assert( json.IsObject() );
   assert( json.HasMember( "pci" ) );
   fbdomfpga->pci = json["pci"].GetUint();
   if ( json.HasMember( "busses" ) ) {
      auto& busses = json["busses"];
      assert( busses.IsArray() );
      for ( auto& element : busses.GetArray() ) {
         auto bus = Bus::fromJSON( element );
         assert( fbdomfpga->busses.find( bus->id ) == fbdomfpga->busses.end() );
         fbdomfpga->busses[bus->id] = bus;
      }
   }
   return fbdomfpga;
}

std::shared_ptr<I2C> I2C::fromJSON( const rapidjson::Value& value ) {
   Json::Object json( value );
   auto i2c = std::make_shared<I2C>();
   if ( auto simulated = json.find( "simulated" ) ) {
      i2c->simulated = simulated->GetBool();
   }
   Bus::init( i2c, value );
   return i2c;
}

std::shared_ptr<IOPort> IOPort::fromJSON( const rapidjson::Value& json ) {
   auto ioPort = std::make_shared<IOPort>();
   Bus::init( ioPort, json );
   return ioPort;
}

std::shared_ptr<PLM> PLM::fromJSON( const rapidjson::Value& json ) {
   auto plm = std::make_shared<PLM>();
   Bus::init( plm, json );
   return plm;
}

std::shared_ptr<SccSpi> SccSpi::fromJSON( const rapidjson::Value& json ) {
   auto sccSpi = std::make_shared<SccSpi>();
   Bus::init( sccSpi, json );
   return sccSpi;
}

namespace {

template <typename Medium>
std::shared_ptr<MediumNode> make( const rapidjson::Value& json ) {
   return Medium::fromJSON( json );
}

struct MediumType {
   const char* name;
   std::shared_ptr<MediumNode> ( *make )( const rapidjson::Value& json );
};

constexpr MediumType mediumTypes[] = {
   { "SCD", make<SCD> },
   { "I2C", make<I2C> },
   { "IOPort", make<IOPort> },
   { "Celestica", make<Celestica> },
   { "PLM", make<PLM> },
   { "SccSpi", make<SccSpi> },
   { "LinuxFs", make<LinuxFs> },
   { "FbDomFpga", make<FbDomFpga> },
};

std::shared_ptr<MediumNode> mediumFromJSON( const rapidjson::Value& json ) {
   auto name = Json::text( Json::Object( json )["type"] );
   for ( auto& type : mediumTypes ) {
      if ( name == type.name ) {
         return type.make( json );
      }
   }
   assert( false && "Unknown type" );
   return nullptr;
}

} // namespace

Topology* Topology::fromJSON( const rapidjson::Value& json ) {
   auto tree = std::make_unique<Topology>();
   assert( json.IsArray() );
   for ( auto it = json.Begin(); it != json.End(); ++it ) {
      assert( it->IsObject() );
      assert( it->HasMember( "type" ) );
      assert( it->HasMember( "ham" ) );
      auto medium = mediumFromJSON( *it );
      medium->ham = Json::text( Json::Object( *it )["ham"] );
      tree->nodes.push_back( medium );
   }
   return tree.release();
}

} // namespace Topology
