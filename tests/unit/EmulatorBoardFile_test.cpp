#include "EmulatorBus.h"
#include "TemporaryDirectory.h"

#include "emulator/BoardFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <sys/stat.h>

using namespace Emulator;
using namespace std::string_literals;

namespace {

/** A file of the build tree, next to the programs. */
std::string shared( const std::string& file ) {
   return std::filesystem::read_symlink( "/proc/self/exe" ).parent_path().parent_path() / "share/quillon" /
          file;
}

std::string reasonOf( const std::string& text ) {
   try {
      parseBoard( "board.json", text );
   } catch ( const BoardFileError& error ) {
      return error.what();
   }
   return "no error";
}

std::string loadFailure( const std::string& file ) {
   try {
      loadBoard( file );
   } catch ( const BoardFileError& error ) {
      return error.what();
   }
   return "no error";
}

/** A document with one chip of these members. */
std::string chipOf( const std::string& members ) { return "{ \"chips\": [ { " + members + " } ] }"; }

/** The same with what every chip needs in front. */
std::string sensorWith( const std::string& members ) {
   return chipOf( R"("name": "inlet", "part": "pct2075", "bus": 3, "address": 72, )" + members );
}

/** A board of registers and two sensors with one wire of these members. */
std::string wireOf( const std::string& members ) {
   return R"({ "chips": [ { "name": "cpld", "part": "registers", "bus": 5, "address": 48,
                            "options": { "size": 2 }, "set": { "r0x01": 90 } },
                          { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72 } ],
               "wires": [ { )" +
          members + " } ] }";
}

std::string nested( size_t depth ) { return std::string( depth, '[' ) + std::string( depth, ']' ); }

struct Row {
   const char* name;
   std::string text;
   std::string error;
};

const Row rows[] = {
   { "nothing", "", "board.json:1:1: The document is empty." },
   { "no JSON", "chips", "board.json:1:1: Invalid value." },
   { "a missing comma", "{\n   \"chips\": []\n   \"x\": 1\n}",
      "board.json:3:4: Missing a comma or '}' after an object member." },
   { "something behind the end", "{ \"chips\": [] } x",
      "board.json:1:17: The document root must not be followed by other values." },
   { "invalid UTF-8", "{ \"chips\": \"\xff\" }", "board.json:1:13: Invalid encoding in string." },
   { "a number too big", chipOf( R"("bus": 1e999)" ),
      "board.json:1:23: Number too big to be stored in double." },
   { "an array for the board", "[]", "board.json: /: must be an object with the chips of the board" },
   { "no chips", "{}", "board.json: /: lacks chips" },
   { "an unknown key", "{ \"chip\": [] }",
      "board.json: /chip: no key chip is known here; did you mean chips?" },
   { "an object for the chips", "{ \"chips\": {} }", "board.json: /chips: must be an array of chips" },
   { "a number for a chip", "{ \"chips\": [ 5 ] }",
      "board.json: /chips/0: must be an object that describes a chip" },
   { "an empty chip", "{ \"chips\": [ {} ] }", "board.json: /chips/0: lacks name, part, bus, address" },
   { "a chip without an address", chipOf( R"("name": "inlet", "part": "pct2075", "bus": 3)" ),
      "board.json: /chips/0: lacks address" },
   { "an unknown key of a chip", sensorWith( R"("adress": 72)" ),
      "board.json: /chips/0/adress: no key adress is known here; did you mean address?" },
   { "a key that is no text for a terminal", sensorWith( R"("\u001b[2J": 72)" ),
      "board.json: /chips/0/\\x1b[2J: no key \\x1b[2J is known here" },
   { "a name with a blank", chipOf( R"("name": "air inlet")" ),
      "board.json: /chips/0/name: must be a name of letters, digits, - and _ that starts with a letter" },
   { "a name like a bus", chipOf( R"("name": "3")" ),
      "board.json: /chips/0/name: must be a name of letters, digits, - and _ that starts with a letter" },
   { "an empty name", chipOf( R"("name": "")" ),
      "board.json: /chips/0/name: must be a name of letters, digits, - and _ that starts with a letter" },
   { "a number for a name", chipOf( R"("name": 5)" ),
      "board.json: /chips/0/name: must be a name of letters, digits, - and _ that starts with a letter" },
   { "a number for a part", chipOf( R"("part": 2075)" ),
      "board.json: /chips/0/part: must be the name of a part, such as \"pct2075\"" },
   { "a bus below 0", chipOf( R"("bus": -1)" ),
      "board.json: /chips/0/bus: must be a bus number from 0 to 4294967295" },
   { "a bus above 32 bits", chipOf( R"("bus": 4294967296)" ),
      "board.json: /chips/0/bus: must be a bus number from 0 to 4294967295" },
   { "a bus that is no whole number", chipOf( R"("bus": 3.5)" ),
      "board.json: /chips/0/bus: must be a bus number from 0 to 4294967295" },
   { "a reserved low address", chipOf( R"("address": 7)" ),
      "board.json: /chips/0/address: must be a 7-bit address from 8 (0x08) to 119 (0x77)" },
   { "a reserved high address", chipOf( R"("address": 120)" ),
      "board.json: /chips/0/address: must be a 7-bit address from 8 (0x08) to 119 (0x77)" },
   { "a text for an address", chipOf( R"("address": "0x48")" ),
      "board.json: /chips/0/address: must be a 7-bit address from 8 (0x08) to 119 (0x77)" },
   { "a number for what is set", sensorWith( R"("set": 24.5)" ),
      "board.json: /chips/0/set: must be an object of properties with the values that they start with" },
   { "an object for a property", sensorWith( R"("set": { "temperature": {} })" ),
      "board.json: /chips/0/set/temperature: must be a number or a text" },
   { "null for a property", sensorWith( R"("set": { "temperature": null })" ),
      "board.json: /chips/0/set/temperature: must be a number or a text" },
   { "an array for the options", sensorWith( R"("options": [])" ),
      "board.json: /chips/0/options: must be an object of options, which are fixed when the board is built" },
   { "true for an option", sensorWith( R"("options": { "size": true })" ),
      "board.json: /chips/0/options/size: must be a number or a text" },
   { "a part without a model", chipOf( R"("name": "inlet", "part": "pct2057", "bus": 3, "address": 72)" ),
      "board.json: /chips/0: no part pct2057; did you mean pct2075?" },
   { "a property that the part lacks", sensorWith( R"("set": { "temprature": 24.5 })" ),
      "board.json: /chips/0: no property temprature; did you mean temperature?" },
   { "a property that can't be set", sensorWith( R"("set": { "os": 1 })" ),
      "board.json: /chips/0: property os can't be set" },
   { "a value out of range", sensorWith( R"("set": { "temperature": 200 })" ),
      "board.json: /chips/0: temperature must be a number from -55 to 125, not 200" },
   { "an option that the part lacks", sensorWith( R"("options": { "size": 5 })" ),
      "board.json: /chips/0: no option size" },
   { "a name twice",
      R"({ "chips": [ { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72 },
                      { "name": "inlet", "part": "pct2075", "bus": 3, "address": 73 } ] })",
      "board.json: /chips/1: name inlet is taken" },
   { "a place twice",
      R"({ "chips": [ { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72 },
                      { "name": "outlet", "part": "pct2075", "bus": 3, "address": 72 } ] })",
      "board.json: /chips/1: 3/0x48 is the place of inlet" },
   { "an object for the wires", R"({ "chips": [], "wires": {} })",
      "board.json: /wires: must be an array of wires between chips" },
   { "a text for a wire", R"({ "chips": [], "wires": [ "cpld.r0x01" ] })",
      "board.json: /wires/0: must be an object with the two ends of a wire" },
   { "a wire without ends", wireOf( "" ), "board.json: /wires/0: lacks from, to" },
   { "an unknown key of a wire", wireOf( R"("form": "cpld.r0x01")" ),
      "board.json: /wires/0/form: no key form is known here" },
   { "a number for the start of a wire", wireOf( R"("from": 5)" ),
      "board.json: /wires/0/from: must be the property that drives the wire, such as \"cpld.poe_reset\"" },
   { "a number for the end of a wire", wireOf( R"("to": 5)" ),
      "board.json: /wires/0/to: must be the property that follows it, such as \"poe.reset\"" },
   { "a wire from no chip", wireOf( R"("from": "clpd.r0x01", "to": "inlet.temperature")" ),
      "board.json: /wires/0/from: no chip clpd" },
   { "a wire to no chip", wireOf( R"("from": "cpld.r0x01", "to": "inlt.temperature")" ),
      "board.json: /wires/0/to: no chip inlt; did you mean inlet?" },
   { "a wire from a chip", wireOf( R"("from": "cpld", "to": "inlet.temperature")" ),
      "board.json: /wires/0/from: cpld names no property" },
   { "a wire from no property", wireOf( R"("from": "cpld.version", "to": "inlet.temperature")" ),
      "board.json: /wires/0/from: no property version" },
   { "a wire to no property", wireOf( R"("from": "cpld.r0x01", "to": "inlet.temprature")" ),
      "board.json: /wires/0/to: no property temprature; did you mean temperature?" },
   { "a wire to what can't be set", wireOf( R"("from": "cpld.r0x01", "to": "inlet.os")" ),
      "board.json: /wires/0/to: property os can't be set" },
   { "a wire with a value that its end refuses",
      wireOf( R"("from": "cpld.r0x01", "to": "inlet.temperature")" ),
      "board.json: /wires/0/to: temperature must be a number from -55 to 125, not 0x5a" },
   { "deep nesting of the board", nested( 200000 ),
      "board.json: /: must be an object with the chips of the board" },
   { "deep nesting in a property", sensorWith( "\"set\": { \"temperature\": " + nested( 200000 ) + " }" ),
      "board.json: /chips/0/set/temperature: must be a number or a text" },
   { "deep nesting in an unknown key", "{ \"x\": " + nested( 200000 ) + " }",
      "board.json: /x: no key x is known here" },
};

} // namespace

TEST( EmulatorBoardFile, SaysFilePlaceAndReasonAsTheTableTells ) {
   for ( auto& row : rows ) {
      EXPECT_EQ( reasonOf( row.text ), row.error ) << row.name;
   }
}

TEST( EmulatorBoardFile, SaysNoPlaceForAFileThatCannotBeRead ) {
   TemporaryDirectory directory;
   auto missing = ( directory.path() / "emulator.json" ).string();
   EXPECT_EQ( loadFailure( missing ), missing + ": cannot be read: No such file or directory" );
   EXPECT_EQ(
      loadFailure( directory.path() ), directory.path().string() + ": cannot be read: Is a directory" );
}

TEST( EmulatorBoardFile, IsARegularFileOfAFairLength ) {
   TemporaryDirectory directory;
   auto pipe = ( directory.path() / "pipe" ).string();
   ASSERT_EQ( mkfifo( pipe.c_str(), 0600 ), 0 );
   EXPECT_EQ( loadFailure( pipe ), pipe + ": cannot be read: it is no regular file" );
   EXPECT_EQ( loadFailure( "/dev/zero" ), "/dev/zero: cannot be read: it is no regular file" );

   auto filler = ( directory.path() / "long.json" ).string();
   std::ofstream( filler ) << "";
   std::filesystem::resize_file( filler, ( 16 << 20 ) + 1 );
   EXPECT_EQ( loadFailure( filler ), filler + ": cannot be read: it is longer than 16 MiB" );
   std::filesystem::resize_file( filler, 16 << 20 );
   EXPECT_EQ( loadFailure( filler ), filler + ":1:1: The document is empty." );
}

TEST( EmulatorBoardFile, NamesItsFileInErrors ) {
   TemporaryDirectory directory;
   auto file = ( directory.path() / "emulator.json" ).string();
   std::ofstream( file ) << "{}";
   EXPECT_EQ( loadFailure( file ), file + ": /: lacks chips" );
}

TEST( EmulatorBoardFile, MayHoldNoChips ) {
   EXPECT_TRUE( parseBoard( "board.json", "{ \"chips\": [] }" ).places().empty() );
}

TEST( EmulatorBoardFile, GivesOptionsAndPropertiesAsNumbersOrTexts ) {
   auto board =
      parseBoard( "board.json", chipOf( R"("name": "cpld", "part": "registers", "bus": 5, "address": 48,
      "options": { "size": 4, "r0x00": "0x51", "r0x01": 7 }, "set": { "r0x02": 255, "r0x03": "0x5c" })" ) );
   auto place = board.find( "cpld" );
   ASSERT_NE( place, nullptr );
   EXPECT_EQ( place->bus, 5U );
   EXPECT_EQ( place->address, 0x30 );
   EXPECT_EQ( readRegister( *place->chip, 0, 4 ), ( Bytes { 0x51, 0x07, 0xFF, 0x5C } ) );
   place->chip->reset();
   EXPECT_EQ( readRegister( *place->chip, 0, 4 ), ( Bytes { 0x51, 0x07, 0x00, 0x00 } ) );
}

TEST( EmulatorBoardFile, TakesTemperaturesOfAnyJsonNumber ) {
   const std::pair<const char*, const char*> values[] = {
      { "24.5", "24.5" },
      { "41.0", "41" },
      { "-40", "-40" },
      { "2.5e1", "25" },
      { "\"35.125\"", "35.125" },
   };
   for ( auto& [json, celsius] : values ) {
      auto board = parseBoard( "board.json", sensorWith( "\"set\": { \"temperature\": "s + json + " }" ) );
      EXPECT_EQ( board.find( "inlet" )->chip->get( "temperature" ), celsius ) << json;
   }
}

TEST( EmulatorBoardFile, OfSelvaneHoldsItsChips ) {
   struct Chip {
      const char* name;
      uint32_t bus;
      uint8_t address;
      const char* part;
      Bytes firstBytes;
   };

   const Chip chips[] = {
      { "inlet", 3, 0x48, "pct2075", { 0x18, 0x80 } },
      { "outlet", 3, 0x49, "pct2075", { 0x23, 0x20 } },
      { "asic", 3, 0x4A, "pct2075", { 0x3A, 0x40 } },
      { "poe-temp", 3, 0x4B, "pct2075", { 0x29, 0x00 } },
      // It has no register 0.
      { "fans", 3, 0x2C, "emc2305", { 0xFF, 0xFF } },
      { "cpld", 5, 0x30, "cpld", { 0x2A, 0x01 } },
      // It has no reply yet.
      { "poe", 4, 0x20, "bcm59121", { 0xFF, 0xFF } },
   };
   auto board = loadBoard( shared( "boards/selvane/emulator.json" ) );
   EXPECT_EQ( board.places().size(), std::size( chips ) );
   for ( auto& chip : chips ) {
      auto place = board.at( chip.bus, chip.address );
      ASSERT_NE( place, nullptr ) << chip.name;
      EXPECT_EQ( place->name, chip.name );
      EXPECT_EQ( place->chip->part(), chip.part ) << chip.name;
      EXPECT_EQ( receiveFrom( *place->chip, 2 ), chip.firstBytes ) << chip.name;
   }
}

TEST( EmulatorBoardFile, OfSelvaneHoldsThePoeControllerInResetUntilTheCpldReleasesIt ) {
   auto board = loadBoard( shared( "boards/selvane/emulator.json" ) );
   std::vector<I2c::Message> probe { writing( {} ) };
   EXPECT_EQ( board.find( "poe" )->chip->get( "reset" ), "1" );
   EXPECT_EQ( board.transfer( 4, 0x20, probe ).result, I2c::Result::NoAcknowledge );
   std::vector<I2c::Message> release { writing( { 0x05, 0x00 } ) };
   ASSERT_EQ( board.transfer( 5, 0x30, release ).result, I2c::Result::Ok );
   EXPECT_EQ( board.find( "poe" )->chip->get( "reset" ), "0" );
}
