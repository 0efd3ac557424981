#include "EmulatorBus.h"

#include "emulator/Pct2075.h"

#include <gtest/gtest.h>

using namespace Emulator;

namespace {

// Temp and the limits are two's complement with the sign in bit 15: Temp has 0.125 °C in bit 5, the limits
// have 0.5 °C in bit 7. So the first byte is whole degrees, rounded down.
struct Golden {
   const char* name;
   const char* celsius;
   Bytes bytes;
};

const Golden temperatures[] = {
   { "zero", "0", { 0x00, 0x00 } },
   { "one step", "0.125", { 0x00, 0x20 } },
   { "two steps", "0.25", { 0x00, 0x40 } },
   { "the last step below a degree", "0.875", { 0x00, 0xE0 } },
   { "a degree", "1", { 0x01, 0x00 } },
   { "an inlet", "24.5", { 0x18, 0x80 } },
   { "room temperature", "25", { 0x19, 0x00 } },
   { "an outlet", "35.125", { 0x23, 0x20 } },
   { "a warm supply", "41", { 0x29, 0x00 } },
   { "a hot chip", "58.25", { 0x3A, 0x40 } },
   { "a step below the highest", "124.875", { 0x7C, 0xE0 } },
   { "the highest", "125", { 0x7D, 0x00 } },
   { "one step below zero", "-0.125", { 0xFF, 0xE0 } },
   { "two steps below zero", "-0.25", { 0xFF, 0xC0 } },
   { "a degree below zero", "-1", { 0xFF, 0x00 } },
   { "frost", "-25", { 0xE7, 0x00 } },
   { "a step below frost", "-25.125", { 0xE6, 0xE0 } },
   { "a step above the lowest", "-54.875", { 0xC9, 0x20 } },
   { "the lowest", "-55", { 0xC9, 0x00 } },
   { "just below a step", "24.624", { 0x18, 0x80 } },
   { "just on a step", "24.625", { 0x18, 0xA0 } },
   { "just above a step", "24.626", { 0x18, 0xA0 } },
   { "less than one step", "0.124", { 0x00, 0x00 } },
   { "just below zero", "-0.001", { 0xFF, 0xE0 } },
   { "just below one step below zero", "-0.126", { 0xFF, 0xC0 } },
};

struct Limit {
   const char* name;
   Bytes bytes;
   const char* celsius;
   Bytes kept;
};

const Limit limits[] = {
   { "whole degrees", { 0x41, 0x00 }, "65", { 0x41, 0x00 } },
   { "half a degree", { 0x41, 0x80 }, "65.5", { 0x41, 0x80 } },
   { "unused bits", { 0x41, 0xFF }, "65.5", { 0x41, 0x80 } },
   { "only unused bits", { 0x00, 0x7F }, "0", { 0x00, 0x00 } },
   { "half a degree below zero", { 0xFF, 0x80 }, "-0.5", { 0xFF, 0x80 } },
   { "the lowest", { 0xC9, 0x00 }, "-55", { 0xC9, 0x00 } },
   { "the highest", { 0x7D, 0x00 }, "125", { 0x7D, 0x00 } },
};

class EmulatorPct2075 : public ::testing::Test {
protected:
   void heatTo( const char* celsius ) { chip.set( "temperature", celsius ); }

   std::string os() const { return chip.get( "os" ); }

   void configure( uint8_t bits ) { ASSERT_TRUE( sendTo( chip, { 0x01, bits } ) ); }

   Pct2075 chip;
};

} // namespace

TEST_F( EmulatorPct2075, ConvertsTemperaturesAsTheTableTells ) {
   for ( auto& row : temperatures ) {
      heatTo( row.celsius );
      EXPECT_EQ( readRegister( chip, 0x00, 2 ), row.bytes ) << row.name;
   }
}

TEST_F( EmulatorPct2075, TakesLimitsAsTheTableTells ) {
   for ( auto& row : limits ) {
      EXPECT_TRUE( sendTo( chip, { 0x02, row.bytes[0], row.bytes[1] } ) ) << row.name;
      EXPECT_TRUE( sendTo( chip, { 0x03, row.bytes[0], row.bytes[1] } ) ) << row.name;
      EXPECT_EQ( chip.get( "thyst" ), row.celsius ) << row.name;
      EXPECT_EQ( chip.get( "tos" ), row.celsius ) << row.name;
      EXPECT_EQ( readRegister( chip, 0x02, 2 ), row.kept ) << row.name;
      EXPECT_EQ( readRegister( chip, 0x03, 2 ), row.kept ) << row.name;
   }
}

TEST_F( EmulatorPct2075, HasLimitsOf75And80DegreesAtPowerOn ) {
   EXPECT_EQ( chip.get( "thyst" ), "75" );
   EXPECT_EQ( chip.get( "tos" ), "80" );
}

TEST_F( EmulatorPct2075, PointsToTempAtPowerOn ) {
   heatTo( "24.5" );
   EXPECT_EQ( receiveFrom( chip, 2 ), ( Bytes { 0x18, 0x80 } ) );
}

TEST_F( EmulatorPct2075, StartsEachReadWithTheFirstByteOfTheSameRegister ) {
   readRegister( chip, 0x03, 1 );
   EXPECT_EQ( receiveFrom( chip, 2 ), ( Bytes { 0x50, 0x00 } ) );
}

TEST_F( EmulatorPct2075, ReadsOnesBehindARegister ) {
   heatTo( "24.5" );
   EXPECT_EQ( readRegister( chip, 0x00, 4 ), ( Bytes { 0x18, 0x80, 0xFF, 0xFF } ) );
   EXPECT_EQ( readRegister( chip, 0x01, 2 ), ( Bytes { 0x00, 0xFF } ) );
}

TEST_F( EmulatorPct2075, AcknowledgesAndIgnoresAWriteToTemp ) {
   heatTo( "24.5" );
   chip.start();
   EXPECT_TRUE( chip.write( Bytes { 0x00, 0x7F, 0xE0 } ) );
   chip.start();
   EXPECT_EQ( readNext( chip, 2 ), ( Bytes { 0x18, 0x80 } ) );
}

TEST_F( EmulatorPct2075, DoesNotAcknowledgeAPointerBehindTidle ) {
   for ( unsigned pointer = 0x05; pointer <= 0xFF; ++pointer ) {
      EXPECT_FALSE( sendTo( chip, { static_cast<uint8_t>( pointer ) } ) ) << pointer;
   }
}

TEST_F( EmulatorPct2075, KeepsReservedBitsOfConfAndTidleZero ) {
   EXPECT_TRUE( sendTo( chip, { 0x01, 0xFE } ) );
   EXPECT_TRUE( sendTo( chip, { 0x04, 0xFF } ) );
   EXPECT_EQ( readRegister( chip, 0x01, 1 ), Bytes { 0x1E } );
   EXPECT_EQ( readRegister( chip, 0x04, 1 ), Bytes { 0x1F } );
}

TEST_F( EmulatorPct2075, KeepsTheLastConversionDuringShutdown ) {
   heatTo( "24.5" );
   configure( 0x01 );
   heatTo( "30" );
   EXPECT_EQ( chip.get( "temperature" ), "30" );
   EXPECT_EQ( readRegister( chip, 0x00, 2 ), ( Bytes { 0x18, 0x80 } ) );
   configure( 0x00 );
   EXPECT_EQ( readRegister( chip, 0x00, 2 ), ( Bytes { 0x1E, 0x00 } ) );
}

TEST_F( EmulatorPct2075, InComparatorModeOsFollowsTheLimitsWithHysteresis ) {
   const std::pair<const char*, const char*> rows[] = {
      { "79.5", "0" },
      { "80", "0" },
      { "80.375", "0" },
      { "80.5", "1" },
      { "78", "1" },
      { "75", "1" },
      { "74.875", "0" },
      { "78", "0" },
   };
   for ( auto& [celsius, expected] : rows ) {
      heatTo( celsius );
      EXPECT_EQ( os(), expected ) << celsius;
   }
}

TEST_F( EmulatorPct2075, InComparatorModeOsDoesNotMindReads ) {
   heatTo( "90" );
   readRegister( chip, 0x00, 2 );
   EXPECT_EQ( os(), "1" );
}

TEST_F( EmulatorPct2075, OsFollowsALimitThatIsMoved ) {
   heatTo( "60" );
   ASSERT_TRUE( sendTo( chip, { 0x03, 0x32, 0x00 } ) );
   EXPECT_EQ( os(), "1" );
}

TEST_F( EmulatorPct2075, InInterruptModeARegisterReadEndsOsUntilTheOtherLimitIsCrossed ) {
   configure( 0x02 );
   heatTo( "81" );
   EXPECT_EQ( os(), "1" ) << "Tos is crossed";
   heatTo( "78" );
   EXPECT_EQ( os(), "1" ) << "nobody has read";
   readRegister( chip, 0x01, 1 );
   EXPECT_EQ( os(), "0" ) << "a register was read";
   heatTo( "90" );
   EXPECT_EQ( os(), "0" ) << "Thyst is next";
   heatTo( "74" );
   EXPECT_EQ( os(), "1" ) << "Thyst is crossed";
   readRegister( chip, 0x00, 2 );
   heatTo( "70" );
   EXPECT_EQ( os(), "0" ) << "Tos is next";
   heatTo( "81" );
   EXPECT_EQ( os(), "1" ) << "Tos is crossed again";
}

TEST_F( EmulatorPct2075, InInterruptModeShutdownEndsOs ) {
   configure( 0x02 );
   heatTo( "81" );
   configure( 0x03 );
   EXPECT_EQ( os(), "0" );
}

TEST_F( EmulatorPct2075, ResetKeepsTheTemperatureAndConvertsItAnew ) {
   heatTo( "81" );
   configure( 0x01 );
   heatTo( "24.5" );
   chip.reset();
   EXPECT_EQ( chip.get( "temperature" ), "24.5" );
   EXPECT_EQ( receiveFrom( chip, 2 ), ( Bytes { 0x18, 0x80 } ) );
   EXPECT_EQ( os(), "0" );
}

TEST_F( EmulatorPct2075, ResetForgetsThatALimitWasCrossed ) {
   heatTo( "81" );
   heatTo( "78" );
   EXPECT_EQ( os(), "1" );
   chip.reset();
   EXPECT_EQ( os(), "0" );
}

TEST_F( EmulatorPct2075, RefusesWhatIsNoTemperatureOfThePart ) {
   for ( auto value : { "-55.001", "125.001", "1e9", "nan", "inf", "warm", "", "20 " } ) {
      EXPECT_THROW( heatTo( value ), std::invalid_argument ) << value;
   }
   EXPECT_EQ( chip.get( "temperature" ), "25" );
}
