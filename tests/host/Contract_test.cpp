#include "Simulation.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;

namespace {

/** A document that breaks its contract, and the assertion that ends the process for it. */
struct Breach {
   const char* text;
   const char* asserted;
};

// What the JSON library asserts when a value has the wrong type.
constexpr const char* isUnsigned = "data_.f.flags & kUintFlag";
constexpr const char* isInteger = "data_.f.flags & kIntFlag";
constexpr const char* isString = "IsString()";
constexpr const char* isBool = "IsBool()";
constexpr const char* isArray = "IsArray()";
constexpr const char* isObject = "IsObject()";

// An array of media.
constexpr Breach topologies[] = {
   { R"({})", "json.IsArray()" },
   { R"([ 1 ])", "it->IsObject()" },
   { R"([ { "ham": "SimHam" } ])", R"(it->HasMember( "type" ))" },
   { R"([ { "type": "LinuxFs" } ])", R"(it->HasMember( "ham" ))" },
   { R"([ { "type": "Usb", "ham": "SimHam" } ])", R"(false && "Unknown type")" },
   { R"([ { "type": "scd", "ham": "SimHam", "pci": 1 } ])", R"(false && "Unknown type")" },
   { R"([ { "type": 1, "ham": "SimHam" } ])", isString },
   { R"([ { "type": "LinuxFs", "ham": null } ])", isString },
   { R"([ { "type": "LinuxFs", "ham": "SimHam", "label": 1 } ])", isString },
};

// The members of one medium beside its "ham".
constexpr Breach media[] = {
   { R"("type": "SCD")", R"(json.HasMember( "pci" ))" },
   { R"("type": "SCD", "pci": -1)", isUnsigned },
   { R"("type": "SCD", "pci": 1.5)", isUnsigned },
   { R"("type": "SCD", "pci": 4294967296)", isUnsigned },
   { R"("type": "SCD", "pci": "1")", isUnsigned },
   { R"("type": "SCD", "pci": 1, "accelerators": {})", "accels.IsArray()" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ { "id": 1 }, { "id": 1 } ])",
      "scd->accelerators.find( accel->id ) == scd->accelerators.end()" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ 1 ])", "json.IsObject()" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ {} ])", R"(json.HasMember( "id" ))" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ { "id": -1 } ])", isUnsigned },
   { R"("type": "SCD", "pci": 1, "accelerators": [ { "id": 1, "busses": {} } ])", "busses.IsArray()" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ { "id": 1, "busses": [ 1 ] } ])", "json.IsObject()" },
   { R"("type": "SCD", "pci": 1, "accelerators": [ { "id": 1, "busses": [ { "id": 1 }, { "id": 1 } ] } ])",
      "accel->busses.find( bus->id ) == accel->busses.end()" },
   { R"("type": "Celestica", "accelerators": 1)", "accels.IsArray()" },
   { R"("type": "Celestica", "accelerators": [ { "id": 1 }, { "id": 1 } ])",
      "cel->accelerators.find( accel->id ) == cel->accelerators.end()" },
   { R"("type": "FbDomFpga")", R"(json.HasMember( "pci" ))" },
   { R"("type": "FbDomFpga", "pci": 1, "busses": {})", "busses.IsArray()" },
   { R"("type": "FbDomFpga", "pci": 1, "busses": [ { "id": 1 }, { "id": 1 } ])",
      "fbdomfpga->busses.find( bus->id ) == fbdomfpga->busses.end()" },
   { R"("type": "LinuxFs", "devices": [ 1 ])", "it->IsObject()" },
   { R"("type": "LinuxFs", "devices": {})", isArray },
   { R"("type": "I2C", "id": 1, "simulated": 1)", isBool },
   { R"("type": "I2C")", R"(json.HasMember( "id" ))" },
   { R"("type": "IOPort")", R"(json.HasMember( "id" ))" },
   { R"("type": "PLM")", R"(json.HasMember( "id" ))" },
   { R"("type": "SccSpi")", R"(json.HasMember( "id" ))" },
};

// The members of one bus beside its "id".
constexpr Breach busses[] = {
   { R"("id": "1")", isInteger },
   { R"("id": 2147483648)", isInteger },
   { R"("id": 1, "devices": {})", isArray },
   { R"("id": 1, "devices": [ null ])", "it->IsObject()" },
   { R"("id": 1, "muxes": [ null ])", "it->IsObject()" },
   { R"("id": 1, "muxes": [ {} ])", R"(json.HasMember( "did" ))" },
   { R"("id": 1, "muxes": [ { "did": -1 } ])", isUnsigned },
   { R"("id": 1, "muxes": [ { "did": 1, "busses": {} } ])", isArray },
   { R"("id": 1, "muxes": [ { "did": 1, "busses": [ 1 ] } ])", "it->IsObject()" },
   { R"("id": 1, "muxes": [ { "did": 1, "busses": [ {} ] } ])", R"(json.HasMember( "id" ))" },
};

// The members of one device of a topology.
constexpr Breach devices[] = {
   { R"("label": "a")", R"(json.HasMember( "did" ))" },
   { R"("did": -1)", isUnsigned },
   { R"("did": 1, "label": 2)", isString },
   { R"("did": 1, "components": {})", isArray },
   { R"("did": 1, "components": [ 1 ])", "it->IsObject()" },
   { R"("did": 1, "components": [ {} ])", R"(json.HasMember( "uid" ))" },
   { R"("did": 1, "components": [ { "uid": "1" } ])", isUnsigned },
   { R"("did": 1, "driver": null)", R"(json.HasMember( "address" ))" },
};

// The members of one device, in a topology beside a "driver" or in an argument text.
constexpr Breach drivers[] = {
   { R"("did": 1, "driver": 1, "address": { "address": 72 })", isString },
   { R"("did": 1, "driver": "Dummy")", R"(json.HasMember( "address" ))" },
   { R"("did": 1, "driver": "Dummy", "address": 72)", "value.IsObject()" },
   { R"("did": 1, "driver": "Dummy", "address": {})", R"(value.HasMember( "address" ))" },
   { R"("did": 1, "driver": "Dummy", "address": { "address": "72" })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "addrSize": 0 })",
      "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4" },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "addrSize": 3 })",
      "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4" },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "addrSize": 4 })",
      "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4" },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "busTimeout": null })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "readDelay": true })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "writeDelay": -1 })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "extraDelay": 0.5 })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "accel": "1" })", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72, "writeNoStopReadCurrent": 1 })", isBool },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72 }, "isMultiDevice": 0)", isBool },
   { R"("did": 1, "driver": "Dummy", "isMultiDevice": true)", R"(json.HasMember( "multiDeviceArgs" ))" },
   { R"("did": 1, "driver": "Dummy", "isMultiDevice": true, "multiDeviceArgs": [])", isObject },
   { R"("did": 1, "driver": "Dummy", "isMultiDevice": true, "multiDeviceArgs": { "fan": {} })", isString },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72 }, "provideHam": true)", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72 }, "uid": -1)", isUnsigned },
   { R"("did": 1, "driver": "Dummy", "address": { "address": 72 }, "driverArgs": [])", isObject },
   { R"("did": "1", "driver": "Dummy", "address": { "address": 72 })", isUnsigned },
};

/** A document of the wrong shape ends the process, with the broken rule on stderr. */
class Contract : public SimulationTest {
protected:
   static testing::Matcher<const std::string&> assertion( const std::string& expression ) {
      return HasSubstr( expression + "' failed" );
   }

   void expectDeathOfInit( const std::string& text, const char* asserted ) {
      SCOPED_TRACE( text );
      EXPECT_DEATH( plugin.fan_init( text.c_str() ), assertion( asserted ) );
   }

   template <typename Add>
   void expectDeathOfAdd( Add add, const std::string& text, const std::string& asserted ) {
      SCOPED_TRACE( text );
      EXPECT_DEATH( add( text.c_str() ), assertion( asserted ) );
   }
};

using ContractDeathTest = Contract;

TEST_F( ContractDeathTest, ATopologyIsAnArrayOfMedia ) {
   for ( auto& breach : topologies ) {
      expectDeathOfInit( breach.text, breach.asserted );
   }
}

TEST_F( ContractDeathTest, AMediumHasWhatItsTypeNeeds ) {
   for ( auto& breach : media ) {
      expectDeathOfInit( R"([ { "ham": "SimHam", )" + std::string( breach.text ) + " } ]", breach.asserted );
   }
}

TEST_F( ContractDeathTest, ABusHasItsMembers ) {
   for ( auto& breach : busses ) {
      expectDeathOfInit(
         R"([ { "type": "I2C", "ham": "SimHam", )" + std::string( breach.text ) + " } ]", breach.asserted );
   }
}

TEST_F( ContractDeathTest, ADeviceOfATopologyHasItsMembers ) {
   for ( auto& breach : devices ) {
      expectDeathOfInit( R"([ { "type": "LinuxFs", "ham": "SimHam", "devices": [ { )" +
                            std::string( breach.text ) + " } ] } ]",
         breach.asserted );
   }
}

TEST_F( ContractDeathTest, ADeviceWithADriverIsAnArgumentDocument ) {
   for ( auto& breach : drivers ) {
      expectDeathOfInit( R"([ { "type": "LinuxFs", "ham": "SimHam", "devices": [ { )" +
                            std::string( breach.text ) + " } ] } ]",
         breach.asserted );
   }
}

TEST_F( ContractDeathTest, AnArgumentTextHasItsMembers ) {
   load( { 1 } );
   for ( auto& breach : drivers ) {
      expectDeathOfAdd( plugin.gpio_add, "{ " + std::string( breach.text ) + " }", breach.asserted );
   }
   expectDeathOfAdd( plugin.gpio_add, "[]", "json.IsObject()" );
   expectDeathOfAdd( plugin.gpio_add, R"({ "driver": "Dummy" })", R"(json.HasMember( "did" ))" );
   expectDeathOfAdd( plugin.gpio_add, R"({ "did": 1 })", R"(json.HasMember( "driver" ))" );
}

TEST_F( ContractDeathTest, TheNameOfASimulatedDeviceIsAText ) {
   load( { 1 } );
   expectDeathOfAdd( plugin.gpio_add, arguments( 1, "Dummy", R"("name": 1)" ), isString );
}

TEST_F( ContractDeathTest, AGpioHasARegisterAndABit ) {
   load( { 1 } );
   for ( auto members : { "", R"("driverArgs": { "register": 1 })", R"("driverArgs": { "bitpos": 1 })" } ) {
      expectDeathOfAdd( plugin.gpio_add, arguments( 1, "Dummy", members ), "it != args.driverArgs.end()" );
   }
}

TEST_F( ContractDeathTest, ATransceiverHasAnIdAndAKnownType ) {
   load( { 1 } );
   Host::echoTraces = true;

   const struct {
      const char* driverArgs;
      const char* complaint;
   } rows[] = {
      { R"({ "type": "sfp" })", "0: No id argument given for Xcvr" },
      { R"({ "id": 1 })", "0: No type argument given for Xcvr" },
      { R"({ "id": 1, "type": "QSFP" })", "0: Xcvr type QSFP not supported" },
      { R"({ "id": 1, "type": "" })", "0: Xcvr type  not supported" },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.driverArgs );
      auto text = arguments( 1, "Dummy", std::string( R"("driverArgs": )" ) + row.driverArgs );
      EXPECT_DEATH(
         plugin.xcvr_add( text.c_str() ), AllOf( HasSubstr( row.complaint ), assertion( "false" ) ) );
   }
}

TEST_F( ContractDeathTest, ATopologyIsLoadedBeforeTheFirstDevice ) {
   expectDeathOfAdd( plugin.gpio_add, arguments( 1, "Dummy" ), "`topology" );
}

} // namespace
