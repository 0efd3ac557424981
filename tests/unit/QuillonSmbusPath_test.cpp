// From a device's place in the topology to the Ham that reaches it, multiplexers included.

#include "Ham/QuillonSmbusPath.h"

#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "Components/Mux.h"
#include "FieldOrder.h"
#include "FreshLibrary.h"
#include "ObjectLayout.h"
#include "Quillon.h"
#include "SocketServer.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <bit>

namespace {

using Component::HardwareDevice;
using Drivers::DriverArgs;
using Ham::QuillonSmbusHam;
using testing::ElementsAre;

void load( const std::string& text ) { ASSERT_EQ( Topology::loadTopology( text.c_str() ), QL_STATUS_OK ); }

DriverArgs argsOf( uint32_t did, uint32_t uid = DriverArgs::noUid ) {
   DriverArgs args;
   args.driver = "Dummy";
   args.did = did;
   args.uid = uid;
   args.address.address = 0x48;
   args.address.addrSize = 2;
   args.address.busTimeout = 5;
   args.address.accelerator = 9;
   args.provideHam = true;
   return args;
}

/** A Ham lives until the process ends. */
QuillonSmbusHam* keep( Ham::Ham* ham ) {
   static auto& kept = *new std::vector<Ham::Ham*>;
   kept.push_back( ham );
   return static_cast<QuillonSmbusHam*>( ham );
}

QuillonSmbusHam* create( const DriverArgs& args ) {
   return keep( QuillonSmbusHam::create( *Topology::_topology, args ) );
}

using QuillonSmbusPath = FreshLibrary;

TEST_F( QuillonSmbusPath, OfADeviceOnAnI2cBusHasItsBusAndMaster ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [ { "did": 1 } ] } ])" );
   auto ham = create( argsOf( 1 ) );
   ASSERT_TRUE( ham );
   ham->init();
   EXPECT_EQ( ham->address.bus, 5U );
   EXPECT_EQ( ham->masterType, Smbus::I2C );
   EXPECT_EQ( ham->pciAddress, 0U );
   EXPECT_TRUE( ham->muxes.empty() );
   EXPECT_EQ( ham->prepareRequestCount_, 0U );
   EXPECT_EQ( ham->responseId, 0U );
}

TEST_F( QuillonSmbusPath, TakesTheWholeAddressOfTheArgumentsButForTheRegisterSize ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [ { "did": 1 } ] } ])" );
   auto ham = create( argsOf( 1 ) );
   EXPECT_EQ( ham->address.address, 0x48U );
   EXPECT_EQ( ham->address.busTimeout, 5U );
   EXPECT_EQ( ham->address.accelerator, 9U ) << "no accelerator on the path replaces it";
   EXPECT_EQ( ham->address.addrSize, 1U );
}

struct MediumRow {
   const char* name;
   const char* text;
   Smbus::MasterType masterType;
   uint32_t pci;
   uint32_t bus;
   uint32_t accelerator;
};

std::ostream& operator<<( std::ostream& stream, const MediumRow& row ) { return stream << row.name; }

class EachMedium : public QuillonSmbusPath, public testing::WithParamInterface<MediumRow> {};

const MediumRow media[] = {
   { "simulatedI2c",
      R"([ { "type": "I2C", "ham": "h", "id": 1, "simulated": true, "devices": [ { "did": 1 } ] } ])",
      Smbus::SIMULATED, 0, 1, 9 },
   { "i2c", R"([ { "type": "I2C", "ham": "h", "id": 2, "simulated": false, "devices": [ { "did": 1 } ] } ])",
      Smbus::I2C, 0, 2, 9 },
   { "scd",
      R"([ { "type": "SCD", "ham": "h", "pci": 4000000000, "accelerators": [
           { "id": 3, "busses": [ { "id": 4, "devices": [ { "did": 1 } ] } ] } ] } ])",
      Smbus::SCD, 4000000000, 4, 3 },
   { "ioPort", R"([ { "type": "IOPort", "ham": "h", "id": 5, "devices": [ { "did": 1 } ] } ])",
      Smbus::IO_PORT, 0, 5, 9 },
   { "celestica",
      R"([ { "type": "Celestica", "ham": "h", "accelerators": [
           { "id": 6, "busses": [ { "id": 7, "devices": [ { "did": 1 } ] } ] } ] } ])",
      Smbus::CELESTICA, 0, 7, 6 },
   { "plm", R"([ { "type": "PLM", "ham": "h", "id": 8, "devices": [ { "did": 1 } ] } ])", Smbus::PLM, 0, 8,
      9 },
   { "sccSpi", R"([ { "type": "SccSpi", "ham": "h", "id": 9, "devices": [ { "did": 1 } ] } ])",
      Smbus::SCC_SPI, 0, 9, 9 },
   { "fbDomFpga",
      R"([ { "type": "FbDomFpga", "ham": "h", "pci": 77, "busses": [
           { "id": 10, "devices": [ { "did": 1 } ] } ] } ])",
      Smbus::FB_DOM_FPGA, 77, 10, 9 },
   { "busIdCutTo7Bits", R"([ { "type": "I2C", "ham": "h", "id": 130, "devices": [ { "did": 1 } ] } ])",
      Smbus::I2C, 0, 2, 9 },
   { "negativeBusId", R"([ { "type": "I2C", "ham": "h", "id": -1, "devices": [ { "did": 1 } ] } ])",
      Smbus::I2C, 0, 127, 9 },
   { "acceleratorIdCutTo7Bits",
      R"([ { "type": "Celestica", "ham": "h", "accelerators": [
           { "id": 129, "busses": [ { "id": 7, "devices": [ { "did": 1 } ] } ] } ] } ])",
      Smbus::CELESTICA, 0, 7, 1 },
};

INSTANTIATE_TEST_SUITE_P( QuillonSmbusPath, EachMedium, testing::ValuesIn( media ) );

TEST_P( EachMedium, SetsWhatItKnows ) {
   load( GetParam().text );
   auto ham = create( argsOf( 1 ) );
   ASSERT_TRUE( ham );
   EXPECT_EQ( ham->masterType, GetParam().masterType );
   EXPECT_EQ( ham->pciAddress, GetParam().pci );
   EXPECT_EQ( ham->address.bus, GetParam().bus );
   EXPECT_EQ( ham->address.accelerator, GetParam().accelerator );
}

TEST_F( QuillonSmbusPath, OfALinuxFsDeviceAddsNothing ) {
   load( R"([ { "type": "LinuxFs", "ham": "h", "devices": [ { "did": 1 } ] } ])" );
   auto ham = create( argsOf( 1 ) );
   ASSERT_TRUE( ham );
   EXPECT_EQ( ham->masterType, Smbus::SIMULATED );
   EXPECT_EQ( ham->address.bus, 0U );
}

TEST_F( QuillonSmbusPath, OfAComponentIsFoundByItsUidWhateverTheDid ) {
   load( R"([ { "type": "I2C", "ham": "h", "id": 1, "devices": [
      { "did": 1 },
      { "did": 2, "driver": "Dummy", "address": { "address": 99 }, "components": [ { "uid": 40 } ] } ] },
      { "type": "I2C", "ham": "h", "id": 2, "devices": [ { "did": 3 } ] } ])" );
   auto ham = create( argsOf( 3, 40 ) );
   ASSERT_TRUE( ham );
   EXPECT_EQ( ham->address.bus, 1U );
   EXPECT_EQ( ham->address.address, 0x48U ) << "of the arguments, not of the topology's device";
}

TEST_F( QuillonSmbusPath, IsNullForADeviceThatTheTreeLacks ) {
   load( R"([ { "type": "I2C", "ham": "h", "id": 1, "devices": [ { "did": 1 } ] } ])" );
   EXPECT_FALSE( create( argsOf( 2 ) ) );
   EXPECT_FALSE( create( argsOf( 1, 40 ) ) );
}

TEST_F( QuillonSmbusPath, ThatIsMissingShowsAsAHamThatCannotBeMade ) {
   load( R"([ { "type": "I2C", "ham": "h", "id": 1, "devices": [ { "did": 1 } ] } ])" );
   Host::traces.clear();
   EXPECT_FALSE( Ham::Ham::create( "QuillonSmbus", *Topology::_topology, argsOf( 2 ) ) );
   EXPECT_TRUE( Host::hasTraced( 0, "Factory function returned, couldn't create HAM QuillonSmbus" ) );
}

TEST_F( QuillonSmbusPath, StartsWithNoBusSeen ) {
   Ham::QuillonSmbusVisitor visitor;
   EXPECT_FALSE( visitor.found );
   EXPECT_FALSE( visitor.ham );
   EXPECT_EQ( visitor.lastBus, 0xFFFFFFFFU );
}

TEST_F( QuillonSmbusPath, IsFoundByVisitorsWithTheirFieldsInOrder ) {
   Ham::QuillonSmbusDriverVisitor driver;
   EXPECT_TRUE( inOrder( driver.found, driver.ham, driver.lastBus, driver.args ) );
   Ham::QuillonSmbusBusIdVisitor bus;
   EXPECT_TRUE( inOrder( bus.found, bus.ham, bus.lastBus, bus.bus, bus.address ) );
}

TEST_F( QuillonSmbusPath, AsksAMuxThroughSlotsThatDriversKnow ) {
   using Component::LogicalDevice::Mux;
   EXPECT_EQ( Layout::slotOf( &Mux::addSelectRequests ), 2U );
   EXPECT_EQ( Layout::slotOf( &Mux::addReleaseRequests ), 3U );
   EXPECT_EQ( Layout::slotOf( &Mux::reserved ), 4U );
   EXPECT_EQ( Layout::slotOf( &Mux::device ), 5U );
}

TEST_F( QuillonSmbusPath, OnABusGoesByTheVeryObjectNotByItsId ) {
   load( R"([ { "type": "I2C", "ham": "h", "id": 5, "simulated": true, "label": "first" },
              { "type": "I2C", "ham": "h", "id": 5, "label": "second" },
              { "type": "I2C", "ham": "h", "id": 6, "simulated": true, "label": "third" } ])" );
   uint32_t address = 0x1C8;
   auto second = keep(
      QuillonSmbusHam::createOnBus( *Topology::_topology, Topology::getBusByLabel( "second" ), address ) );
   ASSERT_TRUE( second );
   EXPECT_EQ( second->masterType, Smbus::I2C );
   HamAddress expected {};
   expected.address = 0x48;
   expected.bus = 5;
   expected.addrSize = 1;
   EXPECT_EQ( std::bit_cast<uint64_t>( second->address ), std::bit_cast<uint64_t>( expected ) );
   auto first = keep(
      QuillonSmbusHam::createOnBus( *Topology::_topology, Topology::getBusByLabel( "first" ), address ) );
   EXPECT_EQ( first->masterType, Smbus::SIMULATED );
}

TEST_F( QuillonSmbusPath, OnABusOutsideTheTreeIsNull ) {
   load( R"([ { "type": "I2C", "ham": "h", "id": 5 } ])" );
   Topology::Bus other;
   other.id = 5;
   uint32_t address = 1;
   EXPECT_FALSE( QuillonSmbusHam::createOnBus( *Topology::_topology, &other, address ) );
}

TEST_F( QuillonSmbusPath, OnABusInsideAnAcceleratorGetsTheWholePath ) {
   load( R"([ { "type": "SCD", "ham": "h", "pci": 12, "accelerators": [ { "id": 2, "busses": [
      { "id": 3, "label": "inner" }, { "id": 4 } ] }, { "id": 5, "busses": [ { "id": 6 } ] } ] } ])" );
   uint32_t address = 0x20;
   auto ham = keep(
      QuillonSmbusHam::createOnBus( *Topology::_topology, Topology::getBusByLabel( "inner" ), address ) );
   EXPECT_EQ( ham->address.bus, 3U );
   EXPECT_EQ( ham->address.accelerator, 2U );
   EXPECT_EQ( ham->masterType, Smbus::SCD );
   EXPECT_EQ( ham->pciAddress, 12U );
}

/** A multiplexer chip that selects a channel by one write and releases it by another. */
class TestMuxChip : public HardwareDevice {
public:
   class Channel : public Component::LogicalDevice::Mux {
   public:
      Channel( TestMuxChip* owner, uint32_t value ) : chip( owner ), channel( value ) {}

      uint32_t addSelectRequests( QuillonSmbusHam* ham ) override {
         ham->addWrite8( 0, static_cast<uint8_t>( 1 << channel ), false, 1 );
         return 1;
      }

      void addReleaseRequests( QuillonSmbusHam* ham ) override { ham->addWrite8( 0, 0, false, 1 ); }

      HardwareDevice* device() override { return chip; }

      TestMuxChip* chip;
      uint32_t channel;
   };

   Component::LogicalDevice::Mux* newMux( const DriverArgs& args, uint32_t value ) override {
      lastMuxArgs = args;
      return new Channel( this, value );
   }

   DriverArgs lastMuxArgs;
};

HardwareDevice* newTestMuxChip( const DriverArgs&, Ham::Ham* ) { return new TestMuxChip; }

const char nested[] = R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
   "devices": [ { "did": 70, "driver": "TestMux", "address": { "address": 112 } } ],
   "muxes": [ { "did": 70, "busses": [
      { "id": 3, "devices": [ { "did": 71, "driver": "TestMux", "address": { "address": 113 } } ],
        "muxes": [ { "did": 71, "busses": [ { "id": 2, "devices": [ { "did": 1 } ] } ] } ] } ] } ] } ])";

class BehindMuxes : public QuillonSmbusPath {
protected:
   TestRow<std::map<std::string, Drivers::DriverFactory>> row { Drivers::drivers, "TestMux", newTestMuxChip };
};

TEST_F( BehindMuxes, TheBusIsTheOutermostAndTheMuxesGoFromOuterToInner ) {
   load( nested );
   auto ham = create( argsOf( 1 ) );
   ASSERT_TRUE( ham );
   EXPECT_EQ( ham->address.bus, 5U );
   ASSERT_EQ( ham->muxes.size(), 2U );
   auto outer = static_cast<TestMuxChip::Channel*>( ham->muxes[0] );
   auto inner = static_cast<TestMuxChip::Channel*>( ham->muxes[1] );
   EXPECT_EQ( outer->channel, 3U );
   EXPECT_EQ( inner->channel, 2U );
   EXPECT_EQ( Component::DeviceBase::devices.at( 70 ), outer->chip );
   EXPECT_EQ( Component::DeviceBase::devices.at( 71 ), inner->chip );
   EXPECT_EQ( outer->chip->lastMuxArgs.did, 70U );
   EXPECT_TRUE( Host::hasTraced( 3, "Mux using device 71 with value 2" ) );
   EXPECT_TRUE( Host::hasTraced( 3, "Mux using device 70 with value 3" ) );
}

TEST_F( BehindMuxes, AMuxChipBehindAnotherMuxIsReachedThroughThatOne ) {
   load( nested );
   create( argsOf( 1 ) );
   auto inner = static_cast<TestMuxChip*>( Component::DeviceBase::devices.at( 71 ) );
   auto ham = static_cast<QuillonSmbusHam*>( inner->ham );
   EXPECT_EQ( ham->muxes.size(), 1U );
   EXPECT_EQ( ham->prepareRequestCount_, 1U );
}

TEST_F( BehindMuxes, AMuxChipIsMadeOnce ) {
   load( nested );
   create( argsOf( 1 ) );
   auto chip = Component::DeviceBase::devices.at( 70 );
   create( argsOf( 1 ) );
   EXPECT_EQ( Component::DeviceBase::devices.at( 70 ), chip );
}

/** A word of a request as chip/bus and data. */
std::string summary( const Smbus::Request& request ) {
   auto word = std::bit_cast<HamAddress>( static_cast<uint64_t>( request.address() ) );
   return fmt::format( "{} 0x{:02x}@{} reg {} {}", request.type() == Smbus::READ ? "read" : "write",
      static_cast<unsigned>( word.address ), static_cast<unsigned>( word.bus ),
      static_cast<unsigned>( word.reg ),
      request.has_data() ? std::to_string( static_cast<uint8_t>( request.data()[0] ) ) : "-" );
}

std::vector<std::string> summaries( const Smbus::TransactionRequest& transaction ) {
   std::vector<std::string> lines;
   for ( auto& request : transaction.request() ) {
      lines.push_back( summary( request ) );
   }
   return lines;
}

TEST_F( BehindMuxes, EveryTransactionSelectsTheChannelsAndReleasesThemInnermostFirst ) {
   SocketServer server( SocketServer::answering( []( auto& transaction ) {
      Smbus::TransactionResponse response;
      for ( auto& request : transaction.request() ) {
         response.add_response()->set_data( request.type() == Smbus::READ ? "\x2A" : "" );
      }
      return response;
   } ) );
   ASSERT_EQ( qlSockInit( "test", 1 ), QL_STATUS_OK );
   load( nested );
   auto ham = create( argsOf( 1 ) );
   ham->init();
   EXPECT_EQ( ham->prepareRequestCount_, 2U );
   EXPECT_EQ( ham->address.address, 0x48U ) << "its own address is in force again";

   for ( auto round : { "first", "second" } ) {
      uint8_t value = 0;
      ASSERT_EQ( ham->read8( 9, &value, 1 ), QL_STATUS_OK ) << round;
      EXPECT_EQ( value, 0x2A ) << round << ": id 0 is the entry behind the head";
      EXPECT_THAT( summaries( server.requests().back() ),
         ElementsAre( "write 0x70@5 reg 0 8", "write 0x71@5 reg 0 4", "read 0x48@5 reg 9 -",
            "write 0x71@5 reg 0 0", "write 0x70@5 reg 0 0" ) )
         << round;
      EXPECT_EQ( ham->address.address, 0x48U ) << round;
   }
   delete _qlSock;
   _qlSock = nullptr;
}

TEST_F( BehindMuxes, AMuxChipWhoseDriverHasNoMuxThrows ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "devices": [ { "did": 70, "driver": "Dummy", "address": { "address": 112 } } ],
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 } ] } ] } ] } ])" );
   try {
      create( argsOf( 1 ) );
      FAIL();
   } catch ( const NotImplementedException& exception ) {
      EXPECT_STREQ( exception.what(), "Not implemented newMux" );
   }
}

TEST_F( BehindMuxes, AMuxChipHasToBeDeclaredWithItsArguments ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [ { "did": 70 } ],
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 } ] } ] } ] } ])" );
   Host::echoTraces = true;
   EXPECT_DEATH( create( argsOf( 1 ) ), testing::AllOf( assertionFailed( "topoDev->args" ),
                                           testing::HasSubstr( "3: Device 70 isn't declared inline" ) ) );
}

TEST_F( BehindMuxes, AMuxChipThatCannotBeMadeEndsTheProcess ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "devices": [ { "did": 70, "driver": "NoSuchDriver", "address": { "address": 112 } } ],
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 } ] } ] } ] } ])" );
   EXPECT_DEATH( create( argsOf( 1 ) ), assertionFailed( "muxDevice" ) );
}

TEST_F( BehindMuxes, AMuxChipHasToBeInTheTree ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 } ] } ] } ] } ])" );
   EXPECT_DEATH( create( argsOf( 1 ) ), assertionFailed( "topoDev" ) );
}

TEST_F( BehindMuxes, AMuxChipThatLiesBehindItselfEndsTheProcess ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 },
         { "did": 70, "driver": "TestMux", "address": { "address": 112 } } ] } ] } ] } ])" );
   EXPECT_DEATH( create( argsOf( 1 ) ), assertionFailed( "isNew" ) );
}

TEST_F( BehindMuxes, AMuxChipNeedsAnSmbusHamOfItsOwn ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "devices": [ { "did": 70, "driver": "TestMux", "provideHam": 0, "address": { "address": 112 } } ],
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "devices": [ { "did": 1 } ] } ] } ] } ])" );
   auto ham = create( argsOf( 1 ) );
   EXPECT_DEATH( ham->init(), assertionFailed( "ham" ) );
}

TEST_F( BehindMuxes, ABusIsReachedThroughTheMuxesAboveIt ) {
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5,
      "devices": [ { "did": 70, "driver": "TestMux", "address": { "address": 112 } } ],
      "muxes": [ { "did": 70, "busses": [ { "id": 3, "label": "channel" } ] } ] } ])" );
   uint32_t address = 0x20;
   auto ham = keep(
      QuillonSmbusHam::createOnBus( *Topology::_topology, Topology::getBusByLabel( "channel" ), address ) );
   EXPECT_EQ( ham->address.bus, 5U );
   ASSERT_EQ( ham->muxes.size(), 1U );
   EXPECT_EQ( static_cast<TestMuxChip::Channel*>( ham->muxes[0] )->channel, 3U );
}

} // namespace
