#include "Components/PoePort.h"

#include "FakeDriver.h"
#include "Ham/Ham.h"
#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"

#include <fmt/format.h>

#include <memory>

using Component::LogicalDevice::PoePort;
using Host::TraceLine;
using testing::Each;
using testing::ElementsAre;
using testing::Ne;
using testing::Return;

namespace {

class LogicalPoePort : public Host::Test {
protected:
   /** Expects that a callback has traced its name with the record, and nothing else. */
   void expectTraced( const std::string& callback ) {
      EXPECT_THAT( Host::traces,
         ElementsAre( TraceLine { 4, fmt::format( "{}({})", callback, fmt::ptr( record ) ) } ) );
   }

   testing::StrictMock<MockPoePort> port;
   ql_poe_port* record = &port.record;
   const ql_poe_port_ops& ops = *port.record.ops;
   char* text = nullptr;
   float value = 0;
   float primary = 0;
   float alternative = 0;
};

} // namespace

TEST_F( LogicalPoePort, IsLaidOutAsHostsAndDriversKnowIt ) {
   PoePort& base = port;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( sizeof( PoePort ), 32U );
}

TEST_F( LogicalPoePort, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockPoePort> filled;
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &PoePort::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<PoePort*>( &*filled ) );
}

TEST_F( LogicalPoePort, HasOneTableWithAllSixteenFunctions ) {
   MockPoePort other;
   EXPECT_EQ( other.record.ops, record->ops );
   EXPECT_EQ( Layout::wordsOf( PoePort::ops_ ),
      ( std::vector<Layout::Word> { 136, PoePort::debugInfoCallback, PoePort::poePortInitCallback,
         PoePort::reprogramPoeFirmwareCallback, PoePort::setPoePortPseCallback,
         PoePort::setPoePortLimitCallback, PoePort::setPoePortShutOffWithPsuCallback,
         PoePort::poePortPowerOnCallback, PoePort::setPoePortLegacyDetectCallback,
         PoePort::getPoePortPowerStateCallback, PoePort::getPoeDeviceClassCallback,
         PoePort::getPoePortPowerCallback, PoePort::getPoePortVoltageCallback,
         PoePort::getPoePortCurrentCallback, PoePort::getPoePortTemperatureCallback,
         PoePort::getPoePortCrcStatusCallback, PoePort::getPoePortInformationCallback } ) );
   EXPECT_THAT( Layout::wordsOf( PoePort::ops_ ), Each( Ne( Layout::Word( nullptr ) ) ) );
}

TEST_F( LogicalPoePort, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &PoePort::debugInfo ), 2U );
   EXPECT_EQ( Layout::slotOf( &PoePort::poePortInit ), 3U );
   EXPECT_EQ( Layout::slotOf( &PoePort::reprogramPoeFirmware ), 4U );
   EXPECT_EQ( Layout::slotOf( &PoePort::setPoePortPse ), 5U );
   EXPECT_EQ( Layout::slotOf( &PoePort::setPoePortLimit ), 6U );
   EXPECT_EQ( Layout::slotOf( &PoePort::setPoePortShutOffWithPsu ), 7U );
   EXPECT_EQ( Layout::slotOf( &PoePort::poePortPowerOn ), 8U );
   EXPECT_EQ( Layout::slotOf( &PoePort::setPoePortLegacyDetect ), 9U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortPowerState ), 10U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoeDeviceClass ), 11U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortPower ), 12U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortVoltage ), 13U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortCurrent ), 14U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortTemperature ), 15U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortCrcStatus ), 16U );
   EXPECT_EQ( Layout::slotOf( &PoePort::getPoePortInformation ), 17U );
}

TEST_F( LogicalPoePort, PassesTheDebugCallbackOn ) {
   EXPECT_CALL( port, debugInfo( &text, true ) ).WillOnce( Return( 0x1'0000'0001U ) );
   EXPECT_EQ( ops.debug_info( record, &text, true ), 0x1'0000'0001U );
   expectTraced( "debugInfoCallback" );
}

TEST_F( LogicalPoePort, PassesTheInitCallbackOn ) {
   EXPECT_CALL( port, poePortInit ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.port_init( record ), oddStatus );
   expectTraced( "poePortInitCallback" );
}

TEST_F( LogicalPoePort, PassesTheReprogramCallbackOn ) {
   EXPECT_CALL( port, reprogramPoeFirmware( true, &text ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.reprogram_firmware( record, true, &text ), oddStatus );
   expectTraced( "reprogramPoeFirmwareCallback" );
}

TEST_F( LogicalPoePort, PassesThePseCallbackOn ) {
   EXPECT_CALL( port, setPoePortPse( true ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.set_pse( record, true ), oddStatus );
   expectTraced( "setPoePortPseCallback" );
}

TEST_F( LogicalPoePort, PassesTheLimitCallbackOn ) {
   EXPECT_CALL( port, setPoePortLimit( QL_POE_LIMIT_USER, 15.4F ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.set_limit( record, QL_POE_LIMIT_USER, 15.4F ), oddStatus );
   expectTraced( "setPoePortLimitCallback" );
}

TEST_F( LogicalPoePort, PassesTheShutOffCallbackOn ) {
   EXPECT_CALL( port, setPoePortShutOffWithPsu( 255, true ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.set_shut_off_with_psu( record, 255, true ), oddStatus );
   expectTraced( "setPoePortShutOffWithPsuCallback" );
}

TEST_F( LogicalPoePort, PassesThePowerOnCallbackOn ) {
   EXPECT_CALL( port, poePortPowerOn( true ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.power_on( record, true ), oddStatus );
   expectTraced( "poePortPowerOnCallback" );
}

TEST_F( LogicalPoePort, PassesTheLegacyDetectCallbackOn ) {
   EXPECT_CALL( port, setPoePortLegacyDetect( true ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.set_legacy_detect( record, true ), oddStatus );
   expectTraced( "setPoePortLegacyDetectCallback" );
}

TEST_F( LogicalPoePort, PassesFalseOnAsFalse ) {
   EXPECT_CALL( port, debugInfo( &text, false ) ).WillOnce( Return( 0 ) );
   EXPECT_CALL( port, reprogramPoeFirmware( false, &text ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_CALL( port, setPoePortPse( false ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_CALL( port, setPoePortShutOffWithPsu( 0, false ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_CALL( port, poePortPowerOn( false ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_CALL( port, setPoePortLegacyDetect( false ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_EQ( ops.debug_info( record, &text, false ), 0U );
   EXPECT_EQ( ops.reprogram_firmware( record, false, &text ), QL_STATUS_OK );
   EXPECT_EQ( ops.set_pse( record, false ), QL_STATUS_OK );
   EXPECT_EQ( ops.set_shut_off_with_psu( record, 0, false ), QL_STATUS_OK );
   EXPECT_EQ( ops.power_on( record, false ), QL_STATUS_OK );
   EXPECT_EQ( ops.set_legacy_detect( record, false ), QL_STATUS_OK );
}

TEST_F( LogicalPoePort, PassesThePowerStateCallbackOn ) {
   ql_poe_port_state states[3] {};
   ql_poe_port_pair_state pairs {};
   EXPECT_CALL( port, getPoePortPowerState( &states[0], &states[1], &states[2], &pairs ) )
      .WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_power_state( record, &states[0], &states[1], &states[2], &pairs ), oddStatus );
   expectTraced( "getPoePortPowerStateCallback" );
}

TEST_F( LogicalPoePort, PassesTheDeviceClassCallbackOn ) {
   ql_poe_device_class classes[3] {};
   EXPECT_CALL( port, getPoeDeviceClass( &classes[0], &classes[1], &classes[2] ) )
      .WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_device_class( record, &classes[0], &classes[1], &classes[2] ), oddStatus );
   expectTraced( "getPoeDeviceClassCallback" );
}

TEST_F( LogicalPoePort, PassesThePowerCallbackOn ) {
   EXPECT_CALL( port, getPoePortPower( &value, &primary, &alternative ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_power( record, &value, &primary, &alternative ), oddStatus );
   expectTraced( "getPoePortPowerCallback" );
}

TEST_F( LogicalPoePort, PassesTheVoltageCallbackOn ) {
   EXPECT_CALL( port, getPoePortVoltage( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_voltage( record, &value ), oddStatus );
   expectTraced( "getPoePortVoltageCallback" );
}

TEST_F( LogicalPoePort, PassesTheCurrentCallbackOn ) {
   EXPECT_CALL( port, getPoePortCurrent( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_current( record, &value ), oddStatus );
   expectTraced( "getPoePortCurrentCallback" );
}

TEST_F( LogicalPoePort, PassesTheTemperatureCallbackOn ) {
   EXPECT_CALL( port, getPoePortTemperature( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_temperature( record, &value ), oddStatus );
   expectTraced( "getPoePortTemperatureCallback" );
}

TEST_F( LogicalPoePort, PassesTheCrcStatusCallbackOn ) {
   bool ok = false;
   EXPECT_CALL( port, getPoePortCrcStatus( &ok ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops.get_crc_status( record, &ok ), oddStatus );
   expectTraced( "getPoePortCrcStatusCallback" );
}

TEST_F( LogicalPoePort, PassesTheInformationCallbackOn ) {
   EXPECT_CALL( port, getPoePortInformation( &text ) ).WillOnce( Return( 0x1'0000'0001U ) );
   EXPECT_EQ( ops.get_information( record, &text ), 0x1'0000'0001U );
   expectTraced( "getPoePortInformationCallback" );
}

TEST_F( LogicalPoePort, IsNotStartedByAddingIt ) {
   FakeDriver driver;
   driver.device.poePort = &port;
   EXPECT_EQ( ql_poe_port_add( deviceText( "Fake" ).c_str() ), record );
}

TEST_F( LogicalPoePort, IsNotOfferedByDevicesOfAnotherKind ) {
   ScriptedHam ham;
   for ( std::string driver :
      { "Dummy", "EMC2305", "GpioDriver", "PCT2075", "SelvanePortLed", "SelvaneSystemLed", "SelvaneXcvr" } ) {
      std::unique_ptr<Component::DeviceBase> device( Drivers::drivers.at( driver )( {}, &ham ) );
      try {
         device->newPoePort( {} );
         ADD_FAILURE() << driver;
      } catch ( const NotImplementedException& exception ) {
         EXPECT_STREQ( exception.what(), "Not implemented newPoePort" );
      }
   }
}

TEST_F( LogicalPoePort, EnumerationsHaveTheNumbersThatHostsKnow ) {
   EXPECT_EQ( QL_POE_PORT_DISABLED, 0U );
   EXPECT_EQ( QL_POE_PORT_DETECTING, 1U );
   EXPECT_EQ( QL_POE_PORT_REQUESTING, 2U );
   EXPECT_EQ( QL_POE_PORT_REQUESTING_DUAL, 3U );
   EXPECT_EQ( QL_POE_PORT_POWERED, 4U );
   EXPECT_EQ( QL_POE_PORT_FAULT, 5U );
   EXPECT_EQ( QL_POE_PORT_OVERLOAD, 6U );
   EXPECT_EQ( QL_POE_PAIR_STATE_0, 0U );
   EXPECT_EQ( QL_POE_PAIR_STATE_3, 3U );
   EXPECT_EQ( QL_POE_CLASS_0, 0U );
   EXPECT_EQ( QL_POE_CLASS_8, 8U );
   EXPECT_EQ( QL_POE_CLASS_INVALID, 9U );
   EXPECT_EQ( QL_POE_LIMIT_CLASS, 0U );
   EXPECT_EQ( QL_POE_LIMIT_USER, 1U );
   EXPECT_EQ( sizeof( ql_poe_port_state ), 4U );
   EXPECT_EQ( sizeof( ql_poe_port_pair_state ), 4U );
   EXPECT_EQ( sizeof( ql_poe_device_class ), 4U );
   EXPECT_EQ( sizeof( ql_poe_power_limit_mode ), 4U );
}
