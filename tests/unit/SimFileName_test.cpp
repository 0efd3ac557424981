#include "Simulation.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include <unistd.h>

using Utils::ExpectedVal;

namespace {

class SimFileName : public SimulatedChip {
protected:
   SimFileName() { expect( { { 1, ExpectedVal( 0x2A, 1 ) } } ); }
};

} // namespace

TEST_F( SimFileName, IsThatOfTheDriver ) {
   ham.setDriverName( "PCT2075", "" );
   EXPECT_EQ( ham.driverName, "PCT2075" );
   EXPECT_EQ( ham.deviceName, "" );
   EXPECT_EQ( ham.simFileName_, pathOf( "PCT2075" ) );
}

TEST_F( SimFileName, IsThatOfTheDriverAndTheDevice ) {
   ham.setDriverName( "PCT2075", "inlet" );
   EXPECT_EQ( ham.driverName, "PCT2075" );
   EXPECT_EQ( ham.deviceName, "inlet" );
   EXPECT_EQ( ham.simFileName_, pathOf( "PCT2075-inlet" ) );
}

TEST_F( SimFileName, LosesAnOlderDeviceNameThatTheHamItselfKeeps ) {
   ham.setDriverName( "PCT2075", "inlet" );
   ham.setDriverName( "EMC2305", "" );
   EXPECT_EQ( ham.deviceName, "inlet" );
   EXPECT_EQ( ham.simFileName_, pathOf( "EMC2305" ) );
}

TEST_F( SimFileName, IsSharedByTheHamsOfADriver ) {
   Ham::SimHam other;
   other.setDriverName( "Chip", "" );
   other.setExpected( &values );
   ham.write8( 1, 0xEE, false, 1 );
   uint8_t value = 0;
   EXPECT_EQ( other.read8( 1, &value, 1 ), QL_STATUS_OK );
   EXPECT_EQ( value, 0xEE );
}

TEST_F( SimFileName, LosesItsValuesToALaterHamOfTheDriver ) {
   ham.write8( 1, 0xEE, false, 1 );
   Ham::SimHam later;
   later.setDriverName( "Chip", "" );
   later.setExpected( &values );
   EXPECT_EQ( contentOf( "Chip" ), "2a\n" );
}

TEST_F( SimFileName, KeepsANamedDeviceApart ) {
   Ham::SimHam named;
   named.setDriverName( "Chip", "left" );
   named.setExpected( &values );
   named.write8( 1, 0xEE, false, 1 );
   EXPECT_EQ( contentOf( "Chip" ), "2a\n" );
   EXPECT_EQ( contentOf( "Chip-left" ), "ee\n" );
}

namespace {

/** Each of these runs in a program of its own, since the library remembers the directory that it was given.
 */
class SimDirectoryDeathTest : public testing::Test {
protected:
   SimDirectoryDeathTest() { GTEST_FLAG_SET( death_test_style, "threadsafe" ); }

   ~SimDirectoryDeathTest() override { GTEST_FLAG_SET( death_test_style, "fast" ); }

   /** Prints the path of the file "Chip" with one value of the environment variable after the other. */
   static void printPaths( std::initializer_list<const char*> directories ) {
      for ( auto directory : directories ) {
         directory ? setenv( "QUILLONLIB_SIMDIR", directory, 1 ) : unsetenv( "QUILLONLIB_SIMDIR" );
         Ham::SimHam ham;
         ham.setDriverName( "Chip", "" );
         fprintf( stderr, "<%s>", ham.simFileName_.c_str() );
      }
      _exit( 0 );
   }

   const testing::ExitedWithCode success { 0 };
};

} // namespace

TEST_F( SimDirectoryDeathTest, IsTheOneOfTheEnvironment ) {
   EXPECT_EXIT( printPaths( { "/some/where" } ), success, "^</some/where/Chip>$" );
}

TEST_F( SimDirectoryDeathTest, IsUnderTmpWithoutOneInTheEnvironment ) {
   EXPECT_EXIT( printPaths( { nullptr } ), success, "^</tmp/QuillonSimulationDevices/Chip>$" );
}

TEST_F( SimDirectoryDeathTest, IsRememberedWhenTheEnvironmentChanges ) {
   EXPECT_EXIT(
      printPaths( { "/first", "/second", nullptr } ), success, "^</first/Chip></first/Chip></first/Chip>$" );
}

TEST_F( SimDirectoryDeathTest, IsLookedUpAgainWhileTheEnvironmentHasNone ) {
   EXPECT_EXIT( printPaths( { nullptr, "/late", "/later" } ), success,
      "^</tmp/QuillonSimulationDevices/Chip></late/Chip></late/Chip>$" );
}

TEST_F( SimDirectoryDeathTest, MayBeAnEmptyTextThatIsRememberedToo ) {
   EXPECT_EXIT( printPaths( { "", nullptr } ), success, "^</Chip></Chip>$" );
}
