#include "Drivers/Drivers.h"

#include "FieldOrder.h"
#include "HostServices.h"
#include "TopologyText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <bit>
#include <map>
#include <string>
#include <type_traits>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using TopologyText::more;

namespace {

using Map = std::map<std::string, std::string>;

Drivers::DriverArgs parse( const std::string& text ) {
   Drivers::DriverArgs args;
   EXPECT_TRUE( args.parseJSON( text.c_str() ) ) << text;
   args.jsonText = nullptr;
   return args;
}

/** An argument document with further keys. */
std::string document( const std::string& keys = "" ) {
   return R"({ "did": 7, "driver": "PCT2075", "address": { "address": 72 })" + more( keys ) + " }";
}

std::string multiDocument( const std::string& keys ) {
   return R"({ "did": 7, "driver": "Slot", "isMultiDevice": true)" + more( keys ) + " }";
}

Map driverArgsOf( const std::string& members ) {
   return parse( document( R"("driverArgs": { )" + members + " }" ) ).driverArgs;
}

} // namespace

class DriverArgs : public Host::Test {};

TEST_F( DriverArgs, StartEmptyWithTheirFieldsInTheAgreedOrder ) {
   Drivers::DriverArgs args;
   auto& [driver, uid, did, address, driverArgs, jsonText, isMultiDevice, multiDeviceArgs, provideHam] = args;
   EXPECT_EQ( driver, "" );
   EXPECT_EQ( uid, 0U );
   EXPECT_EQ( did, 0U );
   EXPECT_EQ( std::bit_cast<uint64_t>( address ), 0U );
   EXPECT_THAT( driverArgs, IsEmpty() );
   EXPECT_EQ( jsonText, nullptr );
   EXPECT_FALSE( isMultiDevice );
   EXPECT_THAT( multiDeviceArgs, IsEmpty() );
   EXPECT_FALSE( provideHam );
   EXPECT_TRUE( inOrder(
      driver, uid, did, address, driverArgs, jsonText, isMultiDevice, multiDeviceArgs, provideHam ) );
}

TEST_F( DriverArgs, AreAPlainRecord ) {
   EXPECT_FALSE( std::is_polymorphic_v<Drivers::DriverArgs> );
   EXPECT_TRUE( std::is_copy_constructible_v<Drivers::DriverArgs> );
   EXPECT_TRUE( std::is_copy_assignable_v<Drivers::DriverArgs> );
}

TEST_F( DriverArgs, NeedDidDriverAndAddressAlone ) {
   auto args = parse( document() );
   EXPECT_EQ( args.driver, "PCT2075" );
   EXPECT_EQ( args.uid, 4294967295U );
   EXPECT_EQ( args.did, 7U );
   EXPECT_EQ( std::bit_cast<uint64_t>( args.address ), 0x0200'0048'0000'0000U );
   EXPECT_THAT( args.driverArgs, IsEmpty() );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_THAT( args.multiDeviceArgs, IsEmpty() );
   EXPECT_TRUE( args.provideHam );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( DriverArgs, DidIsUnsigned ) {
   for ( auto did : { 0U, 1U, 2147483648U, 4294967295U } ) {
      auto text =
         R"({ "did": )" + std::to_string( did ) + R"(, "driver": null, "address": { "address": 0 } })";
      EXPECT_EQ( parse( text ).did, did );
   }
}

TEST_F( DriverArgs, UidIsUnsignedAndNoneWhenLeftOut ) {
   EXPECT_EQ( parse( document() ).uid, Drivers::DriverArgs::noUid );
   for ( auto uid : { 0U, 1U, 2147483648U, 4294967295U } ) {
      EXPECT_EQ( parse( document( R"("uid": )" + std::to_string( uid ) ) ).uid, uid );
   }
}

TEST_F( DriverArgs, DriverNullLeavesTheDriverEmpty ) {
   EXPECT_EQ( parse( R"({ "did": 7, "driver": null, "address": { "address": 72 } })" ).driver, "" );
   EXPECT_EQ( parse( R"({ "did": 7, "driver": "", "address": { "address": 72 } })" ).driver, "" );
}

TEST_F( DriverArgs, ProvideHamIsANumberAndTrueButForZero ) {
   EXPECT_TRUE( parse( document() ).provideHam );
   EXPECT_FALSE( parse( document( R"("provideHam": 0)" ) ).provideHam );
   EXPECT_TRUE( parse( document( R"("provideHam": 1)" ) ).provideHam );
   EXPECT_TRUE( parse( document( R"("provideHam": 7)" ) ).provideHam );
   EXPECT_TRUE( parse( document( R"("provideHam": 256)" ) ).provideHam );
   EXPECT_TRUE( parse( document( R"("provideHam": 4294967295)" ) ).provideHam );
}

TEST_F( DriverArgs, ThatAreNoMultiDeviceIgnoreItsParts ) {
   for ( auto keys : { R"("isMultiDevice": false)", R"("isMultiDevice": false, "multiDeviceArgs": 5)",
            R"("multiDeviceArgs": { "led": 5 })", R"("multiDeviceArgs": { "led": "{}" })" } ) {
      SCOPED_TRACE( keys );
      auto args = parse( document( keys ) );
      EXPECT_FALSE( args.isMultiDevice );
      EXPECT_THAT( args.multiDeviceArgs, IsEmpty() );
      EXPECT_EQ( args.address.address, 72U );
   }
}

TEST_F( DriverArgs, OfAMultiDeviceHoldItsPartsByKey ) {
   auto args = parse( multiDocument( R"("multiDeviceArgs": { "slot": "{ \"did\": 1 }", "led": "" })" ) );
   EXPECT_TRUE( args.isMultiDevice );
   EXPECT_THAT( args.multiDeviceArgs, ElementsAre( Pair( "led", "" ), Pair( "slot", R"({ "did": 1 })" ) ) );
}

TEST_F( DriverArgs, OfAMultiDeviceMayHaveNoParts ) {
   EXPECT_THAT( parse( multiDocument( R"("multiDeviceArgs": {})" ) ).multiDeviceArgs, IsEmpty() );
}

TEST_F( DriverArgs, OfAMultiDeviceKeepTheLaterOfTwoEqualParts ) {
   auto args = parse( multiDocument( R"("multiDeviceArgs": { "led": "early", "led": "late" })" ) );
   EXPECT_THAT( args.multiDeviceArgs, ElementsAre( Pair( "led", "late" ) ) );
}

TEST_F( DriverArgs, OfAMultiDeviceDoNotReadTheAddress ) {
   for ( auto address : { "5", "{}", R"({ "address": 72, "addrSize": 4 })" } ) {
      auto text = multiDocument( R"("multiDeviceArgs": {}, "address": )" + std::string( address ) );
      Drivers::DriverArgs args;
      args.address = std::bit_cast<HamAddress>( uint64_t { 0x1234'5678'9ABC'DEF0 } );
      EXPECT_TRUE( args.parseJSON( text.c_str() ) );
      EXPECT_EQ( std::bit_cast<uint64_t>( args.address ), 0x1234'5678'9ABC'DEF0U ) << address;
   }
}

TEST_F( DriverArgs, OfAMultiDeviceReadEverythingElse ) {
   auto args = parse( multiDocument(
      R"("multiDeviceArgs": {}, "provideHam": 0, "uid": 70, "driverArgs": { "slotId": 3 })" ) );
   EXPECT_EQ( args.driver, "Slot" );
   EXPECT_EQ( args.did, 7U );
   EXPECT_EQ( args.uid, 70U );
   EXPECT_FALSE( args.provideHam );
   EXPECT_THAT( args.driverArgs, ElementsAre( Pair( "slotId", "3" ) ) );
}

TEST_F( DriverArgs, FlattenEveryDriverValueToText ) {
   const struct {
      const char* json;
      std::string text;
   } rows[] = {
      // signed 32 bits
      { "0", "0" },
      { "-0", "0" },
      { "1", "1" },
      { "-1", "-1" },
      { "-5", "-5" },
      { "12000", "12000" },
      { "2147483647", "2147483647" },
      { "-2147483648", "-2147483648" },
      // unsigned 32 bits
      { "2147483648", "2147483648" },
      { "4294967295", "4294967295" },
      // beyond 32 bits
      { "4294967296", "" },
      { "-2147483649", "" },
      { "5000000000", "" },
      { "9223372036854775807", "" },
      { "-9223372036854775808", "" },
      { "18446744073709551615", "" },
      // fraction or exponent: six significant digits
      { "1.0", "1" },
      { "1.5", "1.5" },
      { "3.0", "3" },
      { "-2.25", "-2.25" },
      { "0.0", "0" },
      { "-0.0", "-0" },
      { "0.1", "0.1" },
      { "0.0001", "0.0001" },
      { "0.00001", "1e-05" },
      { "1e3", "1000" },
      { "12e-1", "1.2" },
      { "100000.0", "100000" },
      { "999999.0", "999999" },
      { "1000000.0", "1e+06" },
      { "1234567.5", "1.23457e+06" },
      { "123456.7", "123457" },
      { "3.14159265", "3.14159" },
      { "4294967296.0", "4.29497e+09" },
      { "1e100", "1e+100" },
      { "1.7976931348623157e308", "1.79769e+308" },
      { "5e-324", "4.94066e-324" },
      // strings
      { R"("")", "" },
      { R"("0x48")", "0x48" },
      { R"(" a b ")", " a b " },
      { R"("12000")", "12000" },
      { R"("null")", "null" },
      { R"("tab\tquote\"backslash\\slash\/")", "tab\tquote\"backslash\\slash/" },
      { R"("\u00e9 \ud83d\ude00")", "\xc3\xa9 \xf0\x9f\x98\x80" },
      { R"("a\u0000b")", std::string( "a\0b", 3 ) },
      // the rest
      { "true", "true" },
      { "false", "false" },
      { "{}", "" },
      { R"({ "nested": 1 })", "" },
      { "[]", "" },
      { "[ 1, 2 ]", "" },
   };

   for ( auto& [json, text] : rows ) {
      EXPECT_EQ( driverArgsOf( R"("value": )" + std::string( json ) ), ( Map { { "value", text } } ) )
         << json;
   }
}

TEST_F( DriverArgs, MakeNoEntryForANull ) {
   EXPECT_THAT( driverArgsOf( R"("none": null)" ), IsEmpty() );
   EXPECT_THAT(
      driverArgsOf( R"("a": 1, "none": null, "b": 2)" ), ElementsAre( Pair( "a", "1" ), Pair( "b", "2" ) ) );
}

TEST_F( DriverArgs, MayHaveNoDriverValues ) {
   EXPECT_THAT( parse( document( R"("driverArgs": null)" ) ).driverArgs, IsEmpty() );
   EXPECT_THAT( parse( document( R"("driverArgs": {})" ) ).driverArgs, IsEmpty() );
}

TEST_F( DriverArgs, KeepTheLaterOfTwoEqualDriverKeys ) {
   EXPECT_THAT( driverArgsOf( R"("a": 1, "b": 2, "a": "late")" ),
      ElementsAre( Pair( "a", "late" ), Pair( "b", "2" ) ) );
   EXPECT_THAT( driverArgsOf( R"("a": 1, "a": [])" ), ElementsAre( Pair( "a", "" ) ) );
   EXPECT_THAT( driverArgsOf( R"("a": 1, "a": null)" ), ElementsAre( Pair( "a", "1" ) ) );
   EXPECT_THAT( driverArgsOf( R"("a": null, "a": 1)" ), ElementsAre( Pair( "a", "1" ) ) );
}

TEST_F( DriverArgs, KeepDriverKeysAsTheyAre ) {
   EXPECT_THAT( driverArgsOf( R"("": 1, "B": 2, "b": 3, "did": 4)" ),
      ElementsAre( Pair( "", "1" ), Pair( "B", "2" ), Pair( "b", "3" ), Pair( "did", "4" ) ) );
}

TEST_F( DriverArgs, IgnoreUnknownKeys ) {
   auto args = parse( document( R"("label": 5, "components": 5, "name": null, "x": { "driver": 5 })" ) );
   EXPECT_EQ( args.driver, "PCT2075" );
   EXPECT_THAT( args.driverArgs, IsEmpty() );
}

TEST_F( DriverArgs, TakeTheFirstOfTwoEqualKeys ) {
   auto args = parse( document( R"("did": -1, "driver": 5, "address": 5, "provideHam": 0, "provideHam": true,
      "uid": 70, "uid": -1, "isMultiDevice": false, "isMultiDevice": true,
      "driverArgs": { "first": 1 }, "driverArgs": { "second": 2 })" ) );
   EXPECT_EQ( args.did, 7U );
   EXPECT_EQ( args.driver, "PCT2075" );
   EXPECT_EQ( args.address.address, 72U );
   EXPECT_FALSE( args.provideHam );
   EXPECT_EQ( args.uid, 70U );
   EXPECT_FALSE( args.isMultiDevice );
   EXPECT_THAT( args.driverArgs, ElementsAre( Pair( "first", "1" ) ) );
}

TEST_F( DriverArgs, OfAJsonValueAreZeroedFirst ) {
   rapidjson::Document json;
   json.Parse( multiDocument( R"("multiDeviceArgs": {})" ).c_str() );
   auto args = Drivers::DriverArgs::fromJSON( json );
   ASSERT_NE( args, nullptr );
   EXPECT_EQ( std::bit_cast<uint64_t>( args->address ), 0U );
   EXPECT_EQ( args->jsonText, nullptr );
   EXPECT_EQ( args->did, 7U );
   EXPECT_EQ( args->uid, Drivers::DriverArgs::noUid );
   EXPECT_TRUE( args->isMultiDevice );
   EXPECT_TRUE( args->provideHam );
}
