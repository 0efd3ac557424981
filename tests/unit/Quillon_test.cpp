#include "Quillon.h"

#include "HostServices.h"
#include "Topology.h"
#include "VirtualTime.h"

#include <fmt/format.h>

#include <dlfcn.h>

#include <deque>

using Host::TraceLine;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const auto tracesAtLoad = Host::traces.size();
const auto timersAtLoad = Host::timers.size();
const auto socketAtLoad = _qlSock;

/** What the library did with its socket, in order, such as "setup at 2 s". */
std::vector<std::string> socketLog;
/** What the next calls of setup return; -1 when it is empty. */
std::deque<int> setupResults;
/** Number of trace lines when the socket was cleaned up. */
size_t tracesAtCleanup;

long secondsPassed() {
   constexpr auto start = seconds( 1000 );
   return std::chrono::duration_cast<seconds>( VirtualTime::current->now - start ).count();
}

} // namespace

/* The socket of this program takes the place of the one in the platform's library. */
namespace QuillonLibrary {

QLSocket::QLSocket() { socketLog.push_back( "create" ); }

QLSocket::~QLSocket() { socketLog.push_back( "destroy" ); }

int QLSocket::setup() {
   socketLog.push_back( fmt::format( "setup at {} s", secondsPassed() ) );
   EXPECT_EQ( _qlSock, this );
   if ( setupResults.empty() ) {
      return -1;
   }
   auto result = setupResults.front();
   setupResults.pop_front();
   return result;
}

void QLSocket::cleanup() {
   socketLog.push_back( fmt::format( "cleanup at {} s", secondsPassed() ) );
   tracesAtCleanup = Host::traces.size();
   EXPECT_EQ( _qlSock, this );
}

} // namespace QuillonLibrary

namespace {

class Quillon : public Host::Test {
protected:
   ~Quillon() override {
      delete _qlSock;
      _qlSock = nullptr;
      delete Topology::_topology;
      Topology::_topology = nullptr;
      Topology::_topology_index.clear();
      Topology::_topology_json.clear();
      socketLog.clear();
      setupResults.clear();
   }

   VirtualTime time;
};

} // namespace

TEST_F( Quillon, StatusesHaveTheNumbersThatHostsKnow ) {
   EXPECT_EQ( QL_STATUS_OK, 0U );
   EXPECT_EQ( QL_STATUS_NOT_PRESENT, 1U );
   EXPECT_EQ( QL_STATUS_DEVICE_ERROR, 2U );
   EXPECT_EQ( QL_STATUS_INVALID_ARGUMENT, 3U );
   EXPECT_EQ( QL_STATUS_IO_ERROR, 4U );
   EXPECT_EQ( QL_STATUS_NOT_SUPPORTED, 5U );
   EXPECT_EQ( QL_STATUS_FAILED, 6U );
   EXPECT_EQ( sizeof( ql_status ), 4U );
}

TEST_F( Quillon, CallsNoHostServiceAndHasNoSocketWhenLoaded ) {
   EXPECT_EQ( tracesAtLoad, 0U );
   EXPECT_EQ( timersAtLoad, 0U );
   EXPECT_EQ( socketAtLoad, nullptr );
}

TEST_F( Quillon, ExportsItsEntryFunctionsUnmangled ) {
   for ( std::string kind :
      { "system", "temp_sensor", "fan", "psu", "led", "slot", "xcvr", "gpio", "poe_port" } ) {
      for ( auto name : { "ql_" + kind + "_init", "ql_" + kind + "_add" } ) {
         EXPECT_NE( dlsym( RTLD_DEFAULT, name.c_str() ), nullptr ) << name;
      }
   }
   EXPECT_EQ( dlsym( RTLD_DEFAULT, "_qlSock" ), static_cast<void*>( &_qlSock ) );
}

TEST_F( Quillon, SocketInitCreatesTheSocketAndSetsItUp ) {
   setupResults = { 0 };
   EXPECT_EQ( qlSockInit( "caller", 30 ), QL_STATUS_OK );
   EXPECT_NE( _qlSock, nullptr );
   EXPECT_THAT( socketLog, ElementsAre( "create", "setup at 0 s" ) );
   EXPECT_THAT( time.waits, IsEmpty() );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Quillon, SocketInitKeepsASocketThatIsSetUp ) {
   setupResults = { 0 };
   qlSockInit( "caller", 30 );
   auto socket = _qlSock;
   socketLog.clear();
   EXPECT_EQ( qlSockInit( "caller", 30 ), QL_STATUS_OK );
   EXPECT_EQ( _qlSock, socket );
   EXPECT_THAT( socketLog, IsEmpty() );
}

TEST_F( Quillon, SocketInitTriesAgainASecondAfterAFailure ) {
   setupResults = { -1, -1, 0 };
   EXPECT_EQ( qlSockInit( "caller", 30 ), QL_STATUS_OK );
   EXPECT_THAT( socketLog, ElementsAre( "create", "setup at 0 s", "setup at 1 s", "setup at 2 s" ) );
   EXPECT_NE( _qlSock, nullptr );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Quillon, SocketInitTakesTheLastTryToo ) {
   setupResults = { -1, -1, 0 };
   EXPECT_EQ( qlSockInit( "caller", 3 ), QL_STATUS_OK );
   EXPECT_NE( _qlSock, nullptr );
}

TEST_F( Quillon, SocketInitCountsEveryResultButZeroAsAFailure ) {
   setupResults = { 1, 0 };
   EXPECT_EQ( qlSockInit( "caller", 2 ), QL_STATUS_OK );
   EXPECT_THAT( socketLog, ElementsAre( "create", "setup at 0 s", "setup at 1 s" ) );
}

TEST_F( Quillon, SocketInitSleepsAfterTheLastFailedTryToo ) {
   EXPECT_EQ( qlSockInit( "caller", 3 ), QL_STATUS_IO_ERROR );
   EXPECT_THAT( time.waits, ElementsAre( seconds( 1 ), seconds( 1 ), seconds( 1 ) ) );
   EXPECT_THAT( socketLog,
      ElementsAre( "create", "setup at 0 s", "setup at 1 s", "setup at 2 s", "cleanup at 3 s", "destroy" ) );
}

TEST_F( Quillon, SocketInitThatFailsSaysSoAndLeavesNoSocket ) {
   EXPECT_EQ( qlSockInit( "caller", 1 ), QL_STATUS_IO_ERROR );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "caller: socket Setup failed!" } ) );
   EXPECT_EQ( _qlSock, nullptr );
}

TEST_F( Quillon, SocketInitTracesTheFailureBeforeItCleansUp ) {
   qlSockInit( "caller", 1 );
   EXPECT_EQ( tracesAtCleanup, 1U );
}

TEST_F( Quillon, SocketInitWithoutTriesFailsAtOnce ) {
   for ( auto retries : { 0, -1, -2147483647 - 1 } ) {
      SCOPED_TRACE( retries );
      socketLog.clear();
      Host::reset();
      EXPECT_EQ( qlSockInit( "caller", retries ), QL_STATUS_IO_ERROR );
      EXPECT_THAT( socketLog, ElementsAre( "create", "cleanup at 0 s", "destroy" ) );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "caller: socket Setup failed!" } ) );
      EXPECT_EQ( _qlSock, nullptr );
   }
}

TEST_F( Quillon, SocketInitAfterAFailureStartsAnew ) {
   qlSockInit( "caller", 2 );
   socketLog.clear();
   EXPECT_EQ( qlSockInit( "caller", 2 ), QL_STATUS_IO_ERROR );
   EXPECT_THAT(
      socketLog, ElementsAre( "create", "setup at 2 s", "setup at 3 s", "cleanup at 4 s", "destroy" ) );
}

TEST_F( Quillon, LibraryInitTracesThenConnectsThenLoads ) {
   setupResults = { 0 };
   EXPECT_EQ( quillonLibraryInit( "caller", "[]", 30 ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "caller" }, TraceLine { 5, "caller: json = []" },
                                 TraceLine { 2, "loading topology json" } ) );
   EXPECT_THAT( socketLog, ElementsAre( "create", "setup at 0 s" ) );
   EXPECT_NE( Topology::_topology, nullptr );
}

TEST_F( Quillon, LibraryInitHandsItsRetriesOn ) {
   EXPECT_EQ( quillonLibraryInit( "caller", "[]", 2 ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( time.waits.size(), 2U );
}

TEST_F( Quillon, LibraryInitWithoutASocketNeverLooksAtTheTopology ) {
   EXPECT_EQ( quillonLibraryInit( "caller", "[ malformed", 1 ), QL_STATUS_IO_ERROR );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "caller" }, TraceLine { 5, "caller: json = [ malformed" },
                       TraceLine { 0, "caller: socket Setup failed!" } ) );
   EXPECT_EQ( Topology::_topology, nullptr );
   EXPECT_EQ( Topology::_topology_json, "" );
}

TEST_F( Quillon, LibraryInitReturnsWhatTheLoaderReturns ) {
   setupResults = { 0 };
   EXPECT_EQ( quillonLibraryInit( "caller", "[ malformed", 1 ), QL_STATUS_INVALID_ARGUMENT );
   EXPECT_THAT( Host::tracesOf( 2 ),
      ElementsAre( "loading topology json", HasSubstr( "failed to load topology from json: " ) ) );
   EXPECT_NE( _qlSock, nullptr );
}

TEST_F( Quillon, SecondInitWithTheSameTextIsCheap ) {
   setupResults = { 0 };
   ql_fan_init( "[]" );
   auto tree = Topology::_topology;
   auto socket = _qlSock;
   socketLog.clear();
   Host::traces.clear();
   EXPECT_EQ( ql_led_init( "[]" ), QL_STATUS_OK );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "ql_led_init" }, TraceLine { 5, "ql_led_init: json = []" },
                       TraceLine { 2, "topology is the same as the previously loaded one (using it)" } ) );
   EXPECT_THAT( socketLog, IsEmpty() );
   EXPECT_EQ( _qlSock, socket );
   EXPECT_EQ( Topology::_topology, tree );
}

TEST_F( Quillon, InitWithAnotherTextKeepsTheSocketAndRebuildsTheTree ) {
   setupResults = { 0 };
   ql_fan_init( "[]" );
   auto socket = _qlSock;
   Host::traces.clear();
   EXPECT_EQ( ql_fan_init( "[ { \"type\": \"LinuxFs\", \"ham\": \"\" } ]" ), QL_STATUS_OK );
   EXPECT_TRUE( Host::hasTraced( 2, "loading topology json" ) );
   EXPECT_EQ( Topology::_topology->nodes.size(), 1U );
   EXPECT_EQ( _qlSock, socket );
}

namespace {

struct InitFunction {
   std::string name;
   ql_status ( *init )( const char* );
};

const InitFunction initFunctions[] = {
   { "ql_system_init", ql_system_init },
   { "ql_temp_sensor_init", ql_temp_sensor_init },
   { "ql_fan_init", ql_fan_init },
   { "ql_psu_init", ql_psu_init },
   { "ql_led_init", ql_led_init },
   { "ql_slot_init", ql_slot_init },
   { "ql_xcvr_init", ql_xcvr_init },
   { "ql_gpio_init", ql_gpio_init },
   { "ql_poe_port_init", ql_poe_port_init },
};

} // namespace

TEST_F( Quillon, EveryInitFunctionLoadsTheTopologyUnderItsOwnName ) {
   for ( auto& [name, init] : initFunctions ) {
      SCOPED_TRACE( name );
      setupResults = { 0 };
      EXPECT_EQ( init( "[]" ), QL_STATUS_OK );
      ASSERT_GE( Host::traces.size(), 3U );
      EXPECT_EQ( Host::traces[0], ( TraceLine { 0, name } ) );
      EXPECT_EQ( Host::traces[1], ( TraceLine { 5, name + ": json = []" } ) );
      EXPECT_NE( Topology::_topology, nullptr );
      Host::traces.clear();
   }
}

TEST_F( Quillon, EveryInitFunctionTriesForThirtySeconds ) {
   for ( auto& [name, init] : initFunctions ) {
      SCOPED_TRACE( name );
      Host::traces.clear();
      time.waits.clear();
      EXPECT_EQ( init( "[ malformed" ), QL_STATUS_IO_ERROR );
      EXPECT_THAT( time.waits, testing::AllOf( testing::SizeIs( 30 ), testing::Each( seconds( 1 ) ) ) );
      EXPECT_THAT(
         Host::traces, ElementsAre( TraceLine { 0, name }, TraceLine { 5, name + ": json = [ malformed" },
                          TraceLine { 0, name + ": socket Setup failed!" } ) );
      EXPECT_EQ( _qlSock, nullptr );
   }
}
