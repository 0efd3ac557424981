#include "Documents.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

using ::testing::HasSubstr;

class Check : public DocumentsTest {
protected:
   Result check( const Documents& documents, const Process::Arguments& more = {} ) const {
      write( "board/topology.json", documents.topology );
      write( "board/objects.json", documents.objects );
      Process::Arguments arguments { "check", board() };
      arguments.insert( arguments.end(), more.begin(), more.end() );
      return run( arguments );
   }

   std::string board() const { return ( folder / "board" ).string(); }

   /** A board without mistakes, and this file beside its documents. */
   Result checkBeside( const std::string& file, const std::string& text ) const {
      write( "board/" + file, text );
      return check( objects( R"({ "objects": [] })" ) );
   }

   /** What check writes: these findings in the board's files, and the counts. */
   std::string output( const std::vector<std::string>& findings, const std::string& counts ) const {
      std::string text;
      for ( auto& finding : findings ) {
         text += fmt::format( "{}/{}\n", board(), finding );
      }
      return text + "board: " + counts + "\n";
   }
};

TEST_F( Check, FindsNothingInTheSwitchsOwnBoard ) {
   auto result = run( { "check", BOARDS "/selvane" } );

   EXPECT_EQ( result.out, "selvane: no errors, no warnings\n" );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Check, TakesTheBoardOfTheOption ) {
   auto result = run( { "check", "--board", BOARDS "/selvane" } );

   EXPECT_EQ( result.out, "selvane: no errors, no warnings\n" );
}

TEST_F( Check, FindsTheMistakesOfAllFilesAtOnce ) {
   write( "board/emulator.json", "{}" );
   write( "board/i2c-map.json", "[" );

   auto result =
      check( { "[ 1,\n2 ]", R"({ "objects": [ { "kind": "fan" }, { "kind": "fn", "name": "" } ] })" } );

   EXPECT_EQ( result.out,
      output(
         { "topology.json:1:3: error: /0: must be an object, not 1",
            "topology.json:2:1: error: /1: must be an object, not 2",
            R"(objects.json:1:16: error: /objects/0: lacks the keys "name", "args")",
            R"(objects.json:1:45: error: /objects/1/kind: must be one of "temp_sensor", "fan", "psu", "led", "slot", "xcvr", "gpio", "poe_port", "system", not "fn"; did you mean "fan"?)",
            "i2c-map.json:1:2: error: Invalid value", R"(emulator.json:1:1: error: lacks the key "chips")" },
         "6 errors, no warnings" ) );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Check, FindsWhatIsWrongInAnObjectThatBreaksItsSchema ) {
   auto result = check( object( R"({ "kind": "psu", "name": "a", "more": 1,
"args": { "did": 7, "driver": "Dummy", "provideHam": 0 } })" ) );

   EXPECT_EQ( result.out,
      output(
         { "objects.json:2:11: error: /objects/0/kind: the library has no driver that makes a psu",
            R"(objects.json:2:31: error: /objects/0/more: unknown key; the keys here are "kind", "name", "args")",
            R"(objects.json:3:9: error: /objects/0/args: lacks the key "address")",
            "objects.json:3:18: error: /objects/0/args/did: the topology has no device 7; there is 9",
            "objects.json:3:54: error: /objects/0/args/provideHam: must not be 0: no driver does without "
            "access "
            "to its device" },
         "5 errors, no warnings" ) );
}

TEST_F( Check, EndsWellWithWarningsAlone ) {
   auto result = check( device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 200 } })" ) );

   EXPECT_EQ(
      result.out, output( { "topology.json:4:56: warning: /1/devices/0/address/address: 200 is cut to 7 "
                            "bits and becomes 72" },
                     "no errors, 1 warning" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Check, SaysNothingOfWarningsBeforeOtherCommands ) {
   auto result = statusOf( device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 200 } })" ) );

   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST_F( Check, WritesFindingsInJson ) {
   auto result = check( object( R"({ "kind": "system", "name": "a", "nam": 1 },
{ "kind": "led", "name": "b", "args": { "did": 9, "driver": "SelvanePortLed", "address": { "address": 48 },
"driverArgs": { "ledName": "b", "ledReg": 256, "portType": "sfp" } } })" ),
      { "--json" } );

   auto file = board() + "/objects.json";
   EXPECT_EQ( result.out,
      fmt::format(
         R"({{"board":"board","findings":[)"
         R"({{"severity":"error","file":"{0}","line":2,"column":34,"pointer":"/objects/0/nam","reason":"unknown key","repair":"did you mean \"name\"?"}},)"
         R"({{"severity":"warning","file":"{0}","line":4,"column":43,"pointer":"/objects/1/args/driverArgs/ledReg","reason":"256 is cut to 8 bits and becomes 0","repair":null}}]}})"
         "\n",
         file ) );
   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Check, WritesAFileThatIsNotThereWithoutAPlace ) {
   std::filesystem::create_directories( board() );
   write( "board/topology.json", "[ {} ]" );

   auto text = run( { "check", board() } );
   auto json = run( { "--json", "check", board() } );

   EXPECT_THAT( text.out, HasSubstr( fmt::format(
                             "error: cannot read {}/objects.json: No such file or directory; ", board() ) ) );
   EXPECT_EQ( text.exitStatus, 2 );
   EXPECT_THAT( json.out, HasSubstr( fmt::format( R"("file":"{0}/objects.json","line":null,"column":null,)"
                                                  R"("pointer":"","reason":"cannot read {0}/objects.json: )",
                             board() ) ) );
}

TEST_F( Check, WritesTheSameDocumentForAFolderThatIsNotThere ) {
   auto result = run( { "--json", "check", "/nowhere/board" } );

   rapidjson::Document document;
   document.Parse( result.out.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << result.out;
   ASSERT_EQ( document["findings"].Size(), 1U );
   auto& finding = document["findings"][0];
   EXPECT_STREQ( finding["file"].GetString(), "/nowhere/board" );
   EXPECT_STREQ( finding["reason"].GetString(), "no board at /nowhere/board: No such file or directory" );
   EXPECT_STREQ(
      finding["repair"].GetString(), "name a folder that holds topology.json and objects.json with --board" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Check, ShowsNoControlCharactersOfAKey ) {
   auto result = check( object( R"({ "kind": "system", "name": "a", "\u001b[31m": 1 })" ) );

   EXPECT_THAT( result.out, HasSubstr( "/objects/0/?[31m: unknown key" ) );
}

// What lies beside the two documents.

TEST_F( Check, FindsEveryChipThatCannotBeMade ) {
   auto result = checkBeside( "emulator.json", R"({ "chips": [
{ "name": "a", "part": "pct2075", "bus": 3, "address": 72 },
{ "name": "b", "part": "pct2076", "bus": 3, "address": 73 },
{ "name": "a", "part": "pct2075", "bus": 3, "address": 74 },
{ "name": "c", "part": "pct2075", "bus": 3, "address": 75, "set": { "pressure": 1 } } ] })" );

   EXPECT_THAT( result.out, HasSubstr( "emulator.json:3:1: error: /chips/1: " ) );
   EXPECT_THAT( result.out, HasSubstr( "emulator.json:4:1: error: /chips/2: " ) );
   EXPECT_THAT( result.out, HasSubstr( "emulator.json:5:1: error: /chips/3: " ) );
   EXPECT_THAT( result.out, HasSubstr( "board: 3 errors, no warnings\n" ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Check, FindsBothEndsOfAWireThatAreNotThere ) {
   auto result = checkBeside( "emulator.json", R"({ "chips": [], "wires": [ { "from":
"a.b", "to":
"c.d" } ] })" );

   EXPECT_THAT( result.out, HasSubstr( "emulator.json:2:1: error: /wires/0/from: " ) );
   EXPECT_THAT( result.out, HasSubstr( "emulator.json:3:1: error: /wires/0/to: " ) );
}

TEST_F( Check, FindsTheBreachesOfTheMapOfAdapters ) {
   auto result = checkBeside( "i2c-map.json", R"({ "busses": [
{ "master": "i2c", "bus": 3, "adapter": 1 },
{ "master": "I2C", "bus": 128, "adapter": "" },
{ "master": "I2C", "bus": 3, "adaptor": 1 } ] })" );

   auto adapter =
      "N of /dev/i2c-N, or the name in /sys/bus/i2c/devices/i2c-N/name, which stays when numbers change";
   EXPECT_EQ( result.out,
      output(
         { R"(i2c-map.json:2:13: error: /busses/0/master: must be one of "SIMULATED", "I2C", "SCD", "IO_PORT", "CELESTICA", "PLM", "SCC_SPI", "FB_DOM_FPGA", not "i2c"; did you mean "I2C"?)",
            "i2c-map.json:3:27: error: /busses/1/bus: must be an integer from 0 to 127, not 128",
            fmt::format( R"(i2c-map.json:3:43: error: /busses/1/adapter: must be {}, not "")", adapter ),
            R"(i2c-map.json:4:1: error: /busses/2: lacks the key "adapter"; write "adapter" for "adaptor")",
            R"(i2c-map.json:4:30: error: /busses/2/adaptor: unknown key; did you mean "adapter"?)" },
         "5 errors, no warnings" ) );
}

TEST_F( Check, FindsABusThatIsMappedTwice ) {
   auto result =
      checkBeside( "i2c-map.json", R"({ "busses": [ { "master": "SCD", "pci": 1, "bus": 3, "adapter": 1 },
{ "master": "SCD", "pci": 2, "bus": 3, "adapter": 2 },
{ "master": "SCD", "pci": 1, "accelerator": 0, "bus": 3, "adapter": 3 } ] })" );

   EXPECT_EQ(
      result.out, output( { "i2c-map.json:3:1: error: /busses/2: this bus is mapped already, at /busses/0" },
                     "1 error, no warnings" ) );
}

TEST_F( Check, OffersEachDeviceOnce ) {
   auto documents = device( R"({ "did": 1 }, { "did": 1 }, { "did": 3 })" );
   documents.objects = object( R"({ "kind": "gpio", "name": "a", "args": { "did": 2, "driver": "Dummy",
"address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" )
                          .objects;

   auto result = check( documents );

   EXPECT_EQ(
      result.out, output( { "topology.json:4:24: error: /1/devices/1/did: a device before has the did 1",
                             "objects.json:2:49: error: /objects/0/args/did: the topology has no device 2; "
                             "there are 1, 3, 9" },
                     "2 errors, no warnings" ) );
}

// What the library takes, but for something else than it seems.

struct Warning {
   std::string name;
   Documents documents;
   std::vector<std::string> findings;
};

std::ostream& operator<<( std::ostream& stream, const Warning& row ) { return stream << row.name; }

class Warnings : public Check, public ::testing::WithParamInterface<Warning> {};

TEST_P( Warnings, AreFound ) {
   auto& [name, documents, findings] = GetParam();

   auto result = check( documents );

   auto count = findings.size();
   EXPECT_EQ(
      result.out, output( findings, fmt::format( "no errors, {} warning{}", count, count == 1 ? "" : "s" ) ) )
      << name;
   EXPECT_EQ( result.exitStatus, 0 ) << name;
}

namespace {

/** An object on the CPLD with its arguments in line 3 of the document, and another behind it. */
std::string driven( const std::string& kind, const std::string& name, const std::string& driver,
   const std::string& driverArgs, const std::string& more = R"("address": { "address": 48 })" ) {
   return fmt::format(
      "{{ \"kind\": \"{}\", \"name\": \"{}\", \"args\": {{ \"did\": 9, \"driver\": \"{}\", {},\n"
      "\"driverArgs\": {} }} }}",
      kind, name, driver, more, driverArgs );
}

std::string port( int id, const std::string& more ) {
   return fmt::format( R"({{ "portId": {}, "numPorts": 8, "numAtPorts": 8{} }})", id, more );
}

} // namespace

INSTANTIATE_TEST_SUITE_P( Topology, Warnings,
   ::testing::ValuesIn( std::vector<Warning> {
      { "UnknownHam", medium( R"({ "type": "PLM", "id": 1, "ham": "quillonsmbus" })" ),
         { R"(topology.json:3:34: warning: /1/ham: there is no ham "quillonsmbus"; did you mean "QuillonSmbus"?)" } },
      { "HamOfAnotherKind", medium( R"({ "type": "PLM", "id": 1, "ham": "" })" ),
         { R"(topology.json:3:34: warning: /1/ham: there is no ham ""; use "QuillonSmbus" or "SimHam")" } },
      { "BusNumberIsCut", medium( R"({ "type": "PLM", "id": -1, "ham": "SimHam" })" ),
         { "topology.json:3:24: warning: /1/id: -1 is cut to 7 bits and becomes 127" } },
      { "SameBusAgain", medium( R"({ "type": "I2C", "id": 128, "ham": "SimHam" })" ),
         { "topology.json:3:24: warning: /1/id: 128 is cut to 7 bits and becomes 0",
            "topology.json:3:24: warning: /1/id: /0 is the I2C bus 0 too" } },
      { "AcceleratorNumberIsCut",
         medium(
            R"({ "type": "Celestica", "ham": "SimHam", "accelerators": [ { "id": 129 }, { "id": 1 } ] })" ),
         { "topology.json:3:67: warning: /1/accelerators/0/id: 129 is cut to 7 bits and becomes 1",
            "topology.json:3:82: warning: /1/accelerators/1/id: 1 is cut to 7 bits, and is the same as the "
            "129 "
            "before then" } },
      { "BusBehindMuxAgain",
         device( R"({ "did": 7, "driver": "Dummy", "address": { "address": 1 } } ], "muxes": [
{ "did": 7, "busses": [ { "id": 300 }, { "id": 300 } ] } ], "_more": [)" ),
         { "topology.json:5:48: warning: /1/muxes/0/busses/1/id: takes the place of the bus 300 before" } },
      { "LabelAgain", device( R"({ "did": 1, "label": "a" }, { "did": 2, "label": "a" })" ),
         { R"(topology.json:4:50: warning: /1/devices/1/label: the label "a" stands before; the last one counts)" } },
      { "SameChipAgain", device( R"({ "did": 1, "driver": "PCT2075", "address": { "address": 72 } },
{ "did": 2, "driver": "Dummy", "address": { "address": 72 } },
{ "did": 3, "driver": "PCT2075", "address": { "address": 72 } })" ),
         { "topology.json:6:58: warning: /1/devices/2/address/address: device 1 on this bus has the address "
           "72 and "
           "the driver PCT2075 too" } },
      { "AddressFieldsAreCut", device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1,
"writeDelay": 5, "readDelay": 4, "busTimeout": 8, "extraDelay": 2, "addrSize": 6, "accel": 128 } })" ),
         { "topology.json:5:15: warning: /1/devices/0/address/writeDelay: 5 is cut to 2 bits and becomes 1",
            "topology.json:5:31: warning: /1/devices/0/address/readDelay: 4 is cut to 2 bits and becomes 0",
            "topology.json:5:48: warning: /1/devices/0/address/busTimeout: 8 is cut to 3 bits and becomes 0",
            "topology.json:5:65: warning: /1/devices/0/address/extraDelay: 2 is cut to 1 bits and becomes 0",
            "topology.json:5:80: warning: /1/devices/0/address/addrSize: 6 is cut to 2 bits and becomes 2",
            "topology.json:5:92: warning: /1/devices/0/address/accel: 128 is cut to 7 bits and becomes 0" } },
   } ),
   []( auto& test ) { return test.param.name; } );

INSTANTIATE_TEST_SUITE_P( UnreadKey, Warnings,
   ::testing::ValuesIn( std::vector<Warning> {
      { "OfAMedium",
         medium( R"({ "type": "I2C", "id": 1, "ham": "SimHam", "Devices": [ { "did": "x" } ] })" ),
         { R"(topology.json:3:44: warning: /1/Devices: the library does not read this; did you mean "devices"?)" } },
      { "OfAnotherMedium", medium( R"({ "type": "LinuxFs", "ham": "SimHam", "pci": 1, "busses": [] })" ),
         { "topology.json:3:39: warning: /1/pci: the library does not read this",
            "topology.json:3:49: warning: /1/busses: the library does not read this" } },
      { "OfAController", medium( R"({ "type": "SCD", "pci": 1, "ham": "SimHam", "accelerator": [] })" ),
         { R"(topology.json:3:45: warning: /1/accelerator: the library does not read this; did you mean "accelerators"?)" } },
      { "OfAnAccelerator",
         medium(
            R"({ "type": "Celestica", "ham": "SimHam", "accelerators": [ { "id": 1, "buses": [] } ] })" ),
         { R"(topology.json:3:70: warning: /1/accelerators/0/buses: the library does not read this; did you mean "busses"?)" } },
      { "OfABus", medium( R"({ "type": "FbDomFpga", "pci": 1, "ham": "SimHam", "busses": [
{ "id": 1, "mux": [] } ] })" ),
         { R"(topology.json:4:12: warning: /1/busses/0/mux: the library does not read this; did you mean "muxes"?)" } },
      { "OfAMultiplexer",
         device( R"({ "did": 7, "driver": "Dummy", "address": { "address": 1 } } ], "muxes": [
{ "did": 7, "labl": "a" } ], "$comment": [)" ),
         { R"(topology.json:5:13: warning: /1/muxes/0/labl: the library does not read this; did you mean "label"?)" } },
      { "OfADevice", device( R"({ "did": 1, "Label": "a" })" ),
         { R"(topology.json:4:13: warning: /1/devices/0/Label: the library does not read this; did you mean "label"?)" } },
      { "OfADeviceWithoutDriver", device( R"({ "did": 1, "uid": 2, "address": 5 })" ),
         { "topology.json:4:13: warning: /1/devices/0/uid: the library does not read this",
            "topology.json:4:23: warning: /1/devices/0/address: the library does not read this" } },
      { "OfADeviceWithDriver",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1 }, "driverargs": {} })" ),
         { R"(topology.json:4:61: warning: /1/devices/0/driverargs: the library does not read this; did you mean "driverArgs"?)" } },
      { "OfAComponent", device( R"({ "did": 1, "components": [ { "uid": 2, "lable": "a" } ] })" ),
         { R"(topology.json:4:41: warning: /1/devices/0/components/0/lable: the library does not read this; did you mean "label"?)" } },
      { "OfAnAddress",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1, "adrSize": 2 } })" ),
         { R"(topology.json:4:59: warning: /1/devices/0/address/adrSize: the library does not read this; did you mean "addrSize"?)" } },
      { "OfASingleDevice",
         device( R"({ "did": 1, "driver": "Dummy", "address": { "address": 1 }, "multiDeviceArgs": {} })" ),
         { "topology.json:4:61: warning: /1/devices/0/multiDeviceArgs: the library does not read this" } },
      { "OfArguments",
         object( driven( "gpio", "a", "Dummy", R"({ "register": 1, "bitpos": 1 })",
            R"("address": { "address": 48, "acel": 1 }, "Name": "x")" ) ),
         { R"(objects.json:2:99: warning: /objects/0/args/address/acel: the library does not read this; did you mean "accel"?)",
            R"(objects.json:2:112: warning: /objects/0/args/Name: the library does not read this; did you mean "name"?)" } },
      { "IsNoRemark", device( R"({ "did": 1, "$comment": 1, "_label": "a", "//": "a", "comment": "a" })" ),
         { "topology.json:4:54: warning: /1/devices/0/comment: the library does not read this" } },
   } ),
   []( auto& test ) { return test.param.name; } );

TEST_F( Check, NamesTheKeyThatStandsForAMissingOne ) {
   auto result = check( object( R"({ "Kind": "gpio", "name": "a", "args": {} },
{ "kind": "gpio", "name": "b", "args": { "did": 9, "driver": "Dummy", "adress": { "address": 48 },
"driverargs": { "register": 1, "bitpos": 1 } } })" ) );

   EXPECT_EQ( result.out,
      output(
         { R"(objects.json:2:1: error: /objects/0: lacks the key "kind"; write "kind" for "Kind")",
            R"(objects.json:3:40: error: /objects/1/args: lacks the keys "address", "driverArgs"; write "address" for "adress" and "driverArgs" for "driverargs")",
            R"(objects.json:3:71: warning: /objects/1/args/adress: the library does not read this; did you mean "address"?)",
            R"(objects.json:4:1: warning: /objects/1/args/driverargs: the library does not read this; did you mean "driverArgs"?)" },
         "2 errors, 2 warnings" ) );
}

INSTANTIATE_TEST_SUITE_P( Objects, Warnings,
   ::testing::ValuesIn( std::vector<Warning> {
      { "RegisterIsCut",
         object(
            driven( "led", "a", "SelvanePortLed", R"({ "ledName": "a", "ledReg": "-1", "portType": "" })" ) ),
         { "objects.json:3:43: warning: /objects/0/args/driverArgs/ledReg: -1 is cut to 8 bits and becomes "
           "255" } },
      { "UnreadKey",
         object(
            driven( "gpio", "a", "PCT2075", R"({ "register": 1, "bitpos": 1, "bitPos": 1, "foo": 1 })" ) ),
         { R"(objects.json:3:45: warning: /objects/0/args/driverArgs/bitPos: the driver PCT2075 does not read this for a gpio; did you mean "bitpos"?)",
            R"(objects.json:3:58: warning: /objects/0/args/driverArgs/foo: the driver PCT2075 does not read this for a gpio)" } },
      { "SameFan",
         object(
            driven( "slot", "a", "EMC2305",
               R"({ "fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "" })" ) +
            "," +
            driven( "slot", "b", "EMC2305",
               R"({ "fanId": "1", "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "" })" ) ),
         { "objects.json:4:26: warning: /objects/1/args/driverArgs/fanId: a before has the fanId 1 on the "
           "device 9 "
           "too" } },
      { "OtherNumbersOfTheController",
         object( driven( "poe_port", "a", "BCM59121", port( 0, "" ) ) + "," +
                 driven( "poe_port", "b", "BCM59121", port( 1, R"(, "firmwarePath": "f")" ) ) ),
         { "objects.json:4:78: warning: /objects/1/args/driverArgs/firmwarePath: a before has no "
           "firmwarePath for "
           "the device 9, and that counts" } },
      { "OtherAddressOfTheDevice",
         object( driven( "gpio", "a", "Dummy", R"({ "register": 1, "bitpos": 1 })" ) + ",\n" +
                 driven( "gpio", "b", "Dummy", R"({ "register": 1, "bitpos": 2 })",
                    R"("address": { "address": 49 })" ) ),
         { "objects.json:4:95: warning: /objects/1/args/address/address: the topology gives device 9 the "
           "address 48",
            "objects.json:4:95: warning: /objects/1/args/address/address: a before has the address 48 for "
            "the device "
            "9, and that counts" } },
      { "OtherDriverThanTheTopologys",
         { R"([ { "type": "I2C", "id": 0, "ham": "SimHam", "devices": [
            { "did": 9, "label": "CpuCpld", "driver": "Dummy", "address": { "address": 48 } } ] } ])",
            object( driven( "gpio", "a", "GpioDriver", R"({ "register": 1, "bitpos": 1 })" ) ).objects },
         { "objects.json:2:62: warning: /objects/0/args/driver: the topology gives device 9 the driver "
           "Dummy" } },
      { "SharedRegisterFile",
         { device( R"({ "did": 1 })" ).topology,
            object(
               R"({ "kind": "gpio", "name": "a", "args": { "did": 1, "driver": "Dummy", "address": { "address": 1 },
"name": "x", "driverArgs": { "register": 1, "bitpos": 1 } } },
{ "kind": "gpio", "name": "b", "args": { "did": 9, "driver": "Dummy", "address": { "address": 48 },
"name": "x", "driverArgs": { "register": 1, "bitpos": 1 } } })" )
               .objects },
         { R"(objects.json:5:9: warning: /objects/1/args/name: in simulation the devices 1 and 9 share the register file Dummy-x; give each a "name" of its own)" } },
      { "SystemAlone", object( R"({ "kind": "system", "name": "switch" })" ),
         { R"(objects.json:2:1: warning: /objects/0: works in simulation only with another object on the device 9, "CpuCpld"; add a gpio of that device)" } },
   } ),
   []( auto& test ) { return test.param.name; } );
