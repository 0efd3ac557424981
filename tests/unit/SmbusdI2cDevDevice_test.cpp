#include "smbusd/I2cDev/Device.h"

#include "SmbusdMockKernel.h"

#include <memory>

using namespace Smbusd;
using namespace Smbusd::I2cDev;
using testing::_;
using testing::An;
using testing::DoAll;
using testing::InSequence;
using testing::NiceMock;
using testing::Return;
using testing::SetArgReferee;

namespace {

/** An adapter that can do all, unless a test says otherwise. */
class SmbusdI2cDevDevice : public testing::Test {
protected:
   SmbusdI2cDevDevice() {
      ON_CALL( kernel, open ).WillByDefault( Return( deviceFd ) );
      has( I2C_FUNC_I2C );
   }

   void has( unsigned long functions ) {
      ON_CALL( kernel, functions ).WillByDefault( DoAll( SetArgReferee<1>( functions ), Return( 0 ) ) );
   }

   void use( AdapterReference adapter ) {
      device = std::make_unique<Device>( kernel, std::move( adapter ), sysfs.path() );
   }

   std::string transfer() {
      operation.result.clear();
      return describe( device->transfer( operation ) );
   }

   void transfersFailWith( int error ) {
      ON_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) ).WillByDefault( FailWith( error ) );
   }

   NiceMock<MockKernel> kernel;
   SysfsTree sysfs;
   std::unique_ptr<Device> device;
   Operation operation { .kind = Operation::Kind::Read, .chip = 0x48, .length = 1 };
};

} // namespace

TEST_F( SmbusdI2cDevDevice, IsOpenedByTheFirstTransferAlone ) {
   EXPECT_CALL( kernel, open( "/dev/i2c-3" ) ).Times( 1 ).WillOnce( Return( deviceFd ) );
   use( 3U );
   EXPECT_EQ( transfer(), "ok" );
   EXPECT_EQ( transfer(), "ok" );
}

TEST_F( SmbusdI2cDevDevice, IsClosedAtItsEnd ) {
   EXPECT_CALL( kernel, close( deviceFd ) );
   use( 3U );
   transfer();
   device.reset();
}

TEST_F( SmbusdI2cDevDevice, SelectsTheChipBeforeTheTransfer ) {
   InSequence inOrder;
   EXPECT_CALL( kernel, select( deviceFd, 0x48 ) );
   EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_rdwr_ioctl_data&>() ) );
   use( 3U );
   transfer();
}

TEST_F( SmbusdI2cDevDevice, LeavesAChipAloneThatADriverHas ) {
   EXPECT_CALL( kernel, select ).WillOnce( FailWith( EBUSY ) );
   EXPECT_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) ).Times( 0 );
   use( 3U );
   EXPECT_EQ( transfer(), "held by a kernel driver" );
}

TEST_F( SmbusdI2cDevDevice, TransfersMessagesWhereTheAdapterCan ) {
   has( I2C_FUNC_I2C | I2C_FUNC_SMBUS_READ_BYTE_DATA );
   EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_rdwr_ioctl_data&>() ) );
   use( 3U );
   EXPECT_EQ( transfer(), "ok" );
}

TEST_F( SmbusdI2cDevDevice, UsesSmbusProtocolsWhereTheAdapterKnowsNoOthers ) {
   has( I2C_FUNC_SMBUS_READ_BYTE_DATA );
   EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_smbus_ioctl_data&>() ) );
   use( 3U );
   EXPECT_EQ( transfer(), "ok" );
}

TEST_F( SmbusdI2cDevDevice, TellsWhatTheAdapterLacks ) {
   has( I2C_FUNC_SMBUS_WRITE_BYTE );
   EXPECT_CALL( kernel, select ).Times( 0 );
   use( 3U );
   EXPECT_EQ( transfer(), "not supported by the adapter (read byte)" );
}

TEST_F( SmbusdI2cDevDevice, TellsThatThereIsNoSuchAdapter ) {
   EXPECT_CALL( kernel, open ).WillOnce( FailWith( ENOENT ) );
   use( 3U );
   EXPECT_EQ( transfer(),
      "no such bus (/dev/i2c-3: No such file or directory; load i2c-dev, or correct the map of adapters)" );
}

TEST_F( SmbusdI2cDevDevice, IsClosedWhenItDoesNotTellItsFunctions ) {
   EXPECT_CALL( kernel, functions ).WillOnce( FailWith( ENODEV ) );
   EXPECT_CALL( kernel, close( deviceFd ) );
   use( 3U );
   EXPECT_EQ(
      transfer(), "no such bus (/dev/i2c-3: No such device; load i2c-dev, or correct the map of adapters)" );
}

TEST_F( SmbusdI2cDevDevice, IsOpenedAnewWhenItCouldNotBeOpened ) {
   EXPECT_CALL( kernel, open ).WillOnce( FailWith( ENOENT ) ).WillOnce( Return( deviceFd ) );
   use( 3U );
   transfer();
   EXPECT_EQ( transfer(), "ok" );
}

TEST_F( SmbusdI2cDevDevice, IsOpenedAnewAfterAFailureThatMayMeanItIsGone ) {
   EXPECT_CALL( kernel, open ).Times( 2 ).WillRepeatedly( Return( deviceFd ) );
   EXPECT_CALL( kernel, close ).Times( 2 );
   EXPECT_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) )
      .WillOnce( FailWith( ENODEV ) )
      .WillOnce( Return( 1 ) );
   use( 3U );
   EXPECT_EQ( transfer(), "no acknowledge" );
   EXPECT_EQ( transfer(), "ok" );
}

TEST_F( SmbusdI2cDevDevice, StaysOpenAfterAFailureOfTheChip ) {
   EXPECT_CALL( kernel, open ).Times( 1 ).WillOnce( Return( deviceFd ) );
   transfersFailWith( ENXIO );
   use( 3U );
   EXPECT_EQ( transfer(), "no acknowledge" );
   EXPECT_EQ( transfer(), "no acknowledge" );
}

TEST_F( SmbusdI2cDevDevice, OfANumberHasItsNameFromTheStart ) {
   use( 3U );
   EXPECT_EQ( device->name(), "i2c-3" );
}

TEST_F( SmbusdI2cDevDevice, OfANameIsFoundByIt ) {
   sysfs.add( "i2c-5", "some adapter" );
   EXPECT_CALL( kernel, open( "/dev/i2c-5" ) ).WillOnce( Return( deviceFd ) );
   use( "some adapter" );
   EXPECT_EQ( device->name(), "some adapter" );
   EXPECT_EQ( transfer(), "ok" );
   EXPECT_EQ( device->name(), "i2c-5" );
}

TEST_F( SmbusdI2cDevDevice, OfANameIsFoundAgainUnderAnotherNumber ) {
   sysfs.add( "i2c-5", "some adapter" );
   transfersFailWith( EIO );
   use( "some adapter" );
   EXPECT_CALL( kernel, open( "/dev/i2c-5" ) ).WillOnce( Return( deviceFd ) );
   transfer();
   sysfs.remove( "i2c-5" );
   sysfs.add( "i2c-6", "some adapter" );
   EXPECT_CALL( kernel, open( "/dev/i2c-6" ) ).WillOnce( Return( deviceFd ) );
   transfer();
   EXPECT_EQ( device->name(), "i2c-6" );
}

TEST_F( SmbusdI2cDevDevice, OfANameThatNoAdapterHasIsNoBus ) {
   EXPECT_CALL( kernel, open ).Times( 0 );
   use( "some adapter" );
   EXPECT_EQ(
      transfer(), "no such bus (no adapter has this name; load its driver, or correct the map of adapters)" );
   EXPECT_EQ( device->name(), "some adapter" );
}

TEST_F( SmbusdI2cDevDevice, OfANameThatSeveralAdaptersHaveIsNoBus ) {
   sysfs.add( "i2c-5", "some adapter" );
   sysfs.add( "i2c-6", "some adapter" );
   EXPECT_CALL( kernel, open ).Times( 0 );
   use( "some adapter" );
   EXPECT_EQ( transfer(), "no such bus (several adapters have this name: i2c-5, i2c-6)" );
}
