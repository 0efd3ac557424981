#include "SystemTest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <ostream>

using ::testing::Contains;
using ::testing::HasSubstr;

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

   std::string board;
};

struct Line {
   const char* line;
   const char* offered;
};

} // namespace

TEST_F( Completion, OffersWhatMayFollow ) {
   const Line rows[] = {
      { "", "status system fan slot xcvr poe led gpio emu" },
      { "s", "status system slot" },
      { "stat", "status" },
      { "status ", "inlet fan1 rack:fan2 poe.reset status sfp1 port1" },
      { "status f", "fan1" },
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
      // Behind a colon, bash replaces only what stands there.
      { "fan rack:f", "fan2" },
   };
   for ( auto& row : rows ) {
      EXPECT_EQ( offered( row.line ), row.offered ) << row.line;
   }
}

TEST_F( Completion, TakesTheBoardOfTheLine ) {
   environment["QUILLON_BOARD"] = SENSORS;

   EXPECT_EQ( offered( "status i" ), "inlet" );
   EXPECT_EQ( offered( fmt::format( "--board {} status fan", board ) ), "fan1" );
}

TEST_F( Completion, OffersFoldersForABoard ) {
   EXPECT_EQ( offered( fmt::format( "--board {}/be", folder.string() ) ), board );
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
