#include "Drivers/BCM59121Reports.h"

#include "BCM59121Test.h"
#include "FailingMalloc.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
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

/** The field texts that a formatter makes of a reply. */
std::vector<std::string> fieldsOf( Drivers::ReportFormatter format, const Bytes& bytes ) {
   auto reply = ScriptedPoeChip::reply( 0x20, bytes );
   std::array<char, Drivers::reportSize> buffer {};
   auto length = format( QL_STATUS_OK, reply, buffer.data(), 0 );
   EXPECT_EQ( length, strlen( buffer.data() ) );
   std::istringstream lines( buffer.data() );
   std::vector<std::string> fields;
   for ( std::string line; std::getline( lines, line ); ) {
      auto end = line.find( "    valid", 50 );
      EXPECT_EQ( end + 9, line.size() ) << line;
      auto field = line.substr( 0, end );
      // A label without a value keeps its own blank.
      auto last = field.find_last_not_of( ' ' );
      fields.push_back( field.substr( 0, field[last] == ':' ? last + 2 : last + 1 ) );
   }
   return fields;
}

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

TEST( Bcm59121Formatters, TellEveryValueOfTheirTables ) {
   using namespace Drivers;

   const struct {
      const char* name;
      ReportFormatter format;
      /** The first byte of the field, and what stands before its value. */
      size_t offset;
      const char* label;
      size_t field;
      std::vector<std::pair<int, const char*>> values;
   } tables[] = {
      { "port map", getSysStatusStr, 9, "4-pair port mapping: ", 0,
         { { 0, "no" }, { 0xF7, "no" }, { 0x08, "yes" }, { 0xFF, "yes" } } },
      { "firmware", getSysStatusStr, 7, "Firmware version: ", 1, { { 0, "0x00.00" }, { 0x9C, "0x9c.00" } } },
      { "firmware", getSysStatusStr, 10, "Firmware version: ", 1, { { 5, "0x00.05" }, { 0xFF, "0x00.ff" } } },
      { "port status", getPortStatusStr, 3, "Port status: ", 0,
         { { 0, "disabled" }, { 1, "detecting" }, { 2, "powered" }, { 3, "n/a" }, { 4, "OVLO" },
            { 5, "OVLO" }, { 6, "requesting power" }, { 7, "n/a" }, { 255, "n/a" } } },
      { "MPS absent", getPortStatStr, 3, "MPS absent count: ", 0, { { 0, "0" }, { 255, "255" } } },
      { "overload", getPortStatStr, 4, "Overload count: ", 1, { { 0, "0" }, { 10, "10" } } },
      { "short", getPortStatStr, 5, "Short count: ", 2, { { 0, "0" }, { 9, "9" } } },
      { "power denied", getPortStatStr, 6, "Power denied count: ", 3, { { 0, "0" }, { 128, "128" } } },
      { "signature", getPortStatStr, 7, "Invalid signature count: ", 4, { { 0, "0" }, { 1, "1" } } },
      { "allocated", getSysPowerStr, 2, "Total power allocated: ", 0, { { 0, "0.00W" }, { 1, "25.60W" } } },
      { "allocated", getSysPowerStr, 3, "Total power allocated: ", 0, { { 1, "0.10W" }, { 255, "25.50W" } } },
      { "available", getSysPowerStr, 4, "Available power: ", 1, { { 255, "6528.00W" } } },
      { "available", getSysPowerStr, 5, "Available power: ", 1, { { 123, "12.30W" } } },
      { "MPSM", getSysPowerStr, 6, "MPSM status: ", 2, { { 0, "0x00" }, { 0xAB, "0xab" } } },
      { "PSE", getPortConfigStr, 3, "PSE functionality: ", 0,
         { { 0, "disabled" }, { 1, "enabled" }, { 2, "n/a" }, { 255, "n/a" } } },
      { "detection type", getPortConfigStr, 5, "Detection type: ", 1,
         { { 0, "no detection" }, { 1, "legacy capacitive" }, { 2, "4 point" }, { 3, "legacy 4 point" },
            { 4, "2 point" }, { 5, "legacy 2 point" }, { 6, "n/a" }, { 255, "n/a" } } },
      { "power mode", getPortConfigExtStr, 3, "Power mode: ", 0,
         { { 0, "IEEE 802.3af" }, { 1, "high inrush" }, { 2, "pre IEEE 802.3at" }, { 3, "IEEE 802.3at" },
            { 4, "pre IEEE 802.3bt" }, { 5, "IEEE 802.3bt Type-3" }, { 6, "IEEE 802.3bt Type-4" },
            { 7, "n/a" }, { 255, "n/a" } } },
      { "violation", getPortConfigExtStr, 4, "Violation type: ", 1,
         { { 0, "none" }, { 1, "class based" }, { 2, "user defined" }, { 3, "n/a" }, { 255, "n/a" } } },
      { "limit", getPortConfigExtStr, 5, "User defined power limit: ", 2,
         { { 0, "0.00W" }, { 1, "0.20W" }, { 77, "15.40W" }, { 255, "51.00W" } } },
      { "power management", getSysPowerManagementStr, 2, "Power management: ", 0,
         { { 0, "none" }, { 1, "static" }, { 2, "dynamic" }, { 3, "static" }, { 4, "dynamic" }, { 5, "" },
            { 255, "" } } },
      // 255 * 0.06445 = 16.43475
      { "UVLO", getSysConfigStr, 2, "UVLO threshold: ", 0,
         { { 0, "33.00V" }, { 20, "34.29V" }, { 255, "49.43V" } } },
      { "OVLO", getSysConfigStr, 7, "OVLO threshold: ", 1,
         { { 0, "57.00V" }, { 10, "57.64V" }, { 255, "73.43V" } } },
      // 256 * 0.06445 = 16.4992
      { "V48", getCrcStatusStr, 4, "V48 voltage: ", 0, { { 0, "0.00V" }, { 1, "16.50V" } } },
      { "V48", getCrcStatusStr, 5, "V48 voltage: ", 0, { { 1, "0.06V" }, { 255, "16.43V" } } },
      { "CRC", getCrcStatusStr, 8, "CRC status: ", 1,
         { { 0, "failed" }, { 1, "ok" }, { 0xFE, "failed" }, { 3, "ok" } } },
      { "MPSS", getPortMpssStr, 3, "Port MPSS mask: ", 0, { { 0, "0x0000" }, { 0xC1, "0xc100" } } },
      { "MPSS", getPortMpssStr, 4, "Port MPSS mask: ", 0, { { 0x07, "0x0007" }, { 0xFF, "0x00ff" } } },
      { "voltage", getPortMeasurementStr, 3, "Voltage: ", 0, { { 0, "0.00V" }, { 1, "16.50V" } } },
      { "voltage", getPortMeasurementStr, 4, "Voltage: ", 0, { { 1, "0.06V" }, { 255, "16.43V" } } },
      { "current", getPortMeasurementStr, 5, "Current: ", 1, { { 0, "0.00mA" }, { 255, "65280.00mA" } } },
      { "current", getPortMeasurementStr, 6, "Current: ", 1, { { 255, "255.00mA" } } },
      { "temperature", getPortMeasurementStr, 7, "Temperature: ", 2, { { 0, "275.00C" }, { 1, "-45.00C" } } },
      { "temperature", getPortMeasurementStr, 8, "Temperature: ", 2,
         { { 120, "125.00C" }, { 121, "123.75C" }, { 220, "0.00C" }, { 221, "-1.25C" } } },
      { "power", getPortMeasurementStr, 9, "Power: ", 3, { { 0, "0.00W" }, { 255, "6528.00W" } } },
      { "power", getPortMeasurementStr, 10, "Power: ", 3, { { 154, "15.40W" } } },
      { "primary power", getPortPerPairPowerStr, 3, "Primary channel power: ", 0, { { 1, "25.60W" } } },
      { "primary power", getPortPerPairPowerStr, 4, "Primary channel power: ", 0, { { 1, "0.10W" } } },
      { "alternative power", getPortPerPairPowerStr, 5, "Alternative channel power: ", 1,
         { { 2, "51.20W" } } },
      { "alternative power", getPortPerPairPowerStr, 6, "Alternative channel power: ", 1,
         { { 255, "25.50W" } } },
      { "primary detection", getPortPerPairStatusStr, 3, "Primary channel detection: ", 0,
         { { 0, "unknown" }, { 0x14, "valid" }, { 0xF6, "open circuit" } } },
      { "primary class", getPortPerPairStatusStr, 4, "Primary channel PD class: ", 1,
         { { 8, "8" }, { 14, "mismatch" }, { 0x14, "n/a" } } },
      { "primary error", getPortPerPairStatusStr, 5, "Primary channel error status: ", 2,
         { { 2, "short" }, { 9, "n/a" } } },
      { "primary mode", getPortPerPairStatusStr, 6, "Primary channel mode: ", 3,
         { { 1, "30W" }, { 7, "n/a" } } },
      { "alternative detection", getPortPerPairStatusStr, 7, "Alternative channel detection: ", 4,
         { { 0, "unknown" }, { 0x14, "valid" }, { 0xF6, "open circuit" } } },
      { "alternative class", getPortPerPairStatusStr, 8, "Alternative channel PD class: ", 5,
         { { 8, "8" }, { 14, "mismatch" }, { 0x14, "n/a" } } },
      { "alternative error", getPortPerPairStatusStr, 9, "Alternative channel error status: ", 6,
         { { 2, "short" }, { 9, "n/a" } } },
      { "alternative mode", getPortPerPairStatusStr, 10, "Alternative channel mode: ", 7,
         { { 1, "30W" }, { 7, "n/a" } } },
      { "CRC functionality", getCrcConfigQueryStr, 2, "CRC functionality: ", 0,
         { { 0, "disabled" }, { 1, "enabled" }, { 0xFE, "disabled" }, { 0xFF, "enabled" } } },
      { "reset", getCrcConfigQueryStr, 3, "Reset on CRC failure: ", 1,
         { { 0, "no" }, { 1, "yes" }, { 0xFE, "no" }, { 0xFF, "yes" } } },
   };

   for ( auto& table : tables ) {
      for ( auto& [value, shown] : table.values ) {
         SCOPED_TRACE( testing::Message() << table.name << " " << value );
         auto fields = fieldsOf( table.format, { { table.offset, static_cast<uint8_t>( value ) } } );
         ASSERT_LT( table.field, fields.size() );
         EXPECT_EQ( fields[table.field], std::string( table.label ) + shown );
      }
   }
}

TEST( Bcm59121Formatters, APortsFaultIsToldWithEitherFaultStatus ) {
   const struct {
      uint8_t code;
      const char* shown;
   } rows[] = { { 0, "OVLO" }, { 1, "MPS absent" }, { 2, "short circuit" }, { 3, "overload" },
      { 4, "detecting, power denied" }, { 5, "thermal shutdown" }, { 6, "startup failure" }, { 7, "UVLO" },
      { 8, "n/a" }, { 9, "n/a" }, { 255, "n/a" } };

   for ( auto& row : rows ) {
      for ( uint8_t status : { uint8_t( 4 ), uint8_t( 5 ) } ) {
         EXPECT_THAT( fieldsOf( Drivers::getPortStatusStr, { { 3, status }, { 4, row.code } } ),
            ElementsAre( std::string( "Port status: " ) + row.shown ) );
      }
      EXPECT_THAT( fieldsOf( Drivers::getPortStatusStr, { { 3, 2 }, { 4, row.code } } ),
         ElementsAre( "Port status: powered" ) );
   }
}

TEST( Bcm59121Formatters, AChannelsTextsAreThoseOfItsTables ) {
   const struct {
      const char* name;
      std::string ( *text )( uint8_t );
      std::vector<std::pair<int, const char*>> rows;
   } tables[] = {
      { "detection", Drivers::getChannelDetectionStr,
         { { 0, "unknown" }, { 1, "short circuit" }, { 2, "high capacitance" }, { 3, "low resistance" },
            { 4, "valid" }, { 5, "high resistance" }, { 6, "open circuit" }, { 7, "n/a" }, { 8, "n/a" },
            { 12, "n/a" }, { 15, "n/a" }, { 0x14, "valid" }, { 0xF0, "unknown" }, { 0xFF, "n/a" } } },
      { "class", Drivers::getPdClassStr,
         { { 0, "0" }, { 1, "1" }, { 2, "2" }, { 3, "3" }, { 4, "4" }, { 5, "5" }, { 6, "6" }, { 7, "7" },
            { 8, "8" }, { 9, "n/a" }, { 13, "n/a" }, { 14, "mismatch" }, { 15, "over current" },
            { 16, "n/a" }, { 255, "n/a" } } },
      { "error", Drivers::getChannelErrorStr,
         { { 0, "none" }, { 1, "MPS absent" }, { 2, "short" }, { 3, "overload" }, { 4, "power denied" },
            { 5, "thermal shutdown" }, { 6, "startup failure" }, { 7, "UVLO" }, { 8, "OVLO" }, { 9, "n/a" },
            { 0x10, "n/a" }, { 255, "n/a" } } },
      { "mode", Drivers::getChannelModeStr,
         { { 0, "15W" }, { 1, "30W" }, { 2, "45W" }, { 3, "n/a" }, { 4, "15W" }, { 0xFE, "45W" },
            { 255, "n/a" } } },
   };

   for ( auto& table : tables ) {
      for ( auto& [value, shown] : table.rows ) {
         EXPECT_EQ( table.text( static_cast<uint8_t>( value ) ), shown ) << table.name << " " << value;
      }
   }
}

TEST( Bcm59121Formatters, AnEmptyReplyIsAnSmbusErrorWhateverTheStatus ) {
   for ( auto status : { QL_STATUS_OK, QL_STATUS_IO_ERROR, QL_STATUS_FAILED } ) {
      std::array<char, Drivers::reportSize> buffer {};
      std::string reply;
      EXPECT_EQ( Drivers::getPortMpssStr( status, reply, buffer.data(), 0 ), 66U );
      EXPECT_STREQ( buffer.data(), "Port MPSS mask: n/a                                   SMBus error\n" );
   }
}

TEST( Bcm59121Formatters, AStatusHasAWordOfItsOwn ) {
   const struct {
      ql_status status;
      const char* word;
   } rows[] = { { QL_STATUS_OK, "valid" }, { QL_STATUS_NOT_PRESENT, "hardware error" },
      { QL_STATUS_DEVICE_ERROR, "hardware error" }, { QL_STATUS_INVALID_ARGUMENT, "hardware error" },
      { QL_STATUS_IO_ERROR, "checksum error" }, { QL_STATUS_NOT_SUPPORTED, "hardware error" },
      { QL_STATUS_FAILED, "hardware error" } };

   for ( auto& row : rows ) {
      std::array<char, Drivers::reportSize> buffer {};
      std::string reply = "x";
      std::vector<std::string> fields { "A: 1" };
      Drivers::formatDebugStr( buffer.data(), 0, row.status, reply, fields );
      EXPECT_EQ( buffer.data(), "A: 1" + std::string( 50, ' ' ) + row.word + "\n" );
   }
}

TEST( Bcm59121Formatters, ALongFieldIsNotCut ) {
   std::array<char, Drivers::reportSize> buffer {};
   std::string reply = "x";
   std::string field( 60, 'a' );
   std::vector<std::string> fields { field };
   EXPECT_EQ( Drivers::formatDebugStr( buffer.data(), 0, QL_STATUS_OK, reply, fields ), 70U );
   EXPECT_EQ( buffer.data(), field + "    valid\n" );
}

TEST( Bcm59121Formatters, LinesEndWithTheReportsRoom ) {
   // A line is 50 + 4 + 6 characters with an answer, and 50 + 4 + 12 without.
   const struct {
      size_t used, answered, unanswered;
   } rows[] = {
      { 0, 180, 198 },
      { 3963, 180, 198 },
      { 3964, 180, 132 },
      { 3975, 180, 132 },
      { 3976, 120, 132 },
      { 4029, 120, 132 },
      { 4030, 120, 66 },
      { 4035, 120, 66 },
      { 4036, 60, 66 },
      { 4095, 60, 66 },
      { 4096, 0, 0 },
      { 5000, 0, 0 },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.used );
      for ( bool answered : { true, false } ) {
         // The byte behind the report must stay.
         auto report = std::make_unique<char[]>( 5200 );
         memset( report.get(), '#', 5200 );
         std::string reply( answered ? "x" : "" );
         std::vector<std::string> fields { "A: ", "B: ", "C: " };
         auto added =
            Drivers::formatDebugStr( report.get() + row.used, row.used, QL_STATUS_OK, reply, fields );
         EXPECT_EQ( added, answered ? row.answered : row.unanswered );
         EXPECT_EQ( std::string( report.get() + 4096, 1104 ), std::string( 1104, '#' ) );
         if ( row.used < 4096 ) {
            EXPECT_EQ( strlen( report.get() + row.used ), std::min( added, 4095 - row.used ) );
         }
      }
   }
}

} // namespace
