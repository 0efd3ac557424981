#include "BCM59121Test.h"
#include "EmulatorController.h"

#include <fmt/format.h>

/** The driver's port map on the emulated controller. No operation of the host leads to it. */
namespace {

/** Leads each request to the controller, for which the test's clock has gone on. */
class EmulatedHam final : public Ham::Ham {
public:
   EmulatedHam( const VirtualTime& clock, Emulator::Controller& controller )
      : clock_( clock ), controller_( controller ), seen_( clock.now ) {}

   /** Messages so far. */
   size_t writes = 0;

   /** Lets the controller's time go on to that of the test. */
   void catchUp() {
      controller_.advance( clock_.now - seen_ );
      seen_ = clock_.now;
   }

   void prepare() override {
      catchUp();
      status_ = QL_STATUS_OK;
   }

   void addWrite( Register reg, const void* data, uint32_t size, bool, uint8_t ) override {
      Emulator::Bytes bytes { static_cast<uint8_t>( reg ) };
      auto begin = static_cast<const uint8_t*>( data );
      bytes.insert( bytes.end(), begin, begin + size );
      ++writes;
      status_ = sendTo( controller_, bytes ) ? QL_STATUS_OK : QL_STATUS_FAILED;
   }

   ResponseId addRead( Register reg, uint32_t size, bool, uint8_t ) override {
      auto bytes = readRegister( controller_, static_cast<uint8_t>( reg ), size );
      reply_.assign( bytes.begin(), bytes.end() );
      return 0;
   }

   ql_status execute() override { return status_; }

   std::string getBlock( ResponseId, size_t ) override { return reply_; }

private:
   const VirtualTime& clock_;
   Emulator::Controller& controller_;
   std::chrono::nanoseconds seen_;
   ql_status status_ = QL_STATUS_OK;
   std::string reply_;
};

class EmulatorBcm59121Driver : public Bcm59121Test {
protected:
   /** A controller of 2-pair ports alone, and a driver that wants the last of them to have 4 pairs. */
   void connect( int count, int twoPairPorts ) {
      controller = std::make_unique<Emulator::Controller>(
         Emulator::Options { { "ports", fmt::format( "{}", count ) } } );
      make( { { "numPorts", fmt::format( "{}", count ) },
         { "numAtPorts", fmt::format( "{}", twoPairPorts ) } } );
      ham = std::make_unique<EmulatedHam>( time, *controller );
      driver->ham = ham.get();
   }

   /** The driver's port map, and the waits behind its last step. */
   ql_status configure() {
      auto status = driver->configPortMap( port( 0 ) );
      ham->catchUp();
      return status;
   }

   std::unique_ptr<Emulator::Controller> controller;
   std::unique_ptr<EmulatedHam> ham;
};

} // namespace

TEST_F( EmulatorBcm59121Driver, PutsAPortMapInForce ) {
   connect( 12, 8 );
   EXPECT_EQ( controller->tell( 0x20, { 0 } )[9], 0x02 );
   EXPECT_EQ( configure(), QL_STATUS_OK );
   EXPECT_EQ( controller->tell( 0x20, { 0 } )[9], 0x0A );
   for ( uint8_t number = 1; number <= 12; ++number ) {
      controller->power( number, "class=3" );
      auto pairs = controller->tell( 0x21, { static_cast<uint8_t>( number - 1 ) } )[9];
      EXPECT_EQ( pairs, number <= 8 ? 1 : 3 ) << "port " << +number;
   }
   EXPECT_EQ( controller->tell( 0x2D, { 1 } )[0], 0x2D ) << "four 4-pair ports fill the second group";
   EXPECT_EQ( controller->tell( 0x2D, { 2 } )[0], 0xAC );
}

TEST_F( EmulatorBcm59121Driver, LeavesAPortMapThatIsInForce ) {
   connect( 12, 8 );
   ASSERT_EQ( configure(), QL_STATUS_OK );
   auto writes = ham->writes;
   EXPECT_EQ( configure(), QL_STATUS_OK );
   EXPECT_EQ( ham->writes, writes + 1 ) << "the query alone";
}

TEST_F( EmulatorBcm59121Driver, IsRefusedAPortMapThatHasAChannelTwice ) {
   // Channels 15 and 16 make up port 13, which are 7 and 0 of group 1; port 9 has that 0 already.
   connect( 13, 9 );
   EXPECT_EQ( configure(), QL_STATUS_DEVICE_ERROR );
   EXPECT_EQ( controller->tell( 0x20, { 0 } )[9], 0x02 );
}
