#include "SourceTree.h"
#include "smbusd/I2cDev/MapFile.h"

#include "SmbusdMockKernel.h"

#include <rapidjson/document.h>
#include <rapidjson/schema.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace Smbusd;
using namespace Smbusd::I2cDev;

namespace {

/** The text of a file of the source tree. */
std::string readAll( const std::string& name ) {
   auto file = std::filesystem::path( sourceTree ) / name;
   std::ifstream stream( file );
   EXPECT_TRUE( stream ) << file;
   return { std::istreambuf_iterator<char>( stream ), {} };
}

/** Whether schemas/i2c-map.schema.json accepts a document. */
bool schemaAccepts( const std::string& text ) {
   rapidjson::Document schemaText;
   schemaText.Parse( readAll( "schemas/i2c-map.schema.json" ).c_str() );
   EXPECT_FALSE( schemaText.HasParseError() );
   rapidjson::SchemaDocument schema( schemaText );
   rapidjson::SchemaValidator validator( schema );
   rapidjson::Document document;
   document.Parse( text.c_str() );
   EXPECT_FALSE( document.HasParseError() ) << text;
   return document.Accept( validator );
}

/** A document with one bus. */
std::string oneBus( const std::string& members ) { return R"({ "busses": [ { )" + members + " } ] }"; }

/** An error of the document, or what else went wrong. */
std::string refusal( const std::string& text, const SysfsTree& sysfs = {} ) {
   try {
      parseMap( "map.json", text, sysfs.path() );
   } catch ( const MapFileError& error ) {
      return error.what();
   }
   return "accepted";
}

} // namespace

TEST( SmbusdMapFile, MapsBussesToAdapters ) {
   SysfsTree sysfs;
   auto map = parseMap( "map.json", R"({ "busses": [
      { "master": "I2C", "bus": 3, "adapter": 1 },
      { "master": "SCD", "pci": 1792, "accelerator": 4, "bus": 127, "adapter": "some adapter" } ] })",
      sysfs.path() );
   EXPECT_EQ(
      map, ( BusMap { { { Smbus::I2C, 0, 0, 3 }, 1U }, { { Smbus::SCD, 1792, 4, 127 }, "some adapter" } } ) );
}

TEST( SmbusdMapFile, KnowsEveryMasterOfRequestsAsTheSchemaDoes ) {
   for ( int i = Smbus::MasterType_MIN; i <= Smbus::MasterType_MAX; ++i ) {
      auto name = Smbus::MasterType_Name( i );
      auto text = oneBus( R"("master": ")" + name + R"(", "bus": 3, "adapter": 1)" );
      EXPECT_EQ( refusal( text ), "accepted" ) << name;
      EXPECT_TRUE( schemaAccepts( text ) ) << name;
   }
}

TEST( SmbusdMapFile, MayMapNothing ) {
   EXPECT_EQ( refusal( R"({ "busses": [] })" ), "accepted" );
   EXPECT_TRUE( schemaAccepts( R"({ "busses": [] })" ) );
}

TEST( SmbusdMapFile, OfTheExampleAndOfTheBoardAreGood ) {
   for ( auto file : { "smbusd/i2c-map.example.json", "boards/selvane/i2c-map.json" } ) {
      auto text = readAll( file );
      EXPECT_EQ( refusal( text ), "accepted" ) << file;
      EXPECT_TRUE( schemaAccepts( text ) ) << file;
   }
}

namespace {

struct Row {
   std::string text;
   const char* reason;
};

const Row wrongShapes[] = {
   { "[]", "map.json: /: must be an object" },
   { "{}", "map.json: /: lacks busses" },
   { R"({ "busses": [], "buses": [] })", "map.json: /: no key \"buses\" is known here" },
   { R"({ "busses": {} })", "map.json: /busses: must be an array" },
   { R"({ "busses": [ 3 ] })", "map.json: /busses/0: must be an object" },
   { oneBus( R"("bus": 3, "adapter": 1)" ), "map.json: /busses/0: lacks master" },
   { oneBus( R"("master": "I2C", "adapter": 1)" ), "map.json: /busses/0: lacks bus" },
   { oneBus( R"("master": "I2C", "bus": 3)" ), "map.json: /busses/0: lacks adapter" },
   { oneBus( R"("master": "I2C", "bus": 3, "adapter": 1, "speed": 4)" ),
      "map.json: /busses/0: no key \"speed\" is known here" },
   { oneBus( R"("master": "i2c", "bus": 3, "adapter": 1)" ),
      "map.json: /busses/0/master: must be one of SIMULATED, I2C, SCD, IO_PORT, CELESTICA, PLM, SCC_SPI, "
      "FB_DOM_FPGA" },
   { oneBus( R"("master": 1, "bus": 3, "adapter": 1)" ),
      "map.json: /busses/0/master: must be a text that isn't empty" },
   { oneBus( R"("master": "I2C", "bus": 128, "adapter": 1)" ),
      "map.json: /busses/0/bus: must be a number from 0 to 127" },
   { oneBus( R"("master": "I2C", "bus": -1, "adapter": 1)" ),
      "map.json: /busses/0/bus: must be a number from 0 to 127" },
   { oneBus( R"("master": "I2C", "bus": 3.5, "adapter": 1)" ),
      "map.json: /busses/0/bus: must be a number from 0 to 127" },
   { oneBus( R"("master": "I2C", "bus": "3", "adapter": 1)" ),
      "map.json: /busses/0/bus: must be a number from 0 to 127" },
   { oneBus( R"("master": "I2C", "accelerator": 128, "bus": 3, "adapter": 1)" ),
      "map.json: /busses/0/accelerator: must be a number from 0 to 127" },
   { oneBus( R"("master": "I2C", "pci": 4294967296, "bus": 3, "adapter": 1)" ),
      "map.json: /busses/0/pci: must be a number from 0 to 4294967295" },
   { oneBus( R"("master": "I2C", "bus": 3, "adapter": -1)" ),
      "map.json: /busses/0/adapter: must be a number from 0 to 4294967295" },
   { oneBus( R"("master": "I2C", "bus": 3, "adapter": true)" ),
      "map.json: /busses/0/adapter: must be a number from 0 to 4294967295" },
   { oneBus( R"("master": "I2C", "bus": 3, "adapter": "")" ),
      "map.json: /busses/0/adapter: must be a text that isn't empty" },
};

} // namespace

TEST( SmbusdMapFile, OfAWrongShapeIsRefusedWithPlaceAndReason ) {
   for ( auto& row : wrongShapes ) {
      EXPECT_EQ( refusal( row.text ), row.reason );
   }
}

TEST( SmbusdMapFile, OfAWrongShapeIsRefusedByTheSchemaToo ) {
   for ( auto& row : wrongShapes ) {
      EXPECT_FALSE( schemaAccepts( row.text ) ) << row.text;
   }
}

TEST( SmbusdMapFile, ThatIsNoJsonIsRefusedWithLineAndColumn ) {
   EXPECT_EQ( refusal( "{\n   \"busses\": [ ]\n   \"x\": 1 }" ),
      "map.json:3:4: Missing a comma or '}' after an object member." );
   EXPECT_EQ( refusal( "" ), "map.json:1:1: The document is empty." );
}

TEST( SmbusdMapFile, ThatIsNestedDeeplyIsRefused ) {
   EXPECT_EQ( refusal( std::string( 1000000, '[' ) ).substr( 0, 11 ), "map.json:1:" );
}

TEST( SmbusdMapFile, HasAKeyOnce ) {
   EXPECT_EQ( refusal( oneBus( R"("master": "I2C", "bus": 3, "bus": 4, "adapter": 1)" ) ),
      "map.json: /busses/0: has bus twice" );
}

TEST( SmbusdMapFile, MapsABusOnce ) {
   EXPECT_EQ( refusal( R"({ "busses": [ { "master": "I2C", "bus": 3, "adapter": 1 },
      { "master": "I2C", "bus": 4, "adapter": 1 },
      { "master": "I2C", "pci": 0, "accelerator": 0, "bus": 3, "adapter": 2 } ] })" ),
      "map.json: /busses/2: bus 3 (I2C, pci 0x0, accelerator 0) is mapped already, at /busses/0" );
}

TEST( SmbusdMapFile, NamesNoAdapterByANameThatSeveralHave ) {
   SysfsTree sysfs;
   sysfs.add( "i2c-1", "some adapter" );
   sysfs.add( "i2c-4", "some adapter" );
   EXPECT_EQ( refusal( oneBus( R"("master": "I2C", "bus": 3, "adapter": "some adapter")" ), sysfs ),
      "map.json: /busses/0/adapter: several adapters have this name: i2c-1, i2c-4; give a number" );
}

TEST( SmbusdMapFile, MayNameAnAdapterThatIsNotThereYet ) {
   testing::internal::CaptureStderr();
   EXPECT_EQ( refusal( oneBus( R"("master": "I2C", "bus": 3, "adapter": "some adapter")" ) ), "accepted" );
   EXPECT_THAT( testing::internal::GetCapturedStderr(),
      testing::EndsWith( "quillon-smbusd: no adapter is called some adapter as yet; load its driver, or "
                         "correct the map\n" ) );
}

TEST( SmbusdMapFile, ThatIsNotThereIsRefused ) {
   try {
      loadMap( "/nonexistent/map.json" );
      ADD_FAILURE() << "accepted";
   } catch ( const MapFileError& error ) {
      EXPECT_STREQ( error.what(), "/nonexistent/map.json: cannot be read: No such file or directory" );
   }
}

TEST( SmbusdMapFile, ThatIsADeviceIsRefused ) {
   try {
      loadMap( "/dev/zero" );
      ADD_FAILURE() << "accepted";
   } catch ( const MapFileError& error ) {
      EXPECT_STREQ( error.what(), "/dev/zero: cannot be read: it is no regular file" );
   }
}

TEST( SmbusdMapFile, ThatIsADirectoryIsRefused ) {
   try {
      loadMap( "/tmp" );
      ADD_FAILURE() << "accepted";
   } catch ( const MapFileError& error ) {
      EXPECT_STREQ( error.what(), "/tmp: cannot be read: Is a directory" );
   }
}
