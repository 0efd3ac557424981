#include "EmulatorBus.h"

#include "emulator/Tmp102.h"

#include <gtest/gtest.h>

using namespace Emulator;

namespace {

// The data sheet's table, as two bytes with the 12 bits to the left.
struct {
   const char* name;
   const char* celsius;
   Bytes bytes;
} const temperatures[] = {
   { "640h", "100", { 0x64, 0x00 } },
   { "190h", "25", { 0x19, 0x00 } },
   { "004h", "0.25", { 0x00, 0x40 } },
   { "000h", "0", { 0x00, 0x00 } },
   { "FFCh", "-0.25", { 0xFF, 0xC0 } },
   { "E70h", "-25", { 0xE7, 0x00 } },
   { "just below a step", "25.0624", { 0x19, 0x00 } },
   { "just below zero", "-0.001", { 0xFF, 0xF0 } },
};

} // namespace

TEST( EmulatorTmp102, ConvertsTemperaturesAsTheDataSheetTells ) {
   Tmp102 chip;
   for ( auto& row : temperatures ) {
      chip.set( "temperature", row.celsius );
      EXPECT_EQ( readRegister( chip, 0x00, 2 ), row.bytes ) << row.name;
   }
}

TEST( EmulatorTmp102, TakesTheTwelveBitsOfALimit ) {
   Tmp102 chip;
   ASSERT_TRUE( sendTo( chip, { 0x02, 0xFF, 0xCF } ) );
   EXPECT_EQ( chip.get( "tlow" ), "-0.25" );
   EXPECT_EQ( readRegister( chip, 0x02, 2 ), ( Bytes { 0xFF, 0xC0 } ) );
}

TEST( EmulatorTmp102, AlertsFromThighUntilBelowTlow ) {
   Tmp102 chip;
   const std::pair<const char*, const char*> rows[] = {
      { "79.9", "0" },
      { "80", "1" },
      { "75", "1" },
      { "74.9", "0" },
      { "79.9", "0" },
   };
   for ( auto& [celsius, alert] : rows ) {
      chip.set( "temperature", celsius );
      EXPECT_EQ( chip.get( "alert" ), alert ) << celsius;
   }
}

TEST( EmulatorTmp102, TellsTheAlertInItsConfigurationWithEitherPolarity ) {
   Tmp102 chip;
   EXPECT_EQ( readRegister( chip, 0x01, 2 ), ( Bytes { 0x60, 0xA0 } ) );
   chip.set( "temperature", "90" );
   EXPECT_EQ( readRegister( chip, 0x01, 2 ), ( Bytes { 0x60, 0x80 } ) );
   ASSERT_TRUE( sendTo( chip, { 0x01, 0x64, 0x80 } ) );
   EXPECT_EQ( readRegister( chip, 0x01, 2 ), ( Bytes { 0x64, 0xA0 } ) );
}

TEST( EmulatorTmp102, KeepsTheLastConversionDuringShutdown ) {
   Tmp102 chip;
   ASSERT_TRUE( sendTo( chip, { 0x01, 0x61, 0xA0 } ) );
   chip.set( "temperature", "90" );
   EXPECT_EQ( readRegister( chip, 0x00, 2 ), ( Bytes { 0x19, 0x00 } ) );
   EXPECT_EQ( chip.get( "alert" ), "0" );
}

TEST( EmulatorTmp102, RefusesWhatIsNoTemperatureOfThePart ) {
   Tmp102 chip;
   for ( auto value : { "-40.1", "125.1", "nan", "warm", "" } ) {
      EXPECT_THROW( chip.set( "temperature", value ), std::invalid_argument ) << value;
   }
}
