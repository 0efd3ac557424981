// The commands for one object on the switch's own board: what they are told reaches the emulated chips.

#include "EmulatedBoard.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <csignal>

#include <functional>

using ::testing::HasSubstr;

namespace {

class BoardCommands : public EmulatedBoardTest {
protected:
   BoardCommands() { environment["QUILLON_BOARD"] = BOARDS "/selvane"; }

   /** What the emulated board says of a property. */
   std::string bench( const std::string& property ) const { return emu( { "get", property } ).out; }

   /** The first reading of an object, of those that a process writes, that fits. */
   static rapidjson::Document await(
      Process& process, const std::function<bool( const rapidjson::Value& )>& fits ) {
      for ( int i = 0; i < 200; ++i ) {
         rapidjson::Document document;
         document.Parse( process.readLine().value_or( "" ).c_str() );
         if ( document.HasParseError() ) {
            break;
         }
         if ( fits( document["objects"][0] ) ) {
            return document;
         }
      }
      ADD_FAILURE() << "no such reading came";
      return {};
   }
};

std::string joined( const Process::Arguments& words ) { return fmt::format( "{}", fmt::join( words, " " ) ); }

} // namespace

TEST_F( BoardCommands, FanComesToTheSpeedItWasAskedFor ) {
   EXPECT_EQ( run( { "fan", "fan1", "rpm", "9000" } ).out, "fan1 was asked for 9000 rpm\n" );

   // 9000 of 20000 rpm are 114.75 of 255 drive steps, of which 114 make 8941 rpm.
   EXPECT_EQ( bench( "fans.fan1.drive" ), "114\n" );
   auto watch = start( { "--json", "status", "fan1", "--interval", "0.05" } );
   await( watch, []( auto& fan ) { return fan["rpm"].GetInt() > 8850; } );
   watch.send( SIGINT );
   watch.wait();
   EXPECT_EQ( run( { "fan", "fan2", "rpm" } ).out, "8000 rpm\n" );
}

TEST_F( BoardCommands, FanThatIsHeldIsReported ) {
   emu( { "set", "fans.fan2.stalled", "1" } );

   auto result = run( { "status", "fan2" } );

   // The tachometer counts to 8191, with a multiplier of 2: 2 * 3932160 / 8191 = 960.
   EXPECT_EQ( result.out, "Fans\n"
                          "NAME    SPEED    MAXIMUM  STATUS\n"
                          "fan2  960 rpm  20000 rpm  stalled\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( BoardCommands, ModuleThatIsPulledIsGoneAfterThePoll ) {
   auto watch = start( { "--json", "status", "sfp1", "--interval", "0.1" } );
   await( watch, []( auto& module ) { return module["present"].GetBool(); } );

   emu( { "set", "cpld.sfp1.present", "0" } );

   await( watch, []( auto& module ) { return !module["present"].GetBool() && module["rx_los"].GetBool(); } );
   emu( { "set", "cpld.sfp1.present", "1" } );
   emu( { "set", "cpld.sfp1.tx_fault", "1" } );
   await( watch, []( auto& module ) { return module["state"] == "fault"; } );
   watch.send( SIGINT );
   EXPECT_EQ( watch.wait().err, "" );
}

TEST_F( BoardCommands, ModuleIsReadAsItIsByASingleCommand ) {
   emu( { "set", "cpld.sfp2.present", "0" } );

   EXPECT_EQ( run( { "xcvr", "sfp2" } ).out, "NAME  PRESENT  TX FAULT  RX LOS  TX DISABLE  STATUS\n"
                                             "sfp2  no       no        yes     no          absent\n" );
}

TEST_F( BoardCommands, ModuleFailsWhilePollsFail ) {
   auto watch = start( { "--json", "status", "sfp1", "--interval", "0.1" } );
   await( watch, []( auto& module ) { return module["state"] == "ok"; } );
   emu( { "fault", "cpld", "nack" } );

   auto failed = await( watch, []( auto& module ) { return module["state"] == "failed"; } );

   EXPECT_STREQ( failed["objects"][0]["error"]["message"].GetString(),
      "cannot read the presence: the last poll failed: execute: failure in response request 1: i2c-5 0x30 "
      "reg "
      "0x10: no acknowledge" );
   EXPECT_STREQ( failed["objects"][0]["error"]["status"].GetString(), "QL_STATUS_IO_ERROR" );
   emu( { "fault", "cpld", "clear" } );
   await( watch, []( auto& module ) { return module["state"] == "ok"; } );
   watch.send( SIGINT );
   watch.wait();
}

TEST_F( BoardCommands, TransmitDisableIsOfOneModule ) {
   EXPECT_EQ( run( { "xcvr", "sfp2", "tx-disable", "on" } ).out, "transmit disable of sfp2 is on\n" );
   EXPECT_EQ( run( { "xcvr", "sfp1", "tx-disable", "on" } ).out, "transmit disable of sfp1 is on\n" );
   EXPECT_EQ( bench( "cpld.sfp1.tx_disable" ), "1\n" );
   EXPECT_EQ( bench( "cpld.sfp2.tx_disable" ), "1\n" );

   EXPECT_EQ( run( { "xcvr", "sfp1", "tx-disable", "off" } ).out, "transmit disable of sfp1 is off\n" );
   EXPECT_EQ( bench( "cpld.sfp1.tx_disable" ), "0\n" );
   EXPECT_EQ( bench( "cpld.sfp2.tx_disable" ), "1\n" );
   EXPECT_EQ( bench( "cpld.sfp3.tx_disable" ), "0\n" );
}

TEST_F( BoardCommands, TransmitDisableIsNotWrittenAfterAFailedPoll ) {
   run( { "xcvr", "sfp2", "tx-disable", "on" } );
   // The server tries three times; a write that came after would go through.
   emu( { "fault", "cpld", "nack", "3" } );

   auto result = run( { "xcvr", "sfp1", "tx-disable", "on" } );

   EXPECT_EQ( result.err, "quillonctl: sfp1: cannot set the transmit disable: the last poll failed: execute: "
                          "failure in response request 1: i2c-5 0x30 reg 0x10: no acknowledge\n" );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( bench( "cpld.sfp1.tx_disable" ), "0\n" );
   EXPECT_EQ( bench( "cpld.sfp2.tx_disable" ), "1\n" );
}

struct LedRow {
   const char* led;
   /** Codes for off, good, warning, bad, inactive, unknown, beacon, release; none for what it does not have.
    */
   std::vector<const char*> codes;
};

TEST_F( BoardCommands, LedSettingsLandInTheirRegisters ) {
   const std::vector<std::string> settings = { "off", "good", "warning", "bad", "inactive", "unknown",
      "beacon", "release" };
   const LedRow rows[] = {
      { "led.status", { "0x00", "0x01", "0x02", "", "", "0x09", "0x0c", "" } },
      { "led.power", { "0x07", "0x06", "", "0x05", "", "", "", "" } },
      { "led.cloud", { "0x07", "0x06", "0x05", "", "", "", "", "" } },
      { "led.fan", { "0x07", "0x06", "0x05", "0x05", "", "", "", "" } },
      { "led.sfp1", { "0xb3", "0xa3", "0x93", "", "0x93", "", "0xd3", "" } },
      { "led.port48", { "0xb3", "0x93", "0xa3", "", "0xa3", "", "0xe3", "" } },
   };
   for ( auto& row : rows ) {
      auto property = fmt::format( "cpld.{}", row.led );
      std::string before = "0xff";
      for ( size_t i = 0; i < settings.size(); ++i ) {
         auto name = fmt::format( "{} {}", row.led, settings[i] );
         std::string code = row.codes[i];

         auto result = run( { "led", row.led, settings[i] } );

         EXPECT_EQ( bench( property ), ( code.empty() ? before : code ) + "\n" ) << name;
         EXPECT_EQ(
            result.out, code.empty() ? "" : fmt::format( "{} was set to {}\n", row.led, settings[i] ) )
            << name;
         EXPECT_EQ( result.err,
            code.empty() ? fmt::format( "quillonctl: {}: this LED has no setting {}\n", row.led, settings[i] )
                         : "" )
            << name;
         EXPECT_EQ( result.exitStatus, code.empty() ? 1 : 0 ) << name;
         before = code.empty() ? before : code;
      }
   }
}

TEST_F( BoardCommands, BitsAreReadSetAndCleared ) {
   EXPECT_EQ( run( { "gpio", "poe.reset", "get" } ).out, "1\n" );

   EXPECT_EQ( run( { "gpio", "poe.reset", "clear" } ).out, "poe.reset was cleared\n" );
   EXPECT_EQ( bench( "cpld.poe_reset" ), "0\n" );
   EXPECT_EQ( run( { "gpio", "poe.reset", "get" } ).out, "0\n" );

   EXPECT_EQ( run( { "gpio", "poe.reset", "set" } ).out, "poe.reset was set\n" );
   EXPECT_EQ( bench( "cpld.poe_reset" ), "1\n" );

   emu( { "set", "cpld.tray2.present", "0" } );
   EXPECT_EQ( run( { "gpio", "tray2.absent", "get" } ).out, "1\n" );
   EXPECT_EQ( run( { "gpio", "tray1.absent", "get" } ).out, "0\n" );
}

TEST_F( BoardCommands, SlotTellsItsIdentification ) {
   auto result = run( { "slot", "tray2" } );

   EXPECT_EQ( result.out,
      "NAME   PRESENT  MODEL      SERIAL    STATUS\n"
      "tray2  yes      SLV-FAN-F  SLVF0002  ok\n"
      "\n"
      "FruFactoryIds: QLDevice\n"
      "device.group = 'FanTray'\n"
      "slotId = 2\n"
      "device.fanTray = ( 'FanTray%d' % slotId, )\n"
      "fanTray = device.fanTray\n"
      "fanTray.slotId = slotId\n"
      "fanTray.modelName = 'SLV-FAN-F'\n"
      "fanTray.serialNum = 'SLVF0002'\n"
      "fan = fanTray.newFan( 'Fan%d' % ( slotId ) )\n"
      "fan.airflowDirection = 'frontToBackAirflow'\n"
      "fan.maxRpm = 20000\n"
      "fan.p = 0.900000\n"
      "fan.libPath = ''\n"
      "fan.devArgs = '{\"did\":10,\"driver\":\"EMC2305\",\"address\":{\"address\":44},\"name\":\"fans\","
      "\"driverArgs\":{\"fanId\":2,\"maxRpm\":20000,\"modelName\":\"SLV-FAN\",\"serialNum\":\"SLVF0002\","
      "\"airflowDirection\":\"frontToBackAirflow\"}}'\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( BoardCommands, SystemTellsWhyTheSwitchRestartedOnce ) {
   emu( { "set", "cpld.reset_reason", "0x24" } );

   EXPECT_EQ( run( { "system", "reload-cause" } ).out, "User-initiated reload interrupted by watchdog\n" );

   auto result = run( { "system", "reload-cause", "--json" } );
   std::string reason =
      "no reload cause: it is told once, and was told before, or nothing has restarted the switch";
   EXPECT_EQ( result.err, "quillonctl: switch: " + reason + "\n" );
   EXPECT_EQ( result.out,
      R"({"board":"selvane","objects":[{"kind":"system","name":"switch","reload_cause":null,"state":"failed",)"
      R"("error":{"status":"QL_STATUS_FAILED","code":6,"message":")" +
         reason + "\"}}],\"errors\":[]}\n" );
   EXPECT_EQ( result.exitStatus, 1 );

   emu( { "set", "cpld.reset_reason", "0x0c" } );
   EXPECT_EQ( run( { "system", "reload-cause" } ).out, "The system rebooted due to unknown reasons.\n" );
}

TEST_F( BoardCommands, SystemTellsItsVersion ) {
   emu( { "set", "cpld.version", "0x0c07" } );

   EXPECT_EQ( run( { "system", "version" } ).out, "0x0c.07\n" );
}

TEST_F( BoardCommands, SystemDecidesWhatARebootDoesToPoe ) {
   EXPECT_EQ( run( { "system", "poe-reboot", "reset" } ).exitStatus, 0 );
   EXPECT_EQ( bench( "cpld.reboot_action" ), "1\n" );

   EXPECT_EQ( run( { "system", "poe-reboot", "keep" } ).exitStatus, 0 );
   EXPECT_EQ( bench( "cpld.reboot_action" ), "0\n" );
}

struct ChipFailure {
   Process::Arguments words;
   const char* complaint;
   /** Where the chip did not acknowledge. */
   const char* place;
};

TEST_F( BoardCommands, TellWhatIsWrongWithTheirChips ) {
   const ChipFailure rows[] = {
      { { "fan", "fan1", "rpm" }, "fan1: cannot read the speed: ", "i2c-3 0x2c reg 0x3e" },
      { { "fan", "fan2", "rpm", "9000" }, "fan2: cannot set the speed: ", "i2c-3 0x2c reg 0x40" },
      { { "xcvr", "sfp1" }, "sfp1: cannot read the presence: the last poll failed: ", "i2c-5 0x30 reg 0x10" },
      { { "xcvr", "sfp1", "tx-disable", "on" },
         "sfp1: cannot set the transmit disable: the last poll failed: ", "i2c-5 0x30 reg 0x10" },
      { { "led", "led.status", "good" }, "led.status: cannot set the LED: ", "i2c-5 0x30 reg 0x40" },
      { { "led", "led.port1", "good" }, "led.port1: cannot set the LED: ", "i2c-5 0x30 reg 0x80" },
      { { "gpio", "poe.reset", "get" }, "poe.reset: cannot read the bit: ", "i2c-5 0x30 reg 0x05" },
      { { "gpio", "poe.reset", "set" }, "poe.reset: cannot write the bit: ", "i2c-5 0x30 reg 0x05" },
      { { "gpio", "poe.reset", "clear" }, "poe.reset: cannot write the bit: ", "i2c-5 0x30 reg 0x05" },
      { { "system", "version" }, "switch: cannot read the version: ", "i2c-5 0x30 reg 0x00" },
      { { "system", "reload-cause" }, "switch: cannot read the reload cause: ", "i2c-5 0x30 reg 0x60" },
      { { "system", "poe-reboot", "keep" }, "switch: cannot set the reboot action: ", "i2c-5 0x30 reg 0x06" },
   };
   emu( { "fault", "fans", "nack" } );
   emu( { "fault", "cpld", "nack" } );
   for ( auto& row : rows ) {
      auto result = run( row.words );

      EXPECT_EQ( result.err,
         fmt::format( "quillonctl: {}execute: failure in response request 1: {}: no acknowledge\n",
            row.complaint, row.place ) );
      EXPECT_EQ( result.out, "" ) << joined( row.words );
      EXPECT_EQ( result.exitStatus, 1 ) << joined( row.words );
   }
}

struct SimulatedRow {
   Process::Arguments words;
   const char* out;
   const char* err;
   /** A simulation file and its content afterwards. */
   const char* file = "";
   const char* content = "";
};

TEST_F( BoardCommands, WorkInSimulationToo ) {
   const SimulatedRow rows[] = {
      { { "fan", "fan1", "rpm" }, "18635 rpm\n", "" },
      // The library declares no drive register for simulation.
      { { "fan", "fan1", "rpm", "9000" }, "",
         "quillonctl: fan1: cannot set the speed: WARNING: Simulated Driver EMC2305 doesn't yet have "
         "expectedVal set for register 0x30 using SIMULATION_HAM()\n" },
      { { "xcvr", "sfp3" },
         "NAME  PRESENT  TX FAULT  RX LOS  TX DISABLE  STATUS\n"
         "sfp3  no       no        yes     no          absent\n",
         "" },
      { { "xcvr", "sfp3", "tx-disable", "on" }, "transmit disable of sfp3 is on\n", "", "SelvaneXcvr-cages",
         "ff70\n" },
      { { "xcvr", "sfp1", "tx-disable", "off" }, "transmit disable of sfp1 is off\n", "", "SelvaneXcvr-cages",
         "ff20\n" },
      { { "led", "led.cloud", "good" }, "led.cloud was set to good\n", "", "SelvaneSystemLed-system-leds",
         "ffff06ff\n" },
      { { "led", "led.sfp3", "beacon" }, "led.sfp3 was set to beacon\n", "", "SelvanePortLed-port-leds",
         "d3\n" },
      { { "gpio", "poe.reset", "get" }, "0\n", "" },
      { { "gpio", "poe.reset", "set" }, "poe.reset was set\n", "" },
      { { "gpio", "poe.reset", "clear" }, "poe.reset was cleared\n", "" },
      { { "system", "version" }, "0x00.00\n", "" },
      { { "system", "reload-cause" }, "",
         "quillonctl: switch: no reload cause: it is told once, and was told before, or nothing has "
         "restarted the switch\n" },
      { { "system", "poe-reboot", "keep" }, "a reboot of the switch will keep the PoE controller\n", "" },
   };
   for ( auto& row : rows ) {
      auto words = row.words;
      words.push_back( "--sim" );

      auto result = run( words );

      EXPECT_EQ( result.out, row.out ) << joined( words );
      EXPECT_EQ( result.err, row.err ) << joined( words );
      EXPECT_EQ( result.exitStatus, *row.err ? 1 : 0 ) << joined( words );
      if ( *row.file ) {
         EXPECT_EQ( read( fmt::format( "sim/{}", row.file ) ), row.content ) << joined( words );
      }
   }
   EXPECT_THAT( run( { "--sim", "slot", "tray3" } ).out, HasSubstr( "fanTray.serialNum = 'SLVF0003'\n" ) );
}

TEST_F( BoardCommands, StartTheControllerAndStatusSumsItsPortsUp ) {
   EXPECT_EQ( run( { "poe", "port1", "init" } ).out, "port1 was started\n" );

   auto result = run( { "status" } );

   EXPECT_THAT( result.out, HasSubstr( "\nPoE ports\n48 ports: 48 disabled; 0.0 W\n" ) );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}
