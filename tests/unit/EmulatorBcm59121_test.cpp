#include "EmulatorController.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;

/** Messages: their form, settings and replies, each byte from the tables of the part. */
namespace {

struct Row {
   const char* name;
   const char* request;
   const char* reply;
};

// 54 V is 838 steps of 0.06445 V, 0x0346; 40 °C is 120 + 85 / 1.25, 0xbc; 740 W are 0x1ce8 steps of 0.1 W;
// the thresholds of 36.03 V and 59.00 V are 47 steps above 33 V, 0x2f, and 31 above 57 V, 0x1f.
const Row atPowerOn[] = {
   { "system status", "20 FF 00 FF FF FF FF FF FF FF FF 17", "20 FF 00 00 00 00 00 01 00 0A 05 2F" },
   { "port status", "21 FF 05 FF FF FF FF FF FF FF FF 1D", "21 FF 05 00 00 00 00 00 00 00 00 25" },
   { "port statistics", "22 FF 03 FF FF FF FF FF FF FF FF 1C", "22 FF 03 00 00 00 00 00 00 00 00 24" },
   { "system power", "23 FF 00 FF FF FF FF FF FF FF FF 1A", "23 FF 00 00 1C E8 00 00 00 00 00 26" },
   { "port configuration", "25 FF 00 FF FF FF FF FF FF FF FF 1C", "25 FF 00 00 00 02 00 00 00 00 00 26" },
   { "extended configuration of a 2-pair port", "26 FF 07 FF FF FF FF FF FF FF FF 24",
      "26 FF 07 03 01 9B 00 00 00 00 00 CB" },
   { "extended configuration of a 4-pair port", "26 FF 08 FF FF FF FF FF FF FF FF 25",
      "26 FF 08 04 01 9B 00 00 00 00 00 CD" },
   { "power management", "27 FF 00 FF FF FF FF FF FF FF FF 1E", "27 FF 01 00 00 00 00 00 00 00 00 27" },
   { "system configuration", "2B FF 00 FF FF FF FF FF FF FF FF 22", "2B FF 2F 00 00 00 00 1F 00 00 00 78" },
   { "chip status", "2D FF 01 FF FF FF FF FF FF FF FF 25", "2D FF 01 00 03 46 00 00 01 00 00 77" },
   { "chip status with a flag", "2D FF 00 01 FF FF FF FF FF FF FF 26",
      "2D FF 00 00 03 46 00 00 01 00 00 76" },
   { "MPSS mask", "2E FF 0B FF FF FF FF FF FF FF FF 30", "2E FF 0B 00 00 00 00 00 00 00 00 38" },
   { "measurement", "30 FF 00 FF FF FF FF FF FF FF FF 27", "30 FF 00 00 00 00 00 00 BC 00 00 EB" },
   { "per-pair power", "3C FF 08 FF FF FF FF FF FF FF FF 3B", "3C FF 08 00 00 00 00 00 00 00 00 43" },
   { "per-pair status", "3D FF 08 FF FF FF FF FF FF FF FF 3C", "3D FF 08 00 00 00 03 00 00 00 03 4A" },
   { "channel CRC", "4C FF 01 01 FF FF FF FF FF FF FF 46", "4C FF 01 00 00 00 00 00 00 00 00 4C" },
   { "CRC configuration", "4F FF 01 FF FF FF FF FF FF FF FF 47", "4F FF 01 00 00 00 00 00 00 00 00 4F" },
};

// Class 4 is 30 W, 0x012c; 22.5 W are 0xe1; 22.5 W at 54 V are 417 mA, 0x01a1.
const Row withADeviceOnPort0[] = {
   { "port status", "21 FF 00 FF FF FF FF FF FF FF FF 18", "21 FF 00 02 00 04 00 00 00 01 01 28" },
   { "system power", "23 FF 00 FF FF FF FF FF FF FF FF 1A", "23 FF 01 2C 1B BC 00 00 00 00 00 26" },
   { "measurement", "30 FF 00 FF FF FF FF FF FF FF FF 27", "30 FF 00 03 46 01 A1 00 BC 00 E1 B7" },
   { "per-pair power", "3C FF 00 FF FF FF FF FF FF FF FF 33", "3C FF 00 00 E1 00 00 00 00 00 00 1C" },
   { "per-pair status", "3D FF 00 FF FF FF FF FF FF FF FF 34", "3D FF 00 04 04 00 01 00 00 00 03 48" },
};

// Class 6 is 60 W, 0x0258; 51 W are 0x01fe, on each pair set half, 0xff; 51 W at 54 V are 944 mA, 0x03b0.
const Row withADeviceOnPort8[] = {
   { "port status", "21 FF 08 FF FF FF FF FF FF FF FF 20", "21 FF 08 02 00 06 00 00 00 03 01 34" },
   { "system power", "23 FF 08 FF FF FF FF FF FF FF FF 22", "23 FF 02 58 1A 90 00 00 00 00 00 26" },
   { "measurement", "30 FF 08 FF FF FF FF FF FF FF FF 2F", "30 FF 08 03 46 03 B0 00 BC 01 FE EE" },
   { "per-pair power", "3C FF 08 FF FF FF FF FF FF FF FF 3B", "3C FF 08 00 FF 00 FF 00 00 00 00 41" },
   { "per-pair status", "3D FF 08 FF FF FF FF FF FF FF FF 3C", "3D FF 08 04 06 00 01 04 06 00 01 5A" },
};

const Row withADualSignatureOnPort9[] = {
   { "port status", "21 FF 09 FF FF FF FF FF FF FF FF 21", "21 FF 09 06 00 04 00 00 00 00 02 35" },
   { "per-pair status", "3D FF 09 FF FF FF FF FF FF FF FF 3D", "3D FF 09 14 04 00 01 14 04 00 01 77" },
};

struct Setting {
   const char* name;
   const char* request;
   const char* receipt;
   const char* query;
   const char* reply;
};

const Setting settings[] = {
   { "enable", "00 FF 02 01 FF FF FF FF FF FF FF FB", "00 FF 02 00 00 00 00 00 00 00 00 01",
      "25 FF 02 FF FF FF FF FF FF FF FF 1E", "25 FF 02 01 00 02 00 00 00 00 00 29" },
   { "detection type", "10 FF 02 03 FF FF FF FF FF FF FF 0D", "10 FF 02 00 00 00 00 00 00 00 00 11",
      "25 FF 02 FF FF FF FF FF FF FF FF 1E", "25 FF 02 00 00 03 00 00 00 00 00 29" },
   { "violation type", "15 FF 02 02 FF FF FF FF FF FF FF 11", "15 FF 02 00 00 00 00 00 00 00 00 16",
      "26 FF 02 FF FF FF FF FF FF FF FF 1F", "26 FF 02 03 02 9B 00 00 00 00 00 C7" },
   { "limit", "16 FF 02 50 FF FF FF FF FF FF FF 60", "16 FF 02 00 00 00 00 00 00 00 00 17",
      "26 FF 02 FF FF FF FF FF FF FF FF 1F", "26 FF 02 03 01 50 00 00 00 00 00 7B" },
   { "power mode", "1C FF 08 05 FF FF FF FF FF FF FF 21", "1C FF 08 00 00 00 00 00 00 00 00 23",
      "26 FF 08 FF FF FF FF FF FF FF FF 25", "26 FF 08 05 01 9B 00 00 00 00 00 CE" },
   { "MPSS mask", "1E FF 02 06 FF FF FF FF FF FF FF 1E", "1E FF 02 00 00 00 00 00 00 00 00 1F",
      "2E FF 02 FF FF FF FF FF FF FF FF 27", "2E FF 02 00 06 00 00 00 00 00 00 35" },
   { "CRC reset", "4E FF 01 01 FF FF FF FF FF FF FF 48", "4E FF 00 00 00 00 00 00 00 00 00 4D",
      "4F FF 00 FF FF FF FF FF FF FF FF 46", "4F FF 01 01 00 00 00 00 00 00 00 50" },
};

const Row receipts[] = {
   { "command 0x08", "08 FF 02 00 FF FF FF FF FF FF FF 02", "08 FF 02 00 00 00 00 00 00 00 00 09" },
   { "command 0x12", "12 FF 02 00 FF FF FF FF FF FF FF 0C", "12 FF 02 00 00 00 00 00 00 00 00 13" },
   { "command 0x0A", "0A FF 6D 01 2F 01 FF FF FF FF FF A2", "0A FF 00 00 00 00 00 00 00 00 00 09" },
   { "command 0x17", "17 FF 00 FF FF FF FF FF FF FF FF 0E", "17 FF 00 00 00 00 00 00 00 00 00 16" },
   { "power on", "01 FF 02 01 FF FF FF FF FF FF FF FC", "01 FF 02 00 00 00 00 00 00 00 00 02" },
   { "power off", "03 FF 02 01 FF FF FF FF FF FF FF FE", "03 FF 02 00 00 00 00 00 00 00 00 04" },
};

const Row unknownCommands[] = {
   { "0x04", "04 FF FF FF FF FF FF FF FF FF FF FA", "AD 00 00 00 00 00 00 00 00 00 00 AD" },
   { "0x24", "24 FF 00 FF FF FF FF FF FF FF FF 1B", "AD 00 00 00 00 00 00 00 00 00 00 AD" },
   { "0xFF", "FF FF FF FF FF FF FF FF FF FF FF F5", "AD 00 00 00 00 00 00 00 00 00 00 AD" },
   { "0x40", "40 FF FF FF FF FF FF FF FF FF FF 36", "AD 00 00 00 00 00 00 00 00 00 00 AD" },
};

const Row wrongArguments[] = {
   { "port 12", "21 FF 0C FF FF FF FF FF FF FF FF 24", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "port 255", "30 FF FF FF FF FF FF FF FF FF FF 26", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "system status of port 12", "20 FF 0C FF FF FF FF FF FF FF FF 23",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "system status of port 255", "20 FF FF FF FF FF FF FF FF FF FF 16",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "system power of port 12", "23 FF 0C FF FF FF FF FF FF FF FF 26",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "power management of port 12", "27 FF 0C FF FF FF FF FF FF FF FF 2A",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "system configuration of port 12", "2B FF 0C FF FF FF FF FF FF FF FF 2E",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "a setting of port 12", "00 FF 0C 01 FF FF FF FF FF FF FF 05", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "group 2", "2D FF 02 FF FF FF FF FF FF FF FF 26", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "group 2 of channels", "4C FF 02 01 FF FF FF FF FF FF FF 47", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "chip status with flag 0", "2D FF 00 00 FF FF FF FF FF FF FF 25",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "channel CRC without its flag", "4C FF 00 FF FF FF FF FF FF FF FF 43",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "enable 2", "00 FF 00 02 FF FF FF FF FF FF FF FA", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "power on 0", "01 FF 00 00 FF FF FF FF FF FF FF F9", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "power off 0", "03 FF 00 00 FF FF FF FF FF FF FF FB", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "detection type 6", "10 FF 00 06 FF FF FF FF FF FF FF 0E", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "violation type 3", "15 FF 00 03 FF FF FF FF FF FF FF 10", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "limit 156", "16 FF 00 9C FF FF FF FF FF FF FF AA", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "power mode 7", "1C FF 00 07 FF FF FF FF FF FF FF 1B", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "CRC 2", "4E FF 01 02 FF FF FF FF FF FF FF 49", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "CRC functionality 2", "4E FF 02 01 FF FF FF FF FF FF FF 49", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "port map step 4", "02 FF 04 FF FF FF FF FF FF FF FF FD", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "sub-command", "E0 41 FF FF FF FF FF FF FF FF FF 18", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "map row without a map", "0E FF 00 00 00 00 00 01 00 01 FF 0E", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "map end without a map", "02 FF 03 FF FF FF FF FF FF FF FF FC", "AC 00 00 00 00 00 00 00 00 00 00 AC" },
   { "map in force without a map", "E0 F0 FF FF FF FF FF FF FF FF FF C7",
      "AC 00 00 00 00 00 00 00 00 00 00 AC" },
};

template <size_t count>
void expectReplies( Controller& chip, const Row ( &rows )[count] ) {
   for ( auto& row : rows ) {
      EXPECT_EQ( chip.ask( row.request ), row.reply ) << row.name;
   }
}

constexpr char nothing[] = "FF FF FF FF FF FF FF FF FF FF FF FF";
constexpr char statusOfPort5[] = "21 FF 05 FF FF FF FF FF FF FF FF 1D";
constexpr char replyOfPort5[] = "21 FF 05 00 00 00 00 00 00 00 00 25";
constexpr char messageError[] = "AE 00 00 00 00 00 00 00 00 00 00 AE";

class EmulatorBcm59121 : public ::testing::Test {
protected:
   Controller chip;
};

} // namespace

TEST_F( EmulatorBcm59121, AnswersEachQueryAtPowerOnAsTheTableTells ) { expectReplies( chip, atPowerOn ); }

TEST_F( EmulatorBcm59121, TellsOfADeviceOnA2PairPort ) {
   chip.power( 1, "class=4 draw=22.5" );
   expectReplies( chip, withADeviceOnPort0 );
}

TEST_F( EmulatorBcm59121, TellsOfADeviceOnA4PairPort ) {
   chip.power( 9, "class=6 draw=51" );
   expectReplies( chip, withADeviceOnPort8 );
}

TEST_F( EmulatorBcm59121, TellsOfADualSignatureDeviceThatAsksForPower ) {
   chip.enable( 10 );
   chip.bench( "10 attach type=dual class=4 draw=50" );
   chip.advance( 1s );
   expectReplies( chip, withADualSignatureOnPort9 );
}

TEST_F( EmulatorBcm59121, TakesEachSettingAndTellsItAgain ) {
   for ( auto& row : settings ) {
      Controller fresh;
      EXPECT_EQ( fresh.ask( row.request ), row.receipt ) << row.name;
      EXPECT_EQ( fresh.ask( row.query ), row.reply ) << row.name;
   }
}

TEST_F( EmulatorBcm59121, GivesAReceiptForEachOtherSetting ) { expectReplies( chip, receipts ); }

TEST_F( EmulatorBcm59121, AnswersAnUnknownCommandWithAnErrorCode ) { expectReplies( chip, unknownCommands ); }

TEST_F( EmulatorBcm59121, AnswersAnArgumentThatCannotBeWithAnErrorCode ) {
   expectReplies( chip, wrongArguments );
}

TEST_F( EmulatorBcm59121, AnswersAWrongChecksumWithAnErrorCodeAndDoesNothing ) {
   EXPECT_EQ( chip.ask( "00 FF 05 01 FF FF FF FF FF FF FF 00" ), messageError );
   EXPECT_EQ( chip.get( "port6.enabled" ), "0" );
}

TEST_F( EmulatorBcm59121, AnswersAnotherLengthWithAnErrorCode ) {
   for ( auto message : { "21", "21 FF", "21 FF 05 FF FF FF FF FF FF FF 1D",
            "21 FF 05 FF FF FF FF FF FF FF FF 1D 00", "FF FF" } ) {
      EXPECT_EQ( chip.ask( message ), messageError ) << message;
   }
}

TEST_F( EmulatorBcm59121, WrapsItsChecksum ) {
   // 11 times 0xff is 0xaf5, but there is no such command.
   EXPECT_EQ( chip.ask( "FF FF FF FF FF FF FF FF FF FF FF F5" ), "AD 00 00 00 00 00 00 00 00 00 00 AD" );
}

TEST_F( EmulatorBcm59121, RefusesAMessageWhoseUnusedBytesAreNot0xff ) {
   struct Used {
      uint8_t command;
      Bytes arguments;
      uint8_t subCommand = 0xFF;
   };

   const Used rows[] = {
      { 0x00, { 2, 1 } },
      { 0x01, { 2, 1 } },
      { 0x02, { 2, 12 } },
      { 0x0E, { 0, 0, 0, 0, 0, 1, 0, 1 } },
      { 0x03, { 2, 1 } },
      { 0x08, { 2, 0 } },
      { 0x0A, { 0x6D, 1, 0x2F, 1 } },
      { 0x10, { 2, 3 } },
      { 0x12, { 2, 0 } },
      { 0x15, { 2, 1 } },
      { 0x16, { 2, 80 } },
      { 0x17, { 0 } },
      { 0x1C, { 8, 5 } },
      { 0x1E, { 2, 0 } },
      { 0x20, { 0 } },
      { 0x21, { 0 } },
      { 0x22, { 0 } },
      { 0x23, { 0 } },
      { 0x25, { 0 } },
      { 0x26, { 0 } },
      { 0x27, { 0 } },
      { 0x2B, { 0 } },
      { 0x2D, { 1, 1 } },
      { 0x2E, { 0 } },
      { 0x30, { 0 } },
      { 0x3C, { 0 } },
      { 0x3D, { 0 } },
      { 0x4C, { 1, 1 } },
      { 0x4E, { 1, 1 } },
      { 0x4F, { 1 } },
      { 0xE0, {}, 0xC0 },
   };
   for ( auto& row : rows ) {
      auto command = fmt::format( "command {:#04x}", row.command );
      for ( size_t i = row.arguments.size(); i < 9; ++i ) {
         auto arguments = row.arguments;
         arguments.resize( 9, 0xFF );
         arguments[i] = 0;
         EXPECT_EQ( chip.tell( row.command, arguments, row.subCommand )[0], 0xAC ) << command << " " << i + 2;
      }
      EXPECT_EQ( chip.tell( row.command, row.arguments, 0 )[0], 0xAC ) << command << " 1";
      EXPECT_EQ( chip.tell( row.command, row.arguments, row.subCommand )[0], row.command ) << command;
      chip.advance( 400ms );
   }
}

TEST_F( EmulatorBcm59121, RepeatsThePortOfASystemStatus ) {
   EXPECT_EQ( chip.ask( "20 FF 05 FF FF FF FF FF FF FF FF 1C" ), "20 FF 05 00 00 00 00 01 00 0A 05 34" );
}

TEST_F( EmulatorBcm59121, HasNoReplyBeforeTheFirstRequest ) { EXPECT_EQ( chip.reply(), nothing ); }

TEST_F( EmulatorBcm59121, NeedsTimeForAReply ) {
   struct Time {
      const char* request;
      std::chrono::milliseconds before;
      std::chrono::milliseconds wait;
   };

   // What a host waits at least: 4 ms, 12 ms for the port map and 20 ms for command 0x17.
   const Time times[] = {
      { statusOfPort5, 2ms, 4ms },
      { "00 FF 02 01 FF FF FF FF FF FF FF FB", 2ms, 4ms },
      { "02 FF 02 0C FF FF FF FF FF FF FF 08", 9ms, 12ms },
      { "17 FF 00 FF FF FF FF FF FF FF FF 0E", 14ms, 20ms },
   };
   for ( auto& time : times ) {
      ASSERT_TRUE( chip.send( time.request ) );
      EXPECT_EQ( chip.reply(), nothing ) << time.request;
      chip.advance( time.before );
      EXPECT_EQ( chip.reply(), nothing ) << time.request;
      chip.advance( time.wait - time.before );
      EXPECT_EQ( chip.reply().substr( 0, 2 ), std::string( time.request, 2 ) );
      chip.advance( 400ms );
   }
}

TEST_F( EmulatorBcm59121, KeepsAReplyUntilTheNextRequest ) {
   EXPECT_EQ( chip.ask( statusOfPort5 ), replyOfPort5 );
   EXPECT_EQ( chip.reply(), replyOfPort5 );
   EXPECT_EQ( textOf( receiveFrom( chip, 12 ) ), replyOfPort5 ) << "without a register";
   ASSERT_TRUE( chip.send( statusOfPort5 ) );
   EXPECT_EQ( chip.reply(), nothing );
}

TEST_F( EmulatorBcm59121, GivesAReplyInPartsWithinOneMessageAndNothingBehindIt ) {
   chip.ask( statusOfPort5 );
   chip.start();
   EXPECT_EQ( textOf( readNext( chip, 3 ) ), "21 FF 05" );
   EXPECT_EQ( textOf( readNext( chip, 11 ) ), "00 00 00 00 00 00 00 00 25 FF FF" );
}

TEST_F( EmulatorBcm59121, CountsTemperaturesDownwards ) {
   // (value - 120) * -1.25 + 125
   const std::pair<const char*, const char*> rows[] = {
      { "125", "00 78" },
      { "0", "00 DC" },
      { "40", "00 BC" },
      { "130", "00 74" },
      { "-40", "00 FC" },
      { "23.6", "00 C9" },
   };
   for ( auto& [celsius, code] : rows ) {
      chip.set( "temperature", celsius );
      auto reply = chip.tell( 0x30, { 0 } );
      EXPECT_EQ( textOf( { reply[7], reply[8] } ), code ) << celsius;
   }
}

TEST_F( EmulatorBcm59121, MeasuresItsSupplyInSteps ) {
   // 0.06445 V a step: 44 V are 682.7, 57 V are 884.4.
   const std::pair<const char*, const char*> rows[] = { { "44", "02 AB" }, { "57", "03 74" },
      { "0", "00 00" } };
   for ( auto& [volts, code] : rows ) {
      chip.set( "supply", volts );
      auto reply = chip.tell( 0x2D, { 0 } );
      EXPECT_EQ( textOf( { reply[4], reply[5] } ), code ) << volts;
   }
}

TEST_F( EmulatorBcm59121, TellsOfAWrongCrcInItsGroupAndChannel ) {
   chip.set( "group1.crc", "0x09" );
   EXPECT_EQ( chip.tell( 0x2D, { 0, 1 } )[8], 0x01 );
   EXPECT_EQ( chip.tell( 0x2D, { 1, 1 } )[8], 0x00 );
   auto channels = chip.tell( 0x4C, { 1, 1 } );
   EXPECT_EQ( textOf( { channels.begin() + 3, channels.begin() + 11 } ), "04 00 00 04 00 00 00 00" );
   channels = chip.tell( 0x4C, { 0, 1 } );
   EXPECT_EQ( textOf( { channels.begin() + 3, channels.begin() + 11 } ), "00 00 00 00 00 00 00 00" );
}

TEST_F( EmulatorBcm59121, CorrectsAWrongCrcOnlyWhenItIsTold ) {
   chip.bench( "chip crc 1" );
   chip.advance( 1h );
   EXPECT_EQ( chip.tell( 0x2D, { 1, 1 } )[8], 0x00 );
   chip.tell( 0x4E, { 1, 1 } );
   EXPECT_EQ( chip.get( "crc_reset" ), "1" );
   EXPECT_EQ( chip.tell( 0x2D, { 1, 1 } )[8], 0x00 ) << "it takes a second";
   chip.advance( 1s );
   EXPECT_EQ( chip.tell( 0x2D, { 1, 1 } )[8], 0x01 );
   chip.advance( 1h );
   chip.bench( "chip crc 1" );
   EXPECT_EQ( chip.tell( 0x2D, { 1, 1 } )[8], 0x00 ) << "and again a second";
}

TEST_F( EmulatorBcm59121, DoesNotLookAtCrcsWhenItIsTold ) {
   chip.bench( "chip crc" );
   chip.tell( 0x4E, { 0, 0 } );
   EXPECT_EQ( chip.tell( 0x2D, { 0, 1 } )[8], 0x01 );
   EXPECT_EQ( chip.tell( 0x4C, { 0, 1 } )[3], 0x00 );
}

TEST_F( EmulatorBcm59121, KeepsSettingsWhosePurposeIsTheHosts ) {
   chip.tell( 0x08, { 0, 0x11 } );
   chip.tell( 0x12, { 0, 0x22 } );
   chip.tell( 0x0A, { 0x6D, 0x01, 0x2F, 0x01 } );
   chip.tell( 0x17, { 0x33 } );
   EXPECT_EQ( chip.get( "port1.r0x08" ), "0x11" );
   EXPECT_EQ( chip.get( "port1.r0x12" ), "0x22" );
   EXPECT_EQ( chip.get( "r0x0a" ), "0x6d012f01" );
   EXPECT_EQ( chip.get( "r0x17" ), "0x33" );
}
