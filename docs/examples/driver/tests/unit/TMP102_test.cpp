#include "Drivers/TMP102.h"

#include "Assertion.h"
#include "ScriptedHam.h"
#include "Simulation.h"

#include <cmath>
#include <memory>

using Drivers::TMP102;
using Host::TraceLine;
using testing::ElementsAre;

namespace {

class Tmp102 : public Host::Test {
protected:
   Tmp102() { device.ham = &ham; }

   ScriptedHam ham;
   TMP102 device;
};

// The data sheet's table and one step: 12 bits in the high bits of the chip's word. A Ham gives the chip's
// first byte, the high one, in the low bits.
struct {
   const char* name;
   uint16_t word;
   float degrees;
} const readings[] = {
   { "7FFh", 0xF07F, 127.9375F },
   { "640h", 0x0064, 100.0F },
   { "500h", 0x0050, 80.0F },
   { "4B0h", 0x004B, 75.0F },
   { "320h", 0x0032, 50.0F },
   { "190h", 0x0019, 25.0F },
   { "004h", 0x4000, 0.25F },
   { "001h", 0x1000, 0.0625F },
   { "000h", 0x0000, 0.0F },
   { "FFCh", 0xC0FF, -0.25F },
   { "E70h", 0x00E7, -25.0F },
   { "C90h", 0x00C9, -55.0F },
   { "190h with unused bits", 0x0F19, 25.0F },
};

} // namespace

TEST_F( Tmp102, IsKnownByItsName ) {
   std::unique_ptr<Component::DeviceBase> made( Drivers::drivers.at( "TMP102" )( {}, &ham ) );
   EXPECT_NE( dynamic_cast<TMP102*>( made.get() ), nullptr );
}

TEST_F( Tmp102, DecodesTheTemperaturesOfTheDataSheet ) {
   for ( auto& [name, word, expected] : readings ) {
      ham.registers[0x00] = word;
      float degrees = 99;
      EXPECT_EQ( device.getTemperature( &degrees ), QL_STATUS_OK ) << name;
      EXPECT_EQ( degrees, expected ) << name;
   }
}

TEST_F( Tmp102, ReadsTheTemperatureInOneTransaction ) {
   float degrees = 0;
   device.getTemperature( &degrees );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read16 0x00 /1", "execute" ) );
}

TEST_F( Tmp102, ThatCannotBeReadLeavesTheTemperatureAlone ) {
   ham.statuses = { QL_STATUS_FAILED };
   float degrees = 99;
   EXPECT_EQ( device.getTemperature( &degrees ), QL_STATUS_FAILED );
   EXPECT_EQ( degrees, 99.0F );
}

TEST_F( Tmp102, EncodesLimitsInSixteenths ) {
   struct {
      const char* name;
      float degrees;
      uint16_t word;
   } const rows[] = {
      { "75 °C", 75.0F, 0x004B },
      { "one step", 0.0625F, 0x1000 },
      { "below zero", -25.0F, 0x00E7 },
      { "a quarter below zero", -0.25F, 0xC0FF },
      { "rounds up", 0.04F, 0x1000 },
      { "rounds down", 0.03F, 0x0000 },
      { "highest", 127.9375F, 0xF07F },
      { "above the highest", 200.0F, 0xF07F },
      { "below the lowest", -200.0F, 0x0080 },
   };

   for ( auto& [name, degrees, word] : rows ) {
      EXPECT_EQ( device.setLimit( TMP102::High, degrees ), QL_STATUS_OK ) << name;
      EXPECT_EQ( fmt::format( "{:#06x}", ham.registers.at( 0x03 ) ), fmt::format( "{:#06x}", word ) ) << name;
   }
}

TEST_F( Tmp102, RefusesALimitThatIsNoNumber ) {
   EXPECT_EQ( device.setLimit( TMP102::Low, std::nanf( "" ) ), QL_STATUS_INVALID_ARGUMENT );
   EXPECT_TRUE( ham.log.empty() );
}

TEST_F( Tmp102, TellsOfALimitThatWasNotWritten ) {
   ham.statuses = { QL_STATUS_FAILED };
   EXPECT_EQ( device.setLimit( TMP102::Low, 45.0F ), QL_STATUS_FAILED );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "Error: writing TMP102 limit 0x2 failed with status 6" } ) );
}

TEST_F( Tmp102, SensorWritesBothThresholdsToTheChip ) {
   std::unique_ptr<Component::LogicalDevice::TempSensor> sensor( device.newTempSensor( {} ) );
   sensor->alertThresholdIs( 65.0F );
   sensor->criticalThresholdIs( 75.5F );
   EXPECT_EQ( sensor->alertThreshold, 65.0F );
   EXPECT_EQ( sensor->criticalThreshold, 75.5F );
   EXPECT_EQ( ham.registers, ( std::map<uint32_t, uint16_t> { { 0x02, 0x0041 }, { 0x03, 0x804B } } ) );
}

TEST( Tmp102DeathTest, NeedsAHam ) {
   TMP102 device;
   float degrees = 0;
   EXPECT_DEATH( device.getTemperature( &degrees ), assertionFailed( "ham" ) );
   EXPECT_DEATH( device.setLimit( TMP102::Low, 1 ), assertionFailed( "ham" ) );
}

class SimulatedTmp102 : public Simulation {};

TEST_F( SimulatedTmp102, StartsAt25DegreesWithTheThresholdsOfTheHostInItsFile ) {
   ql_temp_sensor_init(
      R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 1, "devices": [ { "did": 7 } ] } ])" );
   auto sensor = ql_temp_sensor_add(
      R"({ "did": 7, "driver": "TMP102", "name": "cpu", "address": { "address": 74 } })", 65.0F, 75.5F );
   ASSERT_NE( sensor, nullptr );
   float degrees = 0;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 25.0F );
   EXPECT_EQ( contentOf( "TMP102-cpu" ), "00190041804b\n" );
}
