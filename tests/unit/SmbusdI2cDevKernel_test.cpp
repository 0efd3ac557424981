#include "smbusd/I2cDev/Kernel.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>

using Smbusd::I2cDev::RealKernel;

TEST( SmbusdI2cDevKernel, PassesOnThatADeviceIsNotThere ) {
   RealKernel kernel;
   EXPECT_EQ( kernel.open( "/dev/i2c-nonexistent" ), -1 );
   EXPECT_EQ( errno, ENOENT );
}

TEST( SmbusdI2cDevKernel, OpensDevicesForItselfAloneAndClosesThem ) {
   RealKernel kernel;
   auto fd = kernel.open( "/dev/null" );
   ASSERT_GE( fd, 0 );
   EXPECT_EQ( fcntl( fd, F_GETFL ) & O_ACCMODE, O_RDWR );
   EXPECT_EQ( fcntl( fd, F_GETFD ) & FD_CLOEXEC, FD_CLOEXEC );
   kernel.close( fd );
   EXPECT_EQ( fcntl( fd, F_GETFD ), -1 );
}

TEST( SmbusdI2cDevKernel, PassesOnThatADeviceIsNoAdapter ) {
   RealKernel kernel;
   auto fd = kernel.open( "/dev/null" );
   unsigned long functions = 0;
   EXPECT_EQ( kernel.functions( fd, functions ), -1 );
   EXPECT_EQ( errno, ENOTTY );
   EXPECT_EQ( kernel.select( fd, 0x48 ), -1 );
   EXPECT_EQ( errno, ENOTTY );
   i2c_rdwr_ioctl_data messages {};
   EXPECT_EQ( kernel.transfer( fd, messages ), -1 );
   EXPECT_EQ( errno, ENOTTY );
   i2c_smbus_ioctl_data protocol {};
   EXPECT_EQ( kernel.transfer( fd, protocol ), -1 );
   EXPECT_EQ( errno, ENOTTY );
   kernel.close( fd );
}
