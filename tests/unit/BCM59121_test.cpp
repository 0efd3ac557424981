#include "Drivers/BCM59121.h"

#include "BCM59121Test.h"
#include "Components/Gpio.h"
#include "ObjectLayout.h"

#include <cstdlib>
#include <functional>
#include <stdexcept>

using Drivers::BCM59121;
using Drivers::DriverArgs;
using Host::TraceLine;
using Layout::offsetOf;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Bcm59121 : public Bcm59121Test {
protected:
   Bcm59121() { args.driverArgs = { { "numPorts", "12" }, { "numAtPorts", "8" } }; }

   std::string thrownBy( const std::function<void()>& act ) {
      try {
         act();
      } catch ( std::invalid_argument& error ) {
         return error.what();
      }
      return "nothing";
   }

   DriverArgs args;
};

TEST_F( Bcm59121, IsMadeWithoutTouchingTheChip ) {
   std::unique_ptr<Component::DeviceBase> made( BCM59121::create( args, &chip ) );
   auto device = dynamic_cast<BCM59121*>( made.get() );
   ASSERT_TRUE( device );
   EXPECT_EQ( device->ham, nullptr );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121, KnowsNothingButItsPortsByDefault ) {
   BCM59121 device( args );
   EXPECT_FALSE( device.globalConfigDone );
   EXPECT_EQ( device.numPorts, 12 );
   EXPECT_EQ( device.numAtPorts, 8 );
   EXPECT_EQ( device.firmwarePath, "" );
   EXPECT_EQ( device.firmwareDownloadSize, 36 );
   EXPECT_FALSE( device.hasFirmwarePath );
   EXPECT_FALSE( device.mpssValueZero );
   EXPECT_EQ( device.crcAutocorrectChip, 0 );
   EXPECT_FALSE( device.crcAutocorrect );
   EXPECT_FALSE( device.hasResetControl );
   EXPECT_EQ( device.maxPdClass, 6U );
   EXPECT_EQ( device.maxDualSigPdClass, 4U );
}

TEST_F( Bcm59121, HasAnEmptyCacheForEachPort ) {
   BCM59121 device( args );
   ASSERT_EQ( device.poeCache.size(), 12U );
   for ( auto& cache : device.poeCache ) {
      for ( auto text : { &cache.portStatus, &cache.measurement, &cache.sysStatus, &cache.perPairStatus,
               &cache.crcStatus, &cache.perPairPower } ) {
         EXPECT_EQ( *text, "" );
      }
      for ( auto asked : { &cache.portStatusTime, &cache.measurementTime, &cache.sysStatusTime,
               &cache.perPairStatusTime, &cache.crcStatusTime, &cache.perPairPowerTime } ) {
         EXPECT_EQ( asked->tv_sec, 0 );
         EXPECT_EQ( asked->tv_nsec, 0 );
      }
   }
}

TEST_F( Bcm59121, TakesItsArguments ) {
   args.driverArgs.insert( { { "firmwarePath", "poe.bin" }, { "firmwareDownloadSize", "20" },
      { "resetReg", "4660" }, { "outOfResetVal", "7" }, { "mpssValueZero", "true" } } );
   BCM59121 device( args );
   EXPECT_EQ( device.firmwarePath, "poe.bin" );
   EXPECT_TRUE( device.hasFirmwarePath );
   EXPECT_EQ( device.firmwareDownloadSize, 20 );
   EXPECT_TRUE( device.hasResetControl );
   EXPECT_EQ( device.resetReg, 0x1234 );
   EXPECT_EQ( device.outOfResetVal, 7 );
   EXPECT_TRUE( device.mpssValueZero );
}

TEST_F( Bcm59121, AnEmptyFirmwarePathIsOne ) {
   args.driverArgs["firmwarePath"] = "";
   BCM59121 device( args );
   EXPECT_TRUE( device.hasFirmwarePath );
   EXPECT_EQ( device.firmwarePath, "" );
}

TEST_F( Bcm59121, NumbersAreCutToTheirFields ) {
   args.driverArgs = { { "numPorts", "260" }, { "numAtPorts", "-1" }, { "firmwareDownloadSize", "256" },
      { "resetReg", "65537" }, { "outOfResetVal", "511" } };
   BCM59121 device( args );
   EXPECT_EQ( device.numPorts, 4 );
   EXPECT_EQ( device.poeCache.size(), 4U );
   EXPECT_EQ( device.numAtPorts, 255 );
   EXPECT_EQ( device.firmwareDownloadSize, 0 );
   EXPECT_EQ( device.resetReg, 1 );
   EXPECT_EQ( device.outOfResetVal, 255 );
}

TEST_F( Bcm59121, OnlyTheVeryTextTrueMakesTheMaskValueZero ) {
   for ( auto text : { "True", "TRUE", "1", "", "true ", "yes", "false" } ) {
      args.driverArgs["mpssValueZero"] = text;
      EXPECT_FALSE( BCM59121( args ).mpssValueZero ) << text;
   }
}

TEST_F( Bcm59121, OneResetArgumentAloneIsNoResetControl ) {
   for ( auto key : { "resetReg", "outOfResetVal" } ) {
      auto one = args;
      one.driverArgs[key] = "1";
      EXPECT_FALSE( BCM59121( one ).hasResetControl ) << key;
   }
}

TEST_F( Bcm59121, AMissingArgumentThrows ) {
   for ( auto key : { "numPorts", "numAtPorts" } ) {
      auto one = args;
      one.driverArgs.erase( key );
      EXPECT_THROW( BCM59121 { one }, std::out_of_range ) << key;
   }
   EXPECT_THROW( driver->newPoePort( args ), std::out_of_range );
}

TEST_F( Bcm59121, AnArgumentThatIsNoNumberThrows ) {
   for ( auto key : { "numPorts", "numAtPorts", "firmwareDownloadSize", "resetReg", "outOfResetVal" } ) {
      auto one = args;
      one.driverArgs.insert( { { "resetReg", "1" }, { "outOfResetVal", "1" } } );
      one.driverArgs[key] = "many";
      EXPECT_EQ( thrownBy( [&] { BCM59121 { one }; } ), "stoi" ) << key;
   }
   args.driverArgs["portId"] = "";
   EXPECT_EQ( thrownBy( [&] { driver->newPoePort( args ); } ), "stoi" );
}

TEST_F( Bcm59121, NumbersAreDecimal ) {
   args.driverArgs["numPorts"] = "010";
   args.driverArgs["numAtPorts"] = "0x10";
   BCM59121 device( args );
   EXPECT_EQ( device.numPorts, 10 );
   EXPECT_EQ( device.numAtPorts, 0 );
}

TEST_F( Bcm59121, MakesPortsAndTouchesNothing ) {
   const struct {
      const char* text;
      int id;
   } rows[] = { { "0", 0 }, { "11", 11 }, { "200", 200 }, { "257", 1 } };

   for ( auto& row : rows ) {
      Host::traces.clear();
      args.driverArgs["portId"] = row.text;
      std::unique_ptr<Component::LogicalDevice::PoePort> made( driver->newPoePort( args ) );
      auto port = dynamic_cast<BCM59121::PoePort*>( made.get() );
      ASSERT_TRUE( port );
      EXPECT_EQ( port->driver, driver.get() );
      EXPECT_EQ( port->id, row.id );
      EXPECT_EQ( port->crcFailCountdown, 3 );
      EXPECT_THAT( Host::traces,
         ElementsAre( TraceLine { 0, "Creating new BCM59121 PoE port id " + std::to_string( row.id ) } ) );
   }
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
}

TEST_F( Bcm59121, MakesSeveralPortsOfOneNumber ) {
   args.driverArgs["portId"] = "3";
   std::unique_ptr<Component::LogicalDevice::PoePort> first( driver->newPoePort( args ) );
   std::unique_ptr<Component::LogicalDevice::PoePort> second( driver->newPoePort( args ) );
   EXPECT_NE( first.get(), second.get() );
}

TEST_F( Bcm59121, OffersPoePortsAndGpiosAlone ) {
   EXPECT_THROW( driver->newTempSensor( args ), NotImplementedException );
   EXPECT_THROW( driver->newSlot( args ), NotImplementedException );
   EXPECT_THROW( driver->newSfpXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( driver->newQsfpXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( driver->newCmisXcvr( 1, args ), NotImplementedException );
   EXPECT_THROW( driver->newLed( args ), NotImplementedException );
   EXPECT_THROW( driver->newFan( args ), NotImplementedException );
   EXPECT_THROW( driver->newMux( args, 1 ), NotImplementedException );
   EXPECT_THROW( driver->newPsu( args ), NotImplementedException );
   EXPECT_THROW( driver->newSmbusProxy( args ), NotImplementedException );
   args.driverArgs["register"] = "1";
   args.driverArgs["bitpos"] = "0";
   std::unique_ptr<Component::LogicalDevice::Gpio> gpio( driver->newGpio( args ) );
   EXPECT_NE( gpio, nullptr );
   EXPECT_EQ( driver->expectedValues(), &Component::HardwareDevice::emptyExpectedValues );
}

TEST_F( Bcm59121, FindsTheChipGroupOfAPort ) {
   const struct {
      const char* numAtPorts;
      std::vector<std::pair<int, int>> groups;
   } rows[] = {
      { "8", { { 0, 0 }, { 7, 0 }, { 8, 1 }, { 9, 1 }, { 11, 1 }, { 12, 2 }, { 16, 3 } } },
      { "24", { { 7, 0 }, { 8, 1 }, { 23, 2 }, { 24, 3 }, { 27, 3 }, { 28, 4 }, { 255, 60 } } },
      { "0", { { 0, 0 }, { 3, 0 }, { 4, 1 }, { 8, 2 } } },
      // Two channels of group 1 are 2-pair ports, and still the first four 4-pair ports count as its own.
      { "10", { { 9, 1 }, { 10, 1 }, { 13, 1 }, { 14, 2 } } },
   };

   for ( auto& row : rows ) {
      args.driverArgs["numAtPorts"] = row.numAtPorts;
      BCM59121 device( args );
      for ( auto [port, group] : row.groups ) {
         EXPECT_EQ( device.portChipIndex( static_cast<uint8_t>( port ) ), group )
            << row.numAtPorts << ": " << port;
      }
   }
}

TEST_F( Bcm59121, EveryOperationOfAPortIsTheDrivers ) {
   auto target = port( 5 );
   char* text = nullptr;
   ql_poe_port_state state[3];
   ql_poe_port_pair_state pairs;
   ql_poe_device_class cls[3];
   float value[3];
   bool ok = false;

   const struct {
      std::function<uint64_t()> call;
      TraceLine first;
   } rows[] = {
      { [&] { return target->debugInfo( &text, false ); },
         { 6, "size_t Drivers::BCM59121::getInformation(Drivers::BCM59121::PoePort*, char**)" } },
      { [&] { return target->debugInfo( &text, true ); },
         { 6, "size_t Drivers::BCM59121::getInformationRaw(Drivers::BCM59121::PoePort*, char**)" } },
      { [&] { return target->poePortInit(); }, { 0, "PoE port init: configuring PoE port 5" } },
      { [&] { return target->reprogramPoeFirmware( true, &text ); },
         { 6, "ql_status Drivers::BCM59121::reprogramFirmware(Drivers::BCM59121::PoePort*, bool, char**)" } },
      { [&] { return target->setPoePortPse( true ); },
         { 6, "ql_status Drivers::BCM59121::setPse(Drivers::BCM59121::PoePort*, bool)" } },
      { [&] { return target->setPoePortLimit( QL_POE_LIMIT_USER, 1 ); },
         { 6, "ql_status Drivers::BCM59121::setPowerLimit(Drivers::BCM59121::PoePort*, "
              "ql_poe_power_limit_mode, "
              "float)" } },
      { [&] { return target->setPoePortShutOffWithPsu( 1, true ); },
         { 6,
            "ql_status Drivers::BCM59121::setShutOffWithPsu(Drivers::BCM59121::PoePort*, uint8_t, bool)" } },
      { [&] { return target->poePortPowerOn( true ); },
         { 6, "ql_status Drivers::BCM59121::powerOn(Drivers::BCM59121::PoePort*, bool)" } },
      { [&] { return target->setPoePortLegacyDetect( true ); },
         { 6, "ql_status Drivers::BCM59121::setLegacyDetect(Drivers::BCM59121::PoePort*, bool)" } },
      { [&] { return target->getPoePortPowerState( &state[0], &state[1], &state[2], &pairs ); },
         { 6, "ql_status Drivers::BCM59121::getPowerState(Drivers::BCM59121::PoePort*, ql_poe_port_state*, "
              "ql_poe_port_state*, ql_poe_port_state*, ql_poe_port_pair_state*)" } },
      { [&] { return target->getPoeDeviceClass( &cls[0], &cls[1], &cls[2] ); },
         { 6,
            "ql_status Drivers::BCM59121::getDeviceClass(Drivers::BCM59121::PoePort*, ql_poe_device_class*, "
            "ql_poe_device_class*, ql_poe_device_class*)" } },
      { [&] { return target->getPoePortPower( &value[0], &value[1], &value[2] ); },
         { 6,
            "ql_status Drivers::BCM59121::getPower(Drivers::BCM59121::PoePort*, float*, float*, float*)" } },
      { [&] { return target->getPoePortVoltage( value ); },
         { 6, "ql_status Drivers::BCM59121::getVoltage(Drivers::BCM59121::PoePort*, float*)" } },
      { [&] { return target->getPoePortCurrent( value ); },
         { 6, "ql_status Drivers::BCM59121::getCurrent(Drivers::BCM59121::PoePort*, float*)" } },
      { [&] { return target->getPoePortTemperature( value ); },
         { 6, "ql_status Drivers::BCM59121::getTemperature(Drivers::BCM59121::PoePort*, float*)" } },
      { [&] { return target->getPoePortCrcStatus( &ok ); },
         { 6, "ql_status Drivers::BCM59121::getCrcStatus(Drivers::BCM59121::PoePort*, bool*)" } },
      { [&] { return target->getPoePortInformation( &text ); },
         { 6, "size_t Drivers::BCM59121::getInformation(Drivers::BCM59121::PoePort*, char**)" } },
      { [&] { return driver->setCrcAutocorrect( false ); },
         { 6, "ql_status Drivers::BCM59121::setCrcAutocorrect(bool)" } },
   };

   for ( auto& row : rows ) {
      Host::traces.clear();
      row.call();
      free( std::exchange( text, nullptr ) );
      ASSERT_FALSE( Host::traces.empty() );
      EXPECT_EQ( Host::traces[0], row.first );
   }
}

TEST_F( Bcm59121, APortPassesItsArgumentsAndTheResultOn ) {
   auto target = port( 5 );
   EXPECT_EQ( target->setPoePortPse( true ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortPse( false ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortLegacyDetect( true ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortLegacyDetect( false ), QL_STATUS_OK );
   EXPECT_EQ( target->poePortPowerOn( true ), QL_STATUS_OK );
   EXPECT_EQ( target->poePortPowerOn( false ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortShutOffWithPsu( 2, true ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortShutOffWithPsu( 2, false ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortLimit( QL_POE_LIMIT_CLASS, 15.4F ), QL_STATUS_OK );
   EXPECT_EQ( target->setPoePortLimit( QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_OK );
   EXPECT_THAT(
      chip.takeSent(), ElementsAre( "00 FF 05 01 FF FF FF FF FF FF FF FE",
                          "00 FF 05 00 FF FF FF FF FF FF FF FD", "10 FF 05 03 FF FF FF FF FF FF FF 10",
                          "10 FF 05 02 FF FF FF FF FF FF FF 0F", "01 FF 05 01 FF FF FF FF FF FF FF FF",
                          "03 FF 05 01 FF FF FF FF FF FF FF 01", "1E FF 05 10 FF FF FF FF FF FF FF 2B",
                          "1E FF 05 00 FF FF FF FF FF FF FF 1B", "15 FF 05 01 FF FF FF FF FF FF FF 13",
                          "16 FF 05 50 FF FF FF FF FF FF FF 63", "15 FF 05 02 FF FF FF FF FF FF FF 14" ) );

   chip.answer( 0x21, { { 3, 2 }, { 5, 4 }, { 9, 3 } } );
   chip.answer( 0x3D, { { 3, 4 }, { 4, 3 }, { 5, 3 }, { 7, 6 }, { 8, 2 } } );
   ql_poe_port_state state, primary, alternative;
   ql_poe_port_pair_state pairs;
   EXPECT_EQ( target->getPoePortPowerState( &state, &primary, &alternative, &pairs ), QL_STATUS_OK );
   EXPECT_EQ( state, QL_POE_PORT_POWERED );
   EXPECT_EQ( primary, QL_POE_PORT_OVERLOAD );
   EXPECT_EQ( alternative, QL_POE_PORT_DETECTING );
   EXPECT_EQ( pairs, 3U );

   ql_poe_device_class cls, primaryClass, alternativeClass;
   EXPECT_EQ( target->getPoeDeviceClass( &cls, &primaryClass, &alternativeClass ), QL_STATUS_OK );
   EXPECT_EQ( cls, 4U );
   EXPECT_EQ( primaryClass, 3U );
   EXPECT_EQ( alternativeClass, 2U );

   chip.answer( 0x30, { { 4, 100 }, { 6, 50 }, { 8, 200 }, { 10, 30 } } );
   chip.answer( 0x3C, { { 4, 20 }, { 6, 10 } } );
   float value, primaryPower, alternativePower;
   EXPECT_EQ( target->getPoePortPower( &value, &primaryPower, &alternativePower ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 3.0F );
   EXPECT_FLOAT_EQ( primaryPower, 2.0F );
   EXPECT_FLOAT_EQ( alternativePower, 1.0F );
   EXPECT_EQ( target->getPoePortVoltage( &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 6.445F );
   EXPECT_EQ( target->getPoePortCurrent( &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 0.05F );
   EXPECT_EQ( target->getPoePortTemperature( &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 25.0F );

   chip.writeStatuses[0x2D] = { QL_STATUS_FAILED };
   bool ok = false;
   EXPECT_EQ( target->getPoePortCrcStatus( &ok ), QL_STATUS_FAILED );
   EXPECT_EQ( target->getPoePortCrcStatus( &ok ), QL_STATUS_OK );
   EXPECT_TRUE( ok );
}

TEST_F( Bcm59121, IsLaidOutAsTheRestOfTheSystemKnowsIt ) {
   auto& device = *driver;
   EXPECT_EQ( offsetOf( device, device.globalConfigDone ), 16U );
   EXPECT_EQ( offsetOf( device, device.poeCache ), 24U );
   EXPECT_EQ( offsetOf( device, device.numPorts ), 48U );
   EXPECT_EQ( offsetOf( device, device.numAtPorts ), 49U );
   EXPECT_EQ( offsetOf( device, device.firmwarePath ), 56U );
   EXPECT_EQ( offsetOf( device, device.firmwareDownloadSize ), 88U );
   EXPECT_EQ( offsetOf( device, device.hasFirmwarePath ), 89U );
   EXPECT_EQ( offsetOf( device, device.mpssValueZero ), 90U );
   EXPECT_EQ( offsetOf( device, device.portMpssMask ), 96U );
   EXPECT_EQ( offsetOf( device, device.crcAutocorrectChip ), 104U );
   EXPECT_EQ( offsetOf( device, device.crcAutocorrect ), 105U );
   EXPECT_EQ( offsetOf( device, device.hasResetControl ), 106U );
   EXPECT_EQ( offsetOf( device, device.resetReg ), 108U );
   EXPECT_EQ( offsetOf( device, device.outOfResetVal ), 110U );
   EXPECT_EQ( offsetOf( device, device.maxPdClass ), 112U );
   EXPECT_EQ( offsetOf( device, device.maxDualSigPdClass ), 116U );
   EXPECT_EQ( sizeof( BCM59121 ), 120U );
}

TEST_F( Bcm59121, ItsPortsAreLaidOutAsTheRestOfTheSystemKnowsThem ) {
   auto& target = *port( 5 );
   EXPECT_EQ( offsetOf( target, target.driver ), 32U );
   EXPECT_EQ( offsetOf( target, target.id ), 40U );
   EXPECT_EQ( offsetOf( target, target.crcFailCountdown ), 41U );
   EXPECT_EQ( sizeof( BCM59121::PoePort ), 48U );
}

TEST_F( Bcm59121, ItsCacheIsSixRepliesThenTheirTimes ) {
   auto& cache = driver->poeCache[0];
   EXPECT_EQ( offsetOf( cache, cache.portStatus ), 0U );
   EXPECT_EQ( offsetOf( cache, cache.measurement ), 32U );
   EXPECT_EQ( offsetOf( cache, cache.sysStatus ), 64U );
   EXPECT_EQ( offsetOf( cache, cache.perPairStatus ), 96U );
   EXPECT_EQ( offsetOf( cache, cache.crcStatus ), 128U );
   EXPECT_EQ( offsetOf( cache, cache.perPairPower ), 160U );
   EXPECT_EQ( offsetOf( cache, cache.portStatusTime ), 192U );
   EXPECT_EQ( offsetOf( cache, cache.measurementTime ), 208U );
   EXPECT_EQ( offsetOf( cache, cache.sysStatusTime ), 224U );
   EXPECT_EQ( offsetOf( cache, cache.perPairStatusTime ), 240U );
   EXPECT_EQ( offsetOf( cache, cache.crcStatusTime ), 256U );
   EXPECT_EQ( offsetOf( cache, cache.perPairPowerTime ), 272U );
   EXPECT_EQ( sizeof cache, 288U );
}

TEST_F( Bcm59121, IsInTheTableOfDrivers ) {
   std::unique_ptr<Component::DeviceBase> made( Drivers::drivers.at( "BCM59121" )( args, nullptr ) );
   EXPECT_TRUE( dynamic_cast<BCM59121*>( made.get() ) );
}

} // namespace
