#include "Plugin.h"
#include "TemporaryDirectory.h"
#include "support/HostServices.h"
#include "support/VirtualTime.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

/** The place where the SMBus server listens; it accepts nobody by itself. */
class Listener {
public:
   explicit Listener( const std::string& path ) {
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      strncpy( address.sun_path, path.c_str(), sizeof address.sun_path - 1 );
      if ( bind( socket_, reinterpret_cast<sockaddr*>( &address ), sizeof address ) != 0 ||
           listen( socket_, 8 ) != 0 ) {
         throw std::runtime_error( "can't listen on " + path );
      }
   }

   ~Listener() { close( socket_ ); }

   Listener( const Listener& ) = delete;
   Listener& operator=( const Listener& ) = delete;

   /** How many have connected since the last call. */
   int connections() {
      int count = 0;
      for ( int peer; ( peer = accept( socket_, nullptr, nullptr ) ) >= 0; ++count ) {
         close( peer );
      }
      return count;
   }

private:
   int socket_ = socket( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 );
};

constexpr const char* topology = R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 1 } ])";

/** A host on real hardware, whose SMBus server may be missing. */
class Socket : public Host::Test {
protected:
   Socket() {
      unsetenv( "SIMULATION_VMID" );
      setenv( "QUILLON_SMBUS_SOCKET", path.c_str(), 1 );
   }

   TemporaryDirectory directory;
   std::string path = directory / "smbus.sock";
   VirtualTime time;
   Plugin plugin;
};

TEST_F( Socket, IsTriedThirtyTimesASecondApart ) {
   EXPECT_EQ( plugin.fan_init( topology ), QL_STATUS_IO_ERROR );

   EXPECT_THAT( time.waits, SizeIs( 30 ) );
   EXPECT_THAT( time.waits, Each( std::chrono::seconds( 1 ) ) );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "ql_fan_init", "ql_fan_init: socket Setup failed!" ) );
}

TEST_F( Socket, FailsBeforeTheTopologyIsLookedAt ) {
   EXPECT_EQ( plugin.led_init( "[ this is no JSON" ), QL_STATUS_IO_ERROR );

   EXPECT_THAT( Host::tracesOf( 2 ), SizeIs( 0 ) );
}

TEST_F( Socket, IsTriedFromTheStartByTheNextInit ) {
   plugin.fan_init( topology );
   time.waits.clear();

   EXPECT_EQ( plugin.fan_init( topology ), QL_STATUS_IO_ERROR );

   EXPECT_THAT( time.waits, SizeIs( 30 ) );
}

TEST_F( Socket, ConnectsOnceTheServerIsThere ) {
   plugin.fan_init( topology );
   time.waits.clear();
   Listener server( path );

   EXPECT_EQ( plugin.fan_init( topology ), QL_STATUS_OK );

   EXPECT_EQ( server.connections(), 1 );
   EXPECT_THAT( time.waits, SizeIs( 0 ) );
   EXPECT_THAT( Host::tracesOf( 2 ), ElementsAre( "loading topology json" ) );
}

TEST_F( Socket, IsSharedByAllKinds ) {
   Listener server( path );
   plugin.fan_init( topology );
   plugin.led_init( topology );
   plugin.psu_init( topology );

   EXPECT_EQ( server.connections(), 1 );
}

} // namespace
