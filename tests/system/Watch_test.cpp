// `quillonctl watch` in lines, for scripts.

#include "OutputSchema.h"
#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <csignal>

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

std::string scripted( const std::string& name, int did, const std::string& script ) {
   return sensor( name, did, fmt::format( R"(, "driverArgs": {{ "script": "{}" }})", script ) );
}

/** A line of `watch --json` in short: "change inlet temperature_celsius,state: 50.0 alert". */
std::string inShort( const std::string& line ) {
   static const OutputSchema schema( "watch" );
   EXPECT_EQ( schema.complaint( line ), "" );
   rapidjson::Document json;
   if ( json.Parse( line.c_str() ).HasParseError() || !json.HasMember( "event" ) ) {
      return line;
   }
   std::string changed;
   for ( auto& key : json["changed"].GetArray() ) {
      changed += ( changed.empty() ? "" : "," ) + std::string( key.GetString() );
   }
   auto& object = json["object"];
   auto& value = ( object.MemberBegin() + 2 )->value;
   return fmt::format( "{} {} {}: {} {}", json["event"].GetString(), object["name"].GetString(), changed,
      value.IsDouble() ? fmt::format( "{}", value.GetDouble() )
      : value.IsNull() ? "null"
                       : "-",
      object["state"].GetString() );
}

std::vector<std::string> inShort( const Result& result ) {
   std::vector<std::string> lines;
   for ( size_t begin = 0, end; ( end = result.out.find( '\n', begin ) ) != std::string::npos;
         begin = end + 1 ) {
      lines.push_back( inShort( result.out.substr( begin, end - begin ) ) );
   }
   return lines;
}

class Watch : public SystemTest {
protected:
   Result runScripted( const std::string& objects, const Process::Arguments& options ) {
      Process::Arguments arguments = { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", boardWith( objects ),
         "watch", "--interval", "0.02" };
      arguments.insert( arguments.end(), options.begin(), options.end() );
      return run( arguments );
   }
};

} // namespace

TEST_F( Watch, TellsEachObjectAndThenWhatChanges ) {
   auto process = start( { "--sim", "--json", "watch", "inlet", "asic", "--interval", "0.02" } );
   EXPECT_EQ( inShort( process.readLine().value_or( "" ) ), "initial inlet : 0.125 ok" );
   EXPECT_EQ( inShort( process.readLine().value_or( "" ) ), "initial asic : 0.125 ok" );

   writeRegisters( "PCT2075-asic", "0064" ); // 100 degrees

   EXPECT_EQ(
      inShort( process.readLine().value_or( "" ) ), "change asic temperature_celsius,state: 100 critical" );
   process.send( SIGINT );
   auto result = process.wait();
   EXPECT_EQ( std::count( result.out.begin(), result.out.end(), '\n' ), 3 ) << result.out;
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Watch, TellsAFailureAndItsEndAsChanges ) {
   auto result = runScripted( scripted( "shaky", 1, "recovers 30" ) + "," + scripted( "good", 2, "is 20" ),
      { "--json", "--count", "4" } );

   EXPECT_THAT( inShort( result ), ElementsAre( "initial shaky : null failed", "initial good : 20 ok",
                                      "change shaky temperature_celsius,state,error: 30 ok" ) );
   EXPECT_EQ( result.err,
      "quillonctl: shaky: cannot read the temperature: the chip answered with an error or an "
      "impossible value\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Watch, OutlivesTheLibrary ) {
   auto result = runScripted(
      scripted( "bad", 1, "dies 30" ) + "," + scripted( "good", 2, "is 20" ), { "--json", "--count", "3" } );

   EXPECT_THAT( inShort( result ), ElementsAre( "initial bad : 30 ok", "initial good : 20 ok",
                                      "change bad temperature_celsius,state,error: null failed" ) );
   EXPECT_THAT( result.err, HasSubstr( "quillonctl: bad: the library ended its process (Aborted)" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Watch, PassesOverWhatTheLibraryPrints ) {
   auto result = runScripted( scripted( "loud", 1, "prints 20" ), { "--json", "--count", "2" } );

   EXPECT_THAT( inShort( result ), ElementsAre( "initial loud : 20 ok" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Watch, EndsWhenTheLibraryCannotBeUsed ) {
   auto result = run( { "--socket", "/nowhere", "watch", "--json", "inlet" } );

   EXPECT_THAT( inShort( result ), ElementsAre( "initial inlet : null failed" ) );
   EXPECT_THAT(
      result.err, StartsWith( "quillonctl: inlet: no SMBus server at /nowhere: No such file or directory" ) );
   EXPECT_EQ( std::count( result.err.begin(), result.err.end(), '\n' ), 1 );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Watch, IsInWordsWithoutATerminal ) {
   auto process = start( { "--sim", "watch", "inlet", "--interval", "0.02" } );
   EXPECT_THAT( process.readLine().value_or( "" ),
      ContainsRegex( "^20[0-9]{2}-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{3}Z inlet: "
                     "temperature 0.1 °C, alert 45.0 °C, critical 55.0 °C, status ok$" ) );

   writeRegisters( "PCT2075-inlet", "0032" ); // 50 degrees

   EXPECT_THAT( process.readLine().value_or( "" ), EndsWith( "Z inlet: temperature 50.0 °C, status alert" ) );
   process.send( SIGTERM );
   auto result = process.wait();
   EXPECT_THAT( result.out, Not( HasSubstr( "\033" ) ) );
   EXPECT_EQ( result.exitStatus, 0 );
   EXPECT_EQ( result.signal, 0 );
}

TEST_F( Watch, IsInWordsOnATerminalThatKnowsNoMore ) {
   environment["TERM"] = "dumb";

   auto result = runOnTerminal( { "--sim", "watch", "inlet", "--interval", "0.01", "--count", "2" } );

   EXPECT_THAT( result.out, EndsWith( "critical 55.0 °C, status ok\r\n" ) );
   EXPECT_THAT( result.out, Not( HasSubstr( "\033" ) ) );
}

TEST_F( Watch, SumsUpWhatNobodyHasNamed ) {
   auto objects = scriptedObject( "gpio", "bit", "" ) + "," + scriptedObject( "poe_port", "port1", "is 4" ) +
                  "," + scriptedObject( "led", "led1", "" );

   auto unnamed = runScripted( objects, { "--count", "2" } ).out;
   EXPECT_THAT( unnamed, ContainsRegex( "^[^ ]* bit: value 0, status ok\n"
                                        "[^ ]* PoE ports: 1 port: 1 powered; 22.1 W\n"
                                        "[^ ]* LEDs: 1 LED: ok\n$" ) );

   EXPECT_THAT( runScripted( objects, { "--count", "2", "port1", "led1" } ).out,
      ContainsRegex(
         "^[^ ]* port1: class 4, power 22.1 W, voltage 53.9 V, current 0.410 A, temperature 41.3 °C, "
         "status powered\n"
         "[^ ]* led1: settable yes, status ok\n$" ) );
}

TEST_F( Watch, ReadsOfUnnamedPortsTheSumAloneInJsonToo ) {
   auto objects = scriptedObject( "gpio", "bit", "" ) + "," + scriptedObject( "poe_port", "port1", "is 4" );

   EXPECT_THAT( runScripted( objects, { "--json", "--count", "1" } ).out,
      HasSubstr( R"("device_class":null,"power_watts":22.1,"voltage_volts":null,)" ) );
   EXPECT_THAT( runScripted( objects, { "--json", "--count", "1", "port1" } ).out,
      HasSubstr( R"("device_class":4,"power_watts":22.1,"voltage_volts":53.9,)" ) );
}

TEST_F( Watch, ShowsTraceLinesOnStderr ) {
   auto result = runScripted( scripted( "bad", 1, "fails" ), { "--trace", "3", "--count", "1" } );

   EXPECT_THAT(
      result.err, HasSubstr( "trace 3: execute: failure in response request 0: no acknowledge\n" ) );
   EXPECT_THAT( result.out, EndsWith( "temperature -, alert 45.0 °C, critical 55.0 °C, status IO_ERROR\n" ) );
}

TEST_F( Watch, TakesTheIntervalFromOneLookToTheNext ) {
   auto begin = std::chrono::steady_clock::now();

   run( { "--sim", "watch", "inlet", "--interval", "0.2", "--count", "3" } );

   EXPECT_GE( std::chrono::steady_clock::now() - begin, std::chrono::milliseconds( 400 ) );
}

TEST_F( Watch, EndsWhenNobodyReadsIt ) {
   // Nothing changes, so that there is nothing to write that could fail.
   auto command = fmt::format( "{} --sim watch inlet --interval 0.02 | head -n 1", QUILLONCTL );

   auto result = Process( { "/bin/sh", "-c", command }, environment ).wait();

   EXPECT_EQ( std::count( result.out.begin(), result.out.end(), '\n' ), 1 );
   EXPECT_EQ( result.err, "" );
}

TEST_F( Watch, AnswersAnUnknownNameAsStatusDoes ) {
   auto result = run( { "--sim", "watch", "outlt" } );

   EXPECT_EQ( result.err, "quillonctl: the board selvane has no object outlt; did you mean outlet?\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}
