#include "Simulation.h"

namespace {

class Reload : public SimulationTest {};

TEST_F( Reload, ALibraryThatWasClosedStartsAfresh ) {
   auto text = topology( { 1 } );
   ASSERT_EQ( plugin.fan_init( text.c_str() ), QL_STATUS_OK );
   ASSERT_EQ( dlclose( plugin.handle ), 0 );
   ASSERT_EQ( dlopen( QUILLON_PLUGIN, RTLD_NOW | RTLD_NOLOAD ), nullptr ) << "it is still loaded";

   Plugin again;
   Host::reset();
   EXPECT_EQ( again.fan_init( text.c_str() ), QL_STATUS_OK );

   EXPECT_TRUE( Host::hasTraced( 2, "loading topology json" ) );
   auto sensor = again.temp_sensor_add( arguments( 1, "PCT2075" ).c_str(), 65, 75 );
   ASSERT_NE( sensor, nullptr );
   float degrees = 0;
   EXPECT_EQ( sensor->ops->get_temperature( sensor, &degrees ), QL_STATUS_OK );
   EXPECT_EQ( degrees, 0.125F );
}

} // namespace
