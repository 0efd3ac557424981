#include "SystemTest.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <ostream>

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Usage : public SystemTest {};

TEST_F( Usage, TellsItsVersion ) {
   auto result = run( { "--version" } );

   EXPECT_THAT( result.out, ::testing::MatchesRegex( "quillonctl [0-9]+\\.[0-9]+\\.[0-9]+\n" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Usage, HelpsWithOptionsCommandsAndExamples ) {
   auto result = run( { "--help" } );

   for ( auto text : { "--board", "--plugin", "--sim", "--socket", "--trace", "--json", "status",
            "Exit status", "QUILLON_BOARD", "QUILLON_PLUGIN", "Examples" } ) {
      EXPECT_THAT( result.out, HasSubstr( text ) );
   }
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Usage, HelpsWithACommand ) {
   auto result = run( { "status", "--help" } );

   EXPECT_THAT( result.out, HasSubstr( "--interval" ) );
   EXPECT_THAT( result.out, HasSubstr( "--count" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Usage, TakesGlobalOptionsBehindTheCommandToo ) {
   auto result = run( { "status", "--sim", "--json", "inlet", "--board", BOARDS "/selvane" } );

   EXPECT_THAT( result.out, StartsWith( R"({"board":"selvane","objects":[{"kind":"temp_sensor")" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

struct Mistake {
   const char* name;
   Process::Arguments arguments;
   const char* complaint;
};

std::ostream& operator<<( std::ostream& stream, const Mistake& row ) { return stream << row.name; }

class WrongUsage : public SystemTest, public ::testing::WithParamInterface<Mistake> {};

TEST_P( WrongUsage, IsTold ) {
   auto result = run( GetParam().arguments );

   EXPECT_EQ( result.out, "" ) << GetParam().name;
   EXPECT_EQ( result.err, fmt::format( "quillonctl: {}; see quillonctl --help\n", GetParam().complaint ) )
      << GetParam().name;
   EXPECT_EQ( result.exitStatus, 2 ) << GetParam().name;
}

TEST_P( WrongUsage, IsADocumentInJsonToo ) {
   auto arguments = GetParam().arguments;
   arguments.insert( arguments.begin(), "--json" );

   auto result = run( arguments );

   rapidjson::Document document;
   document.Parse( result.out.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << GetParam().name << ": " << result.out;
   EXPECT_EQ( document["objects"].Size(), 0U ) << GetParam().name;
   EXPECT_EQ( fmt::format( "quillonctl: {}\n", document["errors"][0].GetString() ), result.err );
   EXPECT_EQ( result.exitStatus, 2 ) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(, WrongUsage,
   ::testing::Values( Mistake { "NoCommand", {}, "there is no command" },
      Mistake { "UnknownCommand", { "frobnicate" }, "The following argument was not expected: frobnicate" },
      Mistake {
         "UnknownOption", { "--colour", "status" }, "The following argument was not expected: --colour" },
      Mistake { "NoValue", { "status", "--board" }, "--board: 1 required DIR missing" },
      Mistake { "LevelTooHigh", { "--trace", "7", "status" }, "--trace: Value 7 not in range 0 to 6" },
      Mistake { "LevelNoNumber", { "--trace", "all", "status" }, "--trace: Value all not in range 0 to 6" },
      Mistake { "IntervalNegative", { "status", "--interval", "-1" },
         "--interval: must be a number of seconds from 0.001 to 86400, not -1" },
      Mistake { "IntervalZero", { "status", "--interval", "0" },
         "--interval: must be a number of seconds from 0.001 to 86400, not 0" },
      Mistake { "IntervalNoNumber", { "status", "--interval", "often" },
         "--interval: must be a number of seconds from 0.001 to 86400, not often" },
      Mistake { "IntervalTooLong", { "status", "--interval", "1e300" },
         "--interval: must be a number of seconds from 0.001 to 86400, not 1e300" },
      Mistake { "IntervalNan", { "status", "--interval", "nan" },
         "--interval: must be a number of seconds from 0.001 to 86400, not nan" },
      Mistake { "CountZero", { "status", "--interval", "1", "--count", "0" },
         "--count: Value 0 not in range 1 to 1000000000" },
      Mistake { "CountWithoutInterval", { "status", "--count", "2" }, "--count requires --interval" } ),
   []( auto& test ) { return test.param.name; } );

TEST_F( Usage, WithAWrongWordIsAnsweredWithTheNearest ) {
   struct Row {
      Process::Arguments arguments;
      const char* wrong;
      const char* right;
   };

   const Row rows[] = {
      { { "statsu" }, "statsu", "status" },
      { { "wathc", "inlet", "--interval", "2" }, "wathc", "watch" },
      { { "--simm", "status" }, "--simm", "--sim" },
      { { "--bord", "x", "status" }, "--bord", "--board" },
      { { "--bord=x", "status" }, "--bord=x", "--board" },
      { { "status", "--bord", "x" }, "--bord", "--board" },
      { { "status", "--intervall", "2" }, "--intervall", "--interval" },
      { { "poe", "port1", "report", "--rwa" }, "--rwa", "--raw" },
   };
   for ( auto& row : rows ) {
      auto result = run( row.arguments );

      EXPECT_EQ( result.err,
         fmt::format( "quillonctl: The following argument was not expected: {}; did you mean {}?\n",
            row.wrong, row.right ) );
      EXPECT_EQ( result.out, "" ) << row.wrong;
      EXPECT_EQ( result.exitStatus, 2 ) << row.wrong;
   }
}
