// PoE ports through everything: quillonctl, the library, the server and an emulated controller of eight
// ports, of which the last four have four pairs. For all of them time passes ten times as fast.

#include "EmulatedBoard.h"

#include <fmt/format.h>

#include <chrono>
#include <functional>
#include <thread>

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

class StackPoe : public EmulatedBoardTest {
protected:
   StackPoe() {
      environment["QUILLON_BOARD"] = POE_BOARD;
      environment["LD_PRELOAD"] = QUICK_TIME;
      environment["FIRMWARE_FOLDER"] = ( folder / "firmware" ).string();
      startServer( POE_BOARD );
   }

   Result poe( Process::Arguments words ) const {
      words.insert( words.begin(), "poe" );
      return run( words );
   }

   /** What must go well. */
   void doIt( const Process::Arguments& words ) const {
      auto result = run( words );
      EXPECT_EQ( result.exitStatus, 0 ) << fmt::format( "{}: {}", fmt::join( words, " " ), result.err );
   }

   /** A port that looks for devices. */
   void start( const std::string& port ) const {
      doIt( { "poe", port, "init" } );
      doIt( { "poe", port, "pse", "on" } );
   }

   /** A port with this state on the bench, before long. */
   void await( int port, const std::string& state ) const {
      std::string last;
      for ( int i = 0; i < 500 && last != state + '\n'; ++i ) {
         last = emu( { "get", fmt::format( "poe.port{}.state", port ) } ).out;
         std::this_thread::sleep_for( std::chrono::milliseconds( 5 ) );
      }
      EXPECT_EQ( last, state + '\n' );
   }

   void attach( int port, const std::string& what ) const {
      doIt( { "emu", "poe", fmt::format( "{}", port ), "attach", what } );
   }

   void detach( int port ) const { doIt( { "emu", "poe", fmt::format( "{}", port ), "detach" } ); }

   /** A port that powers a device. */
   void powerUp( int port, const std::string& what ) const {
      start( fmt::format( "port{}", port ) );
      attach( port, what );
      await( port, "requesting" );
      doIt( { "poe", fmt::format( "port{}", port ), "on" } );
      await( port, "powered" );
   }

   /** A firmware file: the revision, and the image, which begins with its own. */
   void provideFirmware( const std::string& revision ) const {
      write( "firmware/poe.bin", revision + revision + std::string( 600, '\x5A' ) );
   }
};

constexpr const char* heading =
   "NAME   CLASS   POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  STATUS\n";

} // namespace

TEST_F( StackPoe, FindsClassifiesPowersAndMeasuresADevice ) {
   auto started = poe( { "port*", "init" } );
   EXPECT_EQ( started.out, "port1 was started\nport2 was started\nport3 was started\nport4 was started\n"
                           "port5 was started\nport6 was started\nport7 was started\nport8 was started\n" );
   EXPECT_EQ( started.err, "" );
   EXPECT_EQ( poe( { "status" } ).out, "8 ports: 8 disabled; 0.0 W\n" );

   doIt( { "poe", "port[1-3]", "pse", "on" } );
   EXPECT_EQ( poe( { "status" } ).out, "8 ports: 3 detecting, 5 disabled; 0.0 W\n" );

   attach( 3, "class=4 draw=22.5" );
   await( 3, "requesting" );
   EXPECT_THAT( poe( { "status" } ).out, HasSubstr( "port3  4      0.0 W    0.0 V  0.000 A      40.0 °C  "
                                                    "class           -  requesting\n" ) );

   doIt( { "poe", "port3", "on" } );
   await( 3, "powered" );
   // 22.5 W at 54 V are 416.7 mA; the chip has steps of 1 mA, 64.45 mV, 100 mW and 1.25 degrees.
   EXPECT_EQ( poe( { "status" } ).out,
      std::string( heading ) +
         "port3  4      22.5 W   54.0 V  0.417 A      40.0 °C  class           -  powered\n"
         "8 ports: 1 powered, 2 detecting, 5 disabled; 22.5 W\n" );
   EXPECT_EQ( run( { "status" } ).out, "PoE ports\n8 ports: 1 powered, 2 detecting, 5 disabled; 22.5 W\n" );

   detach( 3 );
   await( 3, "detecting" );
   EXPECT_EQ( poe( { "status" } ).out, "8 ports: 3 detecting, 5 disabled; 0.0 W\n" );
}

TEST_F( StackPoe, CutsOffADeviceThatTakesMoreThanItMay ) {
   powerUp( 1, "class=3 draw=12" );

   // 3 percent more than 10 W, in steps of 0.2 W.
   EXPECT_EQ( poe( { "port1", "limit", "10" } ).out, "NAME   LIMITED BY   LIMIT  STATUS\n"
                                                     "port1  user        10.4 W  ok\n" );

   await( 1, "overload" );
   EXPECT_THAT( poe( { "status" } ).out, HasSubstr( "user        10.4 W  overload\n8 ports: 1 overload, " ) );

   doIt( { "poe", "port1", "limit", "class" } );
   doIt( { "poe", "port1", "on" } );
   await( 1, "powered" );
   EXPECT_THAT( poe( { "port1", "report" } ).out, HasSubstr( "Overload count: 1  " ) );
}

TEST_F( StackPoe, ShowsAPortThatIsDeniedItsPower ) {
   start( "port1" );
   attach( 1, "class=4" );
   await( 1, "requesting" );
   doIt( { "emu", "set", "poe.budget", "20" } );
   doIt( { "poe", "port1", "on" } );
   await( 1, "denied" );

   EXPECT_EQ( poe( { "status" } ).out,
      "NAME   CLASS  POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  STATUS\n"
      "port1  4      0.0 W    0.0 V  0.000 A      40.0 °C  class           -  detecting\n"
      "8 ports: 1 detecting, 7 disabled; 0.0 W\n" );
}

TEST_F( StackPoe, CutsOffADeviceThatIsShorted ) {
   powerUp( 1, "class=3" );
   doIt( { "emu", "poe", "1", "short" } );

   EXPECT_THAT( poe( { "status" } ).out, HasSubstr( "  fault\n8 ports: 1 fault, 7 disabled; 0.0 W\n" ) );
}

TEST_F( StackPoe, PowersBothSignaturesOfADevice ) {
   start( "port5" );
   attach( 5, "type=dual class=3 draw=19.5" );
   await( 5, "requesting" );
   EXPECT_THAT( poe( { "status" } ).out, HasSubstr( "  requesting dual\n" ) );

   doIt( { "poe", "port5", "on" } );
   await( 5, "powered" );
   EXPECT_EQ( poe( { "port5" } ).out,
      "NAME   CLASS   POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  PRIMARY  ALTERNATIVE  PAIRS  "
      "CRC OK  STATUS\n"
      "port5  3      19.5 W   54.0 V  0.361 A      40.0 °C  class           -  powered  powered      3      "
      "yes     powered\n" );
}

TEST_F( StackPoe, LetsAPortGoOffAndOn ) {
   powerUp( 2, "class=2" );

   doIt( { "poe", "port2", "off" } );
   await( 2, "requesting" );
   doIt( { "poe", "port2", "on" } );
   await( 2, "powered" );
   doIt( { "poe", "port2", "pse", "off" } );
   await( 2, "disabled" );
}

TEST_F( StackPoe, FindsADeviceFromBeforeTheStandardWhenAsked ) {
   start( "port1" );
   doIt( { "poe", "port1", "legacy", "on" } );
   EXPECT_EQ( emu( { "get", "poe.port1.detection" } ).out, "legacy-4-point\n" );
   attach( 1, "type=legacy" );
   await( 1, "requesting" );
   doIt( { "poe", "port1", "legacy", "off" } );
   EXPECT_EQ( emu( { "get", "poe.port1.detection" } ).out, "4-point\n" );
}

TEST_F( StackPoe, ShutsAPortOffWithItsPowerSupplies ) {
   powerUp( 1, "class=3" );
   auto mask = [this] { return emu( { "get", "poe.port1.mpss" } ).out; };

   doIt( { "poe", "port1", "shutoff", "1", "on" } );
   EXPECT_EQ( mask(), "0x02\n" );
   doIt( { "poe", "port1", "shutoff", "3", "on" } );
   EXPECT_EQ( mask(), "0x12\n" );
   doIt( { "poe", "port1", "shutoff", "1", "off" } );
   EXPECT_EQ( mask(), "0x10\n" );

   doIt( { "emu", "set", "poe.shutoff", "0x02" } );
   await( 1, "powered" );
   doIt( { "emu", "set", "poe.shutoff", "0x10" } );
   await( 1, "denied" );
}

TEST_F( StackPoe, SaysThatTheControllerIsInReset ) {
   auto result = run( { "status" } );

   EXPECT_EQ( result.out, "PoE ports\n8 ports: 8 failed; 0.0 W\n" );
   EXPECT_EQ( result.err,
      "quillonctl: port1 and 7 others: cannot read the state: execute: failure in response request 1: i2c-4 "
      "0x20 reg 0x21: no acknowledge; a controller in reset answers after quillonctl poe PORT init\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

struct PoeFault {
   const char* fault;
   Process::Arguments words;
   const char* complaint;
};

TEST_F( StackPoe, SaysWhatWentWrongOnTheBus ) {
   const PoeFault rows[] = {
      { "nack", { "port1", "on" },
         "cannot switch it on: execute: failure in response request 1: i2c-4 0x20 reg 0x01: no acknowledge; "
         "a controller in reset answers after quillonctl poe PORT init" },
      { "busy", { "port1", "off" },
         "cannot switch it off: execute: failure in response request 1: i2c-4 0x20 reg 0x03: bus busy" },
      { "arbitration", { "port1", "pse", "on" },
         "cannot set the power sourcing: execute: failure in response request 1: i2c-4 0x20 reg 0x00: "
         "arbitration lost" },
      { "checksum", { "port1", "legacy", "on" },
         "cannot set the legacy detection: the controller's reply has a wrong checksum" },
      { "corrupt", { "port1" }, "cannot read the state: the controller's reply has a wrong checksum" },
      { "checksum", { "firmware", "show" },
         "cannot read the firmware's revision: the controller's reply has a wrong checksum" },
      { "checksum", { "port1", "report" },
         "38 of 38 fields are not valid: the controller's reply has a wrong checksum" },
   };
   start( "port1" );
   for ( auto& row : rows ) {
      doIt( { "emu", "fault", "poe", row.fault } );

      auto result = poe( row.words );

      EXPECT_EQ( result.err, fmt::format( "quillonctl: port1: {}\n", row.complaint ) );
      EXPECT_EQ( result.exitStatus, 1 ) << row.complaint;
      doIt( { "emu", "fault", "poe", "clear" } );
   }
   EXPECT_EQ( poe( { "port1" } ).exitStatus, 0 );
}

TEST_F( StackPoe, SaysWhyAPortWasNotStarted ) {
   doIt( { "emu", "fault", "cpld", "nack" } );
   auto result = poe( { "port1", "init" } );

   EXPECT_EQ( result.err,
      "quillonctl: port1: cannot start the port: execute: failure in response request 1: i2c-5 0x30 reg "
      "0x05: no acknowledge\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( StackPoe, StartUpLoadsFirmwareThatWasLost ) {
   provideFirmware( "\x02\x07" );
   doIt( { "poe", "port1", "init" } );
   doIt( { "emu", "poe", "chip", "lose-firmware" } );
   EXPECT_EQ( poe( { "port1", "on" } ).err,
      "quillonctl: port1: cannot switch it on: the controller runs no firmware (error code 0xaf)\n" );

   auto result = poe( { "port1", "init" } );

   EXPECT_EQ( result.out, "port1 was started\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( poe( { "firmware", "show" } ).out, "0x02.07\n" );
   powerUp( 2, "class=1" );
}

TEST_F( StackPoe, UpdatesTheFirmwareFromAFile ) {
   provideFirmware( "\x03\x01" );
   doIt( { "poe", "port1", "init" } );
   EXPECT_EQ( poe( { "firmware", "show" } ).out, "0x01.05\n" );

   auto result = poe( { "firmware", "update" } );
   EXPECT_EQ( result.out, "NAME   FIRMWARE  BEFORE   STATUS\n"
                          "port1  0x03.01   0x01.05  ok\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
   EXPECT_EQ( emu( { "get", "poe.firmware" } ).out, "0x03.01\n" );

   EXPECT_THAT( poe( { "firmware", "update", "--json" } ).out,
      HasSubstr( R"("firmware":"0x03.01","previous_firmware":"0x03.01","state":"ok","error":null)" ) );
}

TEST_F( StackPoe, SaysThatNewFirmwareDoesNotRun ) {
   // A revision without an image.
   write( "firmware/poe.bin", "\x02\x07" );
   doIt( { "poe", "port1", "init" } );

   auto result = poe( { "firmware", "update" } );

   EXPECT_EQ( result.err, "quillonctl: port1: cannot update the firmware: Failed to reprogram firmware\n" );
   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( StackPoe, UpdatesFirmwareThatWasLost ) {
   provideFirmware( "\x02\x07" );
   doIt( { "poe", "port1", "init" } );
   doIt( { "emu", "poe", "chip", "lose-firmware" } );

   auto result = poe( { "firmware", "update" } );

   EXPECT_EQ( result.out, "NAME   FIRMWARE  BEFORE  STATUS\n"
                          "port1  0x02.07   -       ok\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( StackPoe, TellsSomebodyWhatItWaitsFor ) {
   provideFirmware( "\x03\x01" );
   doIt( { "poe", "port1", "init" } );

   auto result = runBeforeSomebody( { "poe", "firmware", "update" } );

   EXPECT_THAT( result.err, HasSubstr( "\r\033[Kport1: clearing the firmware, " ) );
   EXPECT_THAT( result.err, HasSubstr( "\r\033[Kport1: loading the firmware, " ) );
   EXPECT_THAT( result.err, HasSubstr( " of 8 s" ) );
   EXPECT_THAT( result.err, EndsWith( "\r\033[K" ) );
   EXPECT_THAT( result.out, HasSubstr( "0x03.01" ) );
}

TEST_F( StackPoe, TellsSomebodyThatTheControllerStarts ) {
   environment.erase( "LD_PRELOAD" );
   startServer( POE_BOARD );

   auto result = runBeforeSomebody( { "poe", "port[12]", "init" } );

   EXPECT_THAT( result.err, HasSubstr( "\r\033[Kport1, 1 of 2: starting the controller, 0 of 1 s" ) );
   EXPECT_THAT( result.err, EndsWith( "\r\033[K" ) );
   EXPECT_EQ( result.out, "port1 was started\nport2 was started\n" );
}

TEST_F( StackPoe, ShowsTraceLinesInsteadOfWhatItWaitsFor ) {
   provideFirmware( "\x03\x01" );
   doIt( { "poe", "port1", "init" } );

   auto result = runBeforeSomebody( { "--trace", "0", "poe", "firmware", "update" } );

   EXPECT_THAT( result.err, HasSubstr( "trace 0: Loading firmware\r\n" ) );
   EXPECT_THAT( result.err, Not( HasSubstr( "\033" ) ) );
}

TEST_F( StackPoe, SaysThatTheFirmwareFileIsMissing ) {
   doIt( { "poe", "port1", "init" } );

   auto result = poe( { "firmware", "update" } );
   EXPECT_EQ( result.err, "quillonctl: port1: cannot update the firmware: cannot read "
                          "/usr/share/firmware/poe.bin: No such file or directory\n" );
   EXPECT_EQ( result.exitStatus, 1 );

   write( "firmware/poe.bin", "\x01" );
   EXPECT_EQ( poe( { "firmware", "update" } ).err, "quillonctl: port1: cannot update the firmware: "
                                                   "/usr/share/firmware/poe.bin holds no firmware\n" );
}

TEST_F( StackPoe, TellsTheEndOfTheLibraryThatFindsNoFirmwareFile ) {
   doIt( { "poe", "port1", "init" } );
   doIt( { "emu", "poe", "chip", "lose-firmware" } );

   auto result = poe( { "port1", "init" } );

   EXPECT_THAT(
      result.err, EndsWith( "quillonctl: port1: the library ended its process (Aborted) after "
                            "\"Unable to read PSE firmware file: /usr/share/firmware/poe.bin\"\n" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( StackPoe, TakesItsLineAwayBeforeItTellsTheEndOfTheLibrary ) {
   // Without a file the library ends when the controller has started, which takes its time.
   environment.erase( "LD_PRELOAD" );
   startServer( POE_BOARD );
   doIt( { "poe", "port1", "init" } );
   doIt( { "emu", "poe", "chip", "lose-firmware" } );

   auto result = runBeforeSomebody( { "poe", "port1", "init" } );

   EXPECT_THAT( result.err, HasSubstr( "\r\033[Kport1: starting the controller, 0 of 1 s" ) );
   EXPECT_THAT(
      result.err, HasSubstr( "\r\033[Kquillonctl: port1: the library ended its process (Aborted)" ) );
}

TEST_F( StackPoe, HasNoControllerInSimulation ) {
   environment["QUILLON_BOARD"] = BOARDS "/selvane";

   auto result = run( { "--sim", "poe", "port1" } );

   EXPECT_EQ( result.err, "quillonctl: port1: cannot read the state: the reply is all zeros; in simulation "
                          "there is no PoE controller\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}
