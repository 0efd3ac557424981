#include "SystemTest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>
#include <sstream>

using ::testing::Contains;
using ::testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class Completion : public SystemTest {
protected:
   Completion() {
      board = boardWith( sensor( "inlet", 1 ) + "," + scriptedObject( "fan", "fan1", "" ) + "," +
                         scriptedObject( "fan", "rack:fan2", "" ) + "," +
                         scriptedObject( "gpio", "poe.reset", "" ) + "," +
                         scriptedObject( "led", "status", "" ) + "," + scriptedObject( "xcvr", "sfp1", "" ) +
                         "," + scriptedObject( "poe_port", "port1", "" ) );
      environment["QUILLON_BOARD"] = board;
   }

   /** What bash offers behind a beginning of a command line, in words. */
   std::string offered( const std::string& line ) const {
      auto command = fmt::format( "source '{}'; COMP_LINE='{} {}'; COMP_POINT=${{#COMP_LINE}}; _quillonctl; "
                                  "printf '%s\n' \"${{COMPREPLY[@]}}\"",
         COMPLETION, QUILLONCTL, line );
      auto result = Process( { "/bin/bash", "-c", command }, environment ).wait();
      EXPECT_EQ( result.err, "" ) << line;
      std::replace( result.out.begin(), result.out.end(), '\n', ' ' );
      return result.out.substr( 0, result.out.size() - 1 );
   }

   /** What zsh offers behind each of these beginnings, in words. */
   std::vector<std::string> offeredByZsh( const std::vector<std::string>& beginnings ) const {
      std::string lines;
      for ( auto& line : beginnings ) {
         lines += fmt::format( "{} {}\n", QUILLONCTL, line );
      }
      write( "lines", lines );
      auto command = fmt::format( "'{}' '{}' < '{}'", ZSH_COMPLETION,
         fs::path( COMPLETION ).parent_path().string(), ( folder / "lines" ).string() );
      auto result = Process( { "/bin/sh", "-c", command }, environment ).wait();
      EXPECT_EQ( result.err, "" );
      std::vector<std::string> offers;
      std::istringstream out( result.out );
      for ( std::string offer; std::getline( out, offer ); ) {
         offers.push_back( offer );
      }
      offers.resize( beginnings.size() );
      return offers;
   }

   std::string board;
};

struct Line {
   const char* line;
   const char* offered;
};

const Line lines[] = {
   { "", "status watch serve system fan slot xcvr poe led gpio check emu" },
   { "s", "status serve system slot" },
   { "stat", "status" },
   { "status ", "inlet fan1 rack:fan2 poe.reset status sfp1 port1" },
   { "status f", "fan1" },
   { "watch f", "fan1" },
   { "status inlet --interval 2 fan", "fan1" },
   { "fan ", "fan1 rack:fan2" },
   { "fan fan1 ", "rpm" },
   { "fan fan1 rpm ", "" },
   { "led ", "status" },
   { "led status ", "off good warning bad inactive unknown beacon release" },
   { "led status b", "bad beacon" },
   { "xcvr sfp1 ", "tx-disable" },
   { "xcvr sfp1 tx-disable ", "on off" },
   { "xcvr sfp1 tx-disable on ", "" },
   { "gpio poe.reset ", "get set clear" },
   { "poe ", "port1 status firmware" },
   { "poe port1 ", "init pse on off limit legacy shutoff report" },
   { "poe port1 shutoff ", "1 2 3" },
   { "poe firmware ", "show update" },
   { "poe status --a", "--all" },
   { "system ", "version reload-cause poe-reboot" },
   { "system poe-reboot ", "keep reset" },
   { "--json --trace 3 led status g", "good" },
   { "--trace ", "0 1 2 3 4 5 6" },
   { "--js", "--json" },
   { "fan --so", "--socket" },
   { "status --in", "--interval" },
   { "fan --in", "" },
   { "status --h", "--help" },
   { "emu ", "" },
   { "nonsense ", "" },
};

} // namespace

TEST_F( Completion, OffersWhatMayFollow ) {
   for ( auto& row : lines ) {
      EXPECT_EQ( offered( row.line ), row.offered ) << row.line;
   }
}

TEST_F( Completion, OffersTheSameInZsh ) {
   std::vector<std::string> beginnings;
   for ( auto& row : lines ) {
      beginnings.push_back( row.line );
   }

   auto offers = offeredByZsh( beginnings );

   for ( size_t i = 0; i < offers.size(); ++i ) {
      EXPECT_EQ( offers[i], lines[i].offered ) << lines[i].line;
   }
}

TEST_F( Completion, ReplacesInBashOnlyWhatStandsBehindAColon ) {
   EXPECT_EQ( offered( "fan rack:f" ), "fan2" );
   EXPECT_EQ( offeredByZsh( { "fan rack:f" } ).front(), "rack:fan2" );
}

TEST_F( Completion, OffersFoldersForACheck ) {
   auto beginning = fmt::format( "check {}/be", folder.string() );

   EXPECT_EQ( offered( beginning ), board );
   EXPECT_EQ( offeredByZsh( { beginning } ).front(), "bench" );
}

TEST_F( Completion, TakesTheBoardOfTheLine ) {
   environment["QUILLON_BOARD"] = SENSORS;

   EXPECT_EQ( offered( "status i" ), "inlet" );
   EXPECT_EQ( offered( fmt::format( "--board {} status fan", board ) ), "fan1" );
}

TEST_F( Completion, OffersFoldersForABoard ) {
   auto beginning = fmt::format( "--board {}/be", folder.string() );

   EXPECT_EQ( offered( beginning ), board );
   EXPECT_EQ( offeredByZsh( { beginning } ).front(), "bench" );
}

TEST_F( Completion, OffersNothingForAWrongBoard ) {
   write( "bench/objects.json", "{" );

   EXPECT_EQ( offered( "fan " ), "" );
   EXPECT_EQ( offered( "fa" ), "fan" );
}

TEST_F( Completion, NeedsNoLibrary ) {
   environment["QUILLON_PLUGIN"] = "/nowhere";

   EXPECT_EQ( offered( "fan f" ), "fan1" );
}

TEST_F( Completion, IsNoCommandForPeople ) {
   EXPECT_THAT( run( { "--help" } ).out, ::testing::Not( HasSubstr( "complete" ) ) );
}

TEST_F( Completion, RefusesAPlaceThatIsNone ) {
   for ( auto& words : { Process::Arguments { "complete" }, Process::Arguments { "complete", "1", "fan" },
            Process::Arguments { "complete", "x", "fan" } } ) {
      auto result = run( words );

      EXPECT_EQ(
         result.err, "quillonctl: complete needs the place of a word, and that many words and one more\n" );
      EXPECT_EQ( result.exitStatus, 2 );
   }
}
