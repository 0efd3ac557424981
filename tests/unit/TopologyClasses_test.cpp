#include "Topology.h"

#include "Drivers/Drivers.h"
#include "FieldOrder.h"
#include "ObjectLayout.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace Topology;

namespace {

template <typename Base, typename... Classes>
constexpr bool deriveFrom = ( std::is_convertible_v<Classes*, Base*> && ... );

/** Of two Node parts none is the Node part. */
template <typename... Classes>
constexpr bool holdTwoNodes = ( (
   std::is_base_of_v<Node, Classes> && !std::is_convertible_v<Classes*, Node*>)&&... );

template <typename... Classes>
constexpr bool concrete = ( !std::is_abstract_v<Classes> && ... );

template <typename Visited>
size_t visitSlotOf() {
   return Layout::slotOf(
      static_cast<bool ( TopologyVisitor::* )( const Visited* )>( &TopologyVisitor::visit ) );
}

} // namespace

TEST( TopologyClasses, DeriveFromOneNode ) {
   EXPECT_TRUE( (deriveFrom<Node, MediumNode, ::Topology::Component, Device, Mux, Bus, Accelerator,
      ::Topology::Topology>));
   EXPECT_TRUE( (deriveFrom<MediumNode, SCD, Celestica, LinuxFs, FbDomFpga>));
   EXPECT_TRUE( (deriveFrom<Node, SCD, Celestica, LinuxFs, FbDomFpga>));
}

TEST( TopologyClasses, ThatAreMediumAndBusHoldTwoNodes ) {
   EXPECT_TRUE( (deriveFrom<MediumNode, I2C, IOPort, PLM, SccSpi>));
   EXPECT_TRUE( (deriveFrom<Bus, I2C, IOPort, PLM, SccSpi>));
   EXPECT_TRUE( (holdTwoNodes<I2C, IOPort, PLM, SccSpi>));
}

TEST( TopologyClasses, ThatAreMediumAndBusBeginWithTheMedium ) {
   I2C i2c;
   EXPECT_EQ( static_cast<void*>( static_cast<MediumNode*>( &i2c ) ), &i2c );
   EXPECT_TRUE( inOrder( *static_cast<MediumNode*>( &i2c ), *static_cast<Bus*>( &i2c ), i2c.simulated ) );
}

TEST( TopologyClasses, AreConcreteButForNodeAndMediumNode ) {
   EXPECT_TRUE( std::is_abstract_v<Node> );
   EXPECT_TRUE( std::is_abstract_v<MediumNode> );
   EXPECT_TRUE( (concrete<::Topology::Component, Device, Mux, Bus, Accelerator, SCD, Celestica, LinuxFs,
      FbDomFpga, I2C, IOPort, PLM, SccSpi, ::Topology::Topology>));
}

TEST( TopologyClasses, AreDestroyedThroughTheirBase ) {
   EXPECT_TRUE( std::has_virtual_destructor_v<Node> );
   EXPECT_TRUE( std::has_virtual_destructor_v<MediumNode> );
   EXPECT_TRUE( std::has_virtual_destructor_v<Bus> );
}

TEST( TopologyClasses, HaveAcceptBehindTheDestructor ) {
   // A virtual destructor takes two places.
   EXPECT_EQ( Layout::slotOf( &Node::accept ), 2U );
   EXPECT_EQ( sizeof( Node ), sizeof( void* ) );
}

TEST( TopologyClasses, ComponentStartsWithUid0 ) {
   ::Topology::Component component;
   auto& [uid] = component;
   EXPECT_EQ( uid, 0U );
}

TEST( TopologyClasses, DeviceStartsWithoutArgumentsAndComponents ) {
   Device device;
   auto& [did, args, components] = device;
   EXPECT_EQ( did, 0U );
   EXPECT_EQ( args, nullptr );
   EXPECT_TRUE( components.empty() );
}

TEST( TopologyClasses, MuxStartsWithoutBusses ) {
   Mux mux;
   auto& [did, busses] = mux;
   EXPECT_EQ( did, 0U );
   EXPECT_TRUE( busses.empty() );
}

TEST( TopologyClasses, BusStartsWithoutDevicesAndMuxes ) {
   Bus bus;
   auto& [id, devices, muxes] = bus;
   EXPECT_EQ( id, 0U );
   EXPECT_TRUE( devices.empty() );
   EXPECT_TRUE( muxes.empty() );
}

TEST( TopologyClasses, AcceleratorStartsWithoutBusses ) {
   Accelerator accelerator;
   auto& [id, busses] = accelerator;
   EXPECT_EQ( id, 0U );
   EXPECT_TRUE( busses.empty() );
}

TEST( TopologyClasses, ScdStartsWithId0AndWithoutAccelerators ) {
   SCD scd;
   EXPECT_EQ( scd.ham, "" );
   EXPECT_EQ( scd.id, 0U );
   EXPECT_EQ( scd.pci, 0U );
   EXPECT_TRUE( scd.accelerators.empty() );
   EXPECT_TRUE( inOrder( scd.ham, scd.id, scd.pci, scd.accelerators ) );
}

TEST( TopologyClasses, CelesticaStartsWithoutAccelerators ) {
   Celestica celestica;
   EXPECT_EQ( celestica.ham, "" );
   EXPECT_TRUE( celestica.accelerators.empty() );
}

TEST( TopologyClasses, LinuxFsStartsWithoutDevices ) {
   LinuxFs linuxFs;
   EXPECT_EQ( linuxFs.ham, "" );
   EXPECT_TRUE( linuxFs.devices.empty() );
}

TEST( TopologyClasses, FbDomFpgaStartsWithId0AndWithoutBusses ) {
   FbDomFpga fpga;
   EXPECT_EQ( fpga.ham, "" );
   EXPECT_EQ( fpga.id, 0U );
   EXPECT_EQ( fpga.pci, 0U );
   EXPECT_TRUE( fpga.busses.empty() );
   EXPECT_TRUE( inOrder( fpga.ham, fpga.id, fpga.pci, fpga.busses ) );
}

TEST( TopologyClasses, I2cIsNotSimulatedAtTheStart ) { EXPECT_FALSE( I2C().simulated ); }

TEST( TopologyClasses, TopologyStartsWithoutMedia ) {
   ::Topology::Topology topology;
   auto& [nodes] = topology;
   EXPECT_TRUE( nodes.empty() );
}

TEST( TopologyClasses, KeepChildrenBySharedPointer ) {
   using Busses = std::map<uint32_t, std::shared_ptr<Bus>>;
   using Accelerators = std::map<uint32_t, std::shared_ptr<Accelerator>>;
   EXPECT_TRUE( (std::is_same_v<decltype( Mux::busses ), Busses>));
   EXPECT_TRUE( (std::is_same_v<decltype( Accelerator::busses ), Busses>));
   EXPECT_TRUE( (std::is_same_v<decltype( FbDomFpga::busses ), Busses>));
   EXPECT_TRUE( (std::is_same_v<decltype( SCD::accelerators ), Accelerators>));
   EXPECT_TRUE( (std::is_same_v<decltype( Celestica::accelerators ), Accelerators>));
   EXPECT_TRUE( (std::is_same_v<decltype( Bus::devices ), std::vector<std::shared_ptr<Device>>>));
   EXPECT_TRUE( (std::is_same_v<decltype( Bus::muxes ), std::vector<std::shared_ptr<Mux>>>));
   EXPECT_TRUE( (std::is_same_v<decltype( LinuxFs::devices ), std::vector<std::shared_ptr<Device>>>));
   EXPECT_TRUE( (std::is_same_v<decltype( Device::args ), std::shared_ptr<Drivers::DriverArgs>>));
   EXPECT_TRUE(
      (std::is_same_v<decltype( ::Topology::Topology::nodes ), std::vector<std::shared_ptr<MediumNode>>>));
}

TEST( TopologyClasses, ProcessWideStateStartsEmpty ) {
   EXPECT_EQ( _topology, nullptr );
   EXPECT_TRUE( _topology_index.empty() );
   EXPECT_EQ( _topology_json, "" );
}

TEST( TopologyVisitor, HasNoFieldsAndNoDestructor ) {
   EXPECT_EQ( sizeof( TopologyVisitor ), sizeof( void* ) );
   EXPECT_FALSE( std::has_virtual_destructor_v<TopologyVisitor> );
}

TEST( TopologyVisitor, HasItsVisitsInTheAgreedOrder ) {
   std::vector<size_t> slots { visitSlotOf<::Topology::Component>(), visitSlotOf<Device>(),
      visitSlotOf<Mux>(), visitSlotOf<Bus>(), visitSlotOf<Accelerator>(), visitSlotOf<SCD>(),
      visitSlotOf<I2C>(), visitSlotOf<IOPort>(), visitSlotOf<Celestica>(), visitSlotOf<PLM>(),
      visitSlotOf<LinuxFs>(), visitSlotOf<SccSpi>(), visitSlotOf<FbDomFpga>(),
      visitSlotOf<::Topology::Topology>() };
   EXPECT_EQ( slots, ( std::vector<size_t> { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13 } ) );
}

TEST( TopologyVisitor, LeavesOnlyTheDeviceToBeDefined ) {
   class DeviceVisitor : public TopologyVisitor {
   public:
      using TopologyVisitor::visit;

      bool visit( const Device* ) override { return false; }
   };

   EXPECT_TRUE( std::is_abstract_v<TopologyVisitor> );
   EXPECT_FALSE( std::is_abstract_v<DeviceVisitor> );
}

TEST( TopologyVisitor, GoesOnByDefault ) {
   SearchDeviceVisitor visitor;
   ::Topology::Component component;
   Mux mux;
   Bus bus;
   Accelerator accelerator;
   SCD scd;
   I2C i2c;
   IOPort ioPort;
   Celestica celestica;
   PLM plm;
   LinuxFs linuxFs;
   SccSpi sccSpi;
   FbDomFpga fpga;
   ::Topology::Topology topology;

   EXPECT_TRUE( visitor.visit( &component ) );
   EXPECT_TRUE( visitor.visit( &mux ) );
   EXPECT_TRUE( visitor.visit( &bus ) );
   EXPECT_TRUE( visitor.visit( &accelerator ) );
   EXPECT_TRUE( visitor.visit( &scd ) );
   EXPECT_TRUE( visitor.visit( &i2c ) );
   EXPECT_TRUE( visitor.visit( &ioPort ) );
   EXPECT_TRUE( visitor.visit( &celestica ) );
   EXPECT_TRUE( visitor.visit( &plm ) );
   EXPECT_TRUE( visitor.visit( &linuxFs ) );
   EXPECT_TRUE( visitor.visit( &sccSpi ) );
   EXPECT_TRUE( visitor.visit( &fpga ) );
   EXPECT_TRUE( visitor.visit( &topology ) );
}
