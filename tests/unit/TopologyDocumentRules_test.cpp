#include "Topology.h"

#include "Assertion.h"
#include "FreshLibrary.h"
#include "TopologyText.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>
#include <vector>

using TopologyText::accelerator;
using TopologyText::bus;
using TopologyText::device;
using TopologyText::medium;
using TopologyText::mux;

namespace {

struct Breach {
   const char* name;
   std::string text;
   const char* assertion;
};

void expectDeath( const Breach& breach ) {
   EXPECT_DEATH( Topology::loadTopology( breach.text.c_str() ), assertionFailed( breach.assertion ) )
      << breach.name << ": " << breach.text;
}

/** A key of the document; its value stands as "$" in the text. */
struct Key {
   const char* name;
   std::string text;
   const TopologyText::ValueType& type;
   /** Where the document's own check comes before the parser's. */
   const char* assertion = nullptr;
};

const Key keys[] = {
   { "type of a medium", R"([ { "type": $, "ham": "SimHam" } ])", TopologyText::stringValue },
   { "ham of a medium", R"([ { "type": "LinuxFs", "ham": $ } ])", TopologyText::stringValue },
   { "label of an SCD", medium( "SCD", R"("pci": 1, "label": $)" ), TopologyText::stringValue },
   { "label of a Celestica", medium( "Celestica", R"("label": $)" ), TopologyText::stringValue },
   { "label of a LinuxFs", medium( "LinuxFs", R"("label": $)" ), TopologyText::stringValue },
   { "label of an FbDomFpga", medium( "FbDomFpga", R"("pci": 1, "label": $)" ), TopologyText::stringValue },
   { "label of an I2C", medium( "I2C", R"("id": 1, "label": $)" ), TopologyText::stringValue },
   { "label of an IOPort", medium( "IOPort", R"("id": 1, "label": $)" ), TopologyText::stringValue },
   { "label of a PLM", medium( "PLM", R"("id": 1, "label": $)" ), TopologyText::stringValue },
   { "label of an SccSpi", medium( "SccSpi", R"("id": 1, "label": $)" ), TopologyText::stringValue },
   { "label of an accelerator", accelerator( R"("id": 1, "label": $)" ), TopologyText::stringValue },
   { "label of a bus", accelerator( R"("id": 1, "busses": [ { "id": 1, "label": $ } ])" ),
      TopologyText::stringValue },
   { "label of a mux", mux( R"("did": 1, "label": $)" ), TopologyText::stringValue },
   { "label of a device", device( R"("did": 1, "label": $)" ), TopologyText::stringValue },
   { "label of a component", device( R"("did": 1, "components": [ { "uid": 1, "label": $ } ])" ),
      TopologyText::stringValue },
   { "pci of an SCD", medium( "SCD", R"("pci": $)" ), TopologyText::unsignedValue },
   { "pci of an FbDomFpga", medium( "FbDomFpga", R"("pci": $)" ), TopologyText::unsignedValue },
   { "id of an accelerator", accelerator( R"("id": $)" ), TopologyText::unsignedValue },
   { "did of a mux", mux( R"("did": $)" ), TopologyText::unsignedValue },
   { "did of a device", device( R"("did": $)" ), TopologyText::unsignedValue },
   { "uid of a component", device( R"("did": 1, "components": [ { "uid": $ } ])" ),
      TopologyText::unsignedValue },
   { "id of an I2C", medium( "I2C", R"("id": $)" ), TopologyText::intValue },
   { "id of an IOPort", medium( "IOPort", R"("id": $)" ), TopologyText::intValue },
   { "id of a PLM", medium( "PLM", R"("id": $)" ), TopologyText::intValue },
   { "id of an SccSpi", medium( "SccSpi", R"("id": $)" ), TopologyText::intValue },
   { "id of a bus", mux( R"("did": 1, "busses": [ { "id": $ } ])" ), TopologyText::intValue },
   { "simulated of an I2C", medium( "I2C", R"("id": 1, "simulated": $)" ), TopologyText::boolValue },
   { "devices of a LinuxFs", medium( "LinuxFs", R"("devices": $)" ), TopologyText::arrayValue },
   { "devices of a bus", bus( R"("devices": $)" ), TopologyText::arrayValue },
   { "muxes of a bus", bus( R"("muxes": $)" ), TopologyText::arrayValue },
   { "busses of a mux", mux( R"("did": 1, "busses": $)" ), TopologyText::arrayValue },
   { "components of a device", device( R"("did": 1, "components": $)" ), TopologyText::arrayValue },
   { "accelerators of an SCD", medium( "SCD", R"("pci": 1, "accelerators": $)" ), TopologyText::arrayValue,
      "accels.IsArray()" },
   { "accelerators of a Celestica", medium( "Celestica", R"("accelerators": $)" ), TopologyText::arrayValue,
      "accels.IsArray()" },
   { "busses of an accelerator", accelerator( R"("id": 1, "busses": $)" ), TopologyText::arrayValue,
      "busses.IsArray()" },
   { "busses of an FbDomFpga", medium( "FbDomFpga", R"("pci": 1, "busses": $)" ), TopologyText::arrayValue,
      "busses.IsArray()" },
   { "root", "$", TopologyText::arrayValue, "json.IsArray()" },
};

/** A LinuxFs with one device that is an argument document. */
std::string drivenDevice( const std::string& more ) {
   return device( R"("did": 1, "driver": null)" + TopologyText::more( more ) );
}

} // namespace

class TopologyDocumentRules : public FreshLibrary {};

TEST_F( TopologyDocumentRules, ValueOfAnotherTypeEndsTheProcess ) {
   for ( auto& key : keys ) {
      for ( auto value : key.type.wrong ) {
         expectDeath( { key.name, TopologyText::with( value, key.text ),
            key.assertion ? key.assertion : key.type.assertion } );
      }
   }
}

TEST_F( TopologyDocumentRules, MissingKeyEndsTheProcess ) {
   const Breach rows[] = {
      { "type", R"([ { "ham": "SimHam" } ])", R"(it->HasMember( "type" ))" },
      { "ham of a LinuxFs", R"([ { "type": "LinuxFs" } ])", R"(it->HasMember( "ham" ))" },
      { "ham of a bus", R"([ { "type": "PLM", "id": 1 } ])", R"(it->HasMember( "ham" ))" },
      { "pci of an SCD", medium( "SCD" ), R"(json.HasMember( "pci" ))" },
      { "pci of an FbDomFpga", medium( "FbDomFpga" ), R"(json.HasMember( "pci" ))" },
      { "id of an I2C", medium( "I2C" ), R"(json.HasMember( "id" ))" },
      { "id of an IOPort", medium( "IOPort" ), R"(json.HasMember( "id" ))" },
      { "id of a PLM", medium( "PLM" ), R"(json.HasMember( "id" ))" },
      { "id of an SccSpi", medium( "SccSpi" ), R"(json.HasMember( "id" ))" },
      { "id of an accelerator", accelerator( "" ), R"(json.HasMember( "id" ))" },
      { "id of a bus", mux( R"("did": 1, "busses": [ {} ])" ), R"(json.HasMember( "id" ))" },
      { "did of a mux", mux( "" ), R"(json.HasMember( "did" ))" },
      { "did of a device", device( "" ), R"(json.HasMember( "did" ))" },
      { "uid", device( R"("did": 1, "components": [ {} ])" ), R"(json.HasMember( "uid" ))" },
   };
   for ( auto& row : rows ) {
      expectDeath( row );
   }
}

TEST_F( TopologyDocumentRules, ChildThatIsNoObjectEndsTheProcess ) {
   const Breach rows[] = {
      { "medium", "[ $ ]", "it->IsObject()" },
      { "device of a LinuxFs", medium( "LinuxFs", R"("devices": [ $ ])" ), "it->IsObject()" },
      { "device of a bus", bus( R"("devices": [ $ ])" ), "it->IsObject()" },
      { "mux", bus( R"("muxes": [ $ ])" ), "it->IsObject()" },
      { "bus of a mux", mux( R"("did": 1, "busses": [ $ ])" ), "it->IsObject()" },
      { "component", device( R"("did": 1, "components": [ $ ])" ), "it->IsObject()" },
      { "bus of an accelerator", accelerator( R"("id": 1, "busses": [ $ ])" ), "json.IsObject()" },
      { "bus of an FbDomFpga", medium( "FbDomFpga", R"("pci": 1, "busses": [ $ ])" ), "json.IsObject()" },
      { "accelerator of an SCD", medium( "SCD", R"("pci": 1, "accelerators": [ $ ])" ), "json.IsObject()" },
      { "accelerator of a Celestica", medium( "Celestica", R"("accelerators": [ $ ])" ), "json.IsObject()" },
   };
   for ( auto& [name, text, assertion] : rows ) {
      for ( auto child : { "1", "true", "\"{}\"", "null", "[]" } ) {
         expectDeath( { name, TopologyText::with( child, text ), assertion } );
      }
   }
}

TEST_F( TopologyDocumentRules, UnknownTypeEndsTheProcess ) {
   for ( auto type : { "", "scd", "SCD ", " SCD", "I2", "I2C2", "Bus", "Topology", "SCC_SPI" } ) {
      expectDeath( { type, medium( type ), R"(false && "Unknown type")" } );
   }
}

TEST_F( TopologyDocumentRules, SecondChildOfAnIdEndsTheProcess ) {
   const Breach rows[] = {
      { "bus of an accelerator", accelerator( R"("id": 1, "busses": [ { "id": 2 }, { "id": 2 } ])" ),
         "accel->busses.find( bus->id ) == accel->busses.end()" },
      { "accelerator of an SCD",
         medium( "SCD", R"("pci": 1, "accelerators": [ { "id": 2 }, { "id": 3 }, { "id": 2 } ])" ),
         "scd->accelerators.find( accel->id ) == scd->accelerators.end()" },
      { "accelerator of a Celestica",
         medium( "Celestica", R"("accelerators": [ { "id": 0 }, { "id": 0 } ])" ),
         "cel->accelerators.find( accel->id ) == cel->accelerators.end()" },
      { "bus of an FbDomFpga", medium( "FbDomFpga", R"("pci": 1, "busses": [ { "id": -1 }, { "id": -1 } ])" ),
         "fbdomfpga->busses.find( bus->id ) == fbdomfpga->busses.end()" },
   };
   for ( auto& row : rows ) {
      expectDeath( row );
   }
}

TEST_F( TopologyDocumentRules, DeviceWithDriverMustBeAnArgumentDocument ) {
   const Breach rows[] = {
      { "no address", drivenDevice( "" ), R"(json.HasMember( "address" ))" },
      { "no address, no multi-device", drivenDevice( R"("isMultiDevice": false)" ),
         R"(json.HasMember( "address" ))" },
      { "address is no object", drivenDevice( R"("address": 72)" ), "value.IsObject()" },
      { "no address in the address", drivenDevice( R"("address": {})" ), R"(value.HasMember( "address" ))" },
      { "addrSize 4", drivenDevice( R"("address": { "address": 72, "addrSize": 4 })" ),
         "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4" },
      { "no parts", drivenDevice( R"("isMultiDevice": true)" ), R"(json.HasMember( "multiDeviceArgs" ))" },
      { "driver is a number", device( R"("did": 1, "driver": 5, "address": { "address": 72 })" ),
         "IsString()" },
   };
   for ( auto& row : rows ) {
      expectDeath( row );
   }
}

/** Each document breaks two rules; the one that is named first in the row's name is met first. */
TEST_F( TopologyDocumentRules, AreCheckedInAFixedOrder ) {
   const Breach rows[] = {
      { "type before ham", R"([ {} ])", R"(it->HasMember( "type" ))" },
      { "ham before what the type says", R"([ { "type": "none" } ])", R"(it->HasMember( "ham" ))" },
      { "medium before the value of ham", R"([ { "type": "SCD", "ham": 5 } ])",
         R"(json.HasMember( "pci" ))" },
      { "simulated before the bus", medium( "I2C", R"("simulated": 5)" ), "IsBool()" },
      { "id of a bus before its label", medium( "PLM", R"("label": 5)" ), R"(json.HasMember( "id" ))" },
      { "label of a bus before its id's value", medium( "PLM", R"("id": "x", "label": 5)" ), "IsString()" },
      { "id's value before devices", medium( "PLM", R"("id": "x", "devices": 5)" ),
         "data_.f.flags & kIntFlag" },
      { "devices before muxes", bus( R"("muxes": 5, "devices": [ {} ])" ), R"(json.HasMember( "did" ))" },
      { "label of an accelerator before its id's value", accelerator( R"("id": "x", "label": 5)" ),
         "IsString()" },
      { "id's value before busses", accelerator( R"("id": -1, "busses": 5)" ), "data_.f.flags & kUintFlag" },
      { "label of an SCD before pci", medium( "SCD", R"("label": 5)" ), "IsString()" },
      { "pci before accelerators", medium( "SCD", R"("pci": -1, "accelerators": 5)" ),
         "data_.f.flags & kUintFlag" },
      { "label of an FbDomFpga before pci", medium( "FbDomFpga", R"("label": 5)" ), "IsString()" },
      { "pci before busses", medium( "FbDomFpga", R"("pci": -1, "busses": 5)" ),
         "data_.f.flags & kUintFlag" },
      { "label of a Celestica before accelerators", medium( "Celestica", R"("label": 5, "accelerators": 5)" ),
         "IsString()" },
      { "label of a LinuxFs before devices", medium( "LinuxFs", R"("label": 5, "devices": 5)" ),
         "IsString()" },
      { "label of a mux before its did's value", mux( R"("did": -1, "label": 5)" ), "IsString()" },
      { "did's value before busses", mux( R"("did": -1, "busses": 5)" ), "data_.f.flags & kUintFlag" },
      { "did's value of a device before its label", device( R"("did": -1, "label": 5)" ),
         "data_.f.flags & kUintFlag" },
      { "label of a device before its driver", drivenDevice( R"("label": 5)" ), "IsString()" },
      { "driver before components", drivenDevice( R"("components": 5)" ), R"(json.HasMember( "address" ))" },
      { "uid's value before the label", device( R"("did": 1, "components": [ { "uid": -1, "label": 5 } ])" ),
         "data_.f.flags & kUintFlag" },
      { "earlier medium before the later one", R"([ { "type": "none", "ham": "SimHam" }, 5 ])",
         R"(false && "Unknown type")" },
   };
   for ( auto& row : rows ) {
      expectDeath( row );
   }
}

/** What the document's nesting keeps from happening is asserted all the same where a reader is called alone.
 */
TEST_F( TopologyDocumentRules, EveryReaderWantsAnObject ) {
   const struct {
      const char* name;
      void ( *read )( const rapidjson::Value& json );
      const char* assertion;
   } rows[] = {
      { "Component", []( auto& json ) { Topology::Component::fromJSON( json ); }, "json.IsObject()" },
      { "Device", []( auto& json ) { Topology::Device::fromJSON( json ); }, "json.IsObject()" },
      { "Mux", []( auto& json ) { Topology::Mux::fromJSON( json ); }, "json.IsObject()" },
      { "Bus", []( auto& json ) { Topology::Bus::fromJSON( json ); }, "json.IsObject()" },
      { "Accelerator", []( auto& json ) { Topology::Accelerator::fromJSON( json ); }, "json.IsObject()" },
      { "IOPort", []( auto& json ) { Topology::IOPort::fromJSON( json ); }, "json.IsObject()" },
      { "PLM", []( auto& json ) { Topology::PLM::fromJSON( json ); }, "json.IsObject()" },
      { "SccSpi", []( auto& json ) { Topology::SccSpi::fromJSON( json ); }, "json.IsObject()" },
      // These ask for the label or for "simulated" first, and the parser objects.
      { "SCD", []( auto& json ) { Topology::SCD::fromJSON( json ); }, "IsObject()" },
      { "Celestica", []( auto& json ) { Topology::Celestica::fromJSON( json ); }, "IsObject()" },
      { "FbDomFpga", []( auto& json ) { Topology::FbDomFpga::fromJSON( json ); }, "IsObject()" },
      { "LinuxFs", []( auto& json ) { Topology::LinuxFs::fromJSON( json ); }, "IsObject()" },
      { "I2C", []( auto& json ) { Topology::I2C::fromJSON( json ); }, "IsObject()" },
   };

   const rapidjson::Value array( rapidjson::kArrayType );
   for ( auto& [name, read, assertion] : rows ) {
      EXPECT_DEATH( read( array ), assertionFailed( assertion ) ) << name;
   }
}
