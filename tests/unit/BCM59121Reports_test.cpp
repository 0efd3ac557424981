#include "BCM59121Test.h"
#include "FailingMalloc.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Bytes = ScriptedPoeChip::Bytes;

namespace {

/** "Data Status" is filled up to 14 columns. */
constexpr const char* heading = "Port Information                                      Data Status   \n"
                                "--------------------------------------------------    --------------\n";

/** The lines of the chip of these tests. */
constexpr const char* goodLines = R"(4-pair port mapping: yes                              valid
Firmware version: 0x01.2a                             valid
Port status: powered                                  valid
MPS absent count: 1                                   valid
Overload count: 2                                     valid
Short count: 3                                        valid
Power denied count: 4                                 valid
Invalid signature count: 255                          valid
Total power allocated: 360.00W                        valid
Available power: 10.00W                               valid
MPSM status: 0x05                                     valid
PSE functionality: enabled                            valid
Detection type: legacy 4 point                        valid
Power mode: IEEE 802.3bt Type-3                       valid
Violation type: user defined                          valid
User defined power limit: 31.00W                      valid
Power management: dynamic                             valid
UVLO threshold: 34.29V                                valid
OVLO threshold: 57.64V                                valid
V48 voltage: 54.01V                                   valid
CRC status: ok                                        valid
Port MPSS mask: 0x0af5                                valid
Voltage: 54.01V                                       valid
Current: 500.00mA                                     valid
Temperature: 25.00C                                   valid
Power: 27.00W                                         valid
Primary channel power: 13.50W                         valid
Alternative channel power: 13.40W                     valid
Primary channel detection: valid                      valid
Primary channel PD class: 4                           valid
Primary channel error status: none                    valid
Primary channel mode: 30W                             valid
Alternative channel detection: open circuit           valid
Alternative channel PD class: over current            valid
Alternative channel error status: OVLO                valid
Alternative channel mode: 45W                         valid
CRC functionality: enabled                            valid
Reset on CRC failure: no                              valid
)";

constexpr const char* noLines = R"(4-pair port mapping: n/a                              SMBus error
Firmware version: n/a                                 SMBus error
Port status: n/a                                      SMBus error
MPS absent count: n/a                                 SMBus error
Overload count: n/a                                   SMBus error
Short count: n/a                                      SMBus error
Power denied count: n/a                               SMBus error
Invalid signature count: n/a                          SMBus error
Total power allocated: n/a                            SMBus error
Available power: n/a                                  SMBus error
MPSM status: n/a                                      SMBus error
PSE functionality: n/a                                SMBus error
Detection type: n/a                                   SMBus error
Power mode: n/a                                       SMBus error
Violation type: n/a                                   SMBus error
User defined power limit: n/a                         SMBus error
Power management: n/a                                 SMBus error
UVLO threshold: n/a                                   SMBus error
OVLO threshold: n/a                                   SMBus error
V48 voltage: n/a                                      SMBus error
CRC status: n/a                                       SMBus error
Port MPSS mask: n/a                                   SMBus error
Voltage: n/a                                          SMBus error
Current: n/a                                          SMBus error
Temperature: n/a                                      SMBus error
Power: n/a                                            SMBus error
Primary channel power: n/a                            SMBus error
Alternative channel power: n/a                        SMBus error
Primary channel detection: n/a                        SMBus error
Primary channel PD class: n/a                         SMBus error
Primary channel error status: n/a                     SMBus error
Primary channel mode: n/a                             SMBus error
Alternative channel detection: n/a                    SMBus error
Alternative channel PD class: n/a                     SMBus error
Alternative channel error status: n/a                 SMBus error
Alternative channel mode: n/a                         SMBus error
CRC functionality: n/a                                SMBus error
Reset on CRC failure: n/a                             SMBus error
)";

constexpr std::array<uint8_t, 14> commands { 0x20, 0x21, 0x22, 0x23, 0x25, 0x26, 0x27, 0x2B, 0x2D, 0x2E, 0x30,
   0x3C, 0x3D, 0x4F };

/** What a report of port 9 asks: the chip status and the CRC configuration of its group, all else of the
 * port. */
const std::vector<std::string> questions {
   "20 FF 09 FF FF FF FF FF FF FF FF 20",
   "21 FF 09 FF FF FF FF FF FF FF FF 21",
   "22 FF 09 FF FF FF FF FF FF FF FF 22",
   "23 FF 09 FF FF FF FF FF FF FF FF 23",
   "25 FF 09 FF FF FF FF FF FF FF FF 25",
   "26 FF 09 FF FF FF FF FF FF FF FF 26",
   "27 FF 09 FF FF FF FF FF FF FF FF 27",
   "2B FF 09 FF FF FF FF FF FF FF FF 2B",
   "2D FF 01 FF FF FF FF FF FF FF FF 25",
   "2E FF 09 FF FF FF FF FF FF FF FF 2E",
   "30 FF 09 FF FF FF FF FF FF FF FF 30",
   "3C FF 09 FF FF FF FF FF FF FF FF 3C",
   "3D FF 09 FF FF FF FF FF FF FF FF 3D",
   "4F FF 01 FF FF FF FF FF FF FF FF 47",
};

class Bcm59121Reports : public Bcm59121Test {
protected:
   Bcm59121Reports() {
      for ( auto& [cmd, bytes] : contents ) {
         chip.answer( cmd, bytes );
      }
   }

   ~Bcm59121Reports() override { free( text ); }

   /** Both kinds of report tell the length of their text. */
   std::string report( int id = 9 ) {
      free( std::exchange( text, nullptr ) );
      auto length = driver->getInformation( port( id ), &text );
      EXPECT_EQ( length, strlen( text ) );
      return text;
   }

   std::string rawReport( int id = 9 ) {
      free( std::exchange( text, nullptr ) );
      auto length = driver->getInformationRaw( port( id ), &text );
      EXPECT_EQ( length, strlen( text ) );
      return text;
   }

   /** The good lines with another status. */
   static std::string linesWith( const std::string& status ) {
      std::istringstream lines( goodLines );
      std::string changed;
      for ( std::string line; std::getline( lines, line ); ) {
         changed += line.substr( 0, 54 ) + status + "\n";
      }
      return changed;
   }

   const std::map<uint8_t, Bytes> contents {
      { 0x20, { { 7, 0x01 }, { 9, 0x08 }, { 10, 0x2A } } },
      { 0x21, { { 3, 2 } } },
      { 0x22, { { 3, 1 }, { 4, 2 }, { 5, 3 }, { 6, 4 }, { 7, 255 } } },
      // 3600 and 100 tenths of a watt
      { 0x23, { { 2, 0x0E }, { 3, 0x10 }, { 5, 0x64 }, { 6, 0x05 } } },
      { 0x25, { { 3, 1 }, { 5, 3 } } },
      // 155 * 0.2 W
      { 0x26, { { 3, 5 }, { 4, 2 }, { 5, 155 } } },
      { 0x27, { { 2, 4 } } },
      // 20 * 0.06445 V + 33 V = 34.289 V, 10 * 0.06445 V + 57 V = 57.6445 V
      { 0x2B, { { 2, 20 }, { 7, 10 } } },
      // 838 * 0.06445 V = 54.0091 V
      { 0x2D, { { 4, 0x03 }, { 5, 0x46 }, { 8, 0x01 } } },
      { 0x2E, { { 3, 0x0A }, { 4, 0xF5 } } },
      // 838 steps, 500 mA, 200 for 25 degrees, 270 tenths of a watt
      { 0x30, { { 3, 0x03 }, { 4, 0x46 }, { 5, 0x01 }, { 6, 0xF4 }, { 8, 200 }, { 9, 0x01 }, { 10, 0x0E } } },
      { 0x3C, { { 4, 135 }, { 6, 134 } } },
      { 0x3D, { { 3, 0x14 }, { 4, 4 }, { 5, 0 }, { 6, 1 }, { 7, 6 }, { 8, 15 }, { 9, 8 }, { 10, 2 } } },
      { 0x4F, { { 2, 1 } } },
   };

   char* text = nullptr;
};

TEST_F( Bcm59121Reports, AReportAsksForEveryReplyAndShowsEveryField ) {
   EXPECT_EQ( report(), std::string( "Port 10\n" ) + heading + goodLines + "\n" );
   Log expected;
   for ( auto& question : questions ) {
      auto log = exchange( question );
      expected.insert( expected.end(), log.begin(), log.end() );
   }
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( expected ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 6,
                       "size_t Drivers::BCM59121::getInformation(Drivers::BCM59121::PoePort*, char**)" } ) );
}

TEST_F( Bcm59121Reports, ARawReportIsTheRepliesInHexadecimal ) {
   EXPECT_EQ( rawReport(), R"(Port 10
20 00 00 00 00 00 00 01 00 08 2a 53
21 00 00 02 00 00 00 00 00 00 00 23
22 00 00 01 02 03 04 ff 00 00 00 2b
23 00 0e 10 00 64 05 00 00 00 00 aa
25 00 00 01 00 03 00 00 00 00 00 29
26 00 00 05 02 9b 00 00 00 00 00 c8
27 00 04 00 00 00 00 00 00 00 00 2b
2b 00 14 00 00 00 00 0a 00 00 00 49
2d 00 00 00 03 46 00 00 01 00 00 77
2e 00 00 0a f5 00 00 00 00 00 00 2d
30 00 00 03 46 01 f4 00 c8 01 0e 45
3c 00 00 00 87 00 86 00 00 00 00 49
3d 00 00 14 04 00 01 06 0f 08 02 75
4f 00 01 00 00 00 00 00 00 00 00 50
)" );
   EXPECT_THAT( chip.takeSent(), ElementsAreArray( questions ) );
   EXPECT_THAT( Host::traces,
      ElementsAre( Host::TraceLine {
         6, "size_t Drivers::BCM59121::getInformationRaw(Drivers::BCM59121::PoePort*, char**)" } ) );
}

TEST_F( Bcm59121Reports, PortsCountFromOne ) {
   const struct {
      int id;
      const char* first;
   } rows[] = { { 0, "Port 1\n" }, { 11, "Port 12\n" }, { 255, "Port 256\n" } };

   for ( auto& row : rows ) {
      EXPECT_THAT( report( row.id ), testing::StartsWith( row.first ) );
      EXPECT_THAT( rawReport( row.id ), testing::StartsWith( row.first ) );
   }
}

TEST_F( Bcm59121Reports, ATwoPairPortsGroupIsAskedToo ) {
   report( 3 );
   auto sent = chip.takeSent();
   ASSERT_EQ( sent.size(), 14U );
   EXPECT_EQ( sent[0], "20 FF 03 FF FF FF FF FF FF FF FF 1A" );
   EXPECT_EQ( sent[8], "2D FF 00 FF FF FF FF FF FF FF FF 24" );
   EXPECT_EQ( sent[13], "4F FF 00 FF FF FF FF FF FF FF FF 46" );
   rawReport( 3 );
   EXPECT_EQ( chip.takeSent(), sent );
}

TEST_F( Bcm59121Reports, AReportWithoutAnyReplyIsStillWhole ) {
   for ( auto cmd : commands ) {
      chip.readStatuses[cmd] = { QL_STATUS_FAILED };
   }
   EXPECT_EQ( report(), std::string( "Port 10\n" ) + heading + noLines + "\n" );
   EXPECT_THAT( chip.takeSent(), ElementsAreArray( questions ) );
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );
}

TEST_F( Bcm59121Reports, AWrongChecksumShowsOnEveryLineOfItsReply ) {
   for ( auto& [cmd, bytes] : contents ) {
      chip.replies[cmd] = { ScriptedPoeChip::corrupt( reply( cmd, bytes ) ) };
   }
   EXPECT_EQ( report(), std::string( "Port 10\n" ) + heading + linesWith( "checksum error" ) + "\n" );
   EXPECT_EQ( Host::tracesOf( 0 ), std::vector<std::string>( 14, "Error: Checksum invalid" ) );
}

TEST_F( Bcm59121Reports, AnErrorCodeShowsOnEveryLineOfItsReply ) {
   for ( auto& [cmd, bytes] : contents ) {
      chip.replies[cmd] = { reply( 0x7E, bytes ) };
   }
   EXPECT_EQ( report(), std::string( "Port 10\n" ) + heading + linesWith( "hardware error" ) + "\n" );
   EXPECT_EQ(
      Host::tracesOf( 0 ), std::vector<std::string>( 14, "Error: Failed to read PoE chip. Error code: 7e" ) );
}

TEST_F( Bcm59121Reports, AFailedReplyDoesNotTouchTheOthers ) {
   chip.readStatuses[0x21] = { QL_STATUS_IO_ERROR };
   chip.replies[0x27] = { ScriptedPoeChip::corrupt( reply( 0x27, { { 2, 1 } } ) ) };
   chip.replies[0x4F] = { reply( 0xAF ) };
   auto expected = std::string( "Port 10\n" ) + heading + goodLines + "\n";
   auto replace = [&]( const std::string& from, const std::string& to ) {
      auto place = expected.find( from );
      ASSERT_NE( place, std::string::npos ) << from;
      expected.replace( place, from.size(), to );
   };
   replace( "Port status: powered                                  valid",
      "Port status: n/a                                      SMBus error" );
   replace( "Power management: dynamic                             valid",
      "Power management: static                              checksum error" );
   replace( "CRC functionality: enabled                            valid",
      "CRC functionality: disabled                           hardware error" );
   replace( "Reset on CRC failure: no                              valid",
      "Reset on CRC failure: no                              hardware error" );
   EXPECT_EQ( report(), expected );
}

TEST_F( Bcm59121Reports, AFailedWriteAloneDoesNotShow ) {
   for ( auto cmd : commands ) {
      chip.writeStatuses[cmd] = { QL_STATUS_FAILED };
   }
   EXPECT_EQ( report(), std::string( "Port 10\n" ) + heading + goodLines + "\n" );
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );
}

TEST_F( Bcm59121Reports, ARawReportLeavesOutWhatHasFailed ) {
   for ( auto cmd : commands ) {
      chip.replies[cmd] = { reply( 0x7E ) };
   }
   chip.replies[0x22] = { ScriptedPoeChip::corrupt( reply( 0x22 ) ) };
   chip.readStatuses[0x23] = { QL_STATUS_FAILED };
   chip.answer( 0x25, { { 3, 1 }, { 5, 3 } } );
   chip.answer( 0x3D, {} );
   EXPECT_EQ( rawReport(), "Port 10\n"
                           "25 00 00 01 00 03 00 00 00 00 00 29\n"
                           "3d 00 00 00 00 00 00 00 00 00 00 3d\n" );
   EXPECT_THAT( chip.takeSent(), ElementsAreArray( questions ) );
}

TEST_F( Bcm59121Reports, ARawReportWithoutAnyReplyIsItsFirstLine ) {
   for ( auto cmd : commands ) {
      chip.readStatuses[cmd] = { QL_STATUS_FAILED };
   }
   EXPECT_EQ( rawReport(), "Port 10\n" );
}

TEST_F( Bcm59121Reports, ReportsGoPastTheCacheAndDoNotRefreshIt ) {
   auto& cache = driver->poeCache[9];
   cache.portStatus = "old";
   cache.portStatusTime = { 1000, 0 };
   report();
   report();
   rawReport();
   EXPECT_EQ( chip.takeSent().size(), 42U );
   EXPECT_EQ( cache.portStatus, "old" );
   EXPECT_EQ( cache.portStatusTime.tv_sec, 1000 );
   EXPECT_EQ( cache.measurement, "" );
}

TEST_F( Bcm59121Reports, WithoutMemoryThereIsNoReport ) {
   const struct {
      size_t size;
      std::function<size_t()> report;
   } rows[] = {
      { 4096, [this] { return driver->getInformation( port( 9 ), &text ); } },
      { 768, [this] { return driver->getInformationRaw( port( 9 ), &text ); } },
   };

   for ( auto& row : rows ) {
      Host::traces.clear();
      text = const_cast<char*>( heading );
      FailingMalloc malloc( row.size );
      EXPECT_EQ( row.report(), 0U );
      EXPECT_EQ( text, nullptr );
      EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "Error: Failed to allocate memory for debug info" ) );
      EXPECT_THAT( chip.takeLog(), IsEmpty() );
   }
}

TEST_F( Bcm59121Reports, AShortReplyIsReadAsFilledUpWithZeros ) {
   for ( auto cmd : commands ) {
      chip.replies[cmd] = { std::string( 1, static_cast<char>( cmd ) ) };
   }
   EXPECT_THAT( report(),
      testing::HasSubstr( "Firmware version: 0x00.00                             checksum error\n" ) );
   EXPECT_EQ( rawReport(), "Port 10\n" );
   // A byte that makes the sum 0 makes it whole.
   chip.replies[0x20] = { "\x20\xE0" };
   EXPECT_EQ( rawReport(), "Port 10\n20 e0 00 00 00 00 00 00 00 00 00 00\n" );
}

TEST_F( Bcm59121Reports, ARawLineKeepsToItsRoom ) {
   std::array<char, 12> buffer;
   buffer.fill( '#' );
   EXPECT_EQ( driver->getDebugStrRaw( 9, buffer.data(), 10, 0x25 ), 36U );
   EXPECT_STREQ( buffer.data(), "25 00 00 " );
   EXPECT_EQ( buffer[10], '#' );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "25 FF 09 FF FF FF FF FF FF FF FF 25" ) );

   chip.readStatuses[0x25] = { QL_STATUS_FAILED };
   buffer.fill( '#' );
   EXPECT_EQ( driver->getDebugStrRaw( 9, buffer.data(), 10, 0x25 ), 0U );
   EXPECT_THAT( buffer, Each( '#' ) );
}

} // namespace
