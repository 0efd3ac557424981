#include "Components/TempSensor.h"

#include "FakeDriver.h"
#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"

#include <fmt/format.h>

using Component::LogicalDevice::TempSensor;
using Host::TraceLine;
using testing::ElementsAre;
using testing::InSequence;
using testing::Return;

namespace {

class LogicalTempSensor : public Host::Test {};

/** A sensor with the base's own thresholds. */
class PlainSensor : public TempSensor {
public:
   ql_status getTemperature( float* ) override { return QL_STATUS_OK; }
};

} // namespace

TEST_F( LogicalTempSensor, IsLaidOutAsHostsAndDriversKnowIt ) {
   PlainSensor sensor;
   TempSensor& base = sensor;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( Layout::offsetOf( base, base.alertThreshold ), 32U );
   EXPECT_EQ( Layout::offsetOf( base, base.criticalThreshold ), 36U );
   EXPECT_EQ( sizeof( TempSensor ), 40U );
}

TEST_F( LogicalTempSensor, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<PlainSensor> sensor;
   EXPECT_EQ( sensor->record.reserved, sensor.pattern );
   EXPECT_EQ( sensor->record.ops, &TempSensor::ops_ );
   EXPECT_EQ( sensor->record.owner, &*sensor );
}

TEST_F( LogicalTempSensor, HasOneTableForAllObjects ) {
   PlainSensor one, other;
   EXPECT_EQ( one.record.ops, other.record.ops );
   EXPECT_THAT(
      Layout::wordsOf( TempSensor::ops_ ), ElementsAre( 24, nullptr, TempSensor::getTemperatureCallback ) );
}

TEST_F( LogicalTempSensor, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &TempSensor::alertThresholdIs ), 2U );
   EXPECT_EQ( Layout::slotOf( &TempSensor::criticalThresholdIs ), 3U );
   EXPECT_EQ( Layout::slotOf( &TempSensor::getTemperature ), 4U );
}

TEST_F( LogicalTempSensor, StoresItsThresholds ) {
   PlainSensor sensor;
   sensor.alertThresholdIs( 65.25F );
   sensor.criticalThresholdIs( 75.5F );
   EXPECT_EQ( sensor.alertThreshold, 65.25F );
   EXPECT_EQ( sensor.criticalThreshold, 75.5F );
   EXPECT_TRUE( Host::traces.empty() );
}

TEST_F( LogicalTempSensor, PassesTheTemperatureCallbackOn ) {
   testing::StrictMock<MockTempSensor> sensor;
   float degrees = 0;
   EXPECT_CALL( sensor, getTemperature( &degrees ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( sensor.record.ops->get_temperature( &sensor.record, &degrees ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, fmt::format( "getTemperatureCallback({})",
                                                             fmt::ptr( &sensor.record ) ) } ) );
}

TEST_F( LogicalTempSensor, IsAddedWithTheAlertThresholdSetFirst ) {
   FakeDriver driver;
   testing::StrictMock<MockTempSensor> sensor;
   driver.device.tempSensor = &sensor;
   InSequence inOrder;
   EXPECT_CALL( sensor, alertThresholdIs( 65.25F ) ).WillOnce( [] {
      EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "setting alert threshold" } ) );
   } );
   EXPECT_CALL( sensor, criticalThresholdIs( 75.5F ) ).WillOnce( [] {
      EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "setting critical threshold" } ) );
   } );
   EXPECT_EQ( ql_temp_sensor_add( deviceText( "Fake" ).c_str(), 65.25F, 75.5F ), &sensor.record );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "setting critical threshold" } ) );
}

TEST_F( LogicalTempSensor, GetsItsThresholdsOnACachedDeviceToo ) {
   FakeDriver driver;
   testing::StrictMock<MockTempSensor> sensor;
   driver.device.tempSensor = &sensor;
   EXPECT_CALL( sensor, alertThresholdIs( 1 ) );
   EXPECT_CALL( sensor, criticalThresholdIs( 2 ) );
   ql_temp_sensor_add( deviceText( "Fake" ).c_str(), 1, 2 );
   EXPECT_CALL( sensor, alertThresholdIs( 3 ) );
   EXPECT_CALL( sensor, criticalThresholdIs( 4 ) );
   ql_temp_sensor_add( deviceText( "Fake" ).c_str(), 3, 4 );
   EXPECT_EQ( driver.made, 1 );
}

TEST_F( LogicalTempSensor, IsNotThereAndHasNoThresholdsWhenItsDeviceFails ) {
   FakeDriver driver;
   testing::StrictMock<MockTempSensor> sensor;
   driver.device.tempSensor = &sensor;
   EXPECT_EQ( ql_temp_sensor_add( deviceText( "Missing" ).c_str(), 1, 2 ), nullptr );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "factory function returned a null object" } ) );
   EXPECT_TRUE( driver.device.calls.empty() );
}
