#include "Topology.h"

#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "Drivers/Drivers.h"
#include "FreshLibrary.h"
#include "TopologyText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>

using Host::TraceLine;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

const std::string oldText = TopologyText::device( R"("did": 7, "label": "old")" );
const std::string newText = TopologyText::device( R"("did": 8, "label": "new")" );

const TraceLine loading { 2, "loading topology json" };
const TraceLine same { 2, "topology is the same as the previously loaded one (using it)" };

void expectOldTopology() {
   EXPECT_EQ( Topology::_topology_json, oldText );
   EXPECT_THAT( Topology::_topology_index, SizeIs( 1 ) );
   auto device = Topology::getDeviceByLabel( "old" );
   ASSERT_NE( device, nullptr );
   EXPECT_EQ( Topology::findDevice( 7 ), device );
}

/** Tells when it is deleted, also to the watcher of a process that is about to end. */
class LoudMedium : public Topology::LinuxFs {
public:
   ~LoudMedium() override { fprintf( stderr, "the old tree is deleted\n" ); }
};

} // namespace

class TopologyLoader : public FreshLibrary {};

TEST_F( TopologyLoader, BuildsTheFirstTopology ) {
   EXPECT_EQ( Topology::loadTopology( oldText.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( loading ) );
   ASSERT_NE( Topology::_topology, nullptr );
   EXPECT_THAT( Topology::_topology->nodes, SizeIs( 1 ) );
   expectOldTopology();
}

TEST_F( TopologyLoader, BuildsTheSameTextOnce ) {
   TopologyText::load( oldText );
   auto topology = Topology::_topology;
   auto medium = Topology::_topology->nodes.at( 0 );
   auto device = Topology::getDeviceByLabel( "old" );
   Host::traces.clear();

   auto copy = oldText;
   EXPECT_EQ( Topology::loadTopology( copy.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( same ) );
   EXPECT_EQ( Topology::_topology, topology );
   EXPECT_EQ( Topology::_topology->nodes.at( 0 ), medium );
   EXPECT_EQ( Topology::getDeviceByLabel( "old" ), device );
   expectOldTopology();
}

TEST_F( TopologyLoader, ComparesTextsByteForByte ) {
   TopologyText::load( oldText );
   Host::traces.clear();
   EXPECT_EQ( Topology::loadTopology( ( oldText + " " ).c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( loading ) );
   EXPECT_EQ( Topology::_topology_json, oldText + " " );
}

TEST_F( TopologyLoader, ReplacesTheTopologyByThatOfAnotherText ) {
   TopologyText::load( oldText );
   Host::traces.clear();
   EXPECT_EQ( Topology::loadTopology( newText.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( loading ) );
   EXPECT_EQ( Topology::_topology_json, newText );
   EXPECT_THAT( Topology::_topology_index, SizeIs( 1 ) );
   EXPECT_EQ( Topology::getNodeByLabel( "old" ), nullptr );
   EXPECT_EQ( Topology::findDevice( 7 ), nullptr );
   ASSERT_NE( Topology::getDeviceByLabel( "new" ), nullptr );
   EXPECT_EQ( Topology::findDevice( 8 ), Topology::getDeviceByLabel( "new" ) );
}

TEST_F( TopologyLoader, ComesBackToAnEarlierTextByBuildingAnew ) {
   TopologyText::load( oldText );
   TopologyText::load( newText );
   Host::traces.clear();
   EXPECT_EQ( Topology::loadTopology( oldText.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( loading ) );
   expectOldTopology();
}

TEST_F( TopologyLoader, DeletesTheWholeOldTree ) {
   TopologyText::load( TopologyText::bus( R"("label": "bus",
      "devices": [ { "did": 7, "label": "device", "driver": null, "address": { "address": 1 },
                     "components": [ { "uid": 70, "label": "component" } ] } ],
      "muxes": [ { "did": 20, "label": "mux", "busses": [ { "id": 1 } ] } ])" ) );
   std::weak_ptr<Topology::MediumNode> medium = Topology::_topology->nodes.at( 0 );
   auto& bus = *Topology::getBusByLabel( "bus" );
   std::weak_ptr<Topology::Device> device = bus.devices.at( 0 );
   std::weak_ptr<Topology::Component> component = bus.devices.at( 0 )->components.at( 0 );
   std::weak_ptr<Drivers::DriverArgs> args = bus.devices.at( 0 )->args;
   std::weak_ptr<Topology::Mux> mux = bus.muxes.at( 0 );
   std::weak_ptr<Topology::Bus> inner = bus.muxes.at( 0 )->busses.at( 1 );

   TopologyText::load( newText );
   EXPECT_TRUE( medium.expired() );
   EXPECT_TRUE( device.expired() );
   EXPECT_TRUE( component.expired() );
   EXPECT_TRUE( args.expired() );
   EXPECT_TRUE( mux.expired() );
   EXPECT_TRUE( inner.expired() );
}

TEST_F( TopologyLoader, LeavesTheDeviceCacheAlone ) {
   Component::DeviceBase device;
   std::map<uint32_t, Component::DeviceBase*> cache { { 7, &device } };
   Component::DeviceBase::devices = cache;
   TopologyText::load( oldText );
   TopologyText::load( newText );
   EXPECT_EQ( Component::DeviceBase::devices, cache );
   Component::DeviceBase::devices.clear();
}

TEST_F( TopologyLoader, CopiesTheText ) {
   auto text = oldText;
   EXPECT_EQ( Topology::loadTopology( text.c_str() ), QL_STATUS_OK );
   text.assign( text.size(), 'x' );
   expectOldTopology();
}

TEST_F( TopologyLoader, ReadsUpToTheFirstNul ) {
   EXPECT_EQ( Topology::loadTopology( "[]\0 not read" ), QL_STATUS_OK );
   EXPECT_EQ( Topology::_topology_json, "[]" );
}

TEST_F( TopologyLoader, BuildsATreeWithoutMediaFromAnEmptyArray ) {
   EXPECT_EQ( Topology::loadTopology( "[]" ), QL_STATUS_OK );
   ASSERT_NE( Topology::_topology, nullptr );
   EXPECT_THAT( Topology::_topology->nodes, IsEmpty() );
   for ( auto did : { 0U, 1U, 4294967295U } ) {
      EXPECT_EQ( Topology::findDevice( did ), nullptr );
   }
}

TEST_F( TopologyLoader, RefusesTheEmptyTextThoughItEqualsTheStoredOne ) {
   EXPECT_EQ( Topology::loadTopology( "" ), QL_STATUS_INVALID_ARGUMENT );
   EXPECT_THAT( Host::traces,
      ElementsAre(
         loading, TraceLine { 2, "failed to load topology from json: The document is empty. offset 0" } ) );
   EXPECT_EQ( Topology::_topology, nullptr );
}

TEST_F( TopologyLoader, RefusesATextThatIsNoJson ) {
   for ( auto& [text, message] : TopologyText::parseErrors ) {
      SCOPED_TRACE( text );
      Host::traces.clear();
      EXPECT_EQ( Topology::loadTopology( text ), QL_STATUS_INVALID_ARGUMENT );
      EXPECT_THAT( Host::traces, ElementsAre( loading, TraceLine { 2, "failed to load topology from json: " +
                                                                         std::string( message ) } ) );
      EXPECT_EQ( Topology::_topology, nullptr );
      EXPECT_THAT( Topology::_topology_index, IsEmpty() );
      EXPECT_EQ( Topology::_topology_json, "" );
   }
}

TEST_F( TopologyLoader, KeepsTheOldTopologyWhenATextIsNoJson ) {
   TopologyText::load( oldText );
   auto topology = Topology::_topology;
   for ( auto& [text, message] : TopologyText::parseErrors ) {
      SCOPED_TRACE( text );
      EXPECT_EQ( Topology::loadTopology( text ), QL_STATUS_INVALID_ARGUMENT );
      EXPECT_EQ( Topology::_topology, topology );
      expectOldTopology();
   }
   Host::traces.clear();
   EXPECT_EQ( Topology::loadTopology( oldText.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( same ) );
}

/**
 * No document leads here: whatever keeps a tree from being created ends the process. A text that is stored
 * without its tree is no reason to skip the work.
 */
TEST_F( TopologyLoader, BuildsTheStoredTextAnewWhenThereIsNoTree ) {
   Topology::_topology_json = oldText;
   EXPECT_EQ( Topology::loadTopology( oldText.c_str() ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( loading ) );
   ASSERT_NE( Topology::_topology, nullptr );
   expectOldTopology();
}

TEST_F( TopologyLoader, EndsTheProcessWhenTheRootIsNoArray ) {
   for ( auto text : { "{}", R"({ "type": "LinuxFs", "ham": "SimHam" })", "null", "true", "7", "\"[]\"" } ) {
      EXPECT_DEATH( Topology::loadTopology( text ), assertionFailed( "json.IsArray()" ) ) << text;
   }
}

TEST_F( TopologyLoader, HasDeletedTheOldTreeBeforeItLooksAtTheRoot ) {
   auto reload = [] {
      TopologyText::load( "[]" );
      Topology::_topology->nodes.push_back( std::make_shared<LoudMedium>() );
      Topology::loadTopology( "{}" );
   };
   EXPECT_DEATH(
      reload(), AllOf( HasSubstr( "the old tree is deleted" ), assertionFailed( "json.IsArray()" ) ) );
}
