#include "Drivers/Drivers.h"

#include "Assertion.h"
#include "HostServices.h"
#include "TopologyText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <bit>
#include <string>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

namespace {

/** Every field set, so that what a later document leaves alone shows. */
constexpr auto full =
   R"({ "did": 7, "driver": "PCT2075", "address": { "address": 72, "busTimeout": 3 }, "uid": 70,
   "provideHam": 0, "driverArgs": { "a": 1, "b": 2 } })";
constexpr auto fullMulti = R"({ "did": 8, "driver": "Slot", "isMultiDevice": true,
   "multiDeviceArgs": { "led": "early", "fan": "early" } })";

/** A document in whose place of "$" a value stands. */
struct Key {
   const char* name;
   const char* text;
   const char* assertion;
   std::vector<const char*> values;
};

void expectDeath( const std::string& text, const std::string& assertion ) {
   Drivers::DriverArgs args;
   EXPECT_DEATH( args.parseJSON( text.c_str() ), assertionFailed( assertion ) ) << text;
}

} // namespace

class DriverArgsParse : public Host::Test {
protected:
   Drivers::DriverArgs args;
};

TEST_F( DriverArgsParse, KeepsPointingAtTheText ) {
   const std::string text = full;
   EXPECT_TRUE( args.parseJSON( text.c_str() ) );
   EXPECT_EQ( args.jsonText, text.c_str() );
}

TEST_F( DriverArgsParse, CopiesEverythingElse ) {
   std::string text = R"({ "did": 7, "driver": "a driver with a name of some length", "isMultiDevice": true,
      "multiDeviceArgs": { "a part with a name of some length": "a text of some length for that part" },
      "driverArgs": { "a value with a name of some length": "a text of some length for that value" } })";
   EXPECT_TRUE( args.parseJSON( text.c_str() ) );
   text.assign( text.size(), 'x' );
   EXPECT_EQ( args.driver, "a driver with a name of some length" );
   EXPECT_THAT( args.multiDeviceArgs,
      ElementsAre( Pair( "a part with a name of some length", "a text of some length for that part" ) ) );
   EXPECT_THAT( args.driverArgs,
      ElementsAre( Pair( "a value with a name of some length", "a text of some length for that value" ) ) );
}

TEST_F( DriverArgsParse, OfAValueLeavesTheTextAlone ) {
   rapidjson::Document json;
   json.Parse( full );
   args.jsonText = "earlier";
   args.parseJSON( json );
   EXPECT_STREQ( args.jsonText, "earlier" );
   EXPECT_EQ( args.did, 7U );
}

TEST_F( DriverArgsParse, TellsWhyATextIsNoJson ) {
   for ( auto& [text, message] : TopologyText::parseErrors ) {
      SCOPED_TRACE( text );
      Host::traces.clear();
      EXPECT_FALSE( args.parseJSON( text ) );
      EXPECT_THAT( Host::traces,
         ElementsAre( Host::TraceLine { 0, "failed to load device from json: " + std::string( message ) } ) );
   }
}

TEST_F( DriverArgsParse, LeavesTheRecordAloneWhenATextIsNoJson ) {
   ASSERT_TRUE( args.parseJSON( fullMulti ) );
   ASSERT_TRUE( args.parseJSON( full ) );
   EXPECT_FALSE( args.parseJSON( R"({ "did": 9, "driver": "Dummy", "isMultiDevice": true, )" ) );
   EXPECT_EQ( args.driver, "PCT2075" );
   EXPECT_EQ( args.uid, 70U );
   EXPECT_EQ( args.did, 7U );
   EXPECT_EQ( std::bit_cast<uint64_t>( args.address ), 0x02C0'0048'0000'0000U );
   EXPECT_THAT( args.driverArgs, ElementsAre( Pair( "a", "1" ), Pair( "b", "2" ) ) );
   EXPECT_EQ( args.jsonText, full );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_THAT( args.multiDeviceArgs, ElementsAre( Pair( "fan", "early" ), Pair( "led", "early" ) ) );
   EXPECT_FALSE( args.provideHam );
}

TEST_F( DriverArgsParse, IntoAUsedRecordSetsWhatTheNewTextLeavesOut ) {
   ASSERT_TRUE( args.parseJSON( fullMulti ) );
   ASSERT_TRUE( args.parseJSON( full ) );
   auto text = R"({ "did": 9, "driver": "Dummy", "address": { "address": 1 } })";
   EXPECT_TRUE( args.parseJSON( text ) );
   EXPECT_EQ( args.did, 9U );
   EXPECT_EQ( args.driver, "Dummy" );
   EXPECT_EQ( args.uid, Drivers::DriverArgs::noUid );
   EXPECT_TRUE( args.provideHam );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_EQ( std::bit_cast<uint64_t>( args.address ), 0x0200'0001'0000'0000U );
   EXPECT_EQ( args.jsonText, text );
}

TEST_F( DriverArgsParse, IntoAUsedRecordKeepsTheDriverOfANull ) {
   ASSERT_TRUE( args.parseJSON( full ) );
   EXPECT_TRUE( args.parseJSON( R"({ "did": 9, "driver": null, "address": { "address": 1 } })" ) );
   EXPECT_EQ( args.driver, "PCT2075" );
}

TEST_F( DriverArgsParse, IntoAUsedRecordKeepsTheAddressForAMultiDevice ) {
   ASSERT_TRUE( args.parseJSON( full ) );
   EXPECT_TRUE( args.parseJSON( fullMulti ) );
   EXPECT_TRUE( args.isMultiDevice );
   EXPECT_EQ( std::bit_cast<uint64_t>( args.address ), 0x02C0'0048'0000'0000U );
}

TEST_F( DriverArgsParse, IntoAUsedRecordAddsToItsMaps ) {
   ASSERT_TRUE( args.parseJSON( full ) );
   ASSERT_TRUE( args.parseJSON( fullMulti ) );
   EXPECT_TRUE( args.parseJSON( R"({ "did": 9, "driver": null, "isMultiDevice": true,
      "driverArgs": { "b": "late", "c": 3, "a": null }, "multiDeviceArgs": { "led": "late", "slot": "late" } })" ) );
   EXPECT_THAT( args.driverArgs, ElementsAre( Pair( "a", "1" ), Pair( "b", "late" ), Pair( "c", "3" ) ) );
   EXPECT_THAT( args.multiDeviceArgs,
      ElementsAre( Pair( "fan", "early" ), Pair( "led", "late" ), Pair( "slot", "late" ) ) );
}

class DriverArgsRules : public Host::Test {};

TEST_F( DriverArgsRules, RootThatIsNoObjectEndsTheProcess ) {
   for ( auto text : { "[]", "[ {} ]", "null", "7", "true", "\"{}\"" } ) {
      expectDeath( text, "json.IsObject()" );
   }
}

TEST_F( DriverArgsRules, MissingKeyEndsTheProcess ) {
   expectDeath( R"({ "driver": "PCT2075", "address": { "address": 72 } })", R"(json.HasMember( "did" ))" );
   expectDeath( R"({ "did": 7, "address": { "address": 72 } })", R"(json.HasMember( "driver" ))" );
   expectDeath( R"({ "did": 7, "driver": "PCT2075" })", R"(json.HasMember( "address" ))" );
   expectDeath( R"({ "did": 7, "driver": null, "isMultiDevice": false, "multiDeviceArgs": {} })",
      R"(json.HasMember( "address" ))" );
   expectDeath( R"({ "did": 7, "driver": null, "address": {} })", R"(value.HasMember( "address" ))" );
   expectDeath( R"({ "did": 7, "driver": null, "isMultiDevice": true, "address": { "address": 72 } })",
      R"(json.HasMember( "multiDeviceArgs" ))" );
}

TEST_F( DriverArgsRules, ValueOfAnotherTypeEndsTheProcess ) {
   const Key keys[] = {
      { "did", R"({ "did": $, "driver": null, "address": { "address": 72 } })",
         TopologyText::unsignedValue.assertion, TopologyText::unsignedValue.wrong },
      { "driver", R"({ "did": 7, "driver": $, "address": { "address": 72 } })",
         TopologyText::stringValue.assertion, { "0", "1.5", "true", "[]", "{}" } },
      { "isMultiDevice",
         R"({ "did": 7, "driver": null, "isMultiDevice": $, "multiDeviceArgs": {}, "address": {} })",
         TopologyText::boolValue.assertion, TopologyText::boolValue.wrong },
      { "multiDeviceArgs", R"({ "did": 7, "driver": null, "isMultiDevice": true, "multiDeviceArgs": $ })",
         "IsObject()", { "0", "1.5", "true", "\"{}\"", "[]", "null" } },
      { "part", R"({ "did": 7, "driver": null, "isMultiDevice": true, "multiDeviceArgs": { "led": $ } })",
         "value.IsString()", TopologyText::stringValue.wrong },
      { "address", R"({ "did": 7, "driver": null, "address": $ })", "value.IsObject()",
         { "0", "1.5", "true", "\"{}\"", "[]", "null" } },
      { "provideHam", R"({ "did": 7, "driver": null, "address": { "address": 72 }, "provideHam": $ })",
         TopologyText::unsignedValue.assertion, TopologyText::unsignedValue.wrong },
      { "uid", R"({ "did": 7, "driver": null, "address": { "address": 72 }, "uid": $ })",
         TopologyText::unsignedValue.assertion, TopologyText::unsignedValue.wrong },
      { "driverArgs", R"({ "did": 7, "driver": null, "address": { "address": 72 }, "driverArgs": $ })",
         TopologyText::objectValue.assertion, TopologyText::objectValue.wrong },
   };
   for ( auto& [name, text, assertion, values] : keys ) {
      for ( auto value : values ) {
         SCOPED_TRACE( name );
         expectDeath( TopologyText::with( value, text ), assertion );
      }
   }
}

/** Each document breaks two rules; the assertion tells which was met first. */
TEST_F( DriverArgsRules, AreCheckedInAFixedOrder ) {
   const struct {
      const char* name;
      const char* text;
      const char* assertion;
   } rows[] = {
      { "did before driver", "{}", R"(json.HasMember( "did" ))" },
      { "driver before isMultiDevice", R"({ "did": -1, "isMultiDevice": 5 })",
         R"(json.HasMember( "driver" ))" },
      { "isMultiDevice before address", R"({ "did": -1, "driver": 5, "isMultiDevice": 5 })", "IsBool()" },
      { "presence of the parts before provideHam",
         R"({ "did": -1, "driver": 5, "isMultiDevice": true, "provideHam": -1 })",
         R"(json.HasMember( "multiDeviceArgs" ))" },
      { "address before provideHam", R"({ "did": -1, "driver": 5, "provideHam": -1 })",
         R"(json.HasMember( "address" ))" },
      { "address's value before provideHam", R"({ "did": -1, "driver": 5, "provideHam": -1, "address": 5 })",
         "value.IsObject()" },
      { "provideHam before driver's value",
         R"({ "did": 7, "driver": 5, "provideHam": -1, "address": { "address": 72 } })",
         "data_.f.flags & kUintFlag" },
      { "uid before driver's value", R"({ "did": 7, "driver": 5, "uid": -1, "address": { "address": 72 } })",
         "data_.f.flags & kUintFlag" },
      { "did's value before driver's value", R"({ "did": -1, "driver": 5, "address": { "address": 72 } })",
         "data_.f.flags & kUintFlag" },
      { "driver's value before driverArgs",
         R"({ "did": 7, "driver": 5, "driverArgs": 5, "address": { "address": 72 } })", "IsString()" },
      { "driverArgs before the parts",
         R"({ "did": 7, "driver": null, "driverArgs": 5, "isMultiDevice": true, "multiDeviceArgs": { "led": 5 } })",
         "IsObject()" },
   };

   for ( auto& [name, text, assertion] : rows ) {
      SCOPED_TRACE( name );
      expectDeath( text, assertion );
   }
}
