#include "Documents.h"

INSTANTIATE_TEST_SUITE_P( Objects, WrongDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "RootArray", objects( "[]" ), { "objects.json:1:1: must be an object, not an array" } },
      { "WithoutObjects", objects( "{}" ), { R"(objects.json:1:1: lacks the key "objects")" } },
      { "UnknownRootKey", objects( R"({ "objects": [], "objcts": [] })" ),
         { R"(objects.json:1:18: /objcts: unknown key; did you mean "objects"?)" } },
      { "NoArray", objects( R"({ "objects": {} })" ),
         { "objects.json:1:14: /objects: must be an array, not an object" } },
      { "SchemaNoText", objects( R"({ "$schema": 1, "objects": [] })" ),
         { "objects.json:1:14: /$schema: must be a string, not 1" } },
      { "NoObject", object( "1" ), { "objects.json:2:1: /objects/0: must be an object, not 1" } },
      { "WithoutKind", object( R"({ "name": "a" })" ),
         { R"(objects.json:2:1: /objects/0: lacks the key "kind")" } },
      { "ArgumentsWithoutKind",
         object(
            R"({ "name": "a", "args": { "did": 9, "driver": "SelvanePortLed", "address": { "address": 1 }, "driverArgs": {} } })" ),
         { R"(objects.json:2:1: /objects/0: lacks the key "kind")" } },
      { "UnknownKind", object( R"({ "kind": "sensor", "name": "a" })" ),
         { R"(objects.json:2:11: /objects/0/kind: must be one of "temp_sensor", "fan", "psu", "led", "slot", "xcvr", "gpio", "poe_port", "system", not "sensor")" } },
      { "WithoutNameAndArgs", object( R"({ "kind": "gpio" })" ),
         { R"(objects.json:2:1: /objects/0: lacks the keys "name", "args")" } },
      { "NameNumber", object( R"({ "kind": "gpio", "name": 1, "args": {} })" ),
         { "objects.json:2:27: /objects/0/name: must be a name of letters, digits and _ . : / -, beginning "
           "with a letter or digit, not 1",
            R"(objects.json:2:38: /objects/0/args: lacks the keys "did", "driver", "address")" } },
      { "NameEmpty", object( R"({ "kind": "system", "name": "" })" ),
         { R"(objects.json:2:29: /objects/0/name: must be a name of letters, digits and _ . : / -, beginning with a letter or digit, not "")" } },
      { "NameWithBlank", object( R"({ "kind": "system", "name": "a b" })" ),
         { R"(objects.json:2:29: /objects/0/name: must be a name of letters, digits and _ . : / -, beginning with a letter or digit, not "a b")" } },
      { "NameWithPattern", object( R"({ "kind": "system", "name": "a*" })" ),
         { R"(objects.json:2:29: /objects/0/name: must be a name of letters, digits and _ . : / -, beginning with a letter or digit, not "a*")" } },
      { "NameWithZero", object( R"({ "kind": "system", "name": "a\u0000" })" ),
         { R"(objects.json:2:29: /objects/0/name: must not hold the character \u0000)" } },
      { "NameTwice", object( R"({ "kind": "system", "name": "a" },
{ "kind": "system", "name": "a" })" ),
         { "objects.json:3:29: /objects/1/name: an object before has this name" } },
      { "UnknownKey", object( R"({ "kind": "system", "name": "a", "alerts": 1 })" ),
         { R"(objects.json:2:34: /objects/0/alerts: unknown key; the keys here are "kind", "name", "args")" } },
      { "ThresholdOfAnotherKind",
         object(
            R"({ "kind": "gpio", "name": "a", "alert": 1, "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
         { R"(objects.json:2:32: /objects/0/alert: unknown key; the keys here are "kind", "name", "args")" } },
      { "WithoutThresholds",
         object(
            R"({ "kind": "temp_sensor", "name": "a", "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         { R"(objects.json:2:1: /objects/0: lacks the keys "alert", "critical")" } },
      { "AlertText",
         object(
            R"({ "kind": "temp_sensor", "name": "a", "alert": "45", "critical": 55, "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         { R"(objects.json:2:48: /objects/0/alert: must be a number from -128 to 127.5, not "45"; take the quotes away)" } },
      { "CriticalTooHigh",
         object(
            R"({ "kind": "temp_sensor", "name": "a", "alert": 45, "critical": 128, "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         { "objects.json:2:64: /objects/0/critical: must be a number from -128 to 127.5, not 128" } },
      { "AlertTooLow",
         object(
            R"({ "kind": "temp_sensor", "name": "a", "alert": -128.5, "critical": 55, "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         { "objects.json:2:48: /objects/0/alert: must be a number from -128 to 127.5, not -128.5" } },
      { "CriticalBelowAlert",
         object(
            R"({ "kind": "temp_sensor", "name": "a", "alert": 45.5, "critical": 45, "args": { "did": 9, "driver": "PCT2075", "address": { "address": 1 } } })" ),
         { "objects.json:2:66: /objects/0/critical: 45 is below the alert threshold" } },
   } ),
   nameOf );

// The argument document of an object.
INSTANTIATE_TEST_SUITE_P( ObjectArguments, WrongDocument,
   ::testing::
      ValuesIn( std::
            vector<Row> {
               { "NoObject", object( R"({ "kind": "gpio", "name": "a", "args": "Dummy" })" ),
                  { R"(objects.json:2:40: /objects/0/args: must be an object, not "Dummy")" } },
               { "WithoutDid",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:40: /objects/0/args: lacks the key "did")" } },
               { "WithoutDriver",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:40: /objects/0/args: lacks the key "driver")" } },
               { "WithoutDriverBehindAnother",
                  object(
                     R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": 1, "maxRpm": 1, "registerOffset": 0 } } },
{ "kind": "fan", "name": "b", "args": { "did": 9, "address": { "address": 1 }, "driverArgs": { "fanId": 2, "maxRpm": 1, "registerOffset": 1 } } })" ),
                  { R"(objects.json:3:39: /objects/1/args: lacks the key "driver")" } },
               { "WithoutAddress",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:40: /objects/0/args: lacks the key "address")" } },
               { "DidFraction",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9.5, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:49: /objects/0/args/did: must be an integer from 0 to 4294967295, not "
                    "9.5" } },
               { "UnknownDid",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 8, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:49: /objects/0/args/did: the topology has no device 8; there is 9" } },
               { "UnknownUid",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "uid": 5, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:59: /objects/0/args/uid: the topology has no component 5" } },
               { "NoUidButUnknownDid",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 8, "uid": 4294967295, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:49: /objects/0/args/did: the topology has no device 8; there is 9" } },
               { "UnknownDriver",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:62: /objects/0/args/driver: must be one of "Dummy", "GpioDriver", "PCT2075", "SelvaneXcvr", "SelvanePortLed", "SelvaneSystemLed", "EMC2305", "BCM59121", null, not "dummy"; did you mean "Dummy"?)" } },
               { "NullDriver",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": null, "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:62: /objects/0/args/driver: must be one of "Dummy", "GpioDriver", "PCT2075", "SelvaneXcvr", "SelvanePortLed", "SelvaneSystemLed", "EMC2305", "BCM59121", not null)" } },
               { "AddrSize4",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1, "addrSize": 4 }, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:110: /objects/0/args/address/addrSize: must be 1 or 2, not 4" } },
               { "ProvideHam0",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "provideHam": 0, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:114: /objects/0/args/provideHam: must not be 0: no driver does "
                    "without access to its device" } },
               { "MultiDevice",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "isMultiDevice": true, "multiDeviceArgs": {}, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:88: /objects/0/args/isMultiDevice: must not be true: the library has "
                    "no driver for a multi-device" } },
               { "NameNumber",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "name": 1, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:108: /objects/0/args/name: must be a name of letters, digits and _ . "
                    ": -, of at most 100 characters, beginning with a letter or digit, not 1" } },
               { "NameWithSlash", object( R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "name": "../a", "driverArgs": { "register": 1, "bitpos": 1 } } })" ), { R"(objects.json:2:108: /objects/0/args/name: must be a name of letters, digits and _ . : -, of at most 100 characters, beginning with a letter or digit, not "../a")" } },
               { "NameTooLong",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "name": ")" +
                     std::string( 101, 'x' ) + R"(", "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { R"(objects.json:2:108: /objects/0/args/name: must be a name of letters, digits and _ . : -, of at most 100 characters, beginning with a letter or digit, not "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...)" } },
               { "SeveralMistakes",
                  object(
                     R"({ "kind": "gpio", "name": "a", "args": { "did": 8, "driver": null, "address": { "address": 1, "addrSize": 3 }, "provideHam": 0, "driverArgs": { "register": 1, "bitpos": 1 } } })" ),
                  { "objects.json:2:49: /objects/0/args/did: the topology has no device 8; there is 9",
                     R"(objects.json:2:62: /objects/0/args/driver: must be one of "Dummy", "GpioDriver", "PCT2075", "SelvaneXcvr", "SelvanePortLed", "SelvaneSystemLed", "EMC2305", "BCM59121", not null)",
                     "objects.json:2:107: /objects/0/args/address/addrSize: must be 1 or 2, not 3",
                     "objects.json:2:126: /objects/0/args/provideHam: must not be 0: no driver does "
                     "without access to its device" } },
            } ),
   nameOf );

// What the kinds need beyond it.
INSTANTIATE_TEST_SUITE_P( Kinds, WrongDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "XcvrWithoutDriverArgs",
         object(
            R"({ "kind": "xcvr", "name": "a", "args": { "did": 9, "driver": "SelvaneXcvr", "address": { "address": 1 } } })" ),
         { R"(objects.json:2:40: /objects/0/args: lacks the key "driverArgs")" } },
      { "XcvrDriverArgsNull",
         object(
            R"({ "kind": "xcvr", "name": "a", "args": { "did": 9, "driver": "SelvaneXcvr", "address": { "address": 1 }, "driverArgs": null } })" ),
         { "objects.json:2:120: /objects/0/args/driverArgs: must be an object, not null" } },
      { "XcvrWithoutId",
         object(
            R"({ "kind": "xcvr", "name": "a", "args": { "did": 9, "driver": "SelvaneXcvr", "address": { "address": 1 }, "driverArgs": { "type": "sfp" } } })" ),
         { R"(objects.json:2:120: /objects/0/args/driverArgs: lacks the keys "id", "presenceReg", "presenceBit", "presenceActiveHigh", "rxLosReg", "rxLosBit", "rxLosActiveHigh", "txFaultReg", "txFaultBit", "txFaultActiveHigh", "txDisableReg", "txDisableBit", "txDisableActiveHigh")" } },
      { "XcvrIdNull",
         object(
            R"({ "kind": "xcvr", "name": "a", "args": { "did": 9, "driver": "SelvaneXcvr", "address": { "address": 1 }, "driverArgs": { "id": null, "type": "sfp" } } })" ),
         { R"(objects.json:2:120: /objects/0/args/driverArgs: lacks the keys "presenceReg", "presenceBit", "presenceActiveHigh", "rxLosReg", "rxLosBit", "rxLosActiveHigh", "txFaultReg", "txFaultBit", "txFaultActiveHigh", "txDisableReg", "txDisableBit", "txDisableActiveHigh")",
            "objects.json:2:128: /objects/0/args/driverArgs/id: must be a whole number of 32 bits, or a text "
            "of its digits, not null" } },
      { "XcvrTypeUnknown",
         object(
            R"({ "kind": "xcvr", "name": "a", "args": { "did": 9, "driver": "SelvaneXcvr", "address": { "address": 1 }, "driverArgs": { "id": 1, "type": "SFP" } } })" ),
         { R"(objects.json:2:120: /objects/0/args/driverArgs: lacks the keys "presenceReg", "presenceBit", "presenceActiveHigh", "rxLosReg", "rxLosBit", "rxLosActiveHigh", "txFaultReg", "txFaultBit", "txFaultActiveHigh", "txDisableReg", "txDisableBit", "txDisableActiveHigh")",
            R"(objects.json:2:139: /objects/0/args/driverArgs/type: must be "sfp" or "sfp+", not "SFP")" } },
      { "GpioWithoutBit",
         object(
            R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1 } } })" ),
         { R"(objects.json:2:114: /objects/0/args/driverArgs: lacks the key "bitpos")" } },
      { "GpioBitTwiceWithAnotherType",
         object(
            R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": "x",
"bitpos": 1 } } })" ),
         { "objects.json:3:1: /objects/0/args/driverArgs/bitpos: this key was there before, in line 2" } },
      { "GpioRegisterHexadecimal",
         object(
            R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "Dummy", "address": { "address": 1 }, "driverArgs": { "register": "0x10", "bitpos": 1 } } })" ),
         { R"(objects.json:2:128: /objects/0/args/driverArgs/register: must be a whole number of 32 bits, or a text of its digits, not "0x10")" } },
      { "FanIdTooHigh",
         object(
            R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": 6, "maxRpm": 20000, "registerOffset": 0 } } })" ),
         { "objects.json:2:126: /objects/0/args/driverArgs/fanId: must be an integer from 1 to 5, or a text "
           "of its digits, not 6" } },
      { "FanIdTextTooHigh",
         object(
            R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": "6", "maxRpm": 20000, "registerOffset": 0 } } })" ),
         { R"(objects.json:2:126: /objects/0/args/driverArgs/fanId: must be an integer from 1 to 5, or a text of its digits, not "6")" } },
      { "FanMaxRpm0",
         object(
            R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": 1, "maxRpm": 0, "registerOffset": 0 } } })" ),
         { "objects.json:2:139: /objects/0/args/driverArgs/maxRpm: must be an integer from 1 to 8421504, or "
           "a text of its digits, not 0" } },
      { "FanWithoutOffset",
         object(
            R"({ "kind": "fan", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": 1, "maxRpm": 1 } } })" ),
         { R"(objects.json:2:115: /objects/0/args/driverArgs: lacks the key "registerOffset")" } },
      { "SlotWithoutMaxRpm",
         object(
            R"({ "kind": "slot", "name": "a", "args": { "did": 9, "driver": "EMC2305", "address": { "address": 1 }, "driverArgs": { "fanId": 1, "modelName": "", "serialNum": "", "airflowDirection": "" } } })" ),
         { R"(objects.json:2:116: /objects/0/args/driverArgs: lacks the key "maxRpm")" } },
   } ),
   nameOf );

namespace {

/** An object with its "driverArgs" in line 4 of the document. */
Documents driven( const std::string& kind, const std::string& driver, const std::string& driverArgs ) {
   auto thresholds = kind == "temp_sensor" ? R"( "alert": 1, "critical": 2,)" : "";
   return object( R"({ "kind": ")" + kind + R"(", "name": "a",)" + thresholds +
                  R"( "args": { "did": 9, "address": { "address": 1 }, "driver":)" + "\n\"" + driver +
                  "\", \"driverArgs\":\n" + driverArgs + " } }" );
}

/** The arguments of a cage but for its type, and with one more. */
std::string cage( const std::string& type, const std::string& more ) {
   return R"({ "type": ")" + type + R"(", "id": 1, "presenceReg": 16, "presenceBit": 0,
      "presenceActiveHigh": "false", "rxLosReg": 16, "rxLosBit": 4, "txFaultReg": 31, "txFaultBit": 0,
      "txFaultActiveHigh": true, "txDisableReg": 31, "txDisableBit": 4, "txDisableActiveHigh": true,
      "rxLosActiveHigh": )" +
          more + "}";
}

} // namespace

// What the drivers need, and what they do not make.
INSTANTIATE_TEST_SUITE_P( Drivers, WrongDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "FanOfASensor", driven( "fan", "PCT2075", R"({ "fanId": 1, "maxRpm": 1, "registerOffset": 0 })" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be "EMC2305", the driver for fans, not "PCT2075")" } },
      { "SensorOfAFanController", driven( "temp_sensor", "EMC2305", "{}" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be "PCT2075", the driver for temperature sensors, not "EMC2305")" } },
      { "SlotOfACage",
         driven( "slot", "SelvaneXcvr",
            R"({ "fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "" })" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be "EMC2305", the driver for slots, not "SelvaneXcvr")" } },
      { "CageOfAnLed", driven( "xcvr", "SelvanePortLed", R"({ "id": 1, "type": "sfp" })" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be "SelvaneXcvr", the driver for transceivers, not "SelvanePortLed")",
            R"(objects.json:4:1: /objects/0/args/driverArgs: lacks the keys "presenceReg", "presenceBit", "presenceActiveHigh", "rxLosReg", "rxLosBit", "rxLosActiveHigh", "txFaultReg", "txFaultBit", "txFaultActiveHigh", "txDisableReg", "txDisableBit", "txDisableActiveHigh")" } },
      { "LedOfNothing", driven( "led", "Dummy", "{}" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be one of "SelvanePortLed", "SelvaneSystemLed", not "Dummy")" } },
      { "PortOfNothing", driven( "poe_port", "Dummy", R"({ "portId": 1, "numPorts": 8, "numAtPorts": 8 })" ),
         { R"(objects.json:3:1: /objects/0/args/driver: must be "BCM59121", the driver for PoE ports, not "Dummy")" } },
      { "TwoDriversOfOneDevice",
         object(
            R"({ "kind": "gpio", "name": "a", "args": { "did": 9, "driver": "GpioDriver", "address": { "address": 1 }, "driverArgs": { "register": 1, "bitpos": 1 } } },
{ "kind": "led", "name": "b", "args": { "did": 9, "address": { "address": 1 }, "driverArgs": { "reg": 64, "id": 1 }, "driver":
"SelvaneSystemLed" } })" ),
         { "objects.json:4:1: /objects/1/args/driver: an object before has the driver GpioDriver for the "
           "device 9" } },
      { "PortLedWithoutArguments", driven( "led", "SelvanePortLed", "{}" ),
         { R"(objects.json:4:1: /objects/0/args/driverArgs: lacks the keys "ledName", "ledReg", "portType")" } },
      { "PortLedWithNulls",
         driven( "led", "SelvanePortLed", R"({ "ledName": null, "ledReg": 128, "portType": "sfp" })" ),
         { "objects.json:4:14: /objects/0/args/driverArgs/ledName: must be a string, not null" } },
      { "PortLedRegisterHexadecimal", driven( "led", "SelvanePortLed", R"({ "ledReg":
"0x80", "ledName": "a", "portType": "" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/ledReg: must be a whole number of 32 bits, or a text of its digits, not "0x80")" } },
      { "PortLedRegisterWithLetters", driven( "led", "SelvanePortLed", R"({ "ledReg":
"12x", "ledName": "a", "portType": "" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/ledReg: must be a whole number of 32 bits, or a text of its digits, not "12x")" } },
      { "PortLedRegisterEmpty", driven( "led", "SelvanePortLed", R"({ "ledReg":
"", "ledName": "a", "portType": "" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/ledReg: must be a whole number of 32 bits, or a text of its digits, not "")" } },
      { "PortLedRegisterFraction", driven( "led", "SelvanePortLed", R"({ "ledReg":
1.5, "ledName": "a", "portType": "" })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/ledReg: must be a whole number of 32 bits, or a "
           "text of its digits, not 1.5" } },
      { "PortLedNameNumber", driven( "led", "SelvanePortLed", R"({ "ledReg": 1, "ledName":
1, "portType": "" })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/ledName: must be a string, not 1" } },
      { "SystemLedWithoutDriverArgs",
         object(
            R"({ "kind": "led", "name": "a", "args": { "did": 9, "driver": "SelvaneSystemLed", "address": { "address": 1 } } })" ),
         { R"(objects.json:2:39: /objects/0/args: lacks the key "driverArgs")" } },
      { "SystemLedOfNoRegister", driven( "led", "SelvaneSystemLed", R"({ "reg":
68, "id": 1 })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/reg: must be an integer from 64 to 67, or a text of "
           "its digits, not 68" } },
      { "CageWithoutSignals", driven( "xcvr", "SelvaneXcvr", R"({ "id": 1, "type": "sfp" })" ),
         { R"(objects.json:4:1: /objects/0/args/driverArgs: lacks the keys "presenceReg", "presenceBit", "presenceActiveHigh", "rxLosReg", "rxLosBit", "rxLosActiveHigh", "txFaultReg", "txFaultBit", "txFaultActiveHigh", "txDisableReg", "txDisableBit", "txDisableActiveHigh")" } },
      { "CageOfAnotherType", driven( "xcvr", "SelvaneXcvr", cage( "qsfp", "true" ) ),
         { R"(objects.json:4:11: /objects/0/args/driverArgs/type: must be "sfp" or "sfp+", not "qsfp")" } },
      { "CagePolarity", driven( "xcvr", "SelvaneXcvr", cage( "sfp+", "\n\"True\"" ) ),
         { R"(objects.json:8:1: /objects/0/args/driverArgs/rxLosActiveHigh: must be true or false, not "True")" } },
      { "GpioBitTooHigh", driven( "gpio", "Dummy", R"({ "register": 1, "bitpos":
8 })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/bitpos: must be an integer from 0 to 7, or a text "
           "of its digits, not 8" } },
      { "GpioRegisterTooHigh", driven( "gpio", "PCT2075", R"({ "bitpos": "7", "register":
"256" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/register: must be an integer from 0 to 255, or a text of its digits, not "256")" } },
      { "FanTooFast", driven( "fan", "EMC2305", R"({ "fanId": 1, "registerOffset": 0, "maxRpm":
8421505 })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/maxRpm: must be an integer from 1 to 8421504, or a "
           "text of its digits, not 8421505" } },
      { "FanOffsetTooHigh", driven( "fan", "EMC2305", R"({ "fanId": 1, "maxRpm": 20000, "registerOffset":
5 })" ),
         { "objects.json:5:1: /objects/0/args/driverArgs/registerOffset: must be an integer from 0 to 4, or "
           "a text of its digits, not 5" } },
      { "SlotMaxRpmTooHigh",
         driven( "slot", "EMC2305",
            R"({ "fanId": 1, "modelName": "", "serialNum": "", "airflowDirection": "", "maxRpm":
"99999999999" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/maxRpm: must be an integer from 1 to 2147483647, or a text of its digits, not "99999999999")" } },
      { "SlotPropNoNumber",
         driven( "slot", "EMC2305",
            R"({ "fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "", "prop":
"0.9x" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/prop: must be a number that fits a single-precision one, or a text of it, not "0.9x")" } },
      { "SlotPropTooLarge",
         driven( "slot", "EMC2305",
            R"({ "fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "", "prop":
"1e99" })" ),
         { R"(objects.json:5:1: /objects/0/args/driverArgs/prop: must be a number that fits a single-precision one, or a text of it, not "1e99")" } },
   } ),
   nameOf );

INSTANTIATE_TEST_SUITE_P( PoePorts, WrongDocument,
   ::testing::ValuesIn( std::vector<Row> {
      { "PoePortWithoutPorts",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1 } } })" ),
         { R"(objects.json:2:121: /objects/0/args/driverArgs: lacks the keys "numPorts", "numAtPorts")" } },
      { "PoePortIdNegative",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": -1, "numPorts": 12, "numAtPorts": 8 } } })" ),
         { "objects.json:2:133: /objects/0/args/driverArgs/portId: must be below the number of ports, 12, "
           "not 255" } },
      { "PoePortsTooMany",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 256, "numAtPorts": 8 } } })" ),
         { "objects.json:2:133: /objects/0/args/driverArgs/portId: must be below the number of ports, 0, not "
           "1",
            "objects.json:2:167: /objects/0/args/driverArgs/numAtPorts: must not be above the number of "
            "ports, 0, but is 8" } },
      { "PoePortsTextTooMany",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": "256", "numAtPorts": 8 } } })" ),
         { "objects.json:2:133: /objects/0/args/driverArgs/portId: must be below the number of ports, 0, not "
           "1",
            "objects.json:2:169: /objects/0/args/driverArgs/numAtPorts: must not be above the number of "
            "ports, 0, but is 8" } },
      { "PoePortFractional",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8.5 } } })" ),
         { "objects.json:2:166: /objects/0/args/driverArgs/numAtPorts: must be a whole number of 32 bits, or "
           "a text of its digits, not 8.5" } },
      { "PoePortIdBeyondThePorts",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": "12", "numPorts": 12, "numAtPorts": 8 } } })" ),
         { R"(objects.json:2:133: /objects/0/args/driverArgs/portId: must be below the number of ports, 12, not 12)" } },
      { "PoePortOfNone",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 0, "numPorts": 0, "numAtPorts": 0 } } })" ),
         { R"(objects.json:2:133: /objects/0/args/driverArgs/portId: must be below the number of ports, 0, not 0)" } },
      { "PoePortsOfTwoPairsTooMany",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 13 } } })" ),
         { R"(objects.json:2:166: /objects/0/args/driverArgs/numAtPorts: must not be above the number of ports, 12, but is 13)" } },
      { "PoePortResetRegisterTooHigh",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8, "outOfResetVal": 0,
"resetReg": "99999999999" } } })" ),
         { R"(objects.json:3:13: /objects/0/args/driverArgs/resetReg: must be an integer from 0 to 255, or a text of its digits, not "99999999999")" } },
      { "PoePortResetWithoutValue",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8,
"resetReg": 5 } } })" ),
         { R"(objects.json:3:13: /objects/0/args/driverArgs/resetReg: does nothing without the key "outOfResetVal")" } },
      { "PoePortResetWithoutRegister",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8,
"outOfResetVal": 0 } } })" ),
         { R"(objects.json:3:18: /objects/0/args/driverArgs/outOfResetVal: does nothing without the key "resetReg")" } },
      { "PoePortMaskNoFlag",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8,
"mpssValueZero": "True" } } })" ),
         { R"(objects.json:3:18: /objects/0/args/driverArgs/mpssValueZero: must be true or false, not "True")" } },
      { "PoePortNoBlock",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8, "firmwareDownloadSize": 1 } } })" ),
         { "objects.json:2:193: /objects/0/args/driverArgs/firmwareDownloadSize: must be a number from 2 to "
           "255, or 0 for 256, not 1" } },
      { "PoePortNoBlockText",
         object(
            R"({ "kind": "poe_port", "name": "a", "args": { "did": 9, "driver": "BCM59121", "address": { "address": 1 }, "driverArgs": { "portId": 1, "numPorts": 12, "numAtPorts": 8, "firmwareDownloadSize": "1" } } })" ),
         { R"(objects.json:2:193: /objects/0/args/driverArgs/firmwareDownloadSize: must be a number from 2 to 255, or 0 for 256, not "1")" } },
   } ),
   nameOf );
