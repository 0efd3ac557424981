#include "Drivers/BCM59121Reports.h"

#include "ScriptedPoeChip.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <sstream>
#include <utility>

using testing::ElementsAre;
using Bytes = ScriptedPoeChip::Bytes;

namespace {

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
      // 6.44499... in double precision, where 100 * 64.45 * 0.001 would be 6.445
      { "voltage", getPortMeasurementStr, 4, "Voltage: ", 0,
         { { 1, "0.06V" }, { 100, "6.44V" }, { 255, "16.43V" } } },
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

TEST( Bcm59121Formatters, AllKnowHowMuchOfTheReportIsUsed ) {
   using namespace Drivers;
   const ReportFormatter formatters[] = { getSysStatusStr, getPortStatusStr, getPortStatStr, getSysPowerStr,
      getPortConfigStr, getPortConfigExtStr, getSysPowerManagementStr, getSysConfigStr, getCrcStatusStr,
      getPortMpssStr, getPortMeasurementStr, getPortPerPairPowerStr, getPortPerPairStatusStr,
      getCrcConfigQueryStr };
   for ( size_t i = 0; i < std::size( formatters ); ++i ) {
      auto reply = ScriptedPoeChip::reply( 0 );
      char room[8] = "#######";
      EXPECT_EQ( formatters[i]( QL_STATUS_OK, reply, room, 4096 ), 0U ) << i;
      EXPECT_STREQ( room, "#######" ) << i;
      EXPECT_GT( formatters[i]( QL_STATUS_OK, reply, room, 4095 ), 0U ) << i;
      EXPECT_EQ( std::string( room, 8 ), std::string( "\0######", 8 ) ) << i << ": one place, for the zero";
   }
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
