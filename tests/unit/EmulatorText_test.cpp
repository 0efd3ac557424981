#include "emulator/Text.h"

#include <gtest/gtest.h>

#include <string>

using namespace Emulator;
using namespace std::chrono_literals;

TEST( EmulatorText, ParsesTheNumberThatTheWholeTextIs ) {
   const std::pair<const char*, double> rows[] = {
      { "0", 0 },
      { "71.5", 71.5 },
      { "-40", -40 },
      { "-0.125", -0.125 },
      { ".5", 0.5 },
      { "1e2", 100 },
   };
   for ( auto& [text, number] : rows ) {
      EXPECT_EQ( parseNumber( text ), number ) << text;
   }
}

TEST( EmulatorText, TakesNoOtherTextForANumber ) {
   for ( auto text : { "", " 1", "1 ", "+1", "1x", "1,5", "0x10", "--1", "nan", "-nan", "inf", "-inf",
            "infinity", "1e999", "one", "." } ) {
      EXPECT_EQ( parseNumber( text ), std::nullopt ) << text;
   }
   EXPECT_EQ( parseNumber( std::string_view( "1\0", 2 ) ), std::nullopt );
}

TEST( EmulatorText, ParsesWholeNumbersInDecimalAndHexadecimal ) {
   const std::pair<const char*, uint32_t> rows[] = {
      { "0", 0 },
      { "72", 72 },
      { "0x48", 72 },
      { "0xfF", 255 },
      { "4294967295", 4294967295 },
      { "0xffffffff", 4294967295 },
   };
   for ( auto& [text, number] : rows ) {
      EXPECT_EQ( parseUnsigned( text ), number ) << text;
   }
}

TEST( EmulatorText, TakesNoOtherTextForAWholeNumber ) {
   for ( auto text : { "", "-1", "+1", "1.0", " 1", "1 ", "0x", "0x-1", "0x0x1", "0xg", "48h", "4294967296",
            "0x100000000", "X1" } ) {
      EXPECT_EQ( parseUnsigned( text ), std::nullopt ) << text;
   }
}

TEST( EmulatorText, ParsesDurationsAndWritesThemInOneWay ) {
   struct Row {
      const char* text;
      std::chrono::nanoseconds duration;
      const char* written;
   };

   const Row rows[] = {
      { "500ms", 500ms, "500ms" },
      { "2s", 2s, "2s" },
      { "2000ms", 2s, "2s" },
      { "1.5s", 1500ms, "1500ms" },
      { "0.25ms", 250us, "0.25ms" },
      { "3600s", 1h, "3600s" },
   };
   for ( auto& row : rows ) {
      EXPECT_EQ( parseDuration( row.text ), row.duration ) << row.text;
      EXPECT_EQ( format( row.duration ), row.written ) << row.text;
   }
}

TEST( EmulatorText, TakesNoOtherTextForADuration ) {
   for ( auto text : { "", "s", "ms", "5", "5m", "5us", "5 s", "-1s", "0s", "0ms", "1e-9ms", "3600.001s",
            "1e30s", "nans", "infs", "2ss", "0x2s" } ) {
      EXPECT_EQ( parseDuration( text ), std::nullopt ) << text;
   }
}

TEST( EmulatorText, WritesANumberSoThatItReadsBackTheSame ) {
   EXPECT_EQ( format( 24.5 ), "24.5" );
   EXPECT_EQ( format( 75.0 ), "75" );
   EXPECT_EQ( format( -0.125 ), "-0.125" );
   EXPECT_EQ( format( 0.1 ), "0.1" );
}

TEST( EmulatorText, JoinsTextsWithSeparatorsBetweenThem ) {
   EXPECT_EQ( join( {}, "; " ), "" );
   EXPECT_EQ( join( { "a" }, "; " ), "a" );
   EXPECT_EQ( join( { "a", "b", "c" }, "; " ), "a; b; c" );
}

TEST( EmulatorText, WritesAPlaceAsBusAndAddress ) {
   EXPECT_EQ( formatPlace( 3, 0x48 ), "3/0x48" );
   EXPECT_EQ( formatPlace( 0, 0x08 ), "0/0x08" );
}

TEST( EmulatorText, EscapesWhatAnAnswerCannotHold ) {
   EXPECT_EQ( printable( "inlet" ), "inlet" );
   EXPECT_EQ( printable( "" ), "\"\"" );
   EXPECT_EQ( printable( "a b\n\x1b[0m" ), "a\\x20b\\x0a\\x1b[0m" );
   EXPECT_EQ( printable( std::string_view( "\0\x7f\xff", 3 ) ), "\\x00\\x7f\\xff" );
   EXPECT_EQ( printable( std::string( 41, 'x' ) ), std::string( 40, 'x' ).append( "..." ) );
}

TEST( EmulatorText, SuggestsTheNearestWordWhenItIsNear ) {
   struct Row {
      const char* word;
      const char* suggestion;
   };

   const Row rows[] = {
      { "inlt", "; did you mean inlet?" },
      { "inlets", "; did you mean inlet?" },
      { "onlet", "; did you mean inlet?" },
      { "outet", "; did you mean outlet?" },
      { "os", "; did you mean ps?" },
      { "cabinet", "" },
      { "p1", "; did you mean ps?" },
      { "", "" },
      { "xy", "" },
   };
   for ( auto& row : rows ) {
      EXPECT_EQ( suggestion( row.word, { "outlet", "inlet", "ps" } ), row.suggestion ) << row.word;
   }
}

TEST( EmulatorText, SuggestsNothingWhenTwoWordsAreAsNear ) {
   EXPECT_EQ( suggestion( "fan3", { "fan1", "fan2" } ), "" );
   EXPECT_EQ( suggestion( "fan", { "fan1", "fans2" } ), "; did you mean fan1?" );
}
