#include "Topology.h"

#include "Drivers/Drivers.h"
#include "FreshLibrary.h"
#include "TopologyText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TopologyText::accelerator;
using TopologyText::bus;
using TopologyText::device;
using TopologyText::load;
using TopologyText::loadMedium;
using TopologyText::medium;
using TopologyText::mux;

namespace {

/** A number that lies at an edge of its type, and what the tree keeps of it. */
struct Edge {
   const char* text;
   uint32_t stored;
};

constexpr Edge unsignedEdges[] = { { "0", 0 }, { "-0", 0 }, { "1", 1 }, { "2147483648", 2147483648 },
   { "4294967295", 4294967295 } };
constexpr Edge intEdges[] = { { "0", 0 }, { "1", 1 }, { "-1", 4294967295 }, { "2147483647", 2147483647 },
   { "-2147483648", 2147483648 } };

const Topology::Accelerator& loadAccelerator( const std::string& keys ) {
   auto& accelerators = loadMedium<Topology::Celestica>( accelerator( keys ) ).accelerators;
   return *accelerators.begin()->second;
}

const Topology::Mux& loadMux( const std::string& keys ) {
   return *loadMedium<Topology::PLM>( mux( keys ) ).muxes.at( 0 );
}

const Topology::Device& loadDevice( const std::string& keys ) {
   return *loadMedium<Topology::LinuxFs>( device( keys ) ).devices.at( 0 );
}

template <typename Children>
std::vector<uint32_t> keysOf( const Children& children ) {
   std::vector<uint32_t> keys;
   for ( auto& [key, child] : children ) {
      EXPECT_EQ( child->id, key );
      keys.push_back( key );
   }
   return keys;
}

} // namespace

class TopologyDocument : public FreshLibrary {};

TEST_F( TopologyDocument, TypeNamesTheMedium ) {
   const struct {
      const char* type;
      const char* keys;
      const std::type_info& made;
   } rows[] = {
      { "SCD", R"("pci": 1)", typeid( Topology::SCD ) },
      { "I2C", R"("id": 1)", typeid( Topology::I2C ) },
      { "IOPort", R"("id": 1)", typeid( Topology::IOPort ) },
      { "Celestica", "", typeid( Topology::Celestica ) },
      { "PLM", R"("id": 1)", typeid( Topology::PLM ) },
      { "SccSpi", R"("id": 1)", typeid( Topology::SccSpi ) },
      { "LinuxFs", "", typeid( Topology::LinuxFs ) },
      { "FbDomFpga", R"("pci": 1)", typeid( Topology::FbDomFpga ) },
   };

   for ( auto& [type, keys, made] : rows ) {
      auto& loaded = loadMedium<Topology::MediumNode>( medium( type, keys ) );
      EXPECT_TRUE( typeid( loaded ) == made ) << type;
      EXPECT_EQ( loaded.ham, "SimHam" ) << type;
   }
}

TEST_F( TopologyDocument, HamIsKeptWhateverItNames ) {
   for ( auto ham : { "QuillonSmbus", "SimHam", "", "no such Ham" } ) {
      auto text = R"([ { "type": "LinuxFs", "ham": ")" + std::string( ham ) + R"(" } ])";
      EXPECT_EQ( loadMedium<Topology::LinuxFs>( text ).ham, ham );
   }
}

TEST_F( TopologyDocument, MediaStandInItsOrder ) {
   auto& nodes = load( R"( [ { "type": "LinuxFs", "ham": "b" }, { "type": "Celestica", "ham": "c" },
                             { "type": "LinuxFs", "ham": "a" } ] )" )
                    .nodes;
   ASSERT_EQ( nodes.size(), 3U );
   EXPECT_EQ( nodes[0]->ham, "b" );
   EXPECT_EQ( nodes[1]->ham, "c" );
   EXPECT_EQ( nodes[2]->ham, "a" );
}

TEST_F( TopologyDocument, PciIsUnsigned ) {
   for ( auto& [text, stored] : unsignedEdges ) {
      auto keys = R"("pci": )" + std::string( text );
      EXPECT_EQ( loadMedium<Topology::SCD>( medium( "SCD", keys ) ).pci, stored );
      EXPECT_EQ( loadMedium<Topology::FbDomFpga>( medium( "FbDomFpga", keys ) ).pci, stored );
   }
}

TEST_F( TopologyDocument, NothingSetsTheIdOfAController ) {
   auto keys = R"("pci": 1, "id": 5)";
   EXPECT_EQ( loadMedium<Topology::SCD>( medium( "SCD", keys ) ).id, 0U );
   EXPECT_EQ( loadMedium<Topology::FbDomFpga>( medium( "FbDomFpga", keys ) ).id, 0U );
}

TEST_F( TopologyDocument, AcceleratorsStandUnderTheirIds ) {
   const std::string keys = R"("accelerators": [ { "id": 4294967295 }, { "id": 0 }, { "id": 200 } ])";
   auto ids = ElementsAre( 0U, 200U, 4294967295U );
   EXPECT_THAT( keysOf( loadMedium<Topology::Celestica>( medium( "Celestica", keys ) ).accelerators ), ids );
   EXPECT_THAT(
      keysOf( loadMedium<Topology::SCD>( medium( "SCD", R"("pci": 1, )" + keys ) ).accelerators ), ids );
}

TEST_F( TopologyDocument, BussesStandUnderTheirIds ) {
   const std::string keys = R"("busses": [ { "id": -1 }, { "id": 0 }, { "id": 200 } ])";
   auto ids = ElementsAre( 0U, 200U, 4294967295U );
   EXPECT_THAT( keysOf( loadAccelerator( R"("id": 1, )" + keys ).busses ), ids );
   EXPECT_THAT( keysOf( loadMux( R"("did": 1, )" + keys ).busses ), ids );
   EXPECT_THAT(
      keysOf( loadMedium<Topology::FbDomFpga>( medium( "FbDomFpga", R"("pci": 1, )" + keys ) ).busses ),
      ids );
}

TEST_F( TopologyDocument, ChildrenMayBeLeftOut ) {
   EXPECT_THAT( loadMedium<Topology::SCD>( medium( "SCD", R"("pci": 1)" ) ).accelerators, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::Celestica>( medium( "Celestica" ) ).accelerators, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::FbDomFpga>( medium( "FbDomFpga", R"("pci": 1)" ) ).busses, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::LinuxFs>( medium( "LinuxFs" ) ).devices, IsEmpty() );
   EXPECT_THAT( loadAccelerator( R"("id": 1)" ).busses, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::PLM>( bus() ).devices, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::PLM>( bus() ).muxes, IsEmpty() );
   EXPECT_THAT( loadMux( R"("did": 1)" ).busses, IsEmpty() );
   EXPECT_THAT( loadDevice( R"("did": 1)" ).components, IsEmpty() );
}

TEST_F( TopologyDocument, ChildrenMayBeNone ) {
   auto accelerators = R"("pci": 1, "accelerators": [])";
   EXPECT_THAT( loadMedium<Topology::SCD>( medium( "SCD", accelerators ) ).accelerators, IsEmpty() );
   EXPECT_THAT(
      loadMedium<Topology::Celestica>( medium( "Celestica", accelerators ) ).accelerators, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::FbDomFpga>( medium( "FbDomFpga", R"("pci": 1, "busses": [])" ) ).busses,
      IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::LinuxFs>( medium( "LinuxFs", R"("devices": [])" ) ).devices, IsEmpty() );
   EXPECT_THAT( loadAccelerator( R"("id": 1, "busses": [])" ).busses, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::PLM>( bus( R"("devices": [])" ) ).devices, IsEmpty() );
   EXPECT_THAT( loadMedium<Topology::PLM>( bus( R"("muxes": [])" ) ).muxes, IsEmpty() );
   EXPECT_THAT( loadMux( R"("did": 1, "busses": [])" ).busses, IsEmpty() );
   EXPECT_THAT( loadDevice( R"("did": 1, "components": [])" ).components, IsEmpty() );
}

TEST_F( TopologyDocument, I2cIsSimulatedWhenItSaysSo ) {
   EXPECT_FALSE( loadMedium<Topology::I2C>( medium( "I2C", R"("id": 1)" ) ).simulated );
   EXPECT_FALSE( loadMedium<Topology::I2C>( medium( "I2C", R"("id": 1, "simulated": false)" ) ).simulated );
   EXPECT_TRUE( loadMedium<Topology::I2C>( medium( "I2C", R"("id": 1, "simulated": true)" ) ).simulated );
}

TEST_F( TopologyDocument, MediaThatAreBussesHaveItsKeys ) {
   for ( auto type : { "I2C", "IOPort", "PLM", "SccSpi" } ) {
      SCOPED_TRACE( type );
      auto& loaded = loadMedium<Topology::MediumNode>(
         medium( type, R"("id": -1, "devices": [ { "did": 7 } ], "muxes": [ { "did": 20 } ])" ) );
      auto& itsBus = dynamic_cast<const Topology::Bus&>( loaded );
      EXPECT_EQ( itsBus.id, 4294967295U );
      ASSERT_EQ( itsBus.devices.size(), 1U );
      EXPECT_EQ( itsBus.devices[0]->did, 7U );
      ASSERT_EQ( itsBus.muxes.size(), 1U );
      EXPECT_EQ( itsBus.muxes[0]->did, 20U );
   }
}

TEST_F( TopologyDocument, AcceleratorIdIsUnsigned ) {
   for ( auto& [text, stored] : unsignedEdges ) {
      EXPECT_EQ( loadAccelerator( R"("id": )" + std::string( text ) ).id, stored );
   }
}

TEST_F( TopologyDocument, BusIdIsReadSignedAndKeptUnsigned ) {
   for ( auto& [text, stored] : intEdges ) {
      auto id = R"("id": )" + std::string( text );
      EXPECT_EQ( loadMedium<Topology::SccSpi>( medium( "SccSpi", id ) ).id, stored );
      auto& busses = loadMux( R"("did": 1, "busses": [ { )" + id + " } ]" ).busses;
      EXPECT_THAT( keysOf( busses ), ElementsAre( stored ) );
   }
}

TEST_F( TopologyDocument, MuxKeepsTheLaterBusOfAnId ) {
   auto& busses = loadMux( R"("did": 20, "busses": [
      { "id": 2, "devices": [ { "did": 7 } ] }, { "id": 3 }, { "id": 2, "devices": [ { "did": 8 } ] } ])" )
                     .busses;
   EXPECT_THAT( keysOf( busses ), ElementsAre( 2U, 3U ) );
   ASSERT_EQ( busses.at( 2 )->devices.size(), 1U );
   EXPECT_EQ( busses.at( 2 )->devices[0]->did, 8U );
}

TEST_F( TopologyDocument, MuxDidIsUnsigned ) {
   for ( auto& [text, stored] : unsignedEdges ) {
      EXPECT_EQ( loadMux( R"("did": )" + std::string( text ) ).did, stored );
   }
}

TEST_F( TopologyDocument, DeviceDidIsUnsigned ) {
   for ( auto& [text, stored] : unsignedEdges ) {
      EXPECT_EQ( loadDevice( R"("did": )" + std::string( text ) ).did, stored );
   }
}

TEST_F( TopologyDocument, ComponentUidIsUnsigned ) {
   for ( auto& [text, stored] : unsignedEdges ) {
      auto& loaded = loadDevice( R"("did": 7, "components": [ { "uid": )" + std::string( text ) + " } ]" );
      ASSERT_EQ( loaded.components.size(), 1U );
      EXPECT_EQ( loaded.components[0]->uid, stored );
   }
}

TEST_F( TopologyDocument, DeviceWithoutDriverHasNoArgumentsAndNeedsNoAddress ) {
   EXPECT_EQ( loadDevice( R"("did": 7)" ).args, nullptr );
   EXPECT_EQ( loadDevice( R"("did": 7, "address": 5, "isMultiDevice": 5, "driverArgs": 5)" ).args, nullptr );
}

TEST_F( TopologyDocument, DeviceWithDriverIsAnArgumentDocument ) {
   auto args = loadDevice( R"("did": 7, "driver": "PCT2075", "address": { "address": 72, "busTimeout": 3 },
      "uid": 70, "provideHam": 0, "driverArgs": { "id": 1 })" )
                  .args;
   ASSERT_NE( args, nullptr );
   EXPECT_EQ( args->did, 7U );
   EXPECT_EQ( args->driver, "PCT2075" );
   EXPECT_EQ( args->address.address, 72U );
   EXPECT_EQ( args->address.busTimeout, 3U );
   EXPECT_EQ( args->uid, 70U );
   EXPECT_FALSE( args->provideHam );
   EXPECT_EQ( args->driverArgs.at( "id" ), "1" );
   EXPECT_EQ( args->jsonText, nullptr );
}

TEST_F( TopologyDocument, DeviceWithDriverNullHasArgumentsWithoutDriver ) {
   auto args = loadDevice( R"("did": 7, "driver": null, "address": { "address": 72 })" ).args;
   ASSERT_NE( args, nullptr );
   EXPECT_EQ( args->driver, "" );
   EXPECT_EQ( args->address.address, 72U );
}

TEST_F( TopologyDocument, MultiDeviceNeedsNoAddress ) {
   auto args =
      loadDevice( R"("did": 7, "driver": "Slot", "isMultiDevice": true, "multiDeviceArgs": { "a": "{}" })" )
         .args;
   ASSERT_NE( args, nullptr );
   EXPECT_TRUE( args->isMultiDevice );
   EXPECT_EQ( args->multiDeviceArgs.at( "a" ), "{}" );
}

TEST_F( TopologyDocument, UnknownKeysAreIgnoredEverywhere ) {
   auto& topology = load( R"( [
      { "type": "SCD", "ham": "SimHam", "pci": 1, "x": {}, "busses": 5, "devices": 5, "accelerators": [
         { "id": 1, "x": [ 1 ], "devices": 5, "busses": [
            { "id": 1, "x": null, "busses": 5,
              "devices": [ { "did": 7, "x": 1.5, "busses": 5, "components": [ { "uid": 70, "x": "y", "did": -1 } ] } ],
              "muxes": [ { "did": 20, "x": true, "devices": 5, "busses": [] } ] } ] } ] },
      { "type": "PLM", "ham": "SimHam", "id": 1, "simulated": 5, "pci": -1, "accelerators": 5 } ] )" );
   auto& scd = dynamic_cast<const Topology::SCD&>( *topology.nodes.at( 0 ) );
   auto& inner = *scd.accelerators.at( 1 )->busses.at( 1 );
   EXPECT_EQ( inner.devices.at( 0 )->components.at( 0 )->uid, 70U );
   EXPECT_EQ( inner.muxes.at( 0 )->did, 20U );
   EXPECT_EQ( topology.nodes.size(), 2U );
}

TEST_F( TopologyDocument, FirstOfTwoEqualKeysCounts ) {
   auto& loaded = loadMedium<Topology::I2C>( R"( [ { "type": "I2C", "type": "PLM", "ham": "first", "ham": 5,
      "id": 1, "id": "x", "label": "first", "label": "second", "simulated": true, "simulated": false,
      "devices": [ { "did": 7, "did": -1, "driver": "first", "driver": null, "address": { "address": 1, "address": 2 },
                     "address": {} } ],
      "devices": 5, "muxes": [], "muxes": [ { "did": 20 } ] } ] )" );
   EXPECT_EQ( loaded.ham, "first" );
   EXPECT_EQ( loaded.id, 1U );
   EXPECT_TRUE( loaded.simulated );
   EXPECT_EQ( Topology::getBusByLabel( "first" ), &loaded );
   EXPECT_EQ( Topology::getBusByLabel( "second" ), nullptr );
   ASSERT_EQ( loaded.devices.size(), 1U );
   EXPECT_EQ( loaded.devices[0]->did, 7U );
   EXPECT_EQ( loaded.devices[0]->args->driver, "first" );
   EXPECT_EQ( loaded.devices[0]->args->address.address, 1U );
   EXPECT_THAT( loaded.muxes, IsEmpty() );
}
