#include "EmulatorController.h"

#include "emulator/Board.h"
#include "emulator/ChipFactory.h"
#include "emulator/Control.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;

/** The BCM59121 as people at the bench see it. */
namespace {

class EmulatorBcm59121Bench : public ::testing::Test {
protected:
   EmulatorBcm59121Bench() {
      board.add(
         { "poe", 4, 0x20, makeChip( "bcm59121", { { "ports", "9" }, { "two_pair_ports", "8" } } ) } );
      now += 1s;
   }

   std::string say( const std::string& line ) { return control( board, line ); }

   std::chrono::nanoseconds now = 0s;
   Board board { [this] { return now; } };
};

struct Row {
   const char* line;
   const char* answer;
};

#define ACTIONS                                                                                              \
   "PORT attach [type=TYPE] [class=CLASS] [draw=WATTS]; PORT detach; PORT overload, short, startup or "      \
   "thermal [CHANNEL]; "                                                                                     \
   "chip lose-firmware; chip crc [GROUP]"

const Row rows[] = {
   { "help poe", "ok " ACTIONS },
   { "poe", "error actions: " ACTIONS },
   { "poe 7", "error actions: " ACTIONS },
   { "poe chip", "error actions: " ACTIONS },
   { "poe 0 attach", "error no port 0; there are 1 to 9" },
   { "poe 10 attach", "error no port 10; there are 1 to 9" },
   { "poe -1 attach", "error no port -1; there are 1 to 9" },
   { "poe port7 attach", "error no port port7; there are 1 to 9" },
   { "poe 7 atach", "error no action atach; did you mean attach?" },
   { "poe 7 explode", "error no action explode" },
   { "poe 7 attach 4", "error attach takes type=, class= and draw=, not 4" },
   { "poe 7 attach watts=4", "error attach takes type=, class= and draw=, not watts=4" },
   { "poe 7 attach class=9",
      "error class must be a whole number from 0 to 8, mismatch or over-current, not 9" },
   { "poe 7 attach class=14",
      "error class must be a whole number from 0 to 8, mismatch or over-current, not 14" },
   { "poe 7 attach class",
      "error class must be a whole number from 0 to 8, mismatch or over-current, not \"\"" },
   { "poe 7 attach draw=much", "error draw must be a number from 0 to 200, not much" },
   { "poe 7 attach draw=-1", "error draw must be a number from 0 to 200, not -1" },
   { "poe 7 attach draw=200.1", "error draw must be a number from 0 to 200, not 200.1" },
   { "poe 7 attach type=dula", "error no type dula; there are none, single, dual, legacy, "
                               "short, low-resistance, high-resistance, open" },
   { "poe 9 attach type=single/opn", "error no type opn; there are none, single, dual, legacy, "
                                     "short, low-resistance, high-resistance, open" },
   { "poe 9 attach type=/open", "error no type \"\"; there are none, single, dual, legacy, "
                                "short, low-resistance, high-resistance, open" },
   { "poe 7 detach now", "error now behind detach" },
   { "poe 7 overload now", "error no channel now; there are primary and alternative" },
   { "poe 7 overload primary now", "error now behind overload" },
   { "poe 7 overload", "error port 7 has no power" },
   { "poe 9 short primary", "error port 9 has no power on its primary channel" },
   { "poe 9 short alternative", "error port 9 has no power on its alternative channel" },
   { "poe chip lose-firmwar", "error no action lose-firmwar; did you mean lose-firmware?" },
   { "poe chip attach", "error no action attach" },
   { "poe chip lose-firmware now", "error now behind lose-firmware" },
   { "poe chip crc 2", "error no group 2; there are 0 to 1" },
   { "poe chip crc 1 1", "error 1 behind crc" },
   { "poe 7 detach", "ok" },
   { "poe chip crc 1", "ok" },
   { "4/0x20 7 detach", "ok" },
   { "set poe.reset 2", "error reset must be a whole number from 0 to 1, not 2" },
   { "set poe.temperature 151", "error temperature must be a number from -40 to 150, not 151" },
   { "set poe.supply 81", "error supply must be a number from 0 to 80, not 81" },
   { "set poe.budget 6553.6", "error budget must be a number from 0 to 6553.5, not 6553.6" },
   { "set poe.shutoff 256", "error shutoff must be a whole number from 0 to 255, not 256" },
   { "set poe.group1.crc 256", "error group1.crc must be a whole number from 0 to 255, not 256" },
   { "set poe.port7.class 9",
      "error class must be a whole number from 0 to 8, mismatch or over-current, not 9" },
   { "set poe.port7.draw x", "error draw must be a number from 0 to 200, not x" },
   { "set poe.port7.device phone", "error no type phone; there are none, single, dual, legacy, short, "
                                   "low-resistance, high-resistance, open" },
   { "set poe.port7.state powered", "error property port7.state can't be set" },
   { "set poe.firmware 0x01.02", "error property firmware can't be set" },
   { "get poe.port10.state", "error no property port10.state; did you mean port1.state?" },
   { "get poe.port7.clas", "error no property port7.clas; did you mean port7.class?" },
};

#undef ACTIONS

} // namespace

TEST_F( EmulatorBcm59121Bench, AnswersEachLineAsTheTableTells ) {
   for ( auto& row : rows ) {
      EXPECT_EQ( say( row.line ), row.answer ) << row.line;
   }
}

TEST_F( EmulatorBcm59121Bench, ShowsAllOfTheChip ) {
   auto all = say( "get poe" );
   EXPECT_TRUE( all.starts_with( "ok reset=0 temperature=40 supply=54 budget=740 allocated=0 shutoff=0x00 "
                                 "firmware=0x01.05 r0x0a=0x00000000 r0x17=0x00 crc_reset=0 group0.crc=0x00 "
                                 "group1.crc=0x00 port1.device=none port1.class=0 port1.draw=0 "
                                 "port1.state=disabled port1.power=0 port1.enabled=0 port1.detection=4-point "
                                 "port1.mode=802.3at port1.limit=class port1.mpss=0x00 port1.r0x08=0x00 "
                                 "port1.r0x12=0x00 port2.device=none " ) )
      << all;
   EXPECT_TRUE( all.ends_with( " port9.mode=pre-802.3bt port9.limit=class port9.mpss=0x00 port9.r0x08=0x00 "
                               "port9.r0x12=0x00" ) )
      << all;
}

TEST_F( EmulatorBcm59121Bench, AttachesADeviceAsItIsTold ) {
   EXPECT_EQ( say( "poe 7 attach class=4 draw=22.5 type=dual" ), "ok" );
   EXPECT_EQ( say( "get poe.port7.device" ), "ok dual" );
   EXPECT_EQ( say( "get poe.port7.class" ), "ok 4" );
   EXPECT_EQ( say( "get poe.port7.draw" ), "ok 22.5" );
   EXPECT_EQ( say( "poe 7 attach class=3" ), "error port 7 has a device; detach it first" );
   EXPECT_EQ( say( "poe 7 detach" ), "ok" );
   EXPECT_EQ( say( "get poe.port7.device" ), "ok none" );
   EXPECT_EQ( say( "poe 7 attach class=over-current" ), "ok" );
   EXPECT_EQ( say( "get poe.port7.class" ), "ok over-current" );
   EXPECT_EQ( say( "get poe.port7.draw" ), "ok 0" );
}

TEST_F( EmulatorBcm59121Bench, AttachesADeviceThatTakesHalfOfWhatItsClassAllows ) {
   const std::pair<const char*, const char*> devices[] = {
      { "", "7.7" },
      { " class=1", "2" },
      { " class=2", "3.5" },
      { " class=4", "15" },
      { " class=8", "45" },
      { " type=dual class=4", "30" },
      { " type=dual/open class=4", "15" },
   };
   for ( auto& [words, watts] : devices ) {
      say( "poe 7 detach" );
      EXPECT_EQ( say( std::string( "poe 7 attach" ) + words ), "ok" );
      EXPECT_EQ( say( "get poe.port7.draw" ), std::string( "ok " ) + watts ) << words;
   }
}

TEST_F( EmulatorBcm59121Bench, AttachesWhatEachPairSetFinds ) {
   EXPECT_EQ( say( "poe 9 attach type=single/open" ), "ok" );
   EXPECT_EQ( say( "get poe.port9.device" ), "ok single/open" );
   EXPECT_EQ( say( "set poe.port9.device open/short" ), "ok" );
   EXPECT_EQ( say( "get poe.port9.device" ), "ok open/short" );
   EXPECT_EQ( say( "set poe.port9.device dual/dual" ), "ok" );
   EXPECT_EQ( say( "get poe.port9.device" ), "ok dual" );
   EXPECT_EQ( say( "set poe.port9.device none/single" ), "ok" );
   EXPECT_EQ( say( "poe 9 attach" ), "error port 9 has a device; detach it first" );
   EXPECT_EQ( say( "poe 9 detach" ), "ok" );
   EXPECT_EQ( say( "get poe.port9.device" ), "ok none" );
}

TEST_F( EmulatorBcm59121Bench, SetsADeviceByItsProperties ) {
   EXPECT_EQ( say( "set poe.port7.class 3" ), "ok" );
   EXPECT_EQ( say( "set poe.port7.draw 12.25" ), "ok" );
   EXPECT_EQ( say( "set poe.port7.device single" ), "ok" );
   EXPECT_EQ( say( "get poe.port7.draw" ), "ok 12.25" );
}

TEST_F( EmulatorBcm59121Bench, ShowsWhatTheBusHasSet ) {
   Controller chip;
   chip.tell( 0x10, { 6, 5 } );
   chip.tell( 0x1C, { 6, 6 } );
   chip.tell( 0x16, { 6, 77 } );
   chip.tell( 0x1E, { 6, 0x12 } );
   EXPECT_EQ( chip.get( "port7.detection" ), "legacy-2-point" );
   EXPECT_EQ( chip.get( "port7.mode" ), "802.3bt-type4" );
   EXPECT_EQ( chip.get( "port7.mpss" ), "0x12" );
   chip.tell( 0x15, { 6, 2 } );
   EXPECT_EQ( chip.get( "port7.limit" ), "15.4" );
   chip.tell( 0x15, { 6, 0 } );
   EXPECT_EQ( chip.get( "port7.limit" ), "none" );
   chip.enable( 7 );
   EXPECT_EQ( chip.get( "port7.enabled" ), "1" );
}

TEST_F( EmulatorBcm59121Bench, LosesOneCrcOfAGroup ) {
   EXPECT_EQ( say( "poe chip crc 1" ), "ok" );
   EXPECT_EQ( say( "get poe.group0.crc" ), "ok 0x00" );
   EXPECT_EQ( say( "get poe.group1.crc" ), "ok 0x01" );
   EXPECT_EQ( say( "poe chip crc" ), "ok" );
   EXPECT_EQ( say( "get poe.group0.crc" ), "ok 0x01" );
   EXPECT_EQ( say( "set poe.group1.crc 0" ), "ok" );
   EXPECT_EQ( say( "get poe.group1.crc" ), "ok 0x00" );
}

TEST( EmulatorBcm59121Options, AreCheckedWhenTheChipIsMade ) {
   const std::pair<Options, const char*> wrong[] = {
      { { { "port", "12" } }, "no option port; did you mean ports?" },
      { { { "ports", "0" } }, "ports must be a whole number from 1 to 64, not 0" },
      { { { "ports", "65" } }, "ports must be a whole number from 1 to 64, not 65" },
      { { { "ports", "12" }, { "two_pair_ports", "13" } },
         "two_pair_ports must be a whole number from 0 to 12, not 13" },
      { { { "two_pair_ports", "49" } }, "two_pair_ports must be a whole number from 0 to 48, not 49" },
      { { { "automatic", "2" } }, "automatic must be a whole number from 0 to 1, not 2" },
   };
   for ( auto& [options, words] : wrong ) {
      try {
         makeChip( "bcm59121", options );
         ADD_FAILURE() << "it took them: " << words;
      } catch ( const std::invalid_argument& error ) {
         EXPECT_STREQ( error.what(), words );
      }
   }
}
