#include "Components/Fan.h"

#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"

#include <fmt/format.h>

using Component::LogicalDevice::Fan;
using Host::TraceLine;
using testing::ElementsAre;
using testing::Return;

namespace {

class LogicalFan : public Host::Test {
protected:
   std::string address() const { return fmt::format( "{}", fmt::ptr( &fan.record ) ); }

   testing::StrictMock<MockFan> fan;
};

/** A fan without a report of its own. */
class PlainFan : public Fan {
public:
   ql_status getRpm( int* ) override { return QL_STATUS_OK; }

   ql_status setRpm( int ) override { return QL_STATUS_OK; }
};

} // namespace

TEST_F( LogicalFan, IsLaidOutAsHostsAndDriversKnowIt ) {
   Fan& base = fan;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( sizeof( Fan ), 32U );
}

TEST_F( LogicalFan, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<PlainFan> plain;
   EXPECT_EQ( plain->record.reserved, plain.pattern );
   EXPECT_EQ( plain->record.ops, &Fan::ops_ );
   EXPECT_EQ( plain->record.owner, &*plain );
}

TEST_F( LogicalFan, HasOneTableForAllObjects ) {
   PlainFan one, other;
   EXPECT_EQ( one.record.ops, other.record.ops );
   EXPECT_THAT( Layout::wordsOf( Fan::ops_ ),
      ElementsAre( 32, Fan::debugInfoCallback, Fan::getRpmCallback, Fan::setRpmCallback ) );
}

TEST_F( LogicalFan, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &Fan::debugInfo ), 2U );
   EXPECT_EQ( Layout::slotOf( &Fan::getRpm ), 3U );
   EXPECT_EQ( Layout::slotOf( &Fan::setRpm ), 4U );
}

TEST_F( LogicalFan, WithoutAReportLeavesTheTextOfTheHostAlone ) {
   PlainFan plain;
   char preset[] = "preset";
   char* text = preset;
   EXPECT_EQ( plain.record.ops->debug_info( &plain.record, &text ), QL_STATUS_OK );
   EXPECT_EQ( text, preset );
   EXPECT_STREQ( text, "preset" );
}

TEST_F( LogicalFan, PassesTheDebugCallbackOn ) {
   char* text = nullptr;
   EXPECT_CALL( fan, debugInfo( &text ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( fan.record.ops->debug_info( &fan.record, &text ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "debugInfoCallback(" + address() + ")" } ) );
}

TEST_F( LogicalFan, PassesTheSpeedCallbackOn ) {
   int rpm = 0;
   EXPECT_CALL( fan, getRpm( &rpm ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( fan.record.ops->get_rpm( &fan.record, &rpm ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getRpmCallback(" + address() + ")" } ) );
}

TEST_F( LogicalFan, PassesTheSetSpeedCallbackOn ) {
   EXPECT_CALL( fan, setRpm( -12000 ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( fan.record.ops->set_rpm( &fan.record, -12000 ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "setRpmCallback(" + address() + ", -12000)" } ) );
}

TEST_F( LogicalFan, PassesANullOutputOnUnlookedAt ) {
   EXPECT_CALL( fan, getRpm( nullptr ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_EQ( fan.record.ops->get_rpm( &fan.record, nullptr ), QL_STATUS_OK );
}
