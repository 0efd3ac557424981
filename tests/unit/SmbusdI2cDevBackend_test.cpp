#include "smbusd/I2cDev/AdapterBackend.h"

#include "SmbusdFakes.h"
#include "SmbusdMockKernel.h"

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

using namespace Smbusd;
using namespace Smbusd::I2cDev;
using testing::_;
using testing::An;
using testing::DoAll;
using testing::NiceMock;
using testing::Return;
using testing::SetArgReferee;

namespace {

const BusKey three { Smbus::I2C, 0, 0, 3 };
const BusKey alsoThree { Smbus::SCD, 0x700, 1, 3 };
const BusKey five { Smbus::I2C, 0, 0, 5 };

/** Three names of two adapters. Both fail every transfer with ENXIO, so that nothing has to be answered. */
class SmbusdI2cDevBackend : public testing::Test {
protected:
   SmbusdI2cDevBackend() {
      ON_CALL( kernel, open( "/dev/i2c-1" ) ).WillByDefault( Return( 101 ) );
      ON_CALL( kernel, open( "/dev/i2c-2" ) ).WillByDefault( Return( 102 ) );
      ON_CALL( kernel, functions ).WillByDefault( DoAll( SetArgReferee<1>( I2C_FUNC_I2C ), Return( 0 ) ) );
      ON_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) ).WillByDefault( FailWith( ENXIO ) );
      backend = std::make_unique<AdapterBackend>(
         loop, kernel, BusMap { { three, 1U }, { alsoThree, 1U }, { five, 2U } } );
   }

   EventLoop loop;
   NiceMock<MockKernel> kernel;
   std::unique_ptr<AdapterBackend> backend;
   Operation operation { .kind = Operation::Kind::Read, .chip = 0x48, .length = 1 };
};

} // namespace

TEST_F( SmbusdI2cDevBackend, FindsTheAdapterOfABus ) {
   ASSERT_TRUE( backend->find( three ) );
   EXPECT_EQ( backend->find( three )->name(), "i2c-1" );
   EXPECT_EQ( backend->find( five )->name(), "i2c-2" );
}

TEST_F( SmbusdI2cDevBackend, FindsNoBusThatIsNotMapped ) {
   EXPECT_EQ( backend->find( { Smbus::SCD, 0, 0, 3 } ), nullptr );
   EXPECT_EQ( backend->find( { Smbus::I2C, 1, 0, 3 } ), nullptr );
   EXPECT_EQ( backend->find( { Smbus::I2C, 0, 1, 3 } ), nullptr );
   EXPECT_EQ( backend->find( { Smbus::I2C, 0, 0, 4 } ), nullptr );
}

TEST_F( SmbusdI2cDevBackend, HasOneBusForAnAdapterOfSeveralNames ) {
   EXPECT_EQ( backend->find( three ), backend->find( alsoThree ) );
}

TEST_F( SmbusdI2cDevBackend, TransfersInAnotherThreadAndTellsInTheLoops ) {
   std::thread::id transferred;
   ON_CALL( kernel, select ).WillByDefault( [&]( int, uint8_t ) {
      transferred = std::this_thread::get_id();
      return 0;
   } );
   std::thread::id told;
   I2c::Result result {};
   EXPECT_FALSE( backend->find( three )->transfer( operation, [&]( const Outcome& outcome ) {
      told = std::this_thread::get_id();
      result = outcome.result;
      loop.stop();
   } ) );
   loop.run();
   EXPECT_EQ( told, std::this_thread::get_id() );
   EXPECT_NE( transferred, std::this_thread::get_id() );
   EXPECT_EQ( result, I2c::Result::NoAcknowledge );
}

TEST_F( SmbusdI2cDevBackend, TransfersOnOneAdapterWhileAnotherHangs ) {
   std::promise<void> released;
   ON_CALL( kernel, select( 101, _ ) )
      .WillByDefault( [future = released.get_future().share()]( int, uint8_t ) {
         future.wait();
         return 0;
      } );
   bool slow = false;
   bool quick = false;
   auto other = operation;
   backend->find( three )->transfer( operation, [&]( const Outcome& ) { slow = true; } );
   backend->find( five )->transfer( other, [&]( const Outcome& ) { quick = true; } );
   EXPECT_TRUE( runUntil( loop, [&] { return quick; } ) );
   EXPECT_FALSE( slow );
   released.set_value();
   EXPECT_TRUE( runUntil( loop, [&] { return slow; } ) );
}

TEST_F( SmbusdI2cDevBackend, CarriesOutOneTransferAfterAnother ) {
   int left = 1000;
   Bus::Done again = [&]( const Outcome& ) {
      if ( --left > 0 ) {
         backend->find( three )->transfer( operation, again );
      }
   };
   backend->find( three )->transfer( operation, again );
   EXPECT_TRUE( runUntil( loop, [&] { return left == 0; } ) );
}

TEST_F( SmbusdI2cDevBackend, WaitsForTransfersUnderWayAtItsEnd ) {
   std::atomic<bool> done = false;
   std::promise<void> begun;
   ON_CALL( kernel, select ).WillByDefault( [&]( int, uint8_t ) {
      begun.set_value();
      std::this_thread::sleep_for( std::chrono::milliseconds( 20 ) );
      done = true;
      return 0;
   } );
   backend->find( three )->transfer( operation, []( const Outcome& ) {} );
   begun.get_future().wait();
   backend.reset();
   EXPECT_TRUE( done );
}

namespace {

/** What the log has to say of a map before it is used. */
std::string warnings(
   Kernel& kernel, const BusMap& map, const std::filesystem::path& devices = "/nonexistent" ) {
   unsetenv( "JOURNAL_STREAM" );
   testing::internal::CaptureStderr();
   warnOfUnusable( kernel, map, devices );
   return testing::internal::GetCapturedStderr();
}

} // namespace

TEST( SmbusdI2cDevPreview, SaysOnceWhichAdaptersCanNotBeOpened ) {
   NiceMock<MockKernel> kernel;
   ON_CALL( kernel, open( "/dev/i2c-1" ) ).WillByDefault( FailWith( EACCES ) );
   ON_CALL( kernel, open( "/dev/i2c-2" ) ).WillByDefault( FailWith( ENOENT ) );

   EXPECT_EQ( warnings( kernel, { { three, 1U }, { alsoThree, 1U }, { five, 2U } } ),
      "quillon-smbusd: i2c-1: not permitted (/dev/i2c-1: Permission denied; put the server's user into the "
      "group of "
      "this device)\n"
      "quillon-smbusd: i2c-2: no such bus (/dev/i2c-2: No such file or directory; load i2c-dev, or correct "
      "the map "
      "of adapters)\n" );
}

TEST( SmbusdI2cDevPreview, LooksAtAdaptersThatHaveANameToo ) {
   SysfsTree sysfs;
   sysfs.add( "i2c-7", "some adapter" );
   NiceMock<MockKernel> kernel;
   ON_CALL( kernel, open( "/dev/i2c-7" ) ).WillByDefault( FailWith( EPERM ) );

   EXPECT_THAT( warnings( kernel, { { three, "some adapter" }, { five, "none" } }, sysfs.path() ),
      testing::StartsWith( "quillon-smbusd: i2c-7: not permitted (/dev/i2c-7: Operation not permitted; " ) );
}

TEST( SmbusdI2cDevPreview, LeavesNothingOpen ) {
   testing::StrictMock<MockKernel> kernel;
   EXPECT_CALL( kernel, open( "/dev/i2c-1" ) ).WillOnce( Return( 101 ) );
   EXPECT_CALL( kernel, close( 101 ) );

   EXPECT_EQ( warnings( kernel, { { three, 1U } } ), "" );
}
