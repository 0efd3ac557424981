#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <csignal>

#include <ostream>

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string scriptedSensor( const std::string& name, int did, const std::string& script ) {
   return sensor( name, did, fmt::format( R"(, "driverArgs": {{ "script": "{}" }})", script ) );
}

class Status : public SystemTest {
protected:
   /** The status of objects that do what their scripts say. */
   Result runScripted( const std::string& objects, const Process::Arguments& options ) {
      Process::Arguments arguments = { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", boardWith( objects ),
         "status" };
      arguments.insert( arguments.end(), options.begin(), options.end() );
      return run( arguments );
   }

   /** The row of the inlet's sensor once another process has changed its register. */
   std::string rowAfter( const std::string& temperatureRegister ) {
      auto process = start( { "--sim", "status", "inlet", "--interval", "0.05" } );
      auto nextRow = [&] {
         for ( ;; ) {
            auto line = process.readLine();
            if ( !line || line->starts_with( "inlet" ) ) {
               return line.value_or( "no row" );
            }
         }
      };
      auto before = nextRow();
      writeRegisters( "PCT2075-inlet", temperatureRegister );
      // Rounds that were on their way may still come before.
      auto row = nextRow();
      for ( auto rounds = 0; row == before && rounds < 20; ++rounds ) {
         row = nextRow();
      }
      process.send( SIGINT );
      EXPECT_EQ( process.wait().err, "" );
      return row;
   }
};

TEST_F( Status, ShowsEverySensorInAlignedColumns ) {
   auto result = run( { "--sim", "status" } );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME    TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet        0.1 °C  45.0 °C   55.0 °C  ok\n"
                          "outlet       0.1 °C  60.0 °C   70.0 °C  ok\n"
                          "asic         0.1 °C  85.0 °C   95.0 °C  ok\n"
                          "poe          0.1 °C  75.0 °C   85.0 °C  ok\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, WritesTheBoardAsOneJsonDocument ) {
   auto result = run( { "--sim", "--json", "status" } );

   auto sensor = []( const char* name, double alert, double critical ) {
      return fmt::format( R"({{"kind":"temp_sensor","name":"{}","temperature_celsius":0.125,)"
                          R"("alert_celsius":{:.1f},"critical_celsius":{:.1f},"state":"ok","error":null}})",
         name, alert, critical );
   };
   rapidjson::Document expected;
   expected.Parse(
      fmt::format( R"({{"board":"selvane","objects":[{},{},{},{}],"errors":[]}})", sensor( "inlet", 45, 55 ),
         sensor( "outlet", 60, 70 ), sensor( "asic", 85, 95 ), sensor( "poe", 75, 85 ) )
         .c_str() );
   rapidjson::Document actual;
   actual.Parse( result.out.c_str() );
   ASSERT_FALSE( actual.HasParseError() ) << result.out;
   EXPECT_TRUE( actual == expected ) << result.out;
   EXPECT_EQ( result.out.find( '\n' ), result.out.size() - 1 );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, SetsBothThresholdsOnTheChip ) {
   run( { "--sim", "status" } );

   EXPECT_EQ( read( "sim/PCT2075-inlet" ), "2000002d0037\n" );
   EXPECT_EQ( read( "sim/PCT2075-poe" ), "2000004b0055\n" );
}

TEST_F( Status, ShowsTheObjectsThatAreNamed ) {
   auto result = run( { "--sim", "status", "poe", "inlet" } );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet       0.1 °C  45.0 °C   55.0 °C  ok\n"
                          "poe         0.1 °C  75.0 °C   85.0 °C  ok\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, LeavesAloneWhatIsNotNamed ) {
   run( { "--sim", "status", "inlet" } );

   EXPECT_FALSE( std::filesystem::exists( simulation / "PCT2075-outlet" ) );
}

TEST_F( Status, TakesShellPatterns ) {
   auto result = run( { "--sim", "status", "*let", "as?c" } );

   EXPECT_THAT( result.out, HasSubstr( "\ninlet " ) );
   EXPECT_THAT( result.out, HasSubstr( "\noutlet " ) );
   EXPECT_THAT( result.out, HasSubstr( "\nasic " ) );
   EXPECT_THAT( result.out, Not( HasSubstr( "\npoe " ) ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, AnswersAnUnknownNameWithTheNearest ) {
   auto result = run( { "--sim", "status", "outlt", "poe" } );

   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.err, "quillonctl: the board selvane has no object outlt; did you mean outlet?\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Status, OffersEachNearName ) {
   auto result = run( { "--sim", "status", "utlet" } );

   EXPECT_EQ(
      result.err, "quillonctl: the board selvane has no object utlet; did you mean outlet or inlet?\n" );
}

TEST_F( Status, NamesAllObjectsWhenNoneIsNear ) {
   auto result = run( { "--sim", "status", "backplane", "x*" } );

   EXPECT_EQ( result.err,
      "quillonctl: the board selvane has no object backplane; there are inlet, outlet, asic, poe\n"
      "quillonctl: the board selvane has no object x*; there are inlet, outlet, asic, poe\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Status, SaysSoWhenTheBoardHasNoObjects ) {
   auto result = run( { "--sim", "--board", boardWith( "" ), "status" } );

   EXPECT_EQ( result.out, "The board has no objects.\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, ColoursTheStatusOnATerminal ) {
   auto result = runOnTerminal( { "--sim", "status", "inlet" } );

   EXPECT_THAT( result.out, HasSubstr( "inlet       0.1 °C  45.0 °C   55.0 °C  \033[32mok\033[0m\r\n" ) );
}

TEST_F( Status, HasNoColourWithNoColor ) {
   environment["NO_COLOR"] = "1";

   EXPECT_THAT( runOnTerminal( { "--sim", "status" } ).out, Not( HasSubstr( "\033" ) ) );
}

TEST_F( Status, TakesAnEmptyNoColorForNone ) {
   environment["NO_COLOR"] = "";

   EXPECT_THAT( runOnTerminal( { "--sim", "status" } ).out, HasSubstr( "\033[32mok" ) );
}

TEST_F( Status, JsonHasNoColourOnATerminal ) {
   EXPECT_THAT( runOnTerminal( { "--sim", "--json", "status" } ).out, Not( HasSubstr( "\033" ) ) );
}

struct Value {
   const char* name;
   /** Temperature register, as in the file. */
   const char* reg;
   const char* row;
};

std::ostream& operator<<( std::ostream& stream, const Value& row ) { return stream << row.name; }

class StatusOf : public Status, public ::testing::WithParamInterface<Value> {};

TEST_P( StatusOf, ATemperature ) {
   EXPECT_EQ( rowAfter( GetParam().reg ), GetParam().row ) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(, StatusOf,
   ::testing::Values( Value { "RoundsToOneDecimal", "a018", "inlet      24.6 °C  45.0 °C   55.0 °C  ok" },
      Value { "RoundsAHalfUp", "4000", "inlet       0.3 °C  45.0 °C   55.0 °C  ok" },
      Value { "RoundsANegativeHalfDown", "c0ff", "inlet      -0.3 °C  45.0 °C   55.0 °C  ok" },
      Value { "Negative", "e0ff", "inlet      -0.1 °C  45.0 °C   55.0 °C  ok" },
      Value { "Zero", "0000", "inlet       0.0 °C  45.0 °C   55.0 °C  ok" },
      Value { "Coldest", "0080", "inlet    -128.0 °C  45.0 °C   55.0 °C  ok" },
      Value { "Hottest", "e07f", "inlet     127.9 °C  45.0 °C   55.0 °C  critical" },
      Value { "BelowAlert", "e02c", "inlet      44.9 °C  45.0 °C   55.0 °C  ok" },
      Value { "AtAlert", "002d", "inlet      45.0 °C  45.0 °C   55.0 °C  alert" },
      Value { "BelowCritical", "e036", "inlet      54.9 °C  45.0 °C   55.0 °C  alert" },
      Value { "AtCritical", "0037", "inlet      55.0 °C  45.0 °C   55.0 °C  critical" },
      Value { "UpperCaseDigits", "E02C", "inlet      44.9 °C  45.0 °C   55.0 °C  ok" } ),
   []( auto& test ) { return test.param.name; } );

TEST_F( Status, FollowsWhatAnotherProcessChanges ) {
   auto process = start( { "--sim", "--json", "status", "--interval", "0.1" } );
   auto temperatureOfAsic = [&] {
      auto line = process.readLine();
      rapidjson::Document document;
      document.Parse( line.value_or( "" ).c_str() );
      EXPECT_FALSE( document.HasParseError() ) << line.value_or( "no line" );
      return document.HasParseError() ? -1 : document["objects"][2]["temperature_celsius"].GetDouble();
   };
   EXPECT_EQ( temperatureOfAsic(), 0.125 );

   writeRegisters( "PCT2075-asic", "a018" );

   // Rounds that were on their way may still come before.
   auto temperature = temperatureOfAsic();
   for ( auto rounds = 0; temperature == 0.125 && rounds < 20; ++rounds ) {
      temperature = temperatureOfAsic();
   }
   EXPECT_EQ( temperature, 24.625 );
   process.send( SIGINT );
   EXPECT_EQ( process.wait().exitStatus, 0 );
}

TEST_F( Status, RepeatsAsOftenAsTold ) {
   auto result = run( { "--sim", "status", "inlet", "--interval", "0.01", "--count", "3" } );

   std::string table = "Temperature sensors\n"
                       "NAME   TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                       "inlet       0.1 °C  45.0 °C   55.0 °C  ok\n";
   EXPECT_EQ( result.out, table + "\n" + table + "\n" + table );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Status, WaitsTheIntervalBetweenRounds ) {
   auto process = start( { "--sim", "--json", "status", "--interval", "0.2", "--count", "3" } );
   process.readLine();
   auto begin = std::chrono::steady_clock::now();
   process.readLine();
   process.readLine();

   EXPECT_GE( std::chrono::steady_clock::now() - begin, std::chrono::milliseconds( 350 ) );
}

class StatusEndsCleanlyBy : public Status, public ::testing::WithParamInterface<int> {};

TEST_P( StatusEndsCleanlyBy, ASignal ) {
   auto process = start( { "--sim", "--json", "status", "--interval", "60" } );
   process.readLine();

   process.send( GetParam() );

   auto result = process.wait();
   EXPECT_EQ( result.exitStatus, 0 );
   EXPECT_EQ( result.signal, 0 );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( std::count( result.out.begin(), result.out.end(), '\n' ), 1 );
}

INSTANTIATE_TEST_SUITE_P(, StatusEndsCleanlyBy, ::testing::Values( SIGINT, SIGTERM ) );

TEST_F( Status, NeedsNoServerAndNoWaitInSimulation ) {
   auto begin = std::chrono::steady_clock::now();

   run( { "--sim", "status" } );

   EXPECT_LT( std::chrono::steady_clock::now() - begin, std::chrono::seconds( 1 ) );
}

TEST_F( Status, IsInSimulationThroughTheEnvironmentToo ) {
   environment["SIMULATION_VMID"] = "";

   EXPECT_EQ( run( { "status" } ).exitStatus, 0 );
}

struct AlertRow {
   const char* kind;
   const char* script;
   int exitStatus;
};

TEST_F( Status, HasAnExitStatusForAlertsWhenAsked ) {
   const AlertRow rows[] = {
      { "temp_sensor", "is 44.5", 0 }, { "temp_sensor", "is 45", 3 }, { "temp_sensor", "is 55", 3 },
      { "temp_sensor", "fails", 1 }, { "fan", "is 2000", 0 }, { "fan", "is 1999", 3 }, { "xcvr", "is 0", 0 },
      { "xcvr", "is 1", 0 }, // no module
      { "xcvr", "is 2", 3 }, // transmit fault
      { "poe_port", "is 0", 0 }, { "poe_port", "is 1", 0 }, { "poe_port", "is 2", 0 },
      { "poe_port", "is 3", 0 }, { "poe_port", "is 4", 0 }, { "poe_port", "is 5", 3 }, // fault
      { "poe_port", "is 6", 3 },                                                       // overload
      { "poe_port", "is 7", 0 },                                                       // unknown
   };
   for ( auto& row : rows ) {
      auto object = row.kind == std::string( "temp_sensor" ) ? scriptedSensor( "it", 1, row.script )
                                                             : scriptedObject( row.kind, "it", row.script );
      auto bit = scriptedObject( "gpio", "bit", "" );
      auto name = fmt::format( "{}, {}", row.kind, row.script );

      EXPECT_EQ( runScripted( bit + "," + object, { "--fail-on-alert" } ).exitStatus, row.exitStatus )
         << name;
      EXPECT_EQ(
         runScripted( bit + "," + object, { "--json", "--fail-on-alert" } ).exitStatus, row.exitStatus )
         << name;
      EXPECT_EQ( runScripted( bit + "," + object, {} ).exitStatus, row.exitStatus == 1 ? 1 : 0 ) << name;
   }
}

TEST_F( Status, TellsAFailureRatherThanAnAlert ) {
   auto objects = scriptedSensor( "hot", 1, "is 50" ) + "," + scriptedSensor( "bad", 2, "fails" );

   EXPECT_EQ( runScripted( objects, { "--fail-on-alert" } ).exitStatus, 1 );
}

TEST_F( Status, RemembersTheWorstOfAllRounds ) {
   auto objects = scriptedSensor( "hot", 1, "is 50" ) + "," + scriptedSensor( "shaky", 2, "recovers 30" );
   Process::Arguments rounds = { "--fail-on-alert", "--interval", "0.01", "--count", "4" };

   EXPECT_EQ( runScripted( objects, rounds ).exitStatus, 1 );
   EXPECT_EQ( runScripted( scriptedSensor( "hot", 1, "is 50" ), rounds ).exitStatus, 3 );
}
