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
                                       "quillon-smbusd, or use --sim\n",
                             socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_LT( std::chrono::steady_clock::now() - begin, std::chrono::seconds( 1 ) );
}

TEST_F( Host, SaysThatNobodyListensOnTheSocket ) {
   auto socket = ( folder / "old.sock" ).string();
   ListeningSocket { socket };

   auto result = run( { "--socket", socket, "status" } );

   EXPECT_EQ( result.err,
      fmt::format(
         "quillonctl: no SMBus server at {}: Connection refused; start quillon-smbusd, or use --sim\n",
         socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, SaysThatThePathOfASocketIsTooLong ) {
   auto socket = "/" + std::string( 200, 'x' );

   auto result = run( { "--socket", socket, "status" } );

   EXPECT_EQ( result.err,
      fmt::format(
         "quillonctl: no SMBus server at {}: File name too long; start quillon-smbusd, or use --sim\n",
         socket ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, TakesTheSocketFromTheEnvironment ) {
   environment["QUILLON_SMBUS_SOCKET"] = "/nowhere/smbus.sock";

   EXPECT_THAT( run( { "status" } ).err, HasSubstr( "no SMBus server at /nowhere/smbus.sock: " ) );
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
      "no SMBus server at /nowhere: No such file or directory; start quillon-smbusd, or use --sim" );
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
   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: {} is no plug-in of this kind: it lacks ql_temp_sensor_init; "
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

TEST_F( Host, ShowsAnObjectThatTheDriverDoesNotOfferAsFailed ) {
   auto psu = R"({ "kind": "psu", "name": "psu1",
      "args": { "did": 1, "driver": "PCT2075", "address": { "address": 72 }, "name": "psu1" } })";

   auto result =
      run( { "--sim", "--board", boardWith( std::string( psu ) + "," + sensor( "inlet", 2 ) ), "status" } );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet       0.1 °C  45.0 °C   55.0 °C  ok\n"
                          "\n"
                          "Power supplies\n"
                          "NAME  STATUS\n"
                          "psu1  FAILED\n" );
   EXPECT_EQ( result.err, "quillonctl: psu1: not created: Not implemented newPsu\n" );
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
      Behaviour { "ExceptionFromRead", "throws", "FAILED", "not read: Not implemented addRead32" } ),
   []( auto& test ) { return test.param.name; } );

TEST_F( Host, WritesAFailingReadAsJson ) {
   auto result = runScripted( scripted( "bad", 1, "fails" ), { "--json" } );

   EXPECT_EQ( result.out,
      R"({"board":"bench","objects":[{"kind":"temp_sensor","name":"bad","temperature_celsius":null,)"
      R"("alert_celsius":45.0,"critical_celsius":55.0,"state":"failed","error":{"status":"QL_STATUS_IO_ERROR",)"
      R"("code":4,"message":"cannot read the temperature: execute: failure in response request 0: no )"
      R"(acknowledge"}}]})"
      "\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Host, WritesNoNumberAsNull ) {
   auto result = runScripted( scripted( "odd", 1, "nan" ), { "--json" } );

   EXPECT_THAT( result.out, HasSubstr( R"("temperature_celsius":null)" ) );
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
   std::string objects = R"({ "kind": "system", "name": "switch" })";
   auto add = [&]( const std::string& kind, const std::string& driverArgs ) {
      objects += fmt::format( R"(, {{ "kind": "{0}", "name": "{0}1", "args": {{ "did": 1, "driver": "Dummy",
         "address": {{ "address": 1 }}, "driverArgs": {{ {1} }} }} }})",
         kind, driverArgs );
   };
   add( "fan", R"("fanId": 1, "maxRpm": 20000, "registerOffset": 0)" );
   add( "psu", R"("script": "silent")" );
   add( "slot", R"("fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "")" );
   add( "xcvr", R"("id": 1, "type": "sfp")" );
   add( "poe_port", "" );
   add( "led", "" );
   add( "gpio", R"("register": 1, "bitpos": 0)" );
   objects += "," + scripted( "inlet", 2, "is 20" );

   auto result = runScripted( objects );

   EXPECT_EQ( result.out, "System\nNAME    STATUS\nswitch  ok\n"
                          "\nTemperature sensors\nNAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet      20.0 °C  45.0 °C   55.0 °C  ok\n"
                          "\nFans\nNAME  STATUS\nfan1  ok\n"
                          "\nPower supplies\nNAME  STATUS\npsu1  FAILED\n"
                          "\nSlots\nNAME   STATUS\nslot1  ok\n"
                          "\nTransceivers\nNAME   STATUS\nxcvr1  ok\n"
                          "\nPoE ports\nNAME       STATUS\npoe_port1  ok\n"
                          "\nLEDs\nNAME  STATUS\nled1  ok\n"
                          "\nGPIOs\nNAME   STATUS\ngpio1  ok\n" );
   EXPECT_EQ( result.err, "quillonctl: psu1: not created: the library gave no reason\n" );
   EXPECT_EQ( result.exitStatus, 1 );
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
