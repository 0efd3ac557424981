#include "EmulatorBus.h"

#include "emulator/Emc2305.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;

namespace {

/**
 * A speed and the count that the data sheet gives for it, RPM = (n - 1) / poles * m / COUNT * 32768 * 60, in
 * bits 12:5 and, from bit 7 on, 4:0. A two-pole fan and 5 edges make it 3932160 * m / COUNT.
 */
struct Golden {
   const char* name;
   uint8_t config1;
   const char* rpm;
   Bytes bytes;
};

const Golden readings[] = {
   { "7864320 / 8000 = 983", 0x2B, "8000", { 0x1E, 0xB8 } },
   { "7864320 / 10000 = 786.4", 0x2B, "10000", { 0x18, 0x90 } },
   { "7864320 / 18635 = 422", 0x2B, "18635", { 0x0D, 0x30 } },
   { "3932160 / 2000 = 1966", 0x0B, "2000", { 0x3D, 0x70 } },
   { "15728640 / 6000 = 2621.4", 0x4B, "6000", { 0x51, 0xE8 } },
   { "31457280 / 74543 = 422", 0x6B, "74543", { 0x0D, 0x30 } },
   { "3 edges: half of 983", 0x23, "8000", { 0x0F, 0x58 } },
   { "7 edges: one and a half times 983", 0x33, "8000", { 0x2E, 0x10 } },
   { "9 edges: twice 983", 0x3B, "8000", { 0x3D, 0x70 } },
   { "other bits of configuration 1", 0xAF, "8000", { 0x1E, 0xB8 } },
   { "the slowest but a few", 0x0B, "481", { 0xFF, 0x70 } },
   { "too slow", 0x0B, "480", { 0xFF, 0xF8 } },
   { "a rotor that stands", 0x2B, "0", { 0xFF, 0xF8 } },
};

class EmulatorEmc2305 : public ::testing::Test {
protected:
   void write( uint8_t reg, uint8_t value ) { ASSERT_TRUE( sendTo( chip, { reg, value } ) ); }

   uint8_t read( uint8_t reg ) { return readRegister( chip, reg, 1 ).at( 0 ); }

   /** A fan of at most 10000 rpm that has reached what it was set to. */
   void settle( const std::string& fan, const char* drive, const char* rpm ) {
      chip.set( fan + ".max_rpm", "10000" );
      chip.set( fan + ".drive", drive );
      chip.set( fan + ".rpm", rpm );
      chip.advance( 2s );
   }

   Emc2305 chip;
};

} // namespace

TEST_F( EmulatorEmc2305, CountsTheTachometerAsTheTableTells ) {
   for ( auto& row : readings ) {
      write( 0x32, row.config1 );
      chip.set( "fan1.rpm", row.rpm );
      EXPECT_EQ( readRegister( chip, 0x3E, 2 ), row.bytes ) << row.name;
   }
}

TEST_F( EmulatorEmc2305, HasEachFanInABlockOf16Registers ) {
   const struct {
      const char* fan;
      uint8_t setting;
      uint8_t tach;
   } rows[] = {
      { "fan1", 0x30, 0x3E },
      { "fan2", 0x40, 0x4E },
      { "fan3", 0x50, 0x5E },
      { "fan4", 0x60, 0x6E },
      { "fan5", 0x70, 0x7E },
   };

   for ( auto& row : rows ) {
      std::string fan( row.fan );
      write( row.setting, 0x33 );
      EXPECT_EQ( chip.get( fan + ".drive" ), "51" );
      chip.set( fan + ".rpm", "8000" );
      EXPECT_EQ( readRegister( chip, row.tach, 2 ), ( Bytes { 0x1E, 0xB8 } ) ) << fan;
      chip.set( fan + ".rpm", "0" );
   }
}

TEST_F( EmulatorEmc2305, IdentifiesItself ) {
   EXPECT_EQ( readRegister( chip, 0xFD, 3 ), ( Bytes { 0x34, 0x5D, 0x80 } ) );
}

TEST_F( EmulatorEmc2305, AcceleratesWithATimeConstantOfASecond ) {
   chip.set( "fan1.max_rpm", "10000" );
   write( 0x30, 0xFF );
   // 1 - 1/e, 1 - 1/e^2 and 1 - 1/e^3 of 10000.
   const char* expected[] = { "6321", "8647", "9502" };
   for ( auto rpm : expected ) {
      chip.advance( 1s );
      EXPECT_EQ( chip.get( "fan1.rpm" ), rpm );
   }
   chip.advance( 20s );
   EXPECT_EQ( chip.get( "fan1.rpm" ), "10000" );
}

TEST_F( EmulatorEmc2305, SlowsDownAsItAccelerates ) {
   settle( "fan1", "255", "10000" );
   write( 0x30, 51 );
   chip.advance( 1s );
   // A fifth of 10000, and 1/e of the 8000 above it.
   EXPECT_EQ( chip.get( "fan1.rpm" ), "4943" );
}

TEST_F( EmulatorEmc2305, TurnsAsFarInManyStepsAsInOne ) {
   chip.set( "fan1.max_rpm", "10000" );
   write( 0x30, 0xFF );
   for ( int i = 0; i < 1000; ++i ) {
      chip.advance( 1ms );
   }
   EXPECT_EQ( chip.get( "fan1.rpm" ), "6321" );
}

TEST_F( EmulatorEmc2305, KeepsTheSpeedThatTheDriveSettingStandsFor ) {
   const std::pair<const char*, const char*> rows[] = { { "0", "0" }, { "51", "2000" }, { "102", "4000" },
      { "127", "4980" }, { "255", "10000" } };
   for ( auto& [drive, rpm] : rows ) {
      settle( "fan1", drive, rpm );
      EXPECT_EQ( chip.get( "fan1.rpm" ), rpm );
   }
}

TEST_F( EmulatorEmc2305, MeasuresARotorThatCoasts ) {
   settle( "fan1", "255", "10000" );
   write( 0x30, 0 );
   chip.advance( 1s );
   // 7864320 / 3678.8 = 2137.7
   EXPECT_EQ( readRegister( chip, 0x3E, 2 ), ( Bytes { 0x42, 0xC8 } ) );
}

TEST_F( EmulatorEmc2305, ShowsAStalledFanOnceItHasHadItsTimeToSpinUp ) {
   const struct {
      uint8_t spinUp;
      std::chrono::milliseconds time;
   } rows[] = { { 0x18, 250ms }, { 0x19, 500ms }, { 0x1A, 1s }, { 0x1B, 2s } };

   chip.set( "fan3.stalled", "1" );
   for ( auto& row : rows ) {
      write( 0x56, row.spinUp );
      write( 0x50, 0 );
      chip.advance( 1ms );
      write( 0x50, 0x80 );
      chip.advance( row.time - 1ms );
      EXPECT_EQ( read( 0x25 ), 0x00 ) << +row.spinUp;
      chip.advance( 1ms );
      EXPECT_EQ( read( 0x25 ), 0x04 ) << +row.spinUp;
      EXPECT_EQ( read( 0x24 ), 0x01 ) << +row.spinUp;
   }
}

TEST_F( EmulatorEmc2305, AStallStopsTheRotorAtOnce ) {
   settle( "fan1", "255", "10000" );
   chip.set( "fan1.stalled", "1" );
   EXPECT_EQ( chip.get( "fan1.rpm" ), "0" );
   EXPECT_EQ( readRegister( chip, 0x3E, 2 ), ( Bytes { 0xFF, 0xF8 } ) );
   EXPECT_EQ( read( 0x25 ), 0x01 );
}

TEST_F( EmulatorEmc2305, ClearsAStatusByReadingUntilItsCauseShowsAgain ) {
   settle( "fan1", "255", "10000" );
   chip.set( "fan1.stalled", "1" );
   EXPECT_EQ( readRegister( chip, 0x24, 2 ), ( Bytes { 0x01, 0x01 } ) );
   EXPECT_EQ( readRegister( chip, 0x24, 2 ), ( Bytes { 0x00, 0x00 } ) );
   chip.advance( 1ms );
   EXPECT_EQ( readRegister( chip, 0x24, 2 ), ( Bytes { 0x01, 0x01 } ) );
}

TEST_F( EmulatorEmc2305, AFanThatIsFreeAgainSpinsUpAndLeavesItsStatusToTheNextRead ) {
   settle( "fan1", "255", "10000" );
   chip.set( "fan1.stalled", "1" );
   read( 0x25 );
   chip.set( "fan1.stalled", "0" );
   chip.advance( 1s );
   EXPECT_EQ( chip.get( "fan1.rpm" ), "6321" );
   EXPECT_EQ( read( 0x25 ), 0x01 ) << "it was still too slow when it was let go";
   chip.advance( 1s );
   EXPECT_EQ( read( 0x25 ), 0x00 );
}

TEST_F( EmulatorEmc2305, AFanBelowTheValidCountIsStalled ) {
   // At 8000 rpm the high byte is 0x1E.
   settle( "fan1", "204", "8000" );
   write( 0x39, 0x1E );
   chip.advance( 1ms );
   EXPECT_EQ( read( 0x25 ), 0x00 );
   write( 0x39, 0x1D );
   chip.advance( 1ms );
   EXPECT_EQ( read( 0x25 ), 0x01 );
}

TEST_F( EmulatorEmc2305, AFanThatIsNotDrivenIsNotStalled ) {
   settle( "fan1", "0", "0" );
   chip.set( "fan1.stalled", "1" );
   chip.advance( 10s );
   EXPECT_EQ( read( 0x25 ), 0x00 );
}

TEST_F( EmulatorEmc2305, RefusesASpeedForAStalledFan ) {
   chip.set( "fan1.stalled", "1" );
   chip.set( "fan1.rpm", "0" );
   try {
      chip.set( "fan1.rpm", "1000" );
      FAIL() << "it took it";
   } catch ( const std::invalid_argument& error ) {
      EXPECT_STREQ( error.what(), "fan1.rpm stays 0 while the fan is stalled" );
   }
}

TEST_F( EmulatorEmc2305, RunsAllFansAtFullSpeedWhenNobodySetsADriveAtPowerUp ) {
   chip.set( "fan5.max_rpm", "10000" );
   chip.advance( 3999ms );
   EXPECT_EQ( chip.get( "fan5.drive" ), "0" );
   EXPECT_EQ( read( 0x24 ), 0x00 );
   chip.advance( 1001ms );
   for ( uint8_t setting : Bytes { 0x30, 0x40, 0x50, 0x60, 0x70 } ) {
      EXPECT_EQ( read( setting ), 0xFF ) << +setting;
   }
   EXPECT_EQ( chip.get( "fan5.rpm" ), "6321" ) << "driven for one second";
   EXPECT_EQ( read( 0x24 ), 0x80 );
   EXPECT_EQ( read( 0x24 ), 0x00 );
}

TEST_F( EmulatorEmc2305, OnlyADriveSettingEndsTheWatchOfPowerUp ) {
   write( 0x20, 0x00 );
   read( 0x30 );
   EXPECT_TRUE( sendTo( chip, { 0x31, 0x02 } ) );
   chip.advance( 4s );
   EXPECT_EQ( chip.get( "fan1.drive" ), "255" );

   const std::pair<const char*, Bytes> rows[] = {
      { "the setting alone", { 0x60, 0x00 } },
      { "behind other registers", { 0x3C, 0xF8, 0xFF, 0x00, 0x00, 0x00 } },
   };
   for ( auto& [name, bytes] : rows ) {
      chip.reset();
      chip.advance( 3s );
      EXPECT_TRUE( sendTo( chip, bytes ) ) << name;
      chip.advance( 10s );
      EXPECT_EQ( chip.get( "fan1.drive" ), "0" ) << name;
   }
}

TEST_F( EmulatorEmc2305, ADriveSetOnTheBenchEndsTheWatchOfPowerUp ) {
   chip.set( "fan1.drive", "100" );
   chip.advance( 10s );
   EXPECT_EQ( chip.get( "fan1.drive" ), "100" );
   EXPECT_EQ( read( 0x24 ), 0x00 );
}

TEST_F( EmulatorEmc2305, WithTheWatchdogOnRunsAllFansAtFullSpeedAfterFourQuietSeconds ) {
   write( 0x30, 0x40 );
   write( 0x20, 0x20 );
   chip.advance( 3s );
   read( 0x3E );
   chip.advance( 3s );
   EXPECT_EQ( chip.get( "fan1.drive" ), "64" );
   chip.advance( 1s );
   EXPECT_EQ( chip.get( "fan1.drive" ), "255" );
   EXPECT_EQ( chip.get( "fan2.drive" ), "255" );
   EXPECT_EQ( read( 0x24 ), 0x80 );
}

TEST_F( EmulatorEmc2305, ADriveAfterTheWatchdogIsKeptAsLongAsThereAreWords ) {
   write( 0x30, 0x40 );
   write( 0x20, 0x20 );
   chip.advance( 4s );
   write( 0x30, 0x40 );
   chip.advance( 3999ms );
   EXPECT_EQ( chip.get( "fan1.drive" ), "64" );
   chip.advance( 1ms );
   EXPECT_EQ( chip.get( "fan1.drive" ), "255" );
}

TEST_F( EmulatorEmc2305, ResetLeavesTheRotorTurning ) {
   settle( "fan1", "204", "8000" );
   chip.reset();
   EXPECT_EQ( chip.get( "fan1.drive" ), "0" );
   EXPECT_EQ( readRegister( chip, 0x3E, 2 ), ( Bytes { 0x1E, 0xB8 } ) );
   chip.advance( 1s );
   EXPECT_EQ( chip.get( "fan1.rpm" ), "2943" ) << "8000 / e";
}

TEST_F( EmulatorEmc2305, KeepsReservedBitsZero ) {
   const struct {
      uint8_t reg;
      uint8_t kept;
   } rows[] = { { 0x20, 0xE3 }, { 0x29, 0x1F }, { 0x2A, 0x1F }, { 0x2B, 0x1F }, { 0x2C, 0x0F },
      { 0x2D, 0x3F }, { 0x30, 0xFF }, { 0x33, 0x7E }, { 0x35, 0x3F }, { 0x37, 0x3F }, { 0x3A, 0xF8 },
      { 0x3C, 0xF8 }, { 0xEF, 0x01 } };

   for ( auto& row : rows ) {
      write( row.reg, 0xFF );
      EXPECT_EQ( read( row.reg ), row.kept ) << +row.reg;
   }
}

TEST_F( EmulatorEmc2305, RefusesWhatCannotBe ) {
   const std::pair<const char*, const char*> rows[] = { { "fan1.drive", "256" }, { "fan1.drive", "-1" },
      { "fan1.drive", "half" }, { "fan1.rpm", "-1" }, { "fan1.rpm", "100001" }, { "fan1.max_rpm", "0" },
      { "fan1.max_rpm", "100001" }, { "fan1.stalled", "2" }, { "fan0.rpm", "0" }, { "fan6.rpm", "0" } };
   for ( auto& [property, value] : rows ) {
      EXPECT_THROW( chip.set( property, value ), std::invalid_argument ) << property << " " << value;
   }
}
