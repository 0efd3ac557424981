// `quillonctl watch` on a terminal.

#include "EmulatedBoard.h"
#include "History.h"

#include <fmt/format.h>

#include <csignal>

using ::testing::ContainsRegex;
using ::testing::Each;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

constexpr const char* entered = "\033[?1049h\033[?25l\033[?7l";
constexpr const char* left = "\033[0m\033[?7h\033[?25h\033[?1049l";

using Lines = std::vector<std::string>;

/** A text without escape sequences, and without what a terminal makes of line ends. */
std::string plain( const std::string& text ) {
   std::string plain;
   for ( size_t i = 0; i < text.size(); ++i ) {
      if ( text[i] == '\033' ) {
         i = text.find_first_of( "HJKhlm", i );
      } else if ( text[i] != '\r' ) {
         plain += text[i];
      }
   }
   return plain;
}

size_t widthOf( const std::string& text ) {
   return static_cast<size_t>(
      std::count_if( text.begin(), text.end(), []( char c ) { return ( c & 0xC0 ) != 0x80; } ) );
}

/** The frames in what a terminal was sent, in lines as somebody sees them. */
std::vector<Lines> framesOf( const std::string& output ) {
   const std::string home = "\033[H";
   std::vector<Lines> frames;
   auto end = output.find( left );
   for ( auto begin = output.find( home ); begin < end; ) {
      auto next = std::min( output.find( home, begin + 1 ), end );
      auto text = plain( output.substr( begin, next - begin ) );
      auto& lines = frames.emplace_back();
      for ( size_t from = 0, to = 0; to != text.npos; from = to + 1 ) {
         to = text.find( '\n', from );
         lines.push_back( text.substr( from, to - from ) );
      }
      begin = next;
   }
   return frames;
}

/** The same for every test here: a terminal that knows UTF-8. */
template <typename Test>
class OnScreen : public Test {
protected:
   OnScreen() {
      this->environment["TERM"] = "xterm";
      this->environment["LC_ALL"] = "C.UTF-8";
   }

   Process watch( const Process::Arguments& options, const std::string& interval = "0.05" ) const {
      Process::Arguments command = { QUILLONCTL, "watch", "--interval", interval };
      command.insert( command.end(), options.begin(), options.end() );
      return Process( command, this->environment, Process::Output::Screen );
   }

   Process watchScripted( const std::string& objects, Process::Arguments options = {},
      const std::string& interval = "0.05" ) const {
      auto board = this->boardWith( objects );
      options.insert( options.end(), { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", board } );
      return watch( options, interval );
   }
};

using WatchScreen = OnScreen<SystemTest>;
using WatchedBoard = OnScreen<EmulatedBoardTest>;

/** Some of each kind, of the scripted plug-in. */
std::string someObjects() {
   auto objects = sensor( "inlet", 1, R"(, "driverArgs": { "script": "is 20" })" );
   for ( auto& [kind, name, script] :
      { std::tuple( "fan", "fan1", "is 8000" ), std::tuple( "xcvr", "sfp1", "" ),
         std::tuple( "poe_port", "port1", "is 4" ), std::tuple( "gpio", "bit", "" ),
         std::tuple( "led", "led1", "" ), std::tuple( "system", "switch", "" ) } ) {
      objects += "," + scriptedObject( kind, name, script );
   }
   return objects;
}

} // namespace

TEST_F( WatchScreen, ShowsWhatMovesFirst ) {
   auto process = watchScripted( someObjects(), { "--count", "2" } );

   auto result = process.wait();

   auto frames = framesOf( result.out );
   ASSERT_THAT( frames, Not( SizeIs( 0 ) ) );
   EXPECT_THAT( frames, Each( SizeIs( 24 ) ) );
   auto& lines = frames.back();
   EXPECT_THAT( lines[0], ContainsRegex( "^bench  [0-2][0-9]:[0-5][0-9]:[0-6][0-9], every 0.05 s$" ) );
   lines.erase( lines.begin() );
   lines.resize( 18 );
   EXPECT_EQ(
      lines, Lines( { "Temperature sensors     TEMPERATURE                              ALERT  CRITICAL",
                "inlet     ok                20.0 °C  ▅▅                        45.0 °C   55.0 °C", "",
                "Fans                       SPEED                                         MAXIMUM",
                "fan1      ok            8000 rpm  ▅▅                                   20000 rpm", "",
                "Transceivers            PRESENT  TX FAULT  RX LOS  TX DISABLE",
                "sfp1      ok            yes      no        no      no", "",
                "PoE ports               1 port: 1 powered; 22.1 W", "", //
                "System                  VERSION", "switch    ok            0x01.2a", "",
                "LEDs                    1 LED: ok", "", //
                "GPIOs                   VALUE", "bit       ok            0" } ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

struct End {
   const char* name;
   int signal;
   const char* keys;
};

TEST_F( WatchScreen, GivesTheTerminalBackHoweverItEnds ) {
   for ( auto& [name, signal, keys] : { End { "SIGINT", SIGINT, "" }, End { "SIGTERM", SIGTERM, "" },
            End { "SIGHUP", SIGHUP, "" }, End { "SIGQUIT", SIGQUIT, "" }, End { "Ctrl-C", 0, "\x03" },
            End { "Ctrl-\\", 0, "\x1c" }, End { "q", 0, "xq" } } ) {
      auto process = watch( { "--sim" } );
      EXPECT_THAT( process.readUntil( "CRITICAL" ), StartsWith( entered ) ) << name;
      EXPECT_FALSE( process.echoes() ) << name;

      process.type( keys );
      if ( signal ) {
         process.send( signal );
      }
      process.readUntil( left );

      EXPECT_TRUE( process.echoes() ) << name;
      auto result = process.wait();
      EXPECT_THAT( result.out, EndsWith( left ) ) << name;
      EXPECT_EQ( result.exitStatus, 0 ) << name;
      EXPECT_EQ( result.signal, 0 ) << name;
   }
}

TEST_F( WatchScreen, GivesTheTerminalBackWhenTheLibraryCannotBeUsed ) {
   environment["INIT_SCRIPT"] = "aborts";

   auto result = watchScripted( sensor( "inlet", 1 ) ).wait();

   EXPECT_THAT(
      result.out, ContainsRegex( "1049l.*quillonctl: inlet: the library ended its process \\(Aborted\\) "
                                 "after \"ql_temp_sensor_init\"\r\n$" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( WatchScreen, GivesTheTerminalBackWhileItIsStopped ) {
   auto process = watch( { "--sim" } );
   process.readUntil( "CRITICAL" );

   process.send( SIGTSTP );

   process.readUntil( left );
   process.awaitStop();
   process.send( SIGCONT );
   process.readUntil( entered );
   process.readUntil( "CRITICAL" );
   process.type( "q" );
   EXPECT_EQ( process.wait().exitStatus, 0 );
}

TEST_F( WatchScreen, HighlightsWhatHasChangedForOneRound ) {
   auto process = watch( { "--sim", "inlet" } );
   process.readUntil( "  0.1 °C" );

   writeRegisters( "PCT2075-inlet", "0032" ); // 50 degrees

   auto row = process.readUntil( "\033[7m50.0 °C\033[0m" );
   EXPECT_THAT( row, EndsWith( "inlet     \033[33m\033[7malert\033[0m             \033[7m50.0 °C\033[0m" ) );
   EXPECT_EQ( row.find( "\033[7m" ), row.rfind( "\033[7malert" ) ) << "nothing else";
   process.readUntil( "inlet     \033[33malert\033[0m             50.0 °C  " );
   process.type( "q" );
   process.wait();
}

TEST_F( WatchScreen, HighlightsWithoutColoursToo ) {
   environment["NO_COLOR"] = "1";
   auto process = watch( { "--sim", "inlet" } );
   process.readUntil( "  0.1 °C" );

   writeRegisters( "PCT2075-inlet", "0032" ); // 50 degrees

   process.readUntil( "\033[7malert\033[0m" );
   process.type( "q" );
   EXPECT_THAT( process.wait().out, Not( ContainsRegex( "\033\\[(1;)?3[0-9]m" ) ) );
}

TEST_F( WatchScreen, FillsAWindowOfAnySize ) {
   struct Size {
      unsigned short columns;
      unsigned short rows;
      /** Whether something is cut at the right, and below. */
      bool isCut;
      const char* hint;
   };

   auto process = watchScripted( someObjects(), {}, "60" );
   process.readUntil( "GPIOs" );
   for ( auto& [columns, rows, isCut, hint] :
      { Size { 40, 10, true, "… 4 more lines" }, Size { 200, 60, false, nullptr },
         Size { 20, 3, true, "… 11 more lines" }, Size { 1, 1, true, nullptr } } ) {
      auto size = fmt::format( "{}x{}", columns, rows );

      process.resize( columns, rows );

      // Whole frames end where the next one begins, which another change of the size brings.
      process.readUntil( "\033[H" );
      process.resize( columns, static_cast<unsigned short>( rows + 1 ) );
      auto lines = framesOf( "\033[H" + process.readUntil( "\033[H" ) ).front();
      EXPECT_THAT( lines, SizeIs( rows ) ) << size;
      auto isLineCut = false;
      for ( auto& line : lines ) {
         EXPECT_LE( widthOf( line ), columns ) << size << ": " << line;
         isLineCut = isLineCut || line.ends_with( "…" );
      }
      EXPECT_EQ( isLineCut, isCut ) << size;
      if ( hint ) {
         EXPECT_THAT( lines, ::testing::Contains( hint ) ) << size;
      }
   }
   process.type( "q" );
   EXPECT_EQ( process.wait().exitStatus, 0 );
}

TEST_F( WatchScreen, IsInAsciiWhereTheLocaleIs ) {
   environment["LC_ALL"] = "C";

   auto out = watchScripted( someObjects(), { "--count", "2" } ).wait().out;

   EXPECT_TRUE( std::all_of(
      out.begin(), out.end(), []( char c ) { return static_cast<unsigned char>( c ) < 0x80; } ) );
   EXPECT_THAT( framesOf( out ).back()[2], StartsWith( "inlet     ok                20.0  C  ==" ) );
}

TEST_F( WatchScreen, TellsWhyObjectsFailAtTheBottomAndAtTheEnd ) {
   auto process = watchScripted( sensor( "inlet", 1, R"(, "driverArgs": { "script": "fails" })" ) );
   process.readUntil( "response request 0" );
   process.type( "q" );

   auto result = process.wait();

   const std::string reason =
      "inlet: cannot read the temperature: execute: failure in response request 0: no acknowledge";
   auto lines = framesOf( result.out ).back();
   EXPECT_EQ( lines.back(), reason.substr( 0, 79 ) + "…" );
   EXPECT_THAT( result.out, EndsWith( std::string( left ) + "quillonctl: " + reason + "\r\n" ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( WatchScreen, KeepsTraceLinesInTheirPlace ) {
   auto result = watchScripted(
      sensor( "inlet", 1, R"(, "driverArgs": { "script": "fails" })" ), { "--trace", "3", "--count", "3" } )
                    .wait();

   auto frames = framesOf( result.out );
   EXPECT_THAT( frames, Each( SizeIs( 24 ) ) );
   EXPECT_EQ( frames.back().back(), "trace 3: execute: failure in response request 0: no acknowledge" );
   EXPECT_EQ( frames.back()[2].substr( 0, 18 ), "inlet     IO_ERROR" );
}

TEST_F( WatchedBoard, WaitsForNobodyWhenItIsToEnd ) {
   auto process = watch( { "inlet" } );
   process.readUntil( "24.5" );
   emu( { "fault", "inlet", "slow", "9s", "1" } );

   process.readUntil( " s old\033[0m" );
   auto begin = std::chrono::steady_clock::now();
   process.type( "\x03" );
   auto result = process.wait();

   EXPECT_LT( std::chrono::steady_clock::now() - begin, std::chrono::seconds( 2 ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( WatchedBoard, SeesTheServerGoAndComeBack ) {
   auto process = watch( { "inlet" } );
   process.readUntil( "24.5" );

   server->send( SIGTERM );
   server->wait();
   process.readUntil( "IO_ERROR" );
   startServer();

   process.readUntil( "24.5" );
   process.type( "q" );
   EXPECT_EQ( process.wait().exitStatus, 1 ) << "something has failed";
}

TEST( WatchHistory, DrawsTheCourseOfAValue ) {
   struct Row {
      const char* name;
      std::vector<std::optional<double>> values;
      size_t width;
      const char* line;
      const char* ascii;
   };

   const Row rows[] = {
      { "nothing", {}, 8, "", "" },
      { "from the least to the greatest", { 10, 20, 30, 40, 50, 60, 70, 80 }, 8, "▁▂▃▄▅▆▇█", "_.,-=+*#" },
      { "the last ones", { 99, 10, 20, 30, 40, 50, 60, 70, 80 }, 8, "▁▂▃▄▅▆▇█", "_.,-=+*#" },
      { "below zero", { -40, -5 }, 8, "▁█", "_#" },
      { "steady", { 24.5, 24.5 }, 8, "▅▅", "==" },
      { "noise", { 50, 50.125, 50 }, 8, "▄▅▄", "-=-" },
      { "nought", { 0, 0 }, 8, "▅▅", "==" },
      { "what could not be read", { 10, {}, 20 }, 8, "▁ █", "_ #" },
      { "nothing that could be read", { {}, {} }, 8, "  ", "  " },
      { "no room", { 10, 20 }, 0, "", "" },
   };
   for ( auto& row : rows ) {
      History history;
      for ( auto& value : row.values ) {
         history.add( value );
      }
      EXPECT_EQ( history.line( row.width, true ), row.line ) << row.name;
      EXPECT_EQ( history.line( row.width, false ), row.ascii ) << row.name;
   }
}
