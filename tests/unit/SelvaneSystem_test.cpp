#include "Drivers/Selvane/SelvaneSystem.h"

#include "HostServices.h"
#include "ObjectLayout.h"
#include "Topology.h"

using Host::TraceLine;
using testing::ElementsAre;

namespace {

class SelvaneSystem : public Host::Test {};

} // namespace

TEST_F( SelvaneSystem, IsAddedBeforeAnyInit ) {
   ASSERT_EQ( Topology::_topology, nullptr );
   EXPECT_NE( ql_system_add( "{}" ), nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "SelvaneSystem::ql_system_add( '{}' )" } ) );
}

TEST_F( SelvaneSystem, DoesNotLookAtItsArguments ) {
   EXPECT_NE( ql_system_add( "no %s JSON" ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "SelvaneSystem::ql_system_add( 'no %s JSON' )" } ) );
}

TEST_F( SelvaneSystem, IsAFreshRecordEachTimeWithTheOneTable ) {
   auto first = ql_system_add( "" );
   auto second = ql_system_add( "" );
   EXPECT_NE( first, second );
   EXPECT_EQ( first->ops, second->ops );
}

TEST_F( SelvaneSystem, RecordIsAZeroAndTheTable ) {
   auto system = ql_system_add( "" );
   EXPECT_EQ( sizeof( *system ), 16U );
   EXPECT_EQ( Layout::offsetOf( *system, system->reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( *system, system->ops ), 8U );
   EXPECT_EQ( system->reserved, 0U );
}

TEST_F( SelvaneSystem, TableHoldsItsSizeAndItsFunctions ) {
   // The three operations on the CPLD have no function yet.
   EXPECT_THAT( Layout::wordsOf( *ql_system_add( "" )->ops ),
      ElementsAre( 56, ql_system_poweroff, ql_system_powercycle, nullptr, nullptr, nullptr, nullptr ) );
}

TEST_F( SelvaneSystem, CannotSwitchThePowerEvenBeforeAnyInit ) {
   auto system = ql_system_add( "" );
   Host::traces.clear();
   EXPECT_EQ( system->ops->poweroff( system ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( system->ops->powercycle( system ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( ql_system_poweroff( nullptr ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( ql_system_powercycle( nullptr ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_TRUE( Host::traces.empty() );
}
