// The commands for PoE ports, before the scripted plug-in. What that is told to write, it traces.

#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class PoeCommands : public SystemTest {
protected:
   /** Ports port1 and so on, which do what their scripts say. */
   std::string boardOf( const std::vector<std::string>& scripts ) const {
      std::string objects = scriptedObject( "gpio", "bit", "" );
      for ( size_t i = 0; i < scripts.size(); ++i ) {
         objects += "," + scriptedObject( "poe_port", fmt::format( "port{}", i + 1 ), scripts[i] );
      }
      return boardWith( objects );
   }

   Result runScripted( const std::string& board, const Process::Arguments& words ) const {
      Process::Arguments arguments { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", board };
      arguments.insert( arguments.end(), words.begin(), words.end() );
      return run( arguments );
   }
};

std::string joined( const Process::Arguments& words ) { return fmt::format( "{}", fmt::join( words, " " ) ); }

/** Powered, requesting, dual, overload, fault, detecting, disabled, an unknown state, and powered. */
const std::vector<std::string> ofEachState = { "is 4", "is 2", "is 3", "is 6", "is 5", "is 1", "is 0", "is 7",
   "user 4" };

} // namespace

TEST_F( PoeCommands, StatusShowsThePortsWithSomethingToSay ) {
   auto result = runScripted( boardOf( ofEachState ), { "poe", "status" } );

   EXPECT_EQ( result.out,
      "NAME   CLASS   POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY   LIMIT  STATUS\n"
      "port1  4      22.1 W   53.9 V  0.410 A      41.3 °C  class            -  powered\n"
      "port2  4       0.0 W   53.9 V  0.410 A      41.3 °C  class            -  requesting\n"
      "port3  4       0.0 W   53.9 V  0.410 A      41.3 °C  class            -  requesting dual\n"
      "port4  4       0.0 W   53.9 V  0.410 A      41.3 °C  class            -  overload\n"
      "port5  4       0.0 W   53.9 V  0.410 A      41.3 °C  class            -  fault\n"
      "port8  4       0.0 W   53.9 V  0.410 A      41.3 °C  class            -  unknown\n"
      "port9  4      22.1 W   53.9 V  0.410 A      41.3 °C  user        16.0 W  powered\n"
      "9 ports: 2 powered, 1 requesting, 1 requesting dual, 1 overload, 1 fault, 1 detecting, 1 disabled, "
      "1 unknown; 44.2 W\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( PoeCommands, StatusShowsAllPortsWhenAsked ) {
   auto result = runScripted( boardOf( { "is 1", "is 0" } ), { "poe", "status", "--all" } );

   EXPECT_EQ( result.out, "NAME   CLASS  POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  STATUS\n"
                          "port1  -      0.0 W   53.9 V  0.410 A      41.3 °C  class           -  detecting\n"
                          "port2  -      0.0 W   53.9 V  0.410 A      41.3 °C  class           -  disabled\n"
                          "2 ports: 1 detecting, 1 disabled; 0.0 W\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( PoeCommands, StatusOfIdlePortsIsTheirSum ) {
   EXPECT_EQ( runScripted( boardOf( { "is 1", "is 0" } ), { "poe", "status" } ).out,
      "2 ports: 1 detecting, 1 disabled; 0.0 W\n" );
}

TEST_F( PoeCommands, StatusShowsAPortThatIsDeniedItsPower ) {
   EXPECT_EQ( runScripted( boardOf( { "denied 1" } ), { "poe", "status" } ).out,
      "NAME   CLASS  POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  STATUS\n"
      "port1  4      0.0 W   53.9 V  0.410 A      41.3 °C  class           -  detecting\n"
      "1 port: 1 detecting; 0.0 W\n" );
}

TEST_F( PoeCommands, StatusIsOneDocumentOfAllPorts ) {
   auto result = runScripted(
      boardOf( { "is 4", "is 1", "noPower 4", "noReport 4", "mismatch 5" } ), { "poe", "status", "--json" } );

   EXPECT_EQ( result.out,
      R"({"board":"bench","objects":[)"
      R"({"kind":"poe_port","name":"port1","device_class":4,"power_watts":22.1,"voltage_volts":53.9,)"
      R"("current_amperes":0.41,"temperature_celsius":41.25,"limited_by":"class","limit_watts":null,)"
      R"("state":"powered","error":null},)"
      R"({"kind":"poe_port","name":"port2","device_class":null,"power_watts":0.0,"voltage_volts":53.9,)"
      R"("current_amperes":0.41,"temperature_celsius":41.25,"limited_by":null,"limit_watts":null,)"
      R"("state":"detecting","error":null},)"
      R"({"kind":"poe_port","name":"port3","device_class":4,"power_watts":null,"voltage_volts":null,)"
      R"("current_amperes":null,"temperature_celsius":null,"limited_by":null,"limit_watts":null,)"
      R"("state":"failed","error":{"status":"QL_STATUS_IO_ERROR","code":4,)"
      R"("message":"cannot read the power: execute: failure in response request 0: timed out"}},)"
      R"({"kind":"poe_port","name":"port4","device_class":4,"power_watts":22.1,"voltage_volts":53.9,)"
      R"("current_amperes":0.41,"temperature_celsius":41.25,"limited_by":null,"limit_watts":null,)"
      R"("state":"failed","error":{"status":"QL_STATUS_IO_ERROR","code":4,)"
      R"("message":"cannot read the limit: execute: failure in response request 0: no acknowledge; )"
      R"(a controller in reset answers after quillonctl poe PORT init"}},)"
      R"({"kind":"poe_port","name":"port5","device_class":null,"power_watts":0.0,"voltage_volts":53.9,)"
      R"("current_amperes":0.41,"temperature_celsius":41.25,"limited_by":"class","limit_watts":null,)"
      R"("state":"fault","error":null}],"errors":[]})"
      "\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( PoeCommands, OneReasonForAllPortsIsToldOnce ) {
   auto result =
      runScripted( boardOf( { "fails", "fails", "fails", "fails", "fails" } ), { "poe", "status" } );

   EXPECT_EQ( result.out, "5 ports: 5 failed; 0.0 W\n" );
   EXPECT_EQ( result.err,
      "quillonctl: port1 and 4 others: cannot read the state: execute: failure in response request 0: no "
      "acknowledge; a controller in reset answers after quillonctl poe PORT init\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( PoeCommands, StatusOfTheBoardSumsThePortsUp ) {
   auto board = boardOf( { "is 4", "is 1" } );

   EXPECT_EQ( runScripted( board, { "status" } ).out, "PoE ports\n"
                                                      "2 ports: 1 powered, 1 detecting; 22.1 W\n"
                                                      "\nGPIOs\n"
                                                      "NAME  VALUE  STATUS\n"
                                                      "bit   0      ok\n" );
   EXPECT_EQ( runScripted( board, { "status", "port*" } ).out,
      "PoE ports\n"
      "NAME   CLASS   POWER  VOLTAGE  CURRENT  TEMPERATURE  STATUS\n"
      "port1  4      22.1 W   53.9 V  0.410 A      41.3 °C  powered\n"
      "port2  -       0.0 W   53.9 V  0.410 A      41.3 °C  detecting\n" );
   EXPECT_THAT( runScripted( board, { "status", "--json" } ).out,
      HasSubstr( R"("name":"port2","device_class":null,"power_watts":0.0,)" ) );
}

TEST_F( PoeCommands, StatusOfTheBoardTellsThatThePortsFail ) {
   auto result = runScripted( boardOf( { "is 4", "noPower 4" } ), { "status" } );

   EXPECT_THAT( result.out, HasSubstr( "2 ports: 1 powered, 1 failed; 22.1 W\n" ) );
   EXPECT_EQ( result.err,
      "quillonctl: port2: cannot read the power: execute: failure in response request 0: timed out\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

struct PoeAnswer {
   const char* script;
   Process::Arguments words;
   /** On stdout, as text, and as the members of the JSON object behind its name. */
   const char* text;
   const char* json;
   /** The trace lines of what was written. */
   std::vector<const char*> written {};
};

TEST_F( PoeCommands, DoWhatTheySay ) {
   const PoeAnswer rows[] = {
      { "is 4", { "poe", "port1" },
         "NAME   CLASS   POWER  VOLTAGE  CURRENT  TEMPERATURE  LIMITED BY  LIMIT  PRIMARY  ALTERNATIVE  "
         "PAIRS  CRC OK  STATUS\n"
         "port1  4      22.1 W   53.9 V  0.410 A      41.3 °C  class           -  powered  detecting    "
         "1      yes     powered\n",
         R"("device_class":4,"power_watts":22.1,"voltage_volts":53.9,"current_amperes":0.41,)"
         R"("temperature_celsius":41.25,"limited_by":"class","limit_watts":null,"primary_state":"powered",)"
         R"("alternative_state":"detecting","pair_state":1,"crc_ok":true,"state":"powered")" },
      { "", { "poe", "port1", "init" }, "port1 was started\n", R"("started":true,"state":"ok")",
         { "poe init 1" } },
      { "", { "poe", "port1", "on" }, "port1 was switched on\n", R"("power":"on","state":"ok")",
         { "poe power 1" } },
      { "", { "poe", "port1", "off" }, "port1 was switched off\n", R"("power":"off","state":"ok")",
         { "poe power 0" } },
      { "", { "poe", "port1", "pse", "on" }, "power sourcing of port1 is on\n",
         R"("pse_enabled":true,"state":"ok")", { "poe pse 1" } },
      { "", { "poe", "port1", "pse", "off" }, "power sourcing of port1 is off\n",
         R"("pse_enabled":false,"state":"ok")", { "poe pse 0" } },
      { "", { "poe", "port1", "legacy", "on" }, "legacy detection of port1 is on\n",
         R"("legacy_detection":true,"state":"ok")", { "poe legacy 1" } },
      { "", { "poe", "port1", "legacy", "off" }, "legacy detection of port1 is off\n",
         R"("legacy_detection":false,"state":"ok")", { "poe legacy 0" } },
      { "", { "poe", "port1", "limit", "class" },
         "NAME   LIMITED BY  LIMIT  STATUS\n"
         "port1  class           -  ok\n",
         R"("limited_by":"class","limit_watts":null,"state":"ok")", { "poe limit 0 0.0" } },
      { "user", { "poe", "port1", "limit", "15.4" },
         "NAME   LIMITED BY   LIMIT  STATUS\n"
         "port1  user        16.0 W  ok\n",
         R"("limited_by":"user","limit_watts":16.0,"state":"ok")", { "poe limit 1 15.4" } },
      { "", { "poe", "port1", "shutoff", "1", "on" }, "shut-off of port1 with power supply 1 on\n",
         R"("power_supply":1,"shut_off":true,"state":"ok")", { "poe shut-off 0 1" } },
      { "", { "poe", "port1", "shutoff", "2", "off" }, "shut-off of port1 with power supply 2 off\n",
         R"("power_supply":2,"shut_off":false,"state":"ok")" },
      // The chip's mask 0x12 is that of the supplies 1 and 3, and the library has forgotten it.
      { "masked", { "poe", "port1", "shutoff", "2", "on" }, "shut-off of port1 with power supply 2 on\n",
         R"("power_supply":2,"shut_off":true,"state":"ok")",
         { "poe shut-off 0 1", "poe shut-off 2 1", "poe shut-off 1 1" } },
      { "masked", { "poe", "port1", "shutoff", "3", "off" }, "shut-off of port1 with power supply 3 off\n",
         R"("power_supply":3,"shut_off":false,"state":"ok")",
         { "poe shut-off 0 1", "poe shut-off 2 1", "poe shut-off 2 0" } },
      { "masked", { "poe", "port1", "shutoff", "1", "on" }, "shut-off of port1 with power supply 1 on\n",
         R"("power_supply":1,"shut_off":true,"state":"ok")" },
      { "", { "poe", "firmware", "show" }, "0x01.05\n", R"("firmware":"0x01.05","state":"ok")",
         { "poe firmware 1" } },
   };
   for ( auto& row : rows ) {
      auto name = joined( row.words );
      auto board = boardOf( { row.script } );
      auto words = row.words;
      words.insert( words.begin(), { "--trace", "4" } );

      auto result = runScripted( board, words );
      EXPECT_EQ( result.out, row.text ) << name;
      std::string written;
      for ( auto line : row.written ) {
         written += fmt::format( "trace 4: {}\n", line );
      }
      EXPECT_EQ( result.err, written ) << name;
      EXPECT_EQ( result.exitStatus, 0 ) << name;

      words.push_back( "--json" );
      EXPECT_EQ( runScripted( board, words ).out,
         fmt::format(
            R"({{"board":"bench","objects":[{{"kind":"poe_port","name":"port1",{},"error":null}}],"errors":[]}})"
            "\n",
            row.json ) )
         << name;
   }
}

TEST_F( PoeCommands, ReportIsTheLibrarysOwn ) {
   auto board = boardOf( { "user" } );

   EXPECT_EQ( runScripted( board, { "poe", "port1", "report" } ).out,
      "Port 1\n"
      "Port Information                                      Data Status\n"
      "--------------------------------------------------    --------------\n"
      "Violation type: user defined                          valid\n"
      "User defined power limit: 16.00W                      valid\n"
      "Port MPSS mask: 0x0000                                valid\n" );
   auto raw = runScripted( board, { "poe", "port1", "report", "--raw" } );
   EXPECT_THAT( raw.out, testing::StartsWith( "Port 1\n20 ff 00 00 00 00 00 01 00 0a 05 2f\n20 " ) );
   EXPECT_EQ( raw.exitStatus, 0 );
}

TEST_F( PoeCommands, ReportThatIsNotWholeIsShownAndIsAFailure ) {
   auto board = boardOf( { "noReport" } );

   auto result = runScripted( board, { "poe", "port1", "report" } );
   EXPECT_THAT(
      result.out, HasSubstr( "Port MPSS mask: n/a                                   SMBus error\n" ) );
   EXPECT_EQ( result.err,
      "quillonctl: port1: 3 of 3 fields are not valid: execute: failure in response request 0: no "
      "acknowledge\n" );
   EXPECT_EQ( result.exitStatus, 1 );

   result = runScripted( board, { "poe", "port1", "report", "--raw" } );
   EXPECT_THAT( result.out, HasSubstr( "Port 1\n20 ff" ) );
   EXPECT_EQ( result.err, "quillonctl: port1: 12 of 14 replies failed\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

struct PoeFailureRow {
   const char* script;
   Process::Arguments words;
   const char* complaint;
};

TEST_F( PoeCommands, SayWhatFailed ) {
   const char* reason = "execute: failure in response request 0: no acknowledge; a controller in reset "
                        "answers after quillonctl poe PORT init";
   const PoeFailureRow rows[] = {
      { "fails", { "poe", "port1" }, "cannot read the state" },
      { "fails", { "poe", "port1", "on" }, "cannot switch it on" },
      { "fails", { "poe", "port1", "off" }, "cannot switch it off" },
      { "fails", { "poe", "port1", "pse", "on" }, "cannot set the power sourcing" },
      { "fails", { "poe", "port1", "legacy", "on" }, "cannot set the legacy detection" },
      { "fails", { "poe", "port1", "limit", "class" }, "cannot set the limit" },
      { "noReport", { "poe", "port1", "limit", "9" }, "cannot read the limit that was set" },
      { "fails", { "poe", "port1", "shutoff", "1", "on" }, "cannot set the shut-off mask" },
      { "noReport", { "poe", "port1", "shutoff", "1", "on" }, "cannot read the shut-off mask" },
      { "fails", { "poe", "firmware", "show" }, "cannot read the firmware's revision" },
   };
   for ( auto& row : rows ) {
      auto result = runScripted( boardOf( { row.script } ), row.words );

      EXPECT_EQ( result.err, fmt::format( "quillonctl: port1: {}: {}\n", row.complaint, reason ) );
      EXPECT_EQ( result.out, "" ) << row.complaint;
      EXPECT_EQ( result.exitStatus, 1 ) << row.complaint;
   }
}

TEST_F( PoeCommands, SayThatAPortWasNotStarted ) {
   auto result = runScripted( boardOf( { "fails" } ), { "poe", "port1", "init" } );

   EXPECT_EQ( result.err, "quillonctl: port1: cannot start the port: execute: failure in response request 0: "
                          "no acknowledge\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( PoeCommands, StatusSumsUpASinglePortThatFails ) {
   EXPECT_EQ( runScripted( boardOf( { "fails" } ), { "poe", "status" } ).out, "1 port: 1 failed; 0.0 W\n" );
}

TEST_F( PoeCommands, SayThatThePlatformHasNoSuchOperation ) {
   const std::pair<Process::Arguments, const char*> rows[] = {
      { { "poe", "port1" }, "cannot read the state" },
      { { "poe", "port1", "on" }, "cannot switch it on" },
      { { "poe", "port1", "report" }, "cannot read the report" },
      { { "poe", "port1", "report", "--raw" }, "cannot read the report" },
      { { "poe", "firmware", "show" }, "cannot read the firmware's revision" },
   };
   for ( auto& [words, action] : rows ) {
      auto result = runScripted( boardOf( { "noTable" } ), words );

      EXPECT_EQ(
         result.err, fmt::format( "quillonctl: port1: {}: the platform has no such operation\n", action ) );
      EXPECT_EQ( result.exitStatus, 1 );
   }
}

TEST_F( PoeCommands, ActOnAllPortsThatAPatternIsFor ) {
   auto result = runScripted( boardOf( { "", "fails", "" } ), { "poe", "port[1-2]", "on" } );

   EXPECT_EQ( result.out, "port1 was switched on\n" );
   EXPECT_THAT( result.err, HasSubstr( "quillonctl: port2: cannot switch it on: " ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( PoeCommands, AnswerWrongWordsWithTheNearest ) {
   const std::pair<Process::Arguments, const char*> rows[] = {
      { { "poe" }, "poe needs the name of an object, or status, or firmware; there are port1, port2" },
      { { "poe", "prot1" }, "the board bench has no poe_port prot1; did you mean port1?" },
      { { "poe", "port9", "on" }, "the board bench has no poe_port port9; did you mean port1 or port2?" },
      { { "poe", "stauts" }, "the board bench has no poe_port stauts; did you mean status?" },
      { { "poe", "status", "port1" }, "poe status knows no port1; there is --all" },
      { { "poe", "port1", "--all" },
         "poe port1 knows no --all; there are init, pse, on, off, limit, legacy, shutoff, report" },
      { { "poe", "port1", "pse" }, "poe port1 pse is no whole command; use poe NAME, or poe NAME init, or "
                                   "poe NAME pse on|off, or poe NAME on, or poe NAME off, or "
                                   "poe NAME limit class|WATTS, or poe NAME legacy on|off, or "
                                   "poe NAME shutoff 1|2|3 on|off, or poe NAME report, or "
                                   "poe NAME report --raw" },
      { { "poe", "port1", "pse", "onn" }, "poe port1 pse knows no onn; did you mean on or off?" },
      { { "poe", "port1", "shutoff", "4", "on" }, "poe port1 shutoff knows no 4; there are 1, 2, 3" },
      { { "poe", "port1", "limit", "0" },
         "poe port1 limit: class|WATTS must be class, or a number of watts from 0.2 to 90, not 0" },
      { { "poe", "port1", "limit", "90.1" },
         "poe port1 limit: class|WATTS must be class, or a number of watts from 0.2 to 90, not 90.1" },
      { { "poe", "port1", "limit", "nan" },
         "poe port1 limit: class|WATTS must be class, or a number of watts from 0.2 to 90, not nan" },
      { { "poe", "port1", "limit", "15W" },
         "poe port1 limit: class|WATTS must be class, or a number of watts from 0.2 to 90, not 15W" },
      { { "poe", "firmware", "shwo" }, "poe firmware knows no shwo; did you mean show?" },
      { { "poe", "firmware" },
         "poe firmware is no whole command; use poe status, or poe status --all, or poe firmware show, or "
         "poe firmware update" },
   };
   auto board = boardOf( { "", "" } );
   for ( auto& [words, complaint] : rows ) {
      auto result = runScripted( board, words );

      EXPECT_EQ( result.err, fmt::format( "quillonctl: {}\n", complaint ) );
      EXPECT_EQ( result.exitStatus, 2 ) << complaint;
   }
}

TEST_F( PoeCommands, SayThatTheBoardHasNoPorts ) {
   auto result = runScripted( boardWith( "" ), { "poe", "status" } );

   EXPECT_EQ( result.err, "quillonctl: the board bench has no object of kind poe_port\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}
