#include "Plugin.h"
#include "support/HostServices.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/** The handle on the switch as a whole, in a host that has initialised nothing. */
class System : public Host::Test {
protected:
   Plugin plugin;
};

TEST_F( System, IsThereBeforeAnyInit ) {
   auto system = plugin.system_add( "not looked at" );

   ASSERT_NE( system, nullptr );
   EXPECT_EQ( system->reserved, 0U );
   EXPECT_EQ( system->ops->size, 56U );
   EXPECT_EQ( system->ops->reserved, nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 0, "SelvaneSystem::ql_system_add( 'not looked at' )" } ) );
}

TEST_F( System, IsAFreshRecordEachTime ) {
   auto first = plugin.system_add( "{}" );
   auto second = plugin.system_add( "{}" );

   EXPECT_NE( first, second );
   EXPECT_EQ( first->ops, second->ops );
}

TEST_F( System, CanBeSwitchedNeitherOffNorOn ) {
   auto system = plugin.system_add( "{}" );

   EXPECT_EQ( system->ops->poweroff( system ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( system->ops->powercycle( system ), QL_STATUS_NOT_SUPPORTED );
}

} // namespace
