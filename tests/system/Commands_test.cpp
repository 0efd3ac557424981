// The commands for one object, before the scripted plug-in. What that is told to write, it traces.

#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <ostream>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class Commands : public SystemTest {
protected:
   /** A board with an object of each kind, which do what their scripts say. */
   std::string boardOf( const std::string& kind, const std::string& script ) const {
      std::string objects = sensor( "inlet", 1 );
      for ( auto& [each, name] : { std::pair( "fan", "fan1" ), std::pair( "fan", "fan2" ),
               std::pair( "gpio", "poe-reset" ), std::pair( "led", "status" ), std::pair( "slot", "tray1" ),
               std::pair( "system", "switch" ), std::pair( "xcvr", "sfp1" ) } ) {
         objects += "," + scriptedObject( each, name, each == kind ? script : "" );
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

} // namespace

struct Answer {
   const char* kind;
   const char* script;
   Process::Arguments words;
   /** On stdout, as text, and as the members of the JSON object behind its name. */
   const char* text;
   const char* json;
   /** The trace line of what was written. */
   const char* written = "";
};

TEST_F( Commands, DoWhatTheySay ) {
   const Answer rows[] = {
      { "fan", "is 9300", { "fan", "fan1", "rpm" }, "9300 rpm\n", R"("rpm":9300,"state":"ok")" },
      { "fan", "is 900", { "fan", "fan2", "rpm" }, "900 rpm\n", R"("rpm":900,"state":"stalled")" },
      { "fan", "", { "fan", "fan1", "rpm", "9000" }, "fan1 was asked for 9000 rpm\n",
         R"("requested_rpm":9000,"state":"ok")", "rpm 9000" },
      { "fan", "", { "fan", "fan1", "rpm", "0" }, "fan1 was asked for 0 rpm\n",
         R"("requested_rpm":0,"state":"ok")", "rpm 0" },
      { "fan", "", { "fan", "fan1", "rpm", "20000" }, "fan1 was asked for 20000 rpm\n",
         R"("requested_rpm":20000,"state":"ok")", "rpm 20000" },
      { "led", "", { "led", "status", "off" }, "status was set to off\n", R"("setting":"off","state":"ok")",
         "light 0" },
      { "led", "", { "led", "status", "good" }, "status was set to good\n",
         R"("setting":"good","state":"ok")", "light 1" },
      { "led", "", { "led", "status", "warning" }, "status was set to warning\n",
         R"("setting":"warning","state":"ok")", "light 2" },
      { "led", "", { "led", "status", "bad" }, "status was set to bad\n", R"("setting":"bad","state":"ok")",
         "light 3" },
      { "led", "", { "led", "status", "inactive" }, "status was set to inactive\n",
         R"("setting":"inactive","state":"ok")", "light 4" },
      { "led", "", { "led", "status", "unknown" }, "status was set to unknown\n",
         R"("setting":"unknown","state":"ok")", "light 5" },
      { "led", "", { "led", "status", "beacon" }, "status was set to beacon\n",
         R"("setting":"beacon","state":"ok")", "light 6" },
      { "led", "", { "led", "status", "release" }, "status was set to release\n",
         R"("setting":"release","state":"ok")", "light 7" },
      { "xcvr", "is 10", { "xcvr", "sfp1" },
         "NAME  PRESENT  TX FAULT  RX LOS  TX DISABLE  STATUS\n"
         "sfp1  yes      yes       no      yes         fault\n",
         R"("present":true,"tx_fault":true,"rx_los":false,"tx_disable":true,"state":"fault")" },
      { "xcvr", "", { "xcvr", "sfp1", "tx-disable", "on" }, "transmit disable of sfp1 is on\n",
         R"("tx_disable":true,"state":"ok")", "tx disable 1" },
      { "xcvr", "", { "xcvr", "sfp1", "tx-disable", "off" }, "transmit disable of sfp1 is off\n",
         R"("tx_disable":false,"state":"ok")", "tx disable 0" },
      { "gpio", "is 1", { "gpio", "poe-reset", "get" }, "1\n", R"("value":1,"state":"ok")" },
      { "gpio", "is 0", { "gpio", "poe-reset", "get" }, "0\n", R"("value":0,"state":"ok")" },
      { "gpio", "", { "gpio", "poe-reset", "set" }, "poe-reset was set\n", R"("value":1,"state":"ok")",
         "bit 1" },
      { "gpio", "", { "gpio", "poe-reset", "clear" }, "poe-reset was cleared\n", R"("value":0,"state":"ok")",
         "bit 0" },
      { "slot", "", { "slot", "tray1" },
         "NAME   PRESENT  MODEL    SERIAL  STATUS\n"
         "tray1  yes      FAN-1'F  S0      ok\n"
         "\n"
         "FruFactoryIds: QLDevice\nslotId = 2\nfanTray.modelName = 'FAN-1'F'\n"
         "fanTray.serialNum = 'S0'\nfan.libPath = ''\n",
         R"("present":true,"model":"FAN-1'F","serial":"S0","identification":"FruFactoryIds: )"
         R"(QLDevice\nslotId = 2\nfanTray.modelName = 'FAN-1'F'\nfanTray.serialNum = 'S0'\nfan.libPath = )"
         R"(''\n","state":"ok")" },
      { "system", "", { "system", "version" }, "0x01.2a\n", R"("version":"0x01.2a","state":"ok")" },
      { "system", "", { "system", "reload-cause" }, "The switch was told to.\n",
         R"("reload_cause":"The switch was told to.","state":"ok")" },
      { "system", "", { "system", "poe-reboot", "keep" },
         "a reboot of the switch will keep the PoE "
         "controller\n",
         R"("poe_reboot":"keep","state":"ok")", "keep poe 1" },
      { "system", "", { "system", "poe-reboot", "reset" },
         "a reboot of the switch will reset the PoE "
         "controller\n",
         R"("poe_reboot":"reset","state":"ok")", "keep poe 0" },
   };
   for ( auto& row : rows ) {
      auto name = joined( row.words );
      auto board = boardOf( row.kind, row.script );
      auto words = row.words;

      auto result = runScripted( board, words );

      EXPECT_EQ( result.out, row.text ) << name;
      EXPECT_EQ( result.err, "" ) << name;
      EXPECT_EQ( result.exitStatus, 0 ) << name;

      words.insert( words.end(), { "--json", "--trace", "4" } );
      result = runScripted( board, words );

      auto object = row.kind == std::string( "system" ) ? "switch" : row.words[1];
      EXPECT_EQ( result.out, fmt::format( R"({{"board":"bench","objects":[{{"kind":"{}","name":"{}",{},)"
                                          R"("error":null}}],"errors":[]}})"
                                          "\n",
                                row.kind, object, row.json ) )
         << name;
      EXPECT_EQ( result.err, *row.written ? fmt::format( "trace 4: {}\n", row.written ) : "" ) << name;
      EXPECT_EQ( result.exitStatus, 0 ) << name;
   }
}

struct CommandFailure {
   const char* kind;
   const char* script;
   Process::Arguments words;
   const char* complaint;
   /** The field that has no value, and the code of the status. */
   const char* field;
   int code;
};

TEST_F( Commands, SayWhatFailed ) {
   const CommandFailure rows[] = {
      { "fan", "answers 2", { "fan", "fan1", "rpm" },
         "fan1: cannot read the speed: the fan stands still, or its tachometer does not count", "rpm", 2 },
      { "fan", "fails", { "fan", "fan1", "rpm" },
         "fan1: cannot read the speed: execute: failure in response request 0: no acknowledge", "rpm", 4 },
      { "fan", "fails", { "fan", "fan1", "rpm", "9000" },
         "fan1: cannot set the speed: execute: failure in response request 0: no acknowledge",
         "requested_rpm", 4 },
      { "fan", "noTable", { "fan", "fan1", "rpm", "9000" },
         "fan1: cannot set the speed: the platform has no such operation", "requested_rpm", 5 },
      { "fan", "aborts", { "fan", "fan1", "rpm", "9000" },
         "fan1: the library ended its process (Aborted) after \"execute: failure in response request 0: no "
         "acknowledge\"",
         "requested_rpm", 6 },
      { "fan", "silent", { "fan", "fan1", "rpm" }, "fan1: not created: the library gave no reason", "rpm",
         6 },
      { "led", "answers 3", { "led", "status", "bad" }, "status: this LED has no setting bad", "setting", 3 },
      { "led", "fails", { "led", "status", "good" },
         "status: cannot set the LED: execute: failure in response request 0: no acknowledge", "setting", 4 },
      { "led", "throws", { "led", "status", "good" }, "status: the library threw: Not implemented addRead32",
         "setting", 6 },
      { "xcvr", "answers 4", { "xcvr", "sfp1" }, "sfp1: cannot read the presence: the last poll failed",
         "present", 4 },
      { "xcvr", "answers 6", { "xcvr", "sfp1" }, "sfp1: cannot read the presence: the operation failed",
         "present", 6 },
      { "xcvr", "noTable", { "xcvr", "sfp1" },
         "sfp1: cannot read the presence: the platform has no such operation", "present", 5 },
      { "xcvr", "refuses", { "xcvr", "sfp1", "tx-disable", "on" },
         "sfp1: cannot set the transmit disable: the operation failed", "tx_disable", 6 },
      { "xcvr", "qsfp", { "xcvr", "sfp1", "tx-disable", "on" },
         "sfp1: cannot set the transmit disable: the platform has no such operation", "tx_disable", 5 },
      { "gpio", "fails", { "gpio", "poe-reset", "get" },
         "poe-reset: cannot read the bit: execute: failure in response request 0: no acknowledge", "value",
         4 },
      { "gpio", "fails", { "gpio", "poe-reset", "set" },
         "poe-reset: cannot write the bit: execute: failure in response request 0: no acknowledge", "value",
         4 },
      { "gpio", "answers 6", { "gpio", "poe-reset", "clear" },
         "poe-reset: cannot write the bit: the operation failed", "value", 6 },
      { "slot", "answers 6", { "slot", "tray1" }, "tray1: cannot read the presence: the operation failed",
         "present", 6 },
      { "system", "fails", { "system", "version" },
         "switch: cannot read the version: execute: failure in response request 0: no acknowledge", "version",
         4 },
      { "system", "fails", { "system", "reload-cause" },
         "switch: cannot read the reload cause: execute: failure in response request 0: no acknowledge",
         "reload_cause", 4 },
      { "system", "fails", { "system", "poe-reboot", "keep" },
         "switch: cannot set the reboot action: execute: failure in response request 0: no acknowledge",
         "poe_reboot", 4 },
   };
   for ( auto& row : rows ) {
      auto name = fmt::format( "{} ({})", joined( row.words ), row.script );
      auto words = row.words;
      words.push_back( "--json" );

      auto result = runScripted( boardOf( row.kind, row.script ), words );

      EXPECT_EQ( result.err, fmt::format( "quillonctl: {}\n", row.complaint ) ) << name;
      EXPECT_EQ( result.exitStatus, 1 ) << name;
      EXPECT_EQ( result.signal, 0 ) << name;
      rapidjson::Document document;
      document.Parse( result.out.c_str() );
      ASSERT_FALSE( document.HasParseError() ) << name << ": " << result.out;
      ASSERT_EQ( document["objects"].Size(), 1U ) << name;
      auto& object = document["objects"][0];
      EXPECT_TRUE( object[row.field].IsNull() ) << name;
      EXPECT_STREQ( object["state"].GetString(), "failed" ) << name;
      EXPECT_EQ( object["error"]["code"].GetInt(), row.code ) << name;
      EXPECT_EQ( fmt::format( "{}: {}", object["name"].GetString(), object["error"]["message"].GetString() ),
         row.complaint )
         << name;
   }
}

TEST_F( Commands, WriteNothingToStdoutAsTextWhenTheyFail ) {
   auto result = runScripted( boardOf( "slot", "answers 6" ), { "slot", "tray1" } );

   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Commands, DoNotWriteTheTransmitDisableWhenItCannotBeRead ) {
   auto result =
      runScripted( boardOf( "xcvr", "answers 4" ), { "xcvr", "sfp1", "tx-disable", "on", "--trace", "4" } );

   EXPECT_EQ( result.err, "quillonctl: sfp1: cannot set the transmit disable: the last poll failed\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Commands, MakeNoObjectsButTheOneTheyAreFor ) {
   auto board = boardOf( "slot", "throwsAtOnce" );

   EXPECT_EQ( runScripted( board, { "fan", "fan1", "rpm" } ).exitStatus, 0 );
   EXPECT_EQ( runScripted( board, { "slot", "tray1" } ).err,
      "quillonctl: tray1: not created: Not implemented newThing\n" );
}

TEST_F( Commands, DoNotRepeatWhatEndedTheLibrary ) {
   auto result = runScripted( boardOf( "fan", "aborts" ), { "fan", "fan1", "rpm", "9000", "--trace", "4" } );

   EXPECT_THAT( result.err, HasSubstr( "trace 4: rpm 9000\n" ) );
   EXPECT_EQ( result.err.find( "trace 4: rpm 9000\n" ), result.err.rfind( "trace 4: rpm 9000\n" ) );
   EXPECT_THAT( result.err, HasSubstr( "quillonctl: fan1: the library ended its process (Aborted)" ) );
}

TEST_F( Commands, KnowTheSystemOfABoardThatDoesNotAskForIt ) {
   auto result =
      runScripted( boardWith( scriptedObject( "gpio", "bit", "" ) ), { "system", "version", "--json" } );

   EXPECT_EQ( result.out, R"({"board":"bench","objects":[{"kind":"system","name":"system",)"
                          R"("version":"0x01.2a","state":"ok","error":null}],"errors":[]})"
                          "\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Commands, SayThatThereIsNoServer ) {
   auto result =
      run( { "--board", boardOf( "", "" ), "--socket", "/nowhere", "--json", "led", "status", "good" } );

   EXPECT_EQ( result.err, "quillonctl: status: no SMBus server at /nowhere: No such file or directory; start "
                          "quillon-smbusd, name its socket with --socket, or use --sim\n" );
   EXPECT_THAT( result.out, HasSubstr( R"("name":"status","setting":null,"state":"failed","error":{)" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

struct WrongWords {
   Process::Arguments words;
   const char* complaint;
};

TEST_F( Commands, AnswerWrongWordsWithTheNearest ) {
   const WrongWords rows[] = {
      { { "fan" }, "fan needs the name of an object; there are fan1, fan2" },
      { { "fan", "fan3", "rpm" }, "the board bench has no fan fan3; did you mean fan1 or fan2?" },
      { { "fan", "inlet", "rpm" }, "the board bench has no fan inlet; there are fan1, fan2" },
      { { "fan", "fan1" }, "fan fan1 is no whole command; use fan NAME rpm, or fan NAME rpm RPM" },
      { { "fan", "fan1", "rmp" }, "fan fan1 knows no rmp; did you mean rpm?" },
      { { "fan", "fan1", "9000" }, "fan fan1 knows no 9000; there is rpm" },
      { { "fan", "fan1", "rpm", "9000", "1" },
         "fan fan1 rpm 9000 1 is no whole command; use fan NAME rpm, or fan NAME rpm RPM" },
      { { "fan", "fan1", "rpm", "20001" },
         "fan fan1 rpm: RPM must be a whole number from 0 to 20000, not 20001" },
      { { "fan", "fan1", "rpm", "1e3" },
         "fan fan1 rpm: RPM must be a whole number from 0 to 20000, not 1e3" },
      { { "fan", "fan1", "rpm", "99999999999" },
         "fan fan1 rpm: RPM must be a whole number from 0 to 20000, not 99999999999" },
      { { "fan", "fan1", "rpm", "" }, "fan fan1 rpm: RPM must be a whole number from 0 to 20000, not " },
      { { "led", "staus", "good" }, "the board bench has no led staus; did you mean status?" },
      { { "led", "status", "waning" }, "led status knows no waning; did you mean warning?" },
      { { "led", "status", "Good" }, "led status knows no Good; did you mean good?" },
      { { "led", "status", "purple" }, "led status knows no purple; there are off, good, warning, bad, "
                                       "inactive, unknown, beacon, release" },
      { { "led", "status" }, "led status is no whole command; use led NAME "
                             "off|good|warning|bad|inactive|unknown|beacon|release" },
      { { "xcvr", "sfp1", "tx-disable" },
         "xcvr sfp1 tx-disable is no whole command; use xcvr NAME, or xcvr NAME tx-disable on|off" },
      { { "xcvr", "sfp1", "tx-disable", "of" }, "xcvr sfp1 tx-disable knows no of; did you mean on or off?" },
      { { "xcvr", "sfp1", "tx-disabled", "on" }, "xcvr sfp1 knows no tx-disabled; did you mean tx-disable?" },
      { { "gpio", "poe-reset", "toggle" }, "gpio poe-reset knows no toggle; there are get, set, clear" },
      { { "slot", "tray1", "get" }, "slot tray1 get is no whole command; use slot NAME" },
      { { "system" }, "system is no whole command; use system version, or system reload-cause, or system "
                      "poe-reboot keep|reset" },
      { { "system", "versoin" }, "system knows no versoin; did you mean version?" },
      { { "system", "poe-reboot", "kep" }, "system poe-reboot knows no kep; did you mean keep?" },
   };
   auto board = boardOf( "", "" );
   for ( auto& row : rows ) {
      auto words = row.words;
      words.push_back( "--json" );

      auto result = runScripted( board, words );

      EXPECT_EQ( result.err, fmt::format( "quillonctl: {}\n", row.complaint ) );
      EXPECT_EQ( result.out, fmt::format( R"({{"board":"bench","objects":[],"errors":["{}"]}})"
                                          "\n",
                                row.complaint ) );
      EXPECT_EQ( result.exitStatus, 2 ) << row.complaint;
   }
}

TEST_F( Commands, SayThatABoardHasNoneOfTheKind ) {
   auto result = runScripted( boardWith( "" ), { "fan", "fan1", "rpm" } );

   EXPECT_EQ( result.err, "quillonctl: the board bench has no fan fan1; there are none\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Commands, TellTheirFormsInHelp ) {
   EXPECT_THAT( run( { "fan", "--help" } ).out,
      HasSubstr( "  quillonctl fan NAME rpm\n      Shows the speed\n"
                 "  quillonctl fan NAME rpm RPM\n      Asks for a speed\n" ) );
   EXPECT_THAT(
      run( { "system", "--help" } ).out, HasSubstr( "  quillonctl system poe-reboot keep|reset\n" ) );
   EXPECT_THAT( run( { "xcvr", "--help" } ).out, HasSubstr( "  quillonctl xcvr NAME tx-disable on|off\n" ) );
}
