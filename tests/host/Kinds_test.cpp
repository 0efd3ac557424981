#include "Simulation.h"

#include <gmock/gmock.h>

#include <exception>
#include <functional>

using testing::ElementsAre;

namespace {

/** Which kinds of object a device gives, and what a host sees of the others. */
class Kinds : public SimulationTest {
protected:
   using Add = std::function<const void*( const char* )>;

   /** The text of the exception that an add function throws, "nothing" for none. */
   static std::string thrownBy( const Add& add, const std::string& text ) {
      try {
         add( text.c_str() );
      } catch ( std::exception& error ) {
         return error.what();
      }
      return "nothing";
   }

   Add addTempSensor = [this]( const char* text ) { return plugin.temp_sensor_add( text, 65, 75 ); };
};

TEST_F( Kinds, AKindThatADriverDoesNotOfferThrows ) {
   load( { 1, 2 } );

   const struct {
      const char* name;
      Add add;
      unsigned did;
      const char* driver;
      const char* members;
      const char* thrown;
   } rows[] = {
      { "fan", plugin.fan_add, 1, "PCT2075", "", "Not implemented newFan" },
      { "psu", plugin.psu_add, 1, "PCT2075", "", "Not implemented newPsu" },
      { "led", plugin.led_add, 1, "PCT2075", "", "Not implemented newLed" },
      { "slot", plugin.slot_add, 1, "PCT2075", "", "Not implemented newSlot" },
      { "PoE port", plugin.poe_port_add, 1, "PCT2075", "", "Not implemented newPoePort" },
      { "temperature sensor", addTempSensor, 2, "Dummy", "", "Not implemented newTempSensor" },
      { "sfp", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "sfp" })",
         "Not implemented newSfpXcvr" },
      { "sfp+", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "sfp+" })",
         "Not implemented newSfpXcvr" },
      { "qsfp", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "qsfp" })",
         "Not implemented newQsfpXcvr" },
      { "qsfp+", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "qsfp+" })",
         "Not implemented newQsfpXcvr" },
      { "qsfpDd", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "qsfpDd" })",
         "Not implemented newCmisXcvr" },
      { "qsfpCmis", plugin.xcvr_add, 1, "PCT2075", R"("driverArgs": { "id": 1, "type": "qsfpCmis" })",
         "Not implemented newCmisXcvr" },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      EXPECT_EQ( thrownBy( row.add, arguments( row.did, row.driver, row.members ) ), row.thrown );
   }
}

TEST_F( Kinds, NoDriverOffersAPowerSupply ) {
   const struct {
      unsigned did;
      const char* driver;
      const char* members;
   } rows[] = {
      { 1, "Dummy", "" },
      { 2, "GpioDriver", "" },
      { 3, "PCT2075", "" },
      { 4, "EMC2305", "" },
      { 5, "SelvaneXcvr", "" },
      { 6, "SelvanePortLed", "" },
      { 7, "SelvaneSystemLed", "" },
      { 8, "BCM59121", R"("driverArgs": { "numPorts": 12, "numAtPorts": 8 })" },
   };

   load( { 1, 2, 3, 4, 5, 6, 7, 8 } );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.driver );
      EXPECT_EQ( thrownBy( plugin.psu_add, arguments( row.did, row.driver, row.members ) ),
         "Not implemented newPsu" );
   }
}

TEST_F( Kinds, TheDeviceStaysWhenAKindHasThrown ) {
   load( { 1 } );
   thrownBy( plugin.fan_add, arguments( 1, "PCT2075" ) );
   Host::traces.clear();

   EXPECT_NE( addTempSensor( arguments( 1, "PCT2075" ).c_str() ), nullptr );

   EXPECT_TRUE( Host::hasTraced( 0, "using previously instanciated HardwareDevice PCT2075" ) );
}

TEST_F( Kinds, AnArgumentThatIsNoNumberThrows ) {
   load( { 1 } );

   const struct {
      const char* name;
      Add add;
      const char* members;
   } rows[] = {
      { "gpio register", plugin.gpio_add, R"("driverArgs": { "register": "low", "bitpos": 1 })" },
      { "gpio bit", plugin.gpio_add, R"("driverArgs": { "register": 1, "bitpos": "" })" },
      { "transceiver id", plugin.xcvr_add, R"("driverArgs": { "id": "one", "type": "sfp" })" },
      { "transceiver id beyond 32 bits", plugin.xcvr_add,
         R"("driverArgs": { "id": "5000000000", "type": "sfp" })" },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      EXPECT_EQ( thrownBy( row.add, arguments( 1, "Dummy", row.members ) ), "stoi" );
   }
}

TEST_F( Kinds, AnUnknownDriverGivesNoObject ) {
   load( { 1 } );
   auto text = arguments( 1, "Missing" );

   EXPECT_EQ( plugin.fan_add( text.c_str() ), nullptr );

   EXPECT_THAT(
      Host::tracesOf( 0 ), ElementsAre( "parsing devArgs = " + text, "looking for already existing device 1",
                              "creating Ham", "looking for component 4294967295 of device 1 in topology",
                              "creating SimHam HAM using topology information",
                              "creating HardwareDevice Missing", "driver Missing not found",
                              "factory function returned a null object", "DeviceBase::create() failed" ) );
}

TEST_F( Kinds, AnUnknownDriverIsTriedAgainByTheNextAdd ) {
   load( { 1 } );
   plugin.fan_add( arguments( 1, "Missing" ).c_str() );

   EXPECT_NE( addTempSensor( arguments( 1, "PCT2075" ).c_str() ), nullptr );
}

TEST_F( Kinds, EachKindHasItsOwnWordsForADeviceThatFails ) {
   load( { 1 } );
   constexpr int silent = -1;

   const struct {
      const char* name;
      Add add;
      int level;
   } rows[] = {
      { "slot", plugin.slot_add, 0 },
      { "led", plugin.led_add, 0 },
      { "fan", plugin.fan_add, 0 },
      { "transceiver", plugin.xcvr_add, 0 },
      { "power supply", plugin.psu_add, 2 },
      { "temperature sensor", addTempSensor, silent },
      { "gpio", plugin.gpio_add, silent },
      { "PoE port", plugin.poe_port_add, silent },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      Host::traces.clear();

      EXPECT_EQ( row.add( arguments( 1, "Missing" ).c_str() ), nullptr );

      auto expected = row.level == silent ? Host::TraceLine { 0, "factory function returned a null object" }
                                          : Host::TraceLine { row.level, "DeviceBase::create() failed" };
      EXPECT_EQ( Host::traces.back(), expected );
   }
}

} // namespace
