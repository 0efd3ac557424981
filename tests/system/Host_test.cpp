#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <ostream>
#include <thread>

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

/** A sensor of the scripted plug-in. */
std::string scripted( const std::string& name, int did, const std::string& script ) {
   return sensor( name, did, fmt::format( R"(, "driverArgs": {{ "script": "{}" }})", script ) );
}

/** A socket that somebody listens on, or did; its file stays. */
class ListeningSocket {
public:
   explicit ListeningSocket( const std::string& path ) : socket_( ::socket( AF_UNIX, SOCK_STREAM, 0 ) ) {
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      EXPECT_EQ( bind( socket_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
      EXPECT_EQ( listen( socket_, 8 ), 0 );
   }

   ~ListeningSocket() { close( socket_ ); }

   ListeningSocket( const ListeningSocket& ) = delete;
   ListeningSocket& operator=( const ListeningSocket& ) = delete;

   int accept() const { return ::accept( socket_, nullptr, nullptr ); }

   /** Lets `accept` return for good. */
   void shutDown() const { shutdown( socket_, SHUT_RDWR ); }

private:
   int socket_;
};

/** A server that takes requests and hangs up instead of answering. */
class RudeServer {
public:
   explicit RudeServer( const std::string& path ) : socket_( path ), thread_( [this] { serve(); } ) {}

   ~RudeServer() {
      socket_.shutDown();
      thread_.join();
   }

private:
   void serve() const {
      for ( int connection; ( connection = socket_.accept() ) >= 0; close( connection ) ) {
         char block[4096];
         // One caller only looks whether somebody listens, and sends nothing.
         [[maybe_unused]] auto count = ::read( connection, block, sizeof( block ) );
      }
   }

   ListeningSocket socket_;
   std::thread thread_;
};

} // namespace

class Host : public SystemTest {
protected:
   Result runScripted( const std::string& objects, const Process::Arguments& more = {} ) {
      Process::Arguments arguments { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", boardWith( objects ),
         "status" };
      arguments.insert( arguments.end(), more.begin(), more.end() );
      return run( arguments );
   }
};

TEST_F( Host, SaysAtOnceThatThereIsNoServer ) {
   auto socket = ( folder / "none.sock" ).string();
   auto begin = std::chrono::steady_clock::now();

   auto result = run( { "--socket", socket, "status" } );

   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.err, fmt::format( "quillonctl: no SMBus server at {}: No such file or directory; start "
                                       "quillon-smbusd, name its socket with --socket, or use --sim\n",
                             socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_LT( std::chrono::steady_clock::now() - begin, std::chrono::seconds( 1 ) );
}

TEST_F( Host, SaysThatNobodyListensOnTheSocket ) {
   auto socket = ( folder / "old.sock" ).string();
   ListeningSocket { socket };

   auto result = run( { "--socket", socket, "status" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: no SMBus server at {}: Connection refused; start "
                                       "quillon-smbusd, name its socket with --socket, or use --sim\n",
                             socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysThatThePathOfASocketIsTooLong ) {
   auto socket = "/" + std::string( 200, 'x' );

   auto result = run( { "--socket", socket, "status" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: no SMBus server at {}: File name too long; start "
                                       "quillon-smbusd, name its socket with --socket, or use --sim\n",
                             socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, TakesTheSocketFromTheEnvironment ) {
   environment["QUILLON_SMBUS_SOCKET"] = "/nowhere/smbus.sock";

   EXPECT_THAT( run( { "status" } ).err, HasSubstr( "no SMBus server at /nowhere/smbus.sock: " ) );
}

TEST_F( Host, TakesAnEmptySocketForTheLibrarysOwn ) {
   environment["QUILLON_SMBUS_SOCKET"] = "";

   EXPECT_THAT( run( { "status", "inlet" } ).err, Not( HasSubstr( "no SMBus server at : " ) ) );
}

TEST_F( Host, FindsAServerThatListens ) {
   auto socket = ( folder / "smbus.sock" ).string();
   ListeningSocket server( socket );

   auto result = run( { "--socket", socket, "--plugin", SCRIPTED_PLUGIN, "--board",
      boardWith( scripted( "inlet", 1, "is 20" ) ), "status" } );

   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Host, WritesEveryObjectAsFailedWithoutAServer ) {
   auto result = run( { "--socket", "/nowhere", "--json", "status", "inlet", "poe" } );

   rapidjson::Document document;
   document.Parse( result.out.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << result.out;
   ASSERT_EQ( document["objects"].Size(), 2U );
   auto& poe = document["objects"][1];
   EXPECT_STREQ( poe["name"].GetString(), "poe" );
   EXPECT_TRUE( poe["temperature_celsius"].IsNull() );
   EXPECT_EQ( poe["alert_celsius"].GetDouble(), 75.0 );
   EXPECT_STREQ( poe["state"].GetString(), "failed" );
   EXPECT_STREQ( poe["error"]["status"].GetString(), "QL_STATUS_IO_ERROR" );
   EXPECT_EQ( poe["error"]["code"].GetInt(), 4 );
   EXPECT_STREQ( poe["error"]["message"].GetString(),
      "no SMBus server at /nowhere: No such file or directory; start "
      "quillon-smbusd, name its socket with --socket, or use --sim" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysThatThePluginIsNotThere ) {
   auto result = run( { "--sim", "--plugin", "/nowhere/libX.so", "status" } );

   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.err, "quillonctl: cannot load the plug-in: /nowhere/libX.so: cannot open shared object "
                          "file: No such file or "
                          "directory; name the right file with --plugin\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysThatThePluginIsNoLibrary ) {
   write( "plugin.so", "this is no library" );

   auto result = run( { "--sim", "--plugin", ( folder / "plugin.so" ).string(), "status" } );

   EXPECT_THAT(
      result.err, ContainsRegex( "^quillonctl: cannot load the plug-in: .*/plugin.so: file too short; "
                                 "name the right file with --plugin\n$" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysWhichSymbolALibraryLacks ) {
   auto result = run( { "--sim", "--plugin", NO_PLUGIN, "status" } );

   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.err,
      fmt::format( "quillonctl: {} is no platform library: it lacks the symbol ql_temp_sensor_init; "
                   "name the right file with --plugin\n",
         NO_PLUGIN ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, TakesThePluginFromTheEnvironment ) {
   environment["QUILLON_PLUGIN"] = NO_PLUGIN;

   EXPECT_EQ( run( { "--sim", "status" } ).exitStatus, 1 );
   EXPECT_EQ( run( { "--sim", "--plugin", PLUGIN, "status" } ).exitStatus, 0 );
}

TEST_F( Host, SaysThatTheSimulationFolderCannotBeMade ) {
   write( "file", "" );
   environment["QUILLONLIB_SIMDIR"] = ( folder / "file" / "sim" ).string();

   auto result = run( { "--sim", "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot write to the folder of the simulation, {}/file/sim: Not "
                               "a directory; name another in QUILLONLIB_SIMDIR\n",
                     folder.string() ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, ShowsTracesUpToALevel ) {
   auto result = run( { "--sim", "--trace", "4", "status", "inlet" } );

   EXPECT_THAT( result.err, HasSubstr( "trace 0: PCT2075 device created\n" ) );
   EXPECT_THAT( result.err, HasSubstr( "trace 2: loading topology json\n" ) );
   EXPECT_THAT( result.err, HasSubstr( "trace 4: getTemperatureCallback(" ) );
   EXPECT_THAT( result.err, Not( HasSubstr( "trace 5" ) ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Host, ShowsAnObjectThatIsRefusedWithoutAReasonAsFailed ) {
   auto result =
      runScripted( scriptedObject( "fan", "fan1", "silent" ) + "," + scripted( "inlet", 2, "is 20" ) );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet      20.0 °C  45.0 °C   55.0 °C  ok\n"
                          "\nFans\n"
                          "NAME  SPEED    MAXIMUM  STATUS\n"
                          "fan1      -  20000 rpm  FAILED\n" );
   EXPECT_EQ( result.err, "quillonctl: fan1: not created: the library gave no reason\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SurvivesABreachOfContractByHardware ) {
   // The library cannot make its file here, and ends the process when it looks at the threshold.
   std::filesystem::create_directories( simulation / "PCT2075-outlet" );

   auto result = run( { "--sim", "status" } );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME    TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet        0.1 °C  45.0 °C   55.0 °C  ok\n"
                          "outlet            -  60.0 °C   70.0 °C  FAILED\n"
                          "asic         0.1 °C  85.0 °C   95.0 °C  ok\n"
                          "poe          0.1 °C  75.0 °C   85.0 °C  ok\n" );
   EXPECT_THAT( result.err, AllOf( ContainsRegex( "Assertion `mm != MAP_FAILED' failed\\.\n" ),
                               EndsWith( "quillonctl: outlet: the library ended its process (Aborted) after "
                                         "\"setting alert threshold\"\n" ) ) );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.signal, 0 );
}

TEST_F( Host, GoesOnWithItsRoundsAfterABreachOfContract ) {
   auto process = start( { "--sim", "--json", "status", "inlet", "poe", "--interval", "0.05" } );
   auto line = process.readLine();
   ASSERT_THAT( line.value_or( "failed" ), Not( HasSubstr( "failed" ) ) );
   std::filesystem::remove( simulation / "PCT2075-inlet" );

   for ( auto rounds = 0; line && line->find( "failed" ) == std::string::npos && rounds < 20; ++rounds ) {
      line = process.readLine();
   }

   rapidjson::Document document;
   document.Parse( line.value_or( "" ).c_str() );
   ASSERT_FALSE( document.HasParseError() );
   EXPECT_STREQ(
      document["objects"][0]["error"]["message"].GetString(), "the library ended its process (Aborted)" );
   EXPECT_STREQ( document["objects"][1]["state"].GetString(), "ok" );
   process.send( SIGINT );
   EXPECT_EQ( process.wait().exitStatus, 1 );
}

TEST_F( Host, ShowsWhatTheServerLeavesUnanswered ) {
   auto socket = ( folder / "rude.sock" ).string();
   RudeServer server( socket );

   auto result = run( { "--socket", socket, "--json", "status", "inlet", "poe" } );

   rapidjson::Document document;
   document.Parse( result.out.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << result.out;
   ASSERT_EQ( document["objects"].Size(), 2U );
   for ( auto& object : document["objects"].GetArray() ) {
      EXPECT_STREQ( object["state"].GetString(), "failed" );
      EXPECT_STREQ( object["error"]["message"].GetString(),
         "the library ended its process (Aborted) after \"execute: error. 104, Connection reset by peer\"" );
   }
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.signal, 0 );
}

struct Behaviour {
   const char* name;
   const char* script;
   const char* status;
   const char* message;
};

std::ostream& operator<<( std::ostream& stream, const Behaviour& row ) { return stream << row.name; }

class FailingObject : public Host, public ::testing::WithParamInterface<Behaviour> {};

TEST_P( FailingObject, IsShownWithTheOthers ) {
   auto result =
      runScripted( scripted( "bad", 1, GetParam().script ) + "," + scripted( "good", 2, "is 20.25" ) );

   EXPECT_EQ( result.out, fmt::format( "Temperature sensors\n"
                                       "NAME  TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                                       "bad             -  45.0 °C   55.0 °C  {}\n"
                                       "good      20.3 °C  45.0 °C   55.0 °C  ok\n",
                             GetParam().status ) )
      << GetParam().name;
   EXPECT_THAT( result.err, EndsWith( fmt::format( "quillonctl: bad: {}\n", GetParam().message ) ) )
      << GetParam().name;
   EXPECT_EQ( std::count( result.err.begin(), result.err.end(), '\n' ), 1 ) << result.err;
   EXPECT_EQ( result.exitStatus, 1 ) << GetParam().name;
   EXPECT_EQ( result.signal, 0 ) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(, FailingObject,
   ::testing::Values(
      Behaviour { "UnknownDriver", "unknownDriver", "FAILED", "not created: driver PCT2076 not found" },
      Behaviour { "NullWithoutReason", "silent", "FAILED", "not created: the library gave no reason" },
      Behaviour { "ExceptionFromAdd", "throwsAtOnce", "FAILED", "not created: Not implemented newThing" },
      Behaviour { "AbortInAdd", "abortsAtOnce", "FAILED",
         "the library ended its process (Aborted) after \"execute: failure in response request 0: no "
         "acknowledge\"" },
      Behaviour { "NoTable", "noTable", "NOT_SUPPORTED",
         "cannot read the temperature: the platform has no such operation" },
      Behaviour { "SmallTable", "smallTable", "NOT_SUPPORTED",
         "cannot read the temperature: the platform has no such operation" },
      Behaviour { "EmptySlot", "emptySlot", "NOT_SUPPORTED",
         "cannot read the temperature: the platform has no such operation" },
      Behaviour { "FailingRead", "fails", "IO_ERROR",
         "cannot read the temperature: execute: failure in response request 0: no acknowledge" },
      Behaviour { "DeviceError", "answers 2", "DEVICE_ERROR",
         "cannot read the temperature: the chip answered with an error or an impossible value" },
      Behaviour { "InvalidArgument", "answers 3", "INVALID_ARGUMENT",
         "cannot read the temperature: the library can't use what it was given" },
      Behaviour {
         "IoError", "answers 4", "IO_ERROR", "cannot read the temperature: the way to the hardware failed" },
      Behaviour { "NotSupported", "answers 5", "NOT_SUPPORTED",
         "cannot read the temperature: the platform has no such operation" },
      Behaviour { "Failed", "answers 6", "FAILED", "cannot read the temperature: the operation failed" },
      Behaviour { "UnknownStatus", "answers 77", "UNKNOWN",
         "cannot read the temperature: the library gave the unknown status 77" },
      Behaviour { "ExceptionFromRead", "throws", "FAILED", "the library threw: Not implemented addRead32" } ),
   []( auto& test ) { return test.param.name; } );

TEST_F( Host, WritesAFailingReadAsJson ) {
   auto result = runScripted( scripted( "bad", 1, "fails" ), { "--json" } );

   EXPECT_EQ( result.out,
      R"({"board":"bench","objects":[{"kind":"temp_sensor","name":"bad","temperature_celsius":null,)"
      R"("alert_celsius":45.0,"critical_celsius":55.0,"state":"failed","error":{"status":"QL_STATUS_IO_ERROR",)"
      R"("code":4,"message":"cannot read the temperature: execute: failure in response request 0: no )"
      R"(acknowledge"}}],"errors":[]})"
      "\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, TakesNoNumberForAFailure ) {
   auto result = runScripted( scripted( "odd", 1, "nan" ), { "--json" } );

   EXPECT_THAT( result.out, HasSubstr( R"("temperature_celsius":null)" ) );
   EXPECT_EQ( result.err, "quillonctl: odd: cannot read the temperature: the library gave no number\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, TellsAFailureAgainOnlyWhenItIsNew ) {
   auto result = runScripted( scripted( "bad", 1, "fails" ) + "," + scripted( "shaky", 2, "recovers 30" ),
      { "--interval", "0.01", "--count", "4" } );

   EXPECT_EQ( result.err,
      "quillonctl: bad: cannot read the temperature: execute: failure in response request 0: no acknowledge\n"
      "quillonctl: shaky: cannot read the temperature: the chip answered with an error or an impossible "
      "value\n" );
   EXPECT_THAT( result.out, EndsWith( "shaky      30.0 °C  45.0 °C   55.0 °C  ok\n" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, LetsTimersFireWhileItWaits ) {
   auto result =
      runScripted( scripted( "ticks", 1, "ticks" ), { "--json", "--interval", "0.5", "--count", "2" } );

   auto second = result.out.substr( result.out.find( '\n' ) + 1 );
   rapidjson::Document document;
   document.Parse( second.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << result.out;
   auto ticks = document["objects"][0]["temperature_celsius"].GetDouble();
   EXPECT_GE( ticks, 5 );
   EXPECT_LE( ticks, 50 );
}

TEST_F( Host, LetsATimerDeleteItself ) {
   auto result =
      runScripted( scripted( "ticks", 1, "ticksOnce" ), { "--json", "--interval", "0.2", "--count", "2" } );

   EXPECT_THAT( result.out, HasSubstr( R"("temperature_celsius":1.0)" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Host, ListsEveryKindOfObject ) {
   auto objects = scriptedObject( "system", "switch", "" );
   for ( auto& [kind, script] :
      { std::pair( "fan", "is 9300" ), std::pair( "slot", "" ), std::pair( "xcvr", "is 4" ),
         std::pair( "poe_port", "is 4" ), std::pair( "led", "" ), std::pair( "gpio", "is 1" ) } ) {
      objects += "," + scriptedObject( kind, fmt::format( "{}1", kind ), script );
   }
   objects += "," + scripted( "inlet", 2, "is 20" );

   auto result = runScripted( objects );

   EXPECT_EQ( result.out, "System\n"
                          "NAME    VERSION  STATUS\n"
                          "switch  0x01.2a  ok\n"
                          "\nTemperature sensors\n"
                          "NAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet      20.0 °C  45.0 °C   55.0 °C  ok\n"
                          "\nFans\n"
                          "NAME     SPEED    MAXIMUM  STATUS\n"
                          "fan1  9300 rpm  20000 rpm  ok\n"
                          "\nSlots\n"
                          "NAME   PRESENT  MODEL    SERIAL  STATUS\n"
                          "slot1  yes      FAN-1'F  S0      ok\n"
                          "\nTransceivers\n"
                          "NAME   PRESENT  TX FAULT  RX LOS  TX DISABLE  STATUS\n"
                          "xcvr1  yes      no        yes     no          ok\n"
                          "\nPoE ports\n"
                          "1 port: 1 powered; 22.1 W\n"
                          "\nLEDs\n"
                          "1 LED: ok\n"
                          "\nGPIOs\n"
                          "NAME   VALUE  STATUS\n"
                          "gpio1  1      ok\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

struct KindRow {
   const char* name;
   const char* kind;
   const char* script;
   /** Members of the JSON object behind its name. */
   const char* json;
};

TEST_F( Host, WritesEveryKindAsJson ) {
   const KindRow rows[] = {
      { "Fan", "fan", "is 9300", R"("rpm":9300,"max_rpm":20000,"state":"ok","error":null)" },
      { "SlowestFan", "fan", "is 2000", R"("rpm":2000,"max_rpm":20000,"state":"ok","error":null)" },
      { "BlockedFan", "fan", "is 1999", R"("rpm":1999,"max_rpm":20000,"state":"stalled","error":null)" },
      { "StandingFan", "fan", "answers 2",
         R"("rpm":null,"max_rpm":20000,"state":"failed","error":{"status":"QL_STATUS_DEVICE_ERROR","code":2,)"
         R"("message":"cannot read the speed: the fan stands still, or its tachometer does not count"}})" },
      { "FailingFan", "fan", "fails",
         R"("rpm":null,"max_rpm":20000,"state":"failed","error":{"status":"QL_STATUS_IO_ERROR","code":4,)"
         R"("message":"cannot read the speed: execute: failure in response request 0: no acknowledge"})" },
      { "Slot", "slot", "",
         R"("present":true,"model":"FAN-1'F","serial":"S0","identification":"FruFactoryIds: )"
         R"(QLDevice\nslotId = 2\nfanTray.modelName = 'FAN-1'F'\nfanTray.serialNum = 'S0'\nfan.libPath = )"
         R"(''\n","state":"ok","error":null)" },
      { "FailingSlot", "slot", "answers 6",
         R"("present":null,"model":null,"serial":null,"identification":null,"state":"failed",)"
         R"("error":{"status":"QL_STATUS_FAILED","code":6,)"
         R"("message":"cannot read the presence: the operation failed"})" },
      { "Module", "xcvr", "is 8",
         R"("present":true,"tx_fault":false,"rx_los":false,"tx_disable":true,"state":"ok","error":null)" },
      { "FaultyModule", "xcvr", "is 2",
         R"("present":true,"tx_fault":true,"rx_los":false,"tx_disable":false,"state":"fault","error":null)" },
      { "NoModule", "xcvr", "is 5",
         R"("present":false,"tx_fault":false,"rx_los":true,"tx_disable":false,"state":"absent","error":null)" },
      { "ModuleWithoutSfpSignals", "xcvr", "qsfp 0",
         R"("present":true,"tx_fault":null,"rx_los":null,"tx_disable":null,"state":"ok","error":null)" },
      { "NoModuleWithoutSfpSignals", "xcvr", "qsfp 1",
         R"("present":false,"tx_fault":null,"rx_los":null,"tx_disable":null,"state":"absent","error":null)" },
      { "StaleModule", "xcvr", "answers 4",
         R"("present":null,"tx_fault":null,"rx_los":null,"tx_disable":null,"state":"failed",)"
         R"("error":{"status":"QL_STATUS_IO_ERROR","code":4,)"
         R"("message":"cannot read the presence: the last poll failed"})" },
      { "Led", "led", "", R"("settable":true,"state":"ok","error":null)" },
      { "LedWithoutTable", "led", "noTable", R"("settable":false,"state":"ok","error":null)" },
      { "MissingLed", "led", "silent",
         R"("settable":null,"state":"failed","error":{"status":"QL_STATUS_FAILED","code":6,)"
         R"("message":"not created: the library gave no reason"})" },
      { "SetBit", "gpio", "is 1", R"("value":1,"state":"ok","error":null)" },
      { "ClearBit", "gpio", "is 0", R"("value":0,"state":"ok","error":null)" },
      { "FailingBit", "gpio", "answers 6",
         R"("value":null,"state":"failed","error":{"status":"QL_STATUS_FAILED","code":6,)"
         R"("message":"cannot read the bit: the operation failed"})" },
   };
   for ( auto& row : rows ) {
      auto result = runScripted( scriptedObject( row.kind, "it", row.script ), { "--json" } );

      EXPECT_THAT( result.out, StartsWith( fmt::format( R"({{"board":"bench","objects":[{{"kind":"{}",)"
                                                        R"("name":"it",{})",
                                  row.kind, row.json ) ) )
         << row.name;
      EXPECT_EQ( std::count( result.out.begin(), result.out.end(), '\n' ), 1 ) << row.name;
   }
}

TEST_F( Host, ShowsNoControlCharactersOfAText ) {
   auto slot = scriptedObject( "slot", "tray1", "" );
   slot.replace( slot.find( R"("modelName": "")" ), 15, R"("modelName": "\u001b[31m\n")" );

   auto result = run( { "--sim", "--board", boardWith( slot ), "slot", "tray1" } );

   EXPECT_THAT( result.out, StartsWith( "NAME   PRESENT  MODEL     SERIAL  STATUS\n"
                                        "tray1  yes      ?[31m?-B          ok\n"
                                        "\nFruFactoryIds: QLDevice\n" ) );
   EXPECT_THAT( result.out, HasSubstr( "\nfanTray.modelName = '?[31m\n-B'\n" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Host, MakesTheCpldForASystemThroughAnObjectThatIsNotShown ) {
   auto board = boardWith( scriptedObject( "system", "switch", "" ) + "," + scripted( "inlet", 1, "is 20" ) +
                           "," + scriptedObject( "gpio", "bit", "" ) );

   auto result = run( { "--sim", "--board", board, "--trace", "0", "status", "switch" } );

   EXPECT_EQ( result.out, "System\n"
                          "NAME    VERSION  STATUS\n"
                          "switch  0x00.00  ok\n" );
   EXPECT_THAT( result.err, HasSubstr( "trace 0: creating HardwareDevice GpioDriver\n" ) );
   EXPECT_THAT( result.err, Not( HasSubstr( "PCT2075" ) ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Host, SaysWhatASystemNeedsInSimulation ) {
   auto result =
      run( { "--sim", "--board", boardWith( scriptedObject( "system", "switch", "" ) ), "status" } );

   EXPECT_EQ( result.out, "System\n"
                          "NAME    VERSION  STATUS\n"
                          "switch  -        FAILED\n" );
   EXPECT_EQ( result.err,
      "quillonctl: switch: in simulation objects.json must have an object on the device 9, "
      "\"CpuCpld\", such as a gpio\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysThatWhatASystemNeedsHasFailed ) {
   auto result = runScripted(
      scriptedObject( "system", "switch", "" ) + "," + scriptedObject( "gpio", "bit", "abortsAtOnce" ),
      { "switch" } );

   EXPECT_EQ( result.err, "quillonctl: switch: needs bit, which failed: the library ended its process "
                          "(Aborted) after \"execute: failure in response request 0: no acknowledge\"\n" );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.signal, 0 );
}

struct InitFailure {
   const char* script;
   const char* complaint;
};

std::ostream& operator<<( std::ostream& stream, const InitFailure& row ) { return stream << row.script; }

class FailingInit : public Host, public ::testing::WithParamInterface<InitFailure> {};

TEST_P( FailingInit, IsTold ) {
   environment["INIT_SCRIPT"] = GetParam().script;

   auto result = runScripted( scripted( "inlet", 1, "is 20" ), { "--json" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: {}\n", GetParam().complaint ) ) << GetParam().script;
   EXPECT_THAT( result.out, HasSubstr( R"("state":"failed","error":{"status":"QL_STATUS_FAILED","code":6)" ) )
      << GetParam().script;
   EXPECT_EQ( result.exitStatus, 1 ) << GetParam().script;
}

INSTANTIATE_TEST_SUITE_P(, FailingInit,
   ::testing::Values( InitFailure { "fails", "ql_temp_sensor_init failed: the operation failed" },
      InitFailure { "throws", "ql_temp_sensor_init failed: stoi" },
      InitFailure { "aborts", "the library ended its process (Aborted) after \"ql_temp_sensor_init\"" } ),
   []( auto& test ) { return test.param.script; } );
