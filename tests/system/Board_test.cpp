// The switch's own board: its objects, its topology and its emulated chips fit together.

#include "EmulatedBoard.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <chrono>
#include <thread>

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

/** All that the board has but the PoE ports, which take their time. */
const std::vector<std::string> smallDevices = { "status", "switch", "inlet", "outlet", "asic", "poe", "fan?",
   "tray?", "sfp?", "led.*", "tray?.absent", "psu?.power_good", "poe.reset" };

} // namespace

TEST_F( Board, HasNoSmallDeviceThatFails ) {
   auto result = run( smallDevices );

   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 ) << result.out;
}

TEST_F( Board, HasNoSmallDeviceThatFailsInSimulation ) {
   auto arguments = smallDevices;
   arguments.insert( arguments.begin(), "--sim" );

   auto result = run( arguments );

   EXPECT_EQ( result.err, "" );
   EXPECT_EQ( result.exitStatus, 0 ) << result.out;
}

TEST_F( Board, ShowsWhatItsChipsSay ) {
   auto result = run( { "status", "switch", "fan?", "tray?", "sfp?", "*.absent", "*.power_good" } );

   EXPECT_EQ( result.out, "System\n"
                          "NAME    VERSION  STATUS\n"
                          "switch  0x01.2a  ok\n"
                          "\n"
                          "Fans\n"
                          "NAME     SPEED    MAXIMUM  STATUS\n"
                          "fan1  8000 rpm  20000 rpm  ok\n"
                          "fan2  8000 rpm  20000 rpm  ok\n"
                          "fan3  8000 rpm  20000 rpm  ok\n"
                          "\n"
                          "Slots\n"
                          "NAME   PRESENT  MODEL      SERIAL    STATUS\n"
                          "tray1  yes      SLV-FAN-F  SLVF0001  ok\n"
                          "tray2  yes      SLV-FAN-F  SLVF0002  ok\n"
                          "tray3  yes      SLV-FAN-F  SLVF0003  ok\n"
                          "\n"
                          "Transceivers\n"
                          "NAME  PRESENT  TX FAULT  RX LOS  TX DISABLE  STATUS\n"
                          "sfp1  yes      no        no      no          ok\n"
                          "sfp2  yes      no        yes     no          ok\n"
                          "sfp3  no       no        yes     no          absent\n"
                          "sfp4  no       no        yes     no          absent\n"
                          "\n"
                          "GPIOs\n"
                          "NAME             VALUE  STATUS\n"
                          "tray1.absent     0      ok\n"
                          "tray2.absent     0      ok\n"
                          "tray3.absent     0      ok\n"
                          "psu1.power_good  1      ok\n"
                          "psu2.power_good  1      ok\n" );
   EXPECT_EQ( result.err, "" );
}

TEST_F( Board, HasEachFanOnItsOwnOutputOfTheController ) {
   set( "fans.fan1.rpm", "10000" );
   set( "fans.fan1.drive", "128" );
   set( "fans.fan3.stalled", "1" );

   // At 10000 rpm the tachometer counts 786, which is 10005 rpm; a rotor that stands counts 8191, 960 rpm.
   // Until it is read, the first rotor has started towards 10039 rpm.
   EXPECT_NEAR( valueOf( "fan1", "rpm" ), 10005, 40 );
   EXPECT_EQ( valueOf( "fan2", "rpm" ), 8000 );
   EXPECT_EQ( valueOf( "fan3", "rpm" ), 960 );
}

TEST_F( Board, HasFansThatTakeTheirTimeToAnotherSpeed ) {
   set( "fans.fan2.drive", "255" );

   double before = valueOf( "fan2", "rpm" );
   EXPECT_LT( before, 19000 ) << "it takes more than two seconds to there";
   for ( int i = 0; i < 200 && before < 8500; ++i ) {
      std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) );
      before = valueOf( "fan2", "rpm" );
   }
   EXPECT_GE( before, 8500 );
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

TEST_F( Board, LosesNothingElseWhenAChipDoesNotAnswer ) {
   emu( { "fault", "fans", "nack" } );

   auto result = run( { "status", "inlet", "fan1", "tray1", "sfp1" } );

   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_THAT( result.err, HasSubstr( "fan1: " ) );
   EXPECT_THAT( result.err, HasSubstr( "i2c-3 0x2c reg 0x3e: no acknowledge" ) );
   EXPECT_THAT( result.out, HasSubstr( "24.5 °C" ) );
   EXPECT_THAT( result.out, HasSubstr( "SLVF0001  ok\n" ) );
   EXPECT_THAT( result.out, HasSubstr( "sfp1  yes" ) );
}
