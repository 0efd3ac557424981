// Everything together: quillonctl, the library, the socket, the server and the emulated chips.

#include "EmulatedBoard.h"
#include "OutputSchema.h"

#include <fmt/format.h>

#include <csignal>

#include <ostream>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using Stack = EmulatedBoardTest;

} // namespace

TEST_F( Stack, ShowsTheTemperaturesOfTheEmulatedChips ) {
   auto result = run( { "status" } );

   EXPECT_EQ( result.out, "Temperature sensors\n"
                          "NAME    TEMPERATURE    ALERT  CRITICAL  STATUS\n"
                          "inlet       24.5 °C  45.0 °C   55.0 °C  ok\n"
                          "outlet      35.1 °C  60.0 °C   70.0 °C  ok\n"
                          "asic        58.3 °C  85.0 °C   95.0 °C  ok\n"
                          "poe         41.0 °C  75.0 °C   85.0 °C  ok\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Stack, MarksASensorPastItsThresholds ) {
   EXPECT_EQ( emu( { "set", "inlet.temperature", "47.5" } ).exitStatus, 0 );
   EXPECT_THAT(
      run( { "status", "inlet" } ).out, HasSubstr( "inlet      47.5 °C  45.0 °C   55.0 °C  alert\n" ) );
   EXPECT_EQ( emu( { "set", "inlet.temperature", "55" } ).exitStatus, 0 );
   auto result = run( { "status", "inlet" } );
   EXPECT_THAT( result.out, HasSubstr( "critical\n" ) );
   EXPECT_EQ( result.exitStatus, 0 ) << "a hot sensor is no failure of a reading";
}

TEST_F( Stack, ShowsDegreesBelowZero ) {
   emu( { "set", "inlet.temperature", "-5.25" } );
   EXPECT_THAT( run( { "status", "inlet" } ).out, HasSubstr( "inlet      -5.3 °C" ) );
}

TEST_F( Stack, WritesTheThresholdsIntoTheChips ) {
   run( { "status" } );
   EXPECT_EQ( emu( { "get", "inlet" } ).out, "temperature=24.5 os=0 thyst=45 tos=55\n" );
   EXPECT_EQ( emu( { "get", "asic" } ).out, "temperature=58.25 os=0 thyst=85 tos=95\n" );
}

struct FaultRow {
   const char* fault;
   const char* words;
};

TEST_F( Stack, TellsWhatIsWrongWithAChipAndShowsTheOthers ) {
   const FaultRow rows[] = {
      { "nack", "request 1: i2c-3 0x49 reg 0x02: no acknowledge" },
      { "busy", "request 1: i2c-3 0x49 reg 0x02: bus busy" },
      { "arbitration", "request 1: i2c-3 0x49 reg 0x02: arbitration lost" },
      { "hang 10ms", "request 1: i2c-3 0x49 reg 0x02: timed out" },
   };
   for ( auto& row : rows ) {
      emu( { "fault", "outlet", row.fault } );
      auto result = run( { "status" } );
      EXPECT_EQ( result.exitStatus, 1 ) << row.fault;
      EXPECT_THAT( result.err, HasSubstr( row.words ) );
      EXPECT_THAT( result.out, HasSubstr( "outlet            -  60.0 °C   70.0 °C  FAILED\n" ) );
      EXPECT_THAT( result.out, HasSubstr( "inlet       24.5 °C" ) );
      EXPECT_THAT( result.out, HasSubstr( "poe         41.0 °C" ) );
      emu( { "fault", "outlet", "clear" } );
   }
}

TEST_F( Stack, HidesFewFaultsBehindTheServersRetries ) {
   run( { "status", "inlet" } );
   emu( { "fault", "inlet", "nack", "2" } );
   EXPECT_EQ( run( { "status", "inlet" } ).exitStatus, 0 );
}

TEST_F( Stack, TalksToTheEmulatedBoard ) {
   EXPECT_EQ( emu( { "get", "inlet.temperature" } ).out, "24.5\n" );
   auto json = run( { "--json", "emu", "get", "inlet.temperature" } ).out;
   EXPECT_EQ( json, "{\"answer\":\"24.5\",\"error\":null}\n" );
   EXPECT_EQ( OutputSchema( "emu" ).complaint( json ), "" );
   EXPECT_THAT( emu( {} ).out, HasSubstr( "list" ) );
}

TEST_F( Stack, PassesOnWhatTheEmulatedBoardDoesNotUnderstand ) {
   auto result = emu( { "set", "inlt.temperature", "-5" } );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.err, "quillonctl: no chip inlt; did you mean inlet?\n" );
   EXPECT_EQ( result.out, "" );
   result = run( { "--json", "emu", "nonsense" } );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.out, R"({"answer":null,"error":{"status":"QL_STATUS_INVALID_ARGUMENT","code":3,)"
                          R"("message":"no command nonsense"}})"
                          "\n" );
   EXPECT_EQ( OutputSchema( "emu" ).complaint( result.out ), "" );
   EXPECT_EQ( emu( { "two\nlines" } ).exitStatus, 2 );
}

TEST_F( Stack, SaysWhatToDoWhenThereIsNoEmulatedBoard ) {
   server->send( SIGTERM );
   EXPECT_EQ( server->wait().exitStatus, 0 );
   auto result = emu( { "list" } );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_THAT( result.err, HasSubstr( "no emulated board at " ) );
   EXPECT_THAT( result.err, HasSubstr( "start quillon-smbusd with --emulate and --control" ) );
   result = run( { "--json", "emu", "list" } );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.out,
      fmt::format( R"({{"answer":null,"error":{{"status":"QL_STATUS_IO_ERROR","code":4,"message":"{}"}}}})"
                   "\n",
         result.err.substr( 12, result.err.find( '\n' ) - 12 ) ) );
}
