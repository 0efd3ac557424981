// The documents of the switch's own board: each object is on the part of its chip that it is named after.

#include "EmulatedBoard.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <fstream>
#include <iterator>
#include <set>

using ::testing::HasSubstr;

namespace {

class Board : public EmulatedBoardTest {
protected:
   Board() { environment["QUILLON_BOARD"] = BOARDS "/selvane"; }

   void set( const std::string& property, const std::string& value ) const {
      EXPECT_EQ( emu( { "set", property, value } ).exitStatus, 0 ) << property;
   }

   std::string get( const std::string& property ) const { return emu( { "get", property } ).out; }

   /** A value of an object that could be read. */
   double valueOf( const std::string& name, const char* key ) const {
      auto result = run( { "--json", "status", name } );
      rapidjson::Document document;
      document.Parse( result.out.c_str() );
      auto& object = document["objects"][0];
      bool isRead = object["error"].IsNull() && object.HasMember( key );
      EXPECT_TRUE( isRead ) << result.out;
      return isRead ? object[key].GetDouble() : -1;
   }
};

} // namespace

TEST_F( Board, HasEachFanOnItsOwnOutputOfTheController ) {
   set( "fans.fan1.drive", "128" );
   set( "fans.fan1.rpm", "10000" );
   set( "fans.fan3.stalled", "1" );

   // The first rotor is on its way from 10000 rpm to 10039, between the counts 786, 10005 rpm, and 783, 10043
   // rpm. One that stands counts 8191, 960 rpm.
   auto rpm = valueOf( "fan1", "rpm" );
   EXPECT_GE( rpm, 10005 );
   EXPECT_LE( rpm, 10043 );
   EXPECT_EQ( valueOf( "fan2", "rpm" ), 8000 );
   EXPECT_EQ( valueOf( "fan3", "rpm" ), 960 );
}

TEST_F( Board, HasEachSignalOfACageOnItsOwnBit ) {
   const struct {
      const char* signal;
      const char* value;
      const char* row;
   } steps[] = {
      { "present", "1", "yes      no        no      no " },
      { "tx_fault", "1", "yes      yes       no      no " },
      { "rx_los", "1", "yes      yes       yes     no " },
      { "present", "0", "no       no        yes     no " },
   };

   for ( std::string cage : { "sfp1", "sfp2", "sfp3", "sfp4" } ) {
      set( fmt::format( "cpld.{}.rx_los", cage ), "0" );
      for ( auto& step : steps ) {
         set( fmt::format( "cpld.{}.{}", cage, step.signal ), step.value );
         EXPECT_THAT( run( { "status", cage } ).out, HasSubstr( cage + "  " + step.row ) );
      }
   }
}

TEST_F( Board, HasASignalForEachTrayAndSupply ) {
   const std::pair<const char*, const char*> rows[] = {
      { "tray1.absent", "cpld.tray1.present" },
      { "tray2.absent", "cpld.tray2.present" },
      { "tray3.absent", "cpld.tray3.present" },
      { "psu1.power_good", "cpld.psu1.power_good" },
      { "psu2.power_good", "cpld.psu2.power_good" },
   };
   for ( auto& [object, property] : rows ) {
      auto before = valueOf( object, "value" );
      set( property, "0" );
      EXPECT_EQ( valueOf( object, "value" ), 1 - before ) << object;
   }
   EXPECT_EQ( valueOf( "poe.reset", "value" ), 1 );
}

TEST_F( Board, StartsThePortLedsWithTheFirstOfThem ) {
   EXPECT_EQ( get( "cpld.led.ports" ), "0xff\n" );
   EXPECT_EQ( run( { "status", "led.port48" } ).exitStatus, 0 );
   EXPECT_EQ( get( "cpld.led.ports" ), "0x00\n" );
}

TEST_F( Board, HasEachLedOnARegisterOfItsOwn ) {
   std::ifstream stream( BOARDS "/selvane/objects.json" );
   std::string text( std::istreambuf_iterator<char>( stream ), {} );
   rapidjson::Document document;
   document.Parse( text.c_str() );
   ASSERT_FALSE( document.HasParseError() );

   std::set<int> registers;
   size_t leds = 0;
   for ( auto& object : document["objects"].GetArray() ) {
      if ( object["kind"] == "led" ) {
         auto& driverArgs = object["args"]["driverArgs"];
         registers.insert( driverArgs[driverArgs.HasMember( "reg" ) ? "reg" : "ledReg"].GetInt() );
         ++leds;
      }
   }

   // Four of the switch, four of the cages, 48 of the PoE ports.
   EXPECT_EQ( leds, 56U );
   EXPECT_EQ( registers.size(), leds );
}
