#include "Drivers/PCT2075.h"

#include "Assertion.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"
#include "Simulation.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

using Component::DeviceBase;
using Drivers::PCT2075;
using Host::TraceLine;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Pct2075 : public Host::Test {
protected:
   Pct2075() { device.ham = &ham; }

   ScriptedHam ham;
   PCT2075 device;
};

/** Words as a Ham gives them, the chip's first and high byte in the low bits, and what they stand for. */
struct Reading {
   uint16_t word;
   float degrees;
};

const Reading temperatures[] = {
   { 0x0000, 0.0F },
   { 0x2000, 0.125F },
   { 0x0019, 25.0F },
   { 0x2019, 25.125F },
   { 0x007F, 127.0F },
   { 0xE07F, 127.875F },
   { 0xE0FF, -0.125F },
   { 0x00E7, -25.0F },
   { 0x00C9, -55.0F },
   { 0x2080, -127.875F },
   { 0x0080, -128.0F },
   // bits 4 to 0 of the chip's word do not count
   { 0x1F00, 0.0F },
   { 0x1F19, 25.0F },
   { 0xFFFF, -0.125F },
};

const Reading thresholds[] = {
   { 0x0000, 0.0F },
   { 0x8000, 0.5F },
   { 0x004B, 75.0F },
   { 0x0050, 80.0F },
   { 0x807F, 127.5F },
   { 0x80FF, -0.5F },
   { 0x00E7, -25.0F },
   { 0x80E4, -27.5F },
   { 0x8080, -127.5F },
   { 0x0080, -128.0F },
   // bits 6 to 0 of the chip's word do not count
   { 0x2000, 0.0F },
   { 0x7F00, 0.0F },
   { 0x7F19, 25.0F },
   { 0xFFFF, -0.5F },
};

} // namespace

TEST_F( Pct2075, IsMadeWithoutALookAtItsArguments ) {
   std::unique_ptr<DeviceBase> made( PCT2075::create( {}, &ham ) );
   EXPECT_NE( dynamic_cast<PCT2075*>( made.get() ), nullptr );
   EXPECT_THAT( ham.log, IsEmpty() );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Pct2075, IsKnownByItsName ) {
   std::unique_ptr<DeviceBase> made( Drivers::drivers.at( "PCT2075" )( {}, &ham ) );
   EXPECT_NE( dynamic_cast<PCT2075*>( made.get() ), nullptr );
}

TEST_F( Pct2075, HasNoStateOfItsOwn ) {
   EXPECT_EQ( sizeof( PCT2075 ), sizeof( Component::HardwareDevice ) );
   EXPECT_EQ( Layout::slotOf( &PCT2075::newTempSensor ), 2U );
   EXPECT_EQ( Layout::slotOf( &PCT2075::expectedValues ), 15U );
}

TEST_F( Pct2075, MakesANewSensorAtEachCall ) {
   std::unique_ptr<Component::LogicalDevice::TempSensor> first( device.newTempSensor( {} ) );
   std::unique_ptr<Component::LogicalDevice::TempSensor> second( device.newTempSensor( {} ) );
   EXPECT_NE( first, second );
   auto sensor = dynamic_cast<PCT2075::TempSensor*>( first.get() );
   ASSERT_NE( sensor, nullptr );
   EXPECT_EQ( sensor->device_, &device );
   EXPECT_EQ( sensor->record.ops, &Component::LogicalDevice::TempSensor::ops_ );
   EXPECT_THAT( ham.log, IsEmpty() );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 5, "Creating PCT2075" }, TraceLine { 5, "Creating PCT2075" } ) );
}

TEST_F( Pct2075, SensorIsLaidOutAsDriversKnowIt ) {
   PCT2075::TempSensor sensor( &device );
   EXPECT_EQ( Layout::offsetOf( sensor, sensor.device_ ), 40U );
   EXPECT_EQ( sizeof( sensor ), 48U );
   EXPECT_EQ( Layout::slotOf( &PCT2075::TempSensor::alertThresholdIs ), 2U );
   EXPECT_EQ( Layout::slotOf( &PCT2075::TempSensor::criticalThresholdIs ), 3U );
   EXPECT_EQ( Layout::slotOf( &PCT2075::TempSensor::getTemperature ), 4U );
}

TEST_F( Pct2075, EnumeratorsAreRegistersAndFormats ) {
   EXPECT_EQ( PCT2075::Alert, 2 );
   EXPECT_EQ( PCT2075::Overheat, 3 );
   EXPECT_EQ( PCT2075::Temperature, 0U );
   EXPECT_EQ( PCT2075::ThresholdValue, 1U );
}

TEST_F( Pct2075, ExpectsThreeRegistersOfTwoBytes ) {
   EXPECT_EQ( device.expectedValues(), &PCT2075::values );
   ASSERT_EQ( PCT2075::values.size(), 3U );
   for ( auto reg : { 0x00U, 0x02U, 0x03U } ) {
      ASSERT_TRUE( PCT2075::values.count( reg ) ) << reg;
      auto& value = PCT2075::values.at( reg );
      EXPECT_TRUE( value.isNumber ) << reg;
      EXPECT_EQ( value.val, 0x2000U ) << reg;
      EXPECT_EQ( value.size, 2U ) << reg;
   }
}

TEST_F( Pct2075, DecodesTemperatures ) {
   for ( auto& [word, degrees] : temperatures ) {
      EXPECT_EQ( PCT2075::registerToTemperature( word, PCT2075::Temperature ), degrees )
         << fmt::format( "{:#06x}", word );
   }
}

TEST_F( Pct2075, DecodesThresholds ) {
   for ( auto& [word, degrees] : thresholds ) {
      EXPECT_EQ( PCT2075::registerToTemperature( word, PCT2075::ThresholdValue ), degrees )
         << fmt::format( "{:#06x}", word );
   }
}

TEST_F( Pct2075, TakesEveryOtherTypeAsAThreshold ) {
   EXPECT_EQ( PCT2075::registerToTemperature( 0x8019, static_cast<PCT2075::RegisterType>( 2 ) ), 25.5F );
   EXPECT_EQ( PCT2075::registerToTemperature( 0x2019, static_cast<PCT2075::RegisterType>( ~0U ) ), 25.0F );
}

TEST_F( Pct2075, ReadsTheTemperatureInOneTransaction ) {
   ham.registers[0x00] = 0x0019;
   float degrees = 0;
   EXPECT_EQ( device.getTemperature( &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 25.0F );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read16 0x00 /1", "execute" ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 6, "ql_status Drivers::PCT2075::getTemperature(float*)" } ) );
}

TEST_F( Pct2075, ReadsEveryTemperature ) {
   for ( auto& [word, expected] : temperatures ) {
      ham.registers[0x00] = word;
      float degrees = 0;
      EXPECT_EQ( device.getTemperature( &degrees ), QL_STATUS_OK );
      EXPECT_EQ( degrees, expected ) << fmt::format( "{:#06x}", word );
   }
}

TEST_F( Pct2075, ThatCannotBeReadLeavesTheTemperatureAlone ) {
   ham.statuses = { QL_STATUS_IO_ERROR };
   float degrees = 99;
   EXPECT_EQ( device.getTemperature( &degrees ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( degrees, 99.0F );
}

TEST_F( Pct2075, ReadsAThresholdInOneTransaction ) {
   ham.registers = { { 0x02, 0x004B }, { 0x03, 0x0050 } };
   float alert = 0;
   float overheat = 0;
   EXPECT_EQ( device.getThreshold( PCT2075::Alert, &alert ), QL_STATUS_OK );
   EXPECT_EQ( device.getThreshold( PCT2075::Overheat, &overheat ), QL_STATUS_OK );
   EXPECT_EQ( alert, 75.0F );
   EXPECT_EQ( overheat, 80.0F );
   EXPECT_THAT( ham.log,
      ElementsAre( "prepare", "read16 0x02 /1", "execute", "prepare", "read16 0x03 /1", "execute" ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Pct2075, ReadsEveryThreshold ) {
   for ( auto& [word, expected] : thresholds ) {
      ham.registers[0x02] = word;
      float degrees = 0;
      EXPECT_EQ( device.getThreshold( PCT2075::Alert, &degrees ), QL_STATUS_OK );
      EXPECT_EQ( degrees, expected ) << fmt::format( "{:#06x}", word );
   }
}

TEST_F( Pct2075, ThatCannotBeReadLeavesTheThresholdAlone ) {
   ham.statuses = { QL_STATUS_FAILED, QL_STATUS_DEVICE_ERROR };
   float degrees = 99;
   EXPECT_EQ( device.getThreshold( PCT2075::Alert, &degrees ), QL_STATUS_FAILED );
   EXPECT_EQ( device.getThreshold( PCT2075::Overheat, &degrees ), QL_STATUS_DEVICE_ERROR );
   EXPECT_EQ( degrees, 99.0F );
}

TEST_F( Pct2075, WritesAThresholdInOneTransaction ) {
   EXPECT_EQ( device.setThreshold( PCT2075::Alert, 25.3F ), QL_STATUS_OK );
   EXPECT_EQ( device.setThreshold( PCT2075::Overheat, 75.0F ), QL_STATUS_OK );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write16 0x02=8019 /1", "execute", "prepare",
                            "write16 0x03=004b /1", "execute" ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Pct2075, EncodesThresholdsInHalfDegrees ) {
   constexpr auto infinity = std::numeric_limits<float>::infinity();

   struct {
      const char* name;
      float degrees;
      uint16_t word;
   } const rows[] = {
      { "zero", 0.0F, 0x0000 },
      { "negative zero", -0.0F, 0x0000 },
      { "a half", 0.5F, 0x8000 },
      { "minus a half", -0.5F, 0x80FF },
      { "room", 25.0F, 0x0019 },
      { "frost", -25.0F, 0x00E7 },
      { "hot", 80.0F, 0x0050 },
      { "down to a degree", 25.2F, 0x0019 },
      { "up to a half", 25.3F, 0x8019 },
      { "negative up to a degree", -25.2F, 0x00E7 },
      { "negative down to a half", -25.3F, 0x80E6 },
      { "halfway up", 25.25F, 0x8019 },
      { "halfway up to a degree", 25.75F, 0x001A },
      { "negative halfway down", -25.25F, 0x80E6 },
      { "quarter", 0.25F, 0x8000 },
      { "minus a quarter", -0.25F, 0x80FF },
      { "less than a quarter", 0.2F, 0x0000 },
      { "more than minus a quarter", -0.2F, 0x0000 },
      { "highest", 127.5F, 0x807F },
      { "rounds to the highest", 127.7F, 0x807F },
      { "rounds beyond the highest", 127.75F, 0x0080 },
      { "wraps to the lowest", 128.0F, 0x0080 },
      { "wraps above the lowest", 128.5F, 0x8080 },
      { "lowest", -128.0F, 0x0080 },
      { "wraps to the highest", -128.5F, 0x807F },
      { "wraps to minus a half", 255.5F, 0x80FF },
      { "wraps to zero", 256.0F, 0x0000 },
      { "wraps to 64 degrees", 1e6F, 0x0040 },
      { "wraps to -64 degrees", -1e6F, 0x00C0 },
      { "last before 2^30", 1073741760.0F, 0x00C0 },
      { "2^30", 1073741824.0F, 0x0000 },
      { "minus 2^30", -1073741824.0F, 0x0000 },
      { "highest float", std::numeric_limits<float>::max(), 0x0000 },
      { "lowest float", std::numeric_limits<float>::lowest(), 0x0000 },
      { "infinity", infinity, 0x0000 },
      { "minus infinity", -infinity, 0x0000 },
      { "not a number", std::nanf( "" ), 0x0000 },
   };

   for ( auto& [name, degrees, word] : rows ) {
      ham.registers.clear();
      EXPECT_EQ( device.setThreshold( PCT2075::Alert, degrees ), QL_STATUS_OK ) << name;
      EXPECT_EQ( fmt::format( "{:#06x}", ham.registers.at( 0x02 ) ), fmt::format( "{:#06x}", word ) ) << name;
   }
}

TEST_F( Pct2075, ReadsBackAThresholdBeyondTheRangeWrapped ) {
   float degrees = 0;
   EXPECT_EQ( device.setThreshold( PCT2075::Alert, 128.0F ), QL_STATUS_OK );
   EXPECT_EQ( device.getThreshold( PCT2075::Alert, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, -128.0F );
}

TEST_F( Pct2075, GivesTheStatusOfAFailedThresholdWrite ) {
   ham.statuses = { QL_STATUS_IO_ERROR };
   EXPECT_EQ( device.setThreshold( PCT2075::Alert, 25.0F ), QL_STATUS_IO_ERROR );
}

TEST_F( Pct2075, SensorStoresAThresholdAndWritesItToTheChip ) {
   PCT2075::TempSensor sensor( &device );
   sensor.alertThresholdIs( 65.3F );
   sensor.criticalThresholdIs( 75.0F );
   EXPECT_EQ( sensor.alertThreshold, 65.3F ) << "as given, not as rounded for the chip";
   EXPECT_EQ( sensor.criticalThreshold, 75.0F );
   EXPECT_EQ( ham.registers, ( std::map<uint32_t, uint16_t> { { 0x02, 0x8041 }, { 0x03, 0x004B } } ) );
}

TEST_F( Pct2075, SensorReadsTheChip ) {
   PCT2075::TempSensor sensor( &device );
   ham.registers[0x00] = 0xE0FF;
   float degrees = 0;
   EXPECT_EQ( sensor.record.ops->get_temperature( &sensor.record, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, -0.125F );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 4, fmt::format( "getTemperatureCallback({})", fmt::ptr( &sensor.record ) ) },
         TraceLine { 6, "ql_status Drivers::PCT2075::getTemperature(float*)" } ) );
}

TEST_F( Pct2075, SensorGivesTheStatusOfAFailedRead ) {
   PCT2075::TempSensor sensor( &device );
   ham.statuses = { QL_STATUS_FAILED };
   float degrees = 99;
   EXPECT_EQ( sensor.record.ops->get_temperature( &sensor.record, &degrees ), QL_STATUS_FAILED );
   EXPECT_EQ( degrees, 99.0F );
}

namespace {

/** Refuses every batch, and tells what the sensor holds at that moment. */
class RefusingHam : public ScriptedHam {
public:
   const Component::LogicalDevice::TempSensor* sensor = nullptr;

   ql_status execute() override {
      fprintf( stderr, "stored %g and %g\n", static_cast<double>( sensor->alertThreshold ),
         static_cast<double>( sensor->criticalThreshold ) );
      return QL_STATUS_IO_ERROR;
   }
};

class Pct2075ThatRefusesThresholds : public Pct2075 {
protected:
   Pct2075ThatRefusesThresholds() {
      device.ham = &refusing;
      refusing.sensor = &sensor;
   }

   RefusingHam refusing;
   PCT2075::TempSensor sensor { &device };
};

} // namespace

TEST_F( Pct2075ThatRefusesThresholds, EndsTheProcessAtTheAlertThresholdAfterStoringIt ) {
   EXPECT_DEATH( sensor.alertThresholdIs( 65.5F ),
      AllOf( HasSubstr( "stored 65.5 and 0\n" ),
         assertionFailed( "device_->setThreshold( Threshold::Alert, value ) == QL_STATUS_OK" ) ) );
}

TEST_F( Pct2075ThatRefusesThresholds, EndsTheProcessAtTheCriticalThresholdAfterStoringIt ) {
   EXPECT_DEATH( sensor.criticalThresholdIs( 75.5F ),
      AllOf( HasSubstr( "stored 0 and 75.5\n" ),
         assertionFailed( "device_->setThreshold( Threshold::Overheat, value ) == QL_STATUS_OK" ) ) );
}

namespace {

class SimulatedPct2075 : public Simulation {
protected:
   SimulatedPct2075() {
      ql_temp_sensor_init(
         R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 1, "devices": [ { "did": 7 } ] } ])" );
   }

   static constexpr const char* text =
      R"({ "did": 7, "driver": "PCT2075", "name": "inlet", "address": { "address": 72 } })";
};

} // namespace

TEST_F( SimulatedPct2075, StartsAtAnEighthOfADegreeAndThresholdsOfZero ) {
   Drivers::DriverArgs args;
   auto device = dynamic_cast<PCT2075*>( DeviceBase::create( text, args ) );
   ASSERT_NE( device, nullptr );
   float degrees = 99;
   EXPECT_EQ( device->getTemperature( &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.125F );
   EXPECT_EQ( device->getThreshold( PCT2075::Alert, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.0F );
   EXPECT_EQ( device->getThreshold( PCT2075::Overheat, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.0F );
}

TEST_F( SimulatedPct2075, IsAddedWithTheThresholdsOfTheHostInItsFile ) {
   auto sensor = ql_temp_sensor_add( text, 65.0F, 75.5F );
   ASSERT_NE( sensor, nullptr );
   float degrees = 99;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.125F );
   EXPECT_EQ( contentOf( "PCT2075-inlet" ), "20000041804b\n" );
}

TEST_F( SimulatedPct2075, HoldsTheThresholdsOfTheLastAdd ) {
   ql_temp_sensor_add( text, 65.0F, 75.5F );
   ql_temp_sensor_add( text, -0.5F, 100.0F );
   EXPECT_EQ( contentOf( "PCT2075-inlet" ), "200080ff0064\n" );
}

TEST( Pct2075DeathTest, NeedsAHam ) {
   PCT2075 device;
   float degrees = 0;
   EXPECT_DEATH( device.getTemperature( &degrees ), assertionFailed( "ham" ) );
   EXPECT_DEATH( device.setThreshold( PCT2075::Alert, 1 ), assertionFailed( "ham" ) );
   EXPECT_DEATH( device.getThreshold( PCT2075::Alert, &degrees ), assertionFailed( "ham" ) );
}
