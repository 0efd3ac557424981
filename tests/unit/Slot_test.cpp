#include "Components/Slot.h"

#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"

#include <fmt/format.h>

using Component::LogicalDevice::Slot;
using Host::TraceLine;
using testing::ElementsAre;
using testing::Return;

namespace {

class LogicalSlot : public Host::Test {
protected:
   std::map<std::string, std::string> args { { "model", "FAN-11011" } };
   const char* const text = "{ \"did\": 7 }";
   testing::StrictMock<MockSlot> slot { uint8_t { 3 }, args, text };
};

} // namespace

TEST_F( LogicalSlot, IsLaidOutAsHostsAndDriversKnowIt ) {
   Slot& base = slot;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( Layout::offsetOf( base, base.id ), 32U );
   EXPECT_EQ( sizeof( base.id ), 1U );
   EXPECT_EQ( Layout::offsetOf( base, base.driverArgs ), 40U );
   EXPECT_EQ( Layout::offsetOf( base, base.devArgs ), 40U + sizeof( base.driverArgs ) );
   EXPECT_EQ( sizeof( Slot ), 48U + sizeof( base.driverArgs ) + sizeof( std::string ) );
}

TEST_F( LogicalSlot, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockSlot> filled( uint8_t { 3 }, args, text );
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &Slot::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<Slot*>( &*filled ) );
}

TEST_F( LogicalSlot, HasOneTableForAllObjects ) {
   MockSlot other { uint8_t { 4 }, args, text };
   EXPECT_EQ( slot.record.ops, other.record.ops );
   EXPECT_THAT( Layout::wordsOf( Slot::ops_ ), ElementsAre( 16, Slot::getPresenceCallback ) );
}

TEST_F( LogicalSlot, HasItsOperationBehindTheDestructor ) {
   EXPECT_EQ( Layout::slotOf( &Slot::getPresence ), 2U );
}

TEST_F( LogicalSlot, KeepsACopyOfItsArgumentsAndTheTextOfTheHost ) {
   args["model"] = "another";
   EXPECT_EQ( slot.id, 3U );
   EXPECT_EQ( slot.driverArgs, ( std::map<std::string, std::string> { { "model", "FAN-11011" } } ) );
   EXPECT_EQ( slot.devArgs, text );
   EXPECT_EQ( slot.reserved, "" );
}

TEST_F( LogicalSlot, PassesThePresenceCallbackOn ) {
   char* presence = nullptr;
   char answer[] = "answer";
   EXPECT_CALL( slot, getPresence( &presence ) )
      .WillOnce( testing::DoAll( testing::SetArgPointee<0>( answer ), Return( oddStatus ) ) );
   EXPECT_EQ( slot.record.ops->get_presence( &slot.record, &presence ), oddStatus );
   EXPECT_EQ( presence, answer );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 4, fmt::format( "getPresenceCallback({})", fmt::ptr( &slot.record ) ) } ) );
}
