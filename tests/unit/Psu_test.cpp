#include "Components/Psu.h"

#include "FakeDriver.h"
#include "Ham/Ham.h"
#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"

#include <memory>
#include <type_traits>

using Component::LogicalDevice::Psu;
using Host::TraceLine;
using testing::ElementsAre;
using testing::Return;

namespace {

class LogicalPsu : public Host::Test {
protected:
   testing::StrictMock<MockPsu> psu;
   int ok = 0;
   float value = 0;
};

} // namespace

TEST_F( LogicalPsu, IsLaidOutAsHostsAndDriversKnowIt ) {
   Psu& base = psu;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( sizeof( Psu ), 32U );
}

TEST_F( LogicalPsu, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockPsu> filled;
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &Psu::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<Psu*>( &*filled ) );
}

TEST_F( LogicalPsu, HasOneTableForAllObjects ) {
   MockPsu other;
   EXPECT_EQ( psu.record.ops, other.record.ops );
   EXPECT_THAT( Layout::wordsOf( Psu::ops_ ),
      ElementsAre( 72, nullptr, Psu::get_power_ok_callback, Psu::get_input_current_callback,
         Psu::get_output_current_callback, Psu::get_input_voltage_callback, Psu::get_output_voltage_callback,
         Psu::get_input_power_callback, Psu::get_output_power_callback ) );
}

TEST_F( LogicalPsu, HasNoVirtualDestructorBeforeItsOperations ) {
   EXPECT_FALSE( std::has_virtual_destructor_v<Psu> );
   EXPECT_EQ( Layout::slotOf( &Psu::getPowerOk ), 0U );
   EXPECT_EQ( Layout::slotOf( &Psu::getInputCurrent ), 1U );
   EXPECT_EQ( Layout::slotOf( &Psu::getOutputCurrent ), 2U );
   EXPECT_EQ( Layout::slotOf( &Psu::getInputVoltage ), 3U );
   EXPECT_EQ( Layout::slotOf( &Psu::getOutputVoltage ), 4U );
   EXPECT_EQ( Layout::slotOf( &Psu::getInputPower ), 5U );
   EXPECT_EQ( Layout::slotOf( &Psu::getOutputPower ), 6U );
}

TEST_F( LogicalPsu, PassesThePowerOkCallbackOn ) {
   EXPECT_CALL( psu, getPowerOk( &ok ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_power_ok( &psu.record, &ok ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_power_ok_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheInputCurrentCallbackOn ) {
   EXPECT_CALL( psu, getInputCurrent( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_input_current( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_input_current_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheOutputCurrentCallbackOn ) {
   EXPECT_CALL( psu, getOutputCurrent( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_output_current( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_output_current_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheInputVoltageCallbackOn ) {
   EXPECT_CALL( psu, getInputVoltage( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_input_voltage( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_input_voltage_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheOutputVoltageCallbackOn ) {
   EXPECT_CALL( psu, getOutputVoltage( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_output_voltage( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_output_voltage_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheInputPowerCallbackOn ) {
   EXPECT_CALL( psu, getInputPower( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_input_power( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_input_power_callback" } ) );
}

TEST_F( LogicalPsu, PassesTheOutputPowerCallbackOn ) {
   EXPECT_CALL( psu, getOutputPower( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( psu.record.ops->get_output_power( &psu.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "get_output_power_callback" } ) );
}

TEST_F( LogicalPsu, IsOfferedByNoDriver ) {
   ScriptedHam ham;
   Drivers::DriverArgs args;
   args.driverArgs = { { "numPorts", "1" }, { "numAtPorts", "1" } };
   for ( auto& [driver, make] : Drivers::drivers ) {
      std::unique_ptr<Component::DeviceBase> device( make( args, &ham ) );
      EXPECT_THROW( device->newPsu( {} ), NotImplementedException ) << driver;
   }
}

TEST_F( LogicalPsu, ThatNoDriverOffersLeavesNoFailureLine ) {
   EXPECT_THROW( ql_psu_add( deviceText( "Dummy" ).c_str() ), NotImplementedException );
   EXPECT_TRUE( Host::tracesOf( 2 ).empty() );
   Component::DeviceBase::devices.clear();
}
