#include "LockHolder.h"
#include "Simulation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <thread>

using testing::ElementsAre;

namespace {

/** From the first init to the readings of a host that runs in simulation. */
class Life : public SimulationTest {};

TEST_F( Life, EveryKindIsInitialisedWithTheSameText ) {
   const struct {
      const char* name;
      ql_status ( *init )( const char* );
   } kinds[] = {
      { "ql_system_init", plugin.system_init },
      { "ql_temp_sensor_init", plugin.temp_sensor_init },
      { "ql_fan_init", plugin.fan_init },
      { "ql_psu_init", plugin.psu_init },
      { "ql_led_init", plugin.led_init },
      { "ql_slot_init", plugin.slot_init },
      { "ql_xcvr_init", plugin.xcvr_init },
      { "ql_gpio_init", plugin.gpio_init },
      { "ql_poe_port_init", plugin.poe_port_init },
   };

   auto text = topology( { 1 } );
   auto outcome = "loading topology json";

   for ( auto& kind : kinds ) {
      SCOPED_TRACE( kind.name );
      Host::reset();

      EXPECT_EQ( kind.init( text.c_str() ), QL_STATUS_OK );

      EXPECT_THAT( Host::traces,
         ElementsAre( Host::TraceLine { 0, kind.name },
            Host::TraceLine { 5, kind.name + ( ": json = " + text ) }, Host::TraceLine { 2, outcome } ) );
      outcome = "topology is the same as the previously loaded one (using it)";
   }
}

TEST_F( Life, AnotherTextIsLoadedAfresh ) {
   load( { 1 } );

   EXPECT_EQ( plugin.fan_init( topology( { 2 } ).c_str() ), QL_STATUS_OK );

   EXPECT_TRUE( Host::hasTraced( 2, "loading topology json" ) );
   EXPECT_EQ( plugin.gpio_add( arguments( 1, "GpioDriver" ).c_str() ), nullptr );
   EXPECT_NE( plugin.gpio_add(
                 arguments( 2, "GpioDriver", R"("driverArgs": { "register": 1, "bitpos": 0 })" ).c_str() ),
      nullptr );
}

TEST_F( Life, AnObjectOutlivesTheTopologyThatItWasMadeFrom ) {
   load( { 1 } );
   auto sensor = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   ASSERT_NE( sensor, nullptr );
   load( { 2 } );

   float degrees = 0;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.125F );
}

TEST_F( Life, ANewSensorReadsItsStartingTemperature ) {
   load( { 1 } );

   auto sensor = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );

   ASSERT_NE( sensor, nullptr );
   float degrees = 0;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.125F );
}

TEST_F( Life, TheThresholdsOfASensorStandInItsRegisterFile ) {
   load( { 1 } );

   plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );

   // 65.0 degrees are 0x41 and 75.0 are 0x4b in the high byte, which the chip sends first.
   EXPECT_EQ( registers( "PCT2075" ), "20000041004b\n" );
}

TEST_F( Life, TheLastAddOfADeviceDecidesItsThresholds ) {
   load( { 1 } );
   plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );

   plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), -10, 0.5F );

   EXPECT_EQ( registers( "PCT2075" ), "200000f68000\n" );
}

TEST_F( Life, ANamedDeviceHasARegisterFileOfItsName ) {
   load( { 1, 2 } );

   plugin.temp_sensor_add( arguments( 1, "PCT2075", R"("name": "inlet")" ).c_str(), 65, 75 );
   plugin.temp_sensor_add( arguments( 2, "PCT2075", R"("name": "outlet")" ).c_str(), 30, 40 );

   EXPECT_EQ( registers( "PCT2075-inlet" ), "20000041004b\n" );
   EXPECT_EQ( registers( "PCT2075-outlet" ), "2000001e0028\n" );
}

TEST_F( Life, ASensorShowsWhatIsInItsRegisterFile ) {
   load( { 1 } );
   auto sensor = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   ASSERT_NE( sensor, nullptr );

   const struct {
      const char* field;
      float degrees;
   } rows[] = {
      { "0000", 0 },
      { "0019", 25 },
      { "e07f", 127.875F },
      { "e0ff", -0.125F },
      { "E0FF", -0.125F },
      { "00e7", -25 },
      { "0080", -128 },
      { "1f00", 0 },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.field );
      setRegisters( "PCT2075", row.field );

      float degrees = 1000;
      EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
      EXPECT_EQ( degrees, row.degrees );
   }
}

constexpr auto pause = std::chrono::milliseconds( 200 );

TEST_F( Life, AReadingWaitsForAnotherProcessToFinishItsChange ) {
   load( { 1 } );
   auto sensor = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   ASSERT_NE( sensor, nullptr );
   LockHolder writer( registerFiles / "PCT2075", F_WRLCK, []( int file ) {
      bool begun = pwrite( file, "00", 2, 0 ) == 2;
      std::this_thread::sleep_for( pause );
      return begun && pwrite( file, "19", 2, 2 ) == 2;
   } );

   float degrees = 0;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );

   EXPECT_TRUE( writer.succeeded() );
   EXPECT_EQ( degrees, 25 );
}

TEST_F( Life, AWriteWaitsForAnotherProcessToFinishItsReading ) {
   load( { 1 } );
   plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   LockHolder reader( registerFiles / "PCT2075", F_RDLCK, []( int file ) {
      std::this_thread::sleep_for( pause );
      char fields[13] = {};
      return pread( file, fields, 12, 0 ) == 12 && fields == std::string( "20000041004b" );
   } );

   plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 30, 40 );

   EXPECT_TRUE( reader.succeeded() );
   EXPECT_EQ( registers( "PCT2075" ), "2000001e0028\n" );
}

TEST_F( Life, ObjectsOfOneDidShareTheirDevice ) {
   load( { 1 } );
   auto first = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   Host::traces.clear();

   auto second = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );

   EXPECT_NE( first, second );
   EXPECT_EQ( first->ops, second->ops );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "parsing devArgs = " + arguments( 1, "PCT2075" ), "looking for already existing device 1",
         "using previously instanciated HardwareDevice PCT2075", "setting alert threshold",
         "setting critical threshold" ) );
}

TEST_F( Life, TheTableOfASensorTellsWhatItHas ) {
   load( { 1 } );
   auto sensor = plugin.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   ASSERT_NE( sensor, nullptr );

   EXPECT_EQ( sensor->ops->size, 24U );
   EXPECT_EQ( sensor->ops->debug_info, nullptr );
   EXPECT_NE( sensor->ops->get_temperature, nullptr );
}

TEST_F( Life, AGpioWithoutSimulatedRegistersReadsZeroAndWarns ) {
   load( { 1 } );
   auto gpio = plugin.gpio_add(
      arguments( 1, "GpioDriver", R"("driverArgs": { "register": 66, "bitpos": 3 })" ).c_str() );
   ASSERT_NE( gpio, nullptr );
   EXPECT_EQ( gpio->ops->size, 32U );

   uint32_t value = 7;
   EXPECT_EQ( gpio->ops->bit_read( gpio, &value ), QL_STATUS_OK );

   EXPECT_EQ( value, 0U );
   EXPECT_TRUE( Host::hasTraced( 0,
      "WARNING: Simulated Driver GpioDriver doesn't yet have expectedVal set for register 0x42 using "
      "SIMULATION_HAM()\n" ) );
}

} // namespace
