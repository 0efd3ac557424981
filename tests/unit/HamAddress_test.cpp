#include "Ham/HamAddress.h"

#include "Assertion.h"
#include "Topology.h"
#include "TopologyText.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <string>
#include <type_traits>

namespace {

struct Field {
   const char* name;
   unsigned first;
   unsigned width;
   uint64_t ( *get )( HamAddress address );
};

const Field fields[] = {
   { "reg", 0, 32, []( HamAddress it ) -> uint64_t { return it.reg; } },
   { "address", 32, 7, []( HamAddress it ) -> uint64_t { return it.address; } },
   { "bus", 39, 7, []( HamAddress it ) -> uint64_t { return it.bus; } },
   { "accelerator", 46, 7, []( HamAddress it ) -> uint64_t { return it.accelerator; } },
   { "writeNoStopReadCurrent", 53, 1, []( HamAddress it ) -> uint64_t { return it.writeNoStopReadCurrent; } },
   { "busTimeout", 54, 3, []( HamAddress it ) -> uint64_t { return it.busTimeout; } },
   { "addrSize", 57, 2, []( HamAddress it ) -> uint64_t { return it.addrSize; } },
   { "extraDelay", 59, 1, []( HamAddress it ) -> uint64_t { return it.extraDelay; } },
   { "writeDelay", 60, 2, []( HamAddress it ) -> uint64_t { return it.writeDelay; } },
   { "readDelay", 62, 2, []( HamAddress it ) -> uint64_t { return it.readDelay; } },
};

unsigned firstBitOf( const std::string& name ) {
   auto field =
      std::find_if( std::begin( fields ), std::end( fields ), [&]( auto& row ) { return row.name == name; } );
   return field->first;
}

rapidjson::Document parse( const std::string& text ) {
   rapidjson::Document document;
   document.Parse( text.c_str() );
   EXPECT_FALSE( document.HasParseError() ) << text;
   return document;
}

/** What the text makes of a record that was full of ones. */
uint64_t wordOf( const std::string& text ) {
   auto address = std::bit_cast<HamAddress>( UINT64_MAX );
   Topology::fillAddressFromJSON( parse( text ), address );
   return std::bit_cast<uint64_t>( address );
}

/** The text of an address object with a value in one of its keys. */
std::string withKey( const std::string& key, const std::string& value ) {
   auto pair = "\"" + key + "\": " + value;
   return key == "address" ? "{ " + pair + " }" : R"({ "address": 0, )" + pair + " }";
}

} // namespace

TEST( HamAddress, IsOne64BitWord ) {
   EXPECT_EQ( sizeof( HamAddress ), 8U );
   EXPECT_EQ( alignof( HamAddress ), 8U );
   EXPECT_TRUE( std::is_trivially_copyable_v<HamAddress> );
   EXPECT_EQ( std::bit_cast<uint64_t>( HamAddress {} ), 0U );
}

TEST( HamAddress, HasEachBitInOneField ) {
   for ( unsigned bit = 0; bit < 64; bit++ ) {
      auto address = std::bit_cast<HamAddress>( uint64_t { 1 } << bit );
      for ( auto& [name, first, width, get] : fields ) {
         auto isHere = bit >= first && bit < first + width;
         EXPECT_EQ( get( address ), isHere ? uint64_t { 1 } << ( bit - first ) : 0 )
            << name << ", bit " << bit;
      }
   }
}

TEST( HamAddress, IsCoveredByItsFields ) {
   unsigned bit = 0;
   for ( auto& [name, first, width, get] : fields ) {
      EXPECT_EQ( first, bit ) << name;
      bit += width;
   }
   EXPECT_EQ( bit, 64U );
}

TEST( FillAddress, SetsTheWholeRecord ) {
   EXPECT_EQ( wordOf( R"({ "address": 0 })" ), 0x0200'0000'0000'0000U );
   EXPECT_EQ( wordOf( R"({ "address": 72 })" ), 0x0200'0048'0000'0000U );
   EXPECT_EQ( wordOf( R"({ "address": 72, "addrSize": 2 })" ), 0x0400'0048'0000'0000U );
   EXPECT_EQ( wordOf( R"({ "address": 127, "accel": 127, "writeNoStopReadCurrent": true, "busTimeout": 7,
      "addrSize": 1, "extraDelay": 1, "writeDelay": 3, "readDelay": 3 })" ),
      0xFBFF'C07F'0000'0000U );
}

TEST( FillAddress, PutsEachKeyIntoItsFieldAndCutsItsValue ) {
   const struct {
      const char* key;
      const char* field;
      const char* value;
      uint64_t stored;
   } rows[] = {
      { "address", "address", "0", 0 },
      { "address", "address", "127", 127 },
      { "address", "address", "128", 0 },
      { "address", "address", "200", 72 },
      { "address", "address", "4294967295", 127 },
      { "writeDelay", "writeDelay", "0", 0 },
      { "writeDelay", "writeDelay", "3", 3 },
      { "writeDelay", "writeDelay", "4", 0 },
      { "writeDelay", "writeDelay", "6", 2 },
      { "readDelay", "readDelay", "0", 0 },
      { "readDelay", "readDelay", "3", 3 },
      { "readDelay", "readDelay", "4", 0 },
      { "readDelay", "readDelay", "5", 1 },
      { "busTimeout", "busTimeout", "0", 0 },
      { "busTimeout", "busTimeout", "7", 7 },
      { "busTimeout", "busTimeout", "8", 0 },
      { "busTimeout", "busTimeout", "13", 5 },
      { "extraDelay", "extraDelay", "0", 0 },
      { "extraDelay", "extraDelay", "1", 1 },
      { "extraDelay", "extraDelay", "2", 0 },
      { "extraDelay", "extraDelay", "3", 1 },
      { "addrSize", "addrSize", "1", 1 },
      { "addrSize", "addrSize", "2", 2 },
      { "addrSize", "addrSize", "5", 1 },
      { "addrSize", "addrSize", "6", 2 },
      { "addrSize", "addrSize", "4294967294", 2 },
      { "accel", "accelerator", "0", 0 },
      { "accel", "accelerator", "127", 127 },
      { "accel", "accelerator", "128", 0 },
      { "accel", "accelerator", "200", 72 },
      { "accel", "accelerator", "4294967295", 127 },
      { "writeNoStopReadCurrent", "writeNoStopReadCurrent", "false", 0 },
      { "writeNoStopReadCurrent", "writeNoStopReadCurrent", "true", 1 },
   };

   for ( auto& [key, field, value, stored] : rows ) {
      // The fields beside it have their defaults: 1 in addrSize, 0 in the rest.
      auto rest = std::string( field ) == "addrSize" ? 0 : uint64_t { 1 } << 57;
      auto text = withKey( key, value );
      EXPECT_EQ( wordOf( text ), stored << firstBitOf( field ) | rest ) << text;
   }
}

TEST( FillAddress, IgnoresUnknownKeysAndFieldsWithoutAKey ) {
   EXPECT_EQ(
      wordOf( R"({ "address": 72, "register": 1, "reg": 1, "bus": 1, "accelerator": 1, "did": "x" })" ),
      0x0200'0048'0000'0000U );
}

TEST( FillAddress, TakesTheFirstOfTwoEqualKeys ) {
   EXPECT_EQ( wordOf( R"({ "address": 72, "address": "x", "addrSize": 2, "addrSize": 4 })" ),
      0x0400'0048'0000'0000U );
}

TEST( FillAddressRules, WantAnObjectWithAnAddress ) {
   HamAddress address {};
   for ( auto text : { "null", "72", "true", "\"72\"", "[ 72 ]" } ) {
      EXPECT_DEATH(
         Topology::fillAddressFromJSON( parse( text ), address ), assertionFailed( "value.IsObject()" ) )
         << text;
   }
   EXPECT_DEATH( Topology::fillAddressFromJSON( parse( R"({ "addrSize": 1 })" ), address ),
      assertionFailed( R"(value.HasMember( "address" ))" ) );
}

TEST( FillAddressRules, WantUnsignedNumbers ) {
   HamAddress address {};
   for ( auto key :
      { "address", "writeDelay", "readDelay", "busTimeout", "extraDelay", "addrSize", "accel" } ) {
      for ( auto value : TopologyText::unsignedValue.wrong ) {
         EXPECT_DEATH( Topology::fillAddressFromJSON( parse( withKey( key, value ) ), address ),
            assertionFailed( TopologyText::unsignedValue.assertion ) )
            << withKey( key, value );
      }
   }
}

TEST( FillAddressRules, WantABoolForTheMissingStop ) {
   HamAddress address {};
   for ( auto value : TopologyText::boolValue.wrong ) {
      EXPECT_DEATH(
         Topology::fillAddressFromJSON( parse( withKey( "writeNoStopReadCurrent", value ) ), address ),
         assertionFailed( TopologyText::boolValue.assertion ) )
         << value;
   }
}

TEST( FillAddressRules, RefuseASizeWhoseLowBitsAreNot1Or2 ) {
   HamAddress address {};
   for ( auto value : { "0", "3", "4", "7", "8", "4294967295" } ) {
      EXPECT_DEATH( Topology::fillAddressFromJSON( parse( withKey( "addrSize", value ) ), address ),
         assertionFailed( "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4" ) )
         << value;
   }
}

/** Each document breaks two rules; the assertion tells which was met first. */
TEST( FillAddressRules, TestTheSizeBetweenTheDelaysAndTheAccelerator ) {
   const auto size = "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4";
   const auto number = TopologyText::unsignedValue.assertion;
   const std::pair<const char*, const char*> rows[] = {
      { R"({ "addrSize": 3, "address": -1 })", number },
      { R"({ "addrSize": 3, "address": 0, "writeDelay": -1 })", number },
      { R"({ "addrSize": 3, "address": 0, "readDelay": -1 })", number },
      { R"({ "addrSize": 3, "address": 0, "busTimeout": -1 })", number },
      { R"({ "addrSize": 3, "address": 0, "extraDelay": -1 })", number },
      { R"({ "accel": -1, "address": 0, "addrSize": 3 })", size },
      { R"({ "writeNoStopReadCurrent": 1, "address": 0, "addrSize": 3 })", size },
      { R"({ "writeNoStopReadCurrent": 1, "address": 0, "accel": -1 })", number },
   };
   HamAddress address {};
   for ( auto& [text, assertion] : rows ) {
      EXPECT_DEATH( Topology::fillAddressFromJSON( parse( text ), address ), assertionFailed( assertion ) )
         << text;
   }
}
