#include "Simulation.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StrEq;

namespace {

/** The small devices of the board in simulation, as a host sees them. */
class Devices : public SimulationTest {
protected:
   static std::string cage( const char* presenceReg, const char* id = "1" ) {
      return arguments( 1, "SelvaneXcvr",
         std::string( R"("driverArgs": { "type": "sfp", "id": )" ) + id + R"(, "presenceReg": )" +
            presenceReg +
            R"(, "presenceBit": 0, "presenceActiveHigh": "false",
            "rxLosReg": 16, "rxLosBit": 4, "rxLosActiveHigh": "true",
            "txFaultReg": 31, "txFaultBit": 0, "txFaultActiveHigh": "true",
            "txDisableReg": 31, "txDisableBit": 4, "txDisableActiveHigh": "true" })" );
   }

   static std::string cpld( unsigned did ) {
      return R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [ { "did": )" +
             std::to_string( did ) +
             R"(, "label": "CpuCpld", "driver": null, "address": { "address": 48 } } ] } ])";
   }
};

TEST_F( Devices, FansTurnAtTheSpeedOfTheirTachometers ) {
   load( { 10 } );

   const struct {
      int fan;
      int rpm;
   } rows[] = { { 1, 18635 }, { 2, 74543 }, { 3, 74543 }, { 4, 74543 }, { 5, 74543 } };

   for ( auto& row : rows ) {
      auto driverArgs = R"("driverArgs": { "fanId": )" + std::to_string( row.fan ) +
                        R"(, "maxRpm": 20000, "registerOffset": )" + std::to_string( row.fan - 1 ) + " }";
      auto fan = plugin.fan_add( arguments( 10, "EMC2305", driverArgs ).c_str() );
      ASSERT_NE( fan, nullptr );
      int rpm = 0;
      EXPECT_EQ( fan->ops->get_rpm( fan, &rpm ), QL_STATUS_OK ) << row.fan;
      EXPECT_EQ( rpm, row.rpm ) << row.fan;
   }
}

TEST_F( Devices, ADriveByteHasNoRegisterInSimulation ) {
   load( { 10 } );
   auto fan = plugin.fan_add(
      arguments( 10, "EMC2305", R"("driverArgs": { "fanId": 1, "maxRpm": 20000, "registerOffset": 0 })" )
         .c_str() );
   Host::traces.clear();
   EXPECT_EQ( fan->ops->set_rpm( fan, 10000 ), QL_STATUS_IO_ERROR );
   EXPECT_TRUE( Host::hasTraced( 0, "WARNING: Simulated Driver EMC2305 doesn't yet have expectedVal set for "
                                    "register 0x30 using SIMULATION_HAM()\n" ) );
}

TEST_F( Devices, ACageIsPolledFromTheTwoRegistersThatTheTableKnows ) {
   load( { 1 } );
   auto xcvr = plugin.xcvr_add( cage( "16" ).c_str() );
   ASSERT_NE( xcvr, nullptr );
   auto& ops = xcvr->ops->by_kind.sfp;
   // Register 16 starts with all bits set: no module, and no light.
   EXPECT_EQ( ops.get_presence( xcvr ), QL_STATUS_NOT_PRESENT );
   int value = 9;
   EXPECT_EQ( ops.get_rx_los( xcvr, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( ops.get_tx_fault( xcvr, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   EXPECT_EQ( ops.get_tx_disable( xcvr, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
}

TEST_F( Devices, AModuleThatComesIsSeenByTheNextPoll ) {
   load( { 1 } );
   auto xcvr = plugin.xcvr_add( cage( "16" ).c_str() );
   auto& ops = xcvr->ops->by_kind.sfp;
   setRegisters( "SelvaneXcvr", "fe30" );
   EXPECT_EQ( ops.get_presence( xcvr ), QL_STATUS_NOT_PRESENT );
   Host::timers.at( 0 )->fire();
   EXPECT_EQ( ops.get_presence( xcvr ), QL_STATUS_OK );
}

TEST_F( Devices, TransmitDisableLandsInItsRegister ) {
   load( { 1 } );
   auto xcvr = plugin.xcvr_add( cage( "16" ).c_str() );
   EXPECT_EQ( xcvr->ops->by_kind.sfp.set_tx_disable( xcvr, 0 ), QL_STATUS_OK );
   EXPECT_EQ( registers( "SelvaneXcvr" ), "ff20\n" );
}

TEST_F( Devices, ARegisterBelowTheHighestReadsZeroWithAWarning ) {
   load( { 1 } );
   auto xcvr = plugin.xcvr_add( cage( "5" ).c_str() );
   EXPECT_EQ( xcvr->ops->by_kind.sfp.get_presence( xcvr ), QL_STATUS_OK ) << "0 is present, active low";
   EXPECT_TRUE(
      Host::hasTraced( 0, "WARNING: Simulated Driver SelvaneXcvr doesn't yet have expectedVal set for "
                          "register 0x5 using SIMULATION_HAM()\n" ) );
}

TEST_F( Devices, AHighestRegisterThatTheTableLacksFailsEveryPoll ) {
   load( { 1 } );
   auto xcvr = plugin.xcvr_add( cage( "16" ).c_str() );
   auto other = plugin.xcvr_add( cage( "32", "2" ).c_str() );
   EXPECT_EQ( xcvr->ops->by_kind.sfp.get_presence( xcvr ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( other->ops->by_kind.sfp.get_presence( other ), QL_STATUS_IO_ERROR );
   Host::timers.at( 0 )->fire();
   EXPECT_EQ( xcvr->ops->by_kind.sfp.get_presence( xcvr ), QL_STATUS_IO_ERROR );
}

TEST_F( Devices, LedsWriteTheirCodes ) {
   load( { 2, 3 } );
   auto port = plugin.led_add(
      arguments( 2, "SelvanePortLed", R"("driverArgs": { "ledName": "p", "ledReg": 70, "portType": "sfp" })" )
         .c_str() );
   ASSERT_NE( port, nullptr );
   EXPECT_EQ( port->ops->set_light_setting( port, QL_LED_GOOD ), QL_STATUS_OK );
   EXPECT_EQ( registers( "SelvanePortLed" ), "a3\n" );
   auto fan =
      plugin.led_add( arguments( 3, "SelvaneSystemLed", R"("driverArgs": { "reg": 67, "id": 4 })" ).c_str() );
   ASSERT_NE( fan, nullptr );
   EXPECT_EQ( fan->ops->set_light_setting( fan, QL_LED_WARNING ), QL_STATUS_OK );
   EXPECT_EQ( registers( "SelvaneSystemLed" ), "ffffff05\n" );
}

TEST_F( Devices, AnLedOfNoClassIsNotMade ) {
   load( { 3 } );
   EXPECT_EQ(
      plugin.led_add( arguments( 3, "SelvaneSystemLed", R"("driverArgs": { "reg": 68, "id": 4 })" ).c_str() ),
      nullptr );
   EXPECT_EQ( Host::traces.back(), ( Host::TraceLine { 0, "newLed() failed" } ) );
}

TEST_F( Devices, ATrayWithoutAFanIdIsNotMade ) {
   load( { 10 } );
   EXPECT_EQ( plugin.slot_add( arguments( 10, "EMC2305" ).c_str() ), nullptr );
   EXPECT_TRUE( Host::hasTraced( 0, "Error: expected 'fanId' in driverArgs" ) );
   EXPECT_EQ( Host::traces.back(), ( Host::TraceLine { 0, "newSlot() failed" } ) );
}

TEST_F( Devices, ATrayTellsWhatItsArgumentsSay ) {
   load( { 10 } );
   auto text = arguments( 10, "EMC2305",
      R"("driverArgs": { "fanId": 2, "maxRpm": 20000, "modelName": "FAN-1", "serialNum": "S2", )"
      R"("airflowDirection": "frontToBackAirflow" })" );
   auto slot = plugin.slot_add( text.c_str() );
   ASSERT_NE( slot, nullptr );
   char* presence = nullptr;
   ASSERT_EQ( slot->ops->get_presence( slot, &presence ), QL_STATUS_OK );
   EXPECT_THAT( presence, StrEq( "FruFactoryIds: QLDevice\n"
                                 "device.group = 'FanTray'\n"
                                 "slotId = 2\n"
                                 "device.fanTray = ( 'FanTray%d' % slotId, )\n"
                                 "fanTray = device.fanTray\n"
                                 "fanTray.slotId = slotId\n"
                                 "fanTray.modelName = 'FAN-1-F'\n"
                                 "fanTray.serialNum = 'S2'\n"
                                 "fan = fanTray.newFan( 'Fan%d' % ( slotId ) )\n"
                                 "fan.airflowDirection = 'frontToBackAirflow'\n"
                                 "fan.maxRpm = 20000\n"
                                 "fan.p = 0.900000\n"
                                 "fan.libPath = ''\n"
                                 "fan.devArgs = '" +
                                 text + "'\n" ) );
   free( presence );
}

TEST_F( Devices, TheSystemReadsAnEmptyCpld ) {
   ASSERT_EQ( plugin.system_init( cpld( 20 ).c_str() ), QL_STATUS_OK );
   // A device that is reached by its label has no argument text; this bit's text is the CPLD's.
   ASSERT_NE( plugin.gpio_add(
                 arguments( 20, "GpioDriver", R"("driverArgs": { "register": 7, "bitpos": 0 })" ).c_str() ),
      nullptr );
   auto system = plugin.system_add( "{}" );
   char reason[100] = "untouched";
   EXPECT_EQ( system->ops->get_reload_cause( system, &reason, nullptr, nullptr ), QL_STATUS_FAILED );
   EXPECT_STREQ( reason, "untouched" );
   char version[8] = "";
   EXPECT_EQ( system->ops->get_chip_info( system, &version ), QL_STATUS_OK );
   EXPECT_STREQ( version, "0x00.00" );
   EXPECT_EQ( system->ops->poe_reboot_action( system, true ), QL_STATUS_OK );
}

TEST_F( Devices, APoeControllerGivesNoReplyInSimulation ) {
   load( { 30 } );
   auto port = plugin.poe_port_add(
      arguments( 30, "BCM59121", R"("driverArgs": { "numPorts": 12, "numAtPorts": 8, "portId": 3 })" )
         .c_str() );
   ASSERT_NE( port, nullptr );
   float volts = 7;
   EXPECT_EQ( port->ops->get_voltage( port, &volts ), QL_STATUS_DEVICE_ERROR );
   EXPECT_EQ( volts, 7 );
   EXPECT_TRUE( Host::hasTraced( 0, "WARNING: Simulated Driver BCM59121 doesn't yet have expectedVal set for "
                                    "register 0xff using SIMULATION_HAM()\n" ) );
   EXPECT_TRUE( Host::hasTraced( 0, "Error: Failed to read PoE chip. Error code: 0" ) );

   char* text = nullptr;
   EXPECT_GT( port->ops->get_information( port, &text ), 0U );
   EXPECT_THAT( text, HasSubstr( "\nPort status: n/a                                      SMBus error\n" ) );
   free( text );
}

} // namespace
