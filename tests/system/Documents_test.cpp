#include "Documents.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

using ::testing::HasSubstr;

class RightDocument : public DocumentsTest, public ::testing::WithParamInterface<Row> {};

TEST_P( RightDocument, IsTaken ) {
   auto result = statusOf( GetParam().documents );

   EXPECT_EQ( result.err, "" ) << GetParam().name;
   EXPECT_EQ( result.exitStatus, 0 ) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P( Topology, RightDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "EveryMedium", medium( R"(
         { "type": "SCD", "ham": "H", "pci": 4294967295, "label": "a", "accelerators": [
            { "id": 0, "label": "b" }, { "id": 4294967295, "busses": [ { "id": 1 }, { "id": 2 } ] } ] },
         { "type": "I2C", "ham": "H", "id": 2147483647, "simulated": true },
         { "type": "IOPort", "ham": "H", "id": -2147483648 },
         { "type": "Celestica", "ham": "H", "accelerators": [] },
         { "type": "PLM", "ham": "H", "id": 1, "devices": [], "muxes": [] },
         { "type": "SccSpi", "ham": "H", "id": 1 },
         { "type": "LinuxFs", "ham": "H", "devices": [ { "did": 4294967295 } ] },
         { "type": "FbDomFpga", "ham": "H", "pci": 0, "busses": [ { "id": -1, "label": "c" } ] })" ),
         {} },
      { "KeysOfOtherMedia", medium( R"({ "type": "LinuxFs", "ham": "H", "pci": "", "busses": 1, "id": null,
         "accelerators": false, "simulated": {}, "muxes": 3 })" ),
         {} },
      { "UnknownKeys", device( R"({ "did": 1, "address": 5, "uid": "", "more": [ { "more": null } ] })" ),
         {} },
      { "LabelTwice", device( R"({ "did": 1, "label": "a" }, { "did": 2, "label": "a" })" ), {} },
      { "BusIdTwiceBelowMux", device( R"({ "did": 7, "driver": "Dummy", "address": { "address": 1 } } ],
         "muxes": [ { "did": 7, "label": "a", "busses": [ { "id": 1 }, { "id": 1 } ] }, { "did": 7 } ],
         "more": [)" ),
         {} },
      { "MuxBehindMux", device( R"({ "did": 7, "driver": "Dummy", "address": { "address": 1 } } ],
         "muxes": [ { "did": 7, "busses": [ { "id": 1,
            "devices": [ { "did": 8, "driver": "Dummy", "address": { "address": 2 } } ],
            "muxes": [ { "did": 8, "busses": [ { "id": 1, "devices": [ { "did": 10 } ] } ] } ] } ] } ],
         "more": [)" ),
         {} },
      { "WholeAddress",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 200, "writeDelay": 9,
         "readDelay": 9, "busTimeout": 9, "extraDelay": 9, "addrSize": 2, "accel": 999,
         "writeNoStopReadCurrent": false } })" ),
         {} },
      { "AddrSizeIsCutToTwoBits",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1, "addrSize": 5 } },
         { "did": 2, "driver": "Dummy", "address": { "address": 1, "addrSize": 6 } })" ),
         {} },
      { "AllOfTheArguments", device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1 },
         "provideHam": 0, "uid": 4294967295, "isMultiDevice": false, "multiDeviceArgs": 1, "name": 1,
         "driverArgs": { "a": null, "b": 1e300, "c": [ {} ], "d": 5000000000 } })" ),
         {} },
      { "DriverArgsNull",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": null })" ),
         {} },
      { "MultiDeviceWithStrangeAddress", device( R"({ "did": 1, "driver": "Dummy", "isMultiDevice": true,
         "address": { "addrSize": "x" }, "multiDeviceArgs": { "a": "" } })" ),
         {} },
      { "EveryDriver", device( R"(
         { "did": 1, "driver": "Dummy", "address": { "address": 1 } },
         { "did": 2, "driver": "GpioDriver", "address": { "address": 1 } },
         { "did": 3, "driver": "PCT2075", "address": { "address": 1 } },
         { "did": 4, "driver": "SelvaneXcvr", "address": { "address": 1 } },
         { "did": 5, "driver": "SelvanePortLed", "address": { "address": 1 } },
         { "did": 6, "driver": "SelvaneSystemLed", "address": { "address": 1 } },
         { "did": 7, "driver": "EMC2305", "address": { "address": 1 } },
         { "did": 8, "driver": "BCM59121", "address": { "address": 1 } })" ),
         {} },
      { "CpldWithDriver", topology( R"([ { "type": "I2C", "id": 0, "ham": "SimHam", "devices": [
         { "did": 9, "label": "CpuCpld", "driver": "Dummy", "address": { "address": 1 } } ] } ])" ),
         {} },
      { "NestedToTheLimit",
         device( R"({ "did": 1, "more": )" + std::string( 60, '[' ) + std::string( 60, ']' ) + " }" ), {} },
   } ),
   nameOf );

/** In simulation a system object needs another object on the CPLD. */
const std::string cpldBit = R"({ "kind": "gpio", "name": "bit", "args": { "did": 9, "driver": "GpioDriver",
   "address": { "address": 48 }, "driverArgs": { "register": 5, "bitpos": 0 } } })";

INSTANTIATE_TEST_SUITE_P( Objects, RightDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "Schema", objects( R"({ "$schema": "objects.schema.json", "objects": [] })" ), {} },
      { "SystemWithoutArguments", object( R"({ "kind": "system", "name": "switch" },)" + cpldBit ), {} },
      { "SystemWithAnyArguments",
         object( R"({ "kind": "system", "name": "a", "args": { "did": "x" } },)" + cpldBit ), {} },
      { "EqualThresholds", object( R"({ "kind": "temp_sensor", "name": "a/b:c.d_e-f", "alert": -128,
         "critical": -128.0, "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         {} },
      { "Gpio", object( R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy",
         "address": { "address": 1 }, "driverArgs": { "register": "16", "bitpos": 7 } } })" ),
         {} },
      { "SlotWithProp", object( R"({ "kind": "slot", "name": "a", "args": { "did": 9, "driver": "EMC2305",
         "address": { "address": 1 }, "driverArgs": { "fanId": "5", "maxRpm": "2147483647", "prop": "0.85",
         "modelName": "", "serialNum": "", "airflowDirection": "" } } })" ),
         {} },
      { "FanAtItsLimits", object( R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305",
         "address": { "address": 1 }, "driverArgs": { "fanId": 5, "maxRpm": "8421504",
         "registerOffset": 4 } } })" ),
         {} },
      { "LedsInText", object( R"(
         { "kind": "led", "name": "a", "args": { "did": 9, "driver": "SelvaneSystemLed",
            "address": { "address": 1 }, "driverArgs": { "reg": "67", "id": "255", "more": [] } } })" ),
         {} },
      { "NoUid", object( R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "uid": 4294967295,
         "driver": "GpioDriver", "address": { "address": 1 },
         "driverArgs": { "register": 1, "bitpos": 0 } } })" ),
         {} },
   } ),
   nameOf );

class SomeDocuments : public DocumentsTest {};

TEST_F( SomeDocuments, AreFoundByTheirComponent ) {
   auto documents = device( R"({ "did": 1, "components": [ { "uid": 5, "label": "a" } ] })" );
   documents.objects = R"({ "objects": [ { "kind": "gpio", "name": "a", "args": { "did": 77, "uid": 5,
      "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 0 } } } ] })";

   auto result = statusOf( documents );

   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( SomeDocuments, AreRefusedWithTheFindingsOfBothFiles ) {
   auto result = statusOf( { "[ 1 ]", R"({ "objects": 1 })" } );

   auto board = ( folder / "board" ).string();
   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: {0}/topology.json:1:3: /0: must be an object, not 1\n"
                               "quillonctl: {0}/objects.json:1:14: /objects: must be an array, not 1\n",
                     board ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, AreRefusedInJsonToo ) {
   auto result = statusOf( topology( "[]" ), { "--json" } );

   rapidjson::Document document;
   document.Parse( result.out.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << result.out;
   EXPECT_STREQ( document["board"].GetString(), "board" );
   EXPECT_EQ( document["objects"].Size(), 0U );
   ASSERT_EQ( document["errors"].Size(), 1U );
   EXPECT_EQ( fmt::format( "quillonctl: {}\n", document["errors"][0].GetString() ), result.err );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, ShowNoControlCharactersOfAKey ) {
   auto result = statusOf( device( R"({ "did": 1, "driver": "Dummy", "isMultiDevice": true,
      "multiDeviceArgs": { "\u001b[31m": 1 } })" ) );

   EXPECT_THAT( result.err, HasSubstr( "/multiDeviceArgs/?[31m: must be a string, not 1\n" ) );
}

TEST_F( SomeDocuments, ShowLongTextsCut ) {
   auto result = statusOf( medium( "\"" + std::string( 100, 'x' ) + "\"" ) );

   EXPECT_THAT( result.err, HasSubstr( "must be an object, not \"" + std::string( 39, 'x' ) + "...\n" ) );
}

TEST_F( SomeDocuments, AreMissing ) {
   std::filesystem::create_directories( folder / "board" );

   auto result = run( { "--sim", "--board", ( folder / "board" ).string(), "status" } );

   auto why =
      "No such file or directory; name a folder that holds topology.json and objects.json with --board";
   EXPECT_EQ( result.err, fmt::format( "quillonctl: cannot read {0}/board/topology.json: {1}\n"
                                       "quillonctl: cannot read {0}/board/objects.json: {1}\n",
                             folder.string(), why ) );
   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, AreNoFiles ) {
   std::filesystem::create_directories( folder / "board" / "topology.json" );
   write( "board/objects.json", R"({ "objects": [] })" );

   auto result = run( { "--sim", "--board", ( folder / "board" ).string(), "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot read {}/board/topology.json: it is a folder; put the "
                               "document there, or name another board with --board\n",
                     folder.string() ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, HaveNoFolder ) {
   auto result = run( { "--sim", "--board", "/nowhere/board", "status" } );

   EXPECT_EQ( result.err,
      "quillonctl: no board at /nowhere/board: No such file or directory; name a folder that "
      "holds topology.json and objects.json with --board\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, AreInAFileInsteadOfAFolder ) {
   write( "board", "" );

   auto result = run( { "--sim", "--board", ( folder / "board" ).string(), "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: no board at {}/board: it is no folder; name a folder that holds "
                               "topology.json and objects.json with --board\n",
                     folder.string() ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( SomeDocuments, ComeFromTheEnvironment ) {
   environment["QUILLON_BOARD"] = "/nowhere/board";

   EXPECT_THAT( run( { "--sim", "status" } ).err, HasSubstr( "no board at /nowhere/board: " ) );
   EXPECT_EQ( run( { "--sim", "status", "--board", SENSORS } ).exitStatus, 0 );
}

TEST_F( SomeDocuments, AreTheSwitchsWhenNobodyNamesABoard ) {
   environment["QUILLON_BOARD"] = {};

   auto result = run( { "--sim", "--json", "status", "inlet", "led.port48" } );

   EXPECT_THAT( result.out, HasSubstr( R"("board":"selvane")" ) );
   EXPECT_THAT( result.out, HasSubstr( R"("name":"led.port48")" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}
