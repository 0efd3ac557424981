#include "smbusd/I2cDev/Adapters.h"

#include "SmbusdMockKernel.h"

using namespace Smbusd::I2cDev;
using testing::ElementsAre;
using testing::IsEmpty;

TEST( SmbusdI2cDevAdapters, AreFoundByName ) {
   SysfsTree sysfs;
   sysfs.add( "i2c-0", "first adapter" );
   sysfs.add( "i2c-12", "second adapter" );
   EXPECT_THAT( findAdapters( "second adapter", sysfs.path() ), ElementsAre( 12 ) );
}

TEST( SmbusdI2cDevAdapters, OfTheSameNameAreAllFound ) {
   SysfsTree sysfs;
   sysfs.add( "i2c-10", "adapter" );
   sysfs.add( "i2c-2", "adapter" );
   EXPECT_THAT( findAdapters( "adapter", sysfs.path() ), ElementsAre( 2, 10 ) );
}

TEST( SmbusdI2cDevAdapters, HaveTheNameAsAWhole ) {
   SysfsTree sysfs;
   sysfs.add( "i2c-0", "adapter 0" );
   EXPECT_THAT( findAdapters( "adapter", sysfs.path() ), IsEmpty() );
}

TEST( SmbusdI2cDevAdapters, AreNotChips ) {
   SysfsTree sysfs;
   sysfs.add( "3-0048", "pct2075" );
   sysfs.add( "i2c-PNP0C09:00", "pct2075" );
   sysfs.add( "i2c-4x", "pct2075" );
   EXPECT_THAT( findAdapters( "pct2075", sysfs.path() ), IsEmpty() );
}

TEST( SmbusdI2cDevAdapters, AreNoneWhereTheKernelHasNoI2c ) {
   EXPECT_THAT( findAdapters( "adapter", "/nonexistent" ), IsEmpty() );
}

TEST( SmbusdI2cDevAdapters, AreListedAsTheirDevices ) {
   EXPECT_EQ( listAdapters( { 1, 4 } ), "i2c-1, i2c-4" );
}
