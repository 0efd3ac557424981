#include "EmulatorBus.h"

#include "emulator/Cpld.h"

#include <gtest/gtest.h>

using namespace Emulator;

namespace {

class EmulatorCpld : public ::testing::Test {
protected:
   void write( uint8_t reg, uint8_t value ) { ASSERT_TRUE( sendTo( chip, { reg, value } ) ) << +reg; }

   uint8_t read( uint8_t reg ) { return readRegister( chip, reg, 1 ).at( 0 ); }

   Cpld chip;
};

struct Signal {
   const char* property;
   const char* value;
   uint8_t reg;
   uint8_t content;
};

} // namespace

TEST_F( EmulatorCpld, TellsTheMinorVersionBeforeTheMajorOne ) {
   EXPECT_EQ( chip.get( "version" ), "0x012a" );
   EXPECT_EQ( read( 0x00 ), 0x2A );
   EXPECT_EQ( read( 0x01 ), 0x01 );
   write( 0x00, 0x55 );
   EXPECT_EQ( read( 0x00 ), 0x2A );
}

TEST_F( EmulatorCpld, KeepsItsVersionOverAReset ) {
   chip.set( "version", "0x0203" );
   chip.reset();
   EXPECT_EQ( chip.get( "version" ), "0x0203" );
   EXPECT_EQ( readRegister( chip, 0x00, 2 ), ( Bytes { 0x03, 0x02 } ) );
}

TEST_F( EmulatorCpld, StartsAfterALossOfPower ) {
   EXPECT_EQ( chip.get( "reset_reason" ), "0x40" );
   chip.set( "reset_reason", "0x20" );
   EXPECT_EQ( read( 0x60 ), 0x20 );
   chip.reset();
   EXPECT_EQ( read( 0x60 ), 0x40 );
}

TEST_F( EmulatorCpld, ForgetsTheResetReasonWhenZeroIsWritten ) {
   EXPECT_EQ( read( 0x60 ), 0x40 );
   EXPECT_EQ( read( 0x60 ), 0x40 ) << "reading alone changes nothing";
   write( 0x60, 0x00 );
   EXPECT_EQ( read( 0x60 ), 0x00 );
   EXPECT_EQ( chip.get( "reset_reason" ), "0x00" );
}

TEST_F( EmulatorCpld, TakesNoResetReasonFromTheBus ) {
   for ( uint8_t value : Bytes { 0x20, 0x40, 0x41, 0xFF } ) {
      write( 0x60, value );
      EXPECT_EQ( read( 0x60 ), 0x40 ) << +value;
   }
   write( 0x60, 0x00 );
   write( 0x60, 0x20 );
   EXPECT_EQ( read( 0x60 ), 0x00 );
}

TEST_F( EmulatorCpld, HoldsThePoeControllerInResetUntilItIsLetGo ) {
   EXPECT_EQ( chip.get( "poe_reset" ), "1" );
   write( 0x05, 0xFE );
   EXPECT_EQ( chip.get( "poe_reset" ), "0" );
   EXPECT_EQ( read( 0x05 ), 0x00 );
   write( 0x05, 0xFF );
   EXPECT_EQ( chip.get( "poe_reset" ), "1" );
   EXPECT_EQ( read( 0x05 ), 0x01 );
}

TEST_F( EmulatorCpld, KeepsThePoeControllerOverARebootUnlessTold ) {
   EXPECT_EQ( chip.get( "reboot_action" ), "0" );
   write( 0x06, 0x01 );
   EXPECT_EQ( chip.get( "reboot_action" ), "1" );
   write( 0x06, 0x00 );
   EXPECT_EQ( chip.get( "reboot_action" ), "0" );
}

TEST_F( EmulatorCpld, HasASignalForWhateverIsPlugged ) {
   const Signal rows[] = {
      { "tray1.present", "0", 0x07, 0x31 },
      { "tray2.present", "0", 0x07, 0x33 },
      { "tray3.present", "0", 0x07, 0x37 },
      { "tray1.present", "1", 0x07, 0x36 },
      { "psu1.power_good", "0", 0x07, 0x26 },
      { "psu2.power_good", "0", 0x07, 0x06 },
      { "psu1.power_good", "1", 0x07, 0x16 },
      { "sfp1.present", "1", 0x10, 0xEE },
      { "sfp2.present", "1", 0x10, 0xCC },
      { "sfp3.present", "1", 0x10, 0x88 },
      { "sfp4.present", "1", 0x10, 0x00 },
      { "sfp1.rx_los", "1", 0x10, 0x10 },
      { "sfp4.rx_los", "1", 0x10, 0x90 },
      { "sfp1.rx_los", "0", 0x10, 0x80 },
      { "sfp2.tx_fault", "1", 0x1F, 0x02 },
      { "sfp3.tx_fault", "1", 0x1F, 0x06 },
      { "sfp2.tx_fault", "0", 0x1F, 0x04 },
   };
   for ( auto& row : rows ) {
      chip.set( row.property, row.value );
      EXPECT_EQ( chip.get( row.property ), row.value ) << row.property;
      EXPECT_EQ( read( row.reg ), row.content ) << row.property << " " << row.value;
   }
}

TEST_F( EmulatorCpld, AnEmptyCageReceivesNothingAndHasNoFault ) {
   chip.set( "sfp2.rx_los", "0" );
   chip.set( "sfp2.tx_fault", "1" );
   EXPECT_EQ( read( 0x10 ), 0xFF );
   EXPECT_EQ( read( 0x1F ), 0x00 );
   chip.set( "sfp2.present", "1" );
   EXPECT_EQ( read( 0x10 ), 0xDD );
   EXPECT_EQ( read( 0x1F ), 0x02 );
   chip.set( "sfp2.present", "0" );
   EXPECT_EQ( read( 0x10 ), 0xFF );
   EXPECT_EQ( read( 0x1F ), 0x00 );
}

TEST_F( EmulatorCpld, TakesTransmitDisablesAndNothingElseOfTheTransmitters ) {
   chip.set( "sfp1.present", "1" );
   chip.set( "sfp1.tx_fault", "1" );
   write( 0x1F, 0xA0 );
   EXPECT_EQ( read( 0x1F ), 0xA1 );
   const char* expected[] = { "0", "1", "0", "1" };
   for ( int i = 0; i < 4; ++i ) {
      EXPECT_EQ( chip.get( "sfp" + std::to_string( i + 1 ) + ".tx_disable" ), expected[i] ) << i;
   }
   write( 0x1F, 0x1E );
   EXPECT_EQ( read( 0x1F ), 0x11 );
   chip.set( "sfp1.tx_fault", "0" );
   EXPECT_EQ( read( 0x1F ), 0x10 ) << "the disable stays";
}

TEST_F( EmulatorCpld, IgnoresWritesToSignals ) {
   write( 0x07, 0x0F );
   write( 0x10, 0x00 );
   EXPECT_EQ( read( 0x07 ), 0x30 );
   EXPECT_EQ( read( 0x10 ), 0xFF );
}

TEST_F( EmulatorCpld, KeepsTheCodeOfEachLed ) {
   const std::pair<const char*, uint8_t> rows[] = { { "led.status", 0x40 }, { "led.power", 0x41 },
      { "led.cloud", 0x42 }, { "led.fan", 0x43 }, { "led.sfp1", 0x44 }, { "led.sfp2", 0x45 },
      { "led.sfp3", 0x46 }, { "led.sfp4", 0x47 }, { "led.ports", 0x4C }, { "led.port1", 0x80 },
      { "led.port2", 0x81 }, { "led.port16", 0x8F }, { "led.port17", 0x90 }, { "led.port48", 0xAF } };
   for ( auto& [property, reg] : rows ) {
      EXPECT_EQ( chip.get( property ), "0xff" ) << property;
      write( reg, 0x0C );
      EXPECT_EQ( chip.get( property ), "0x0c" ) << property;
      EXPECT_EQ( read( reg ), 0x0C ) << property;
   }
}

TEST_F( EmulatorCpld, ResetLeavesWhatIsPluggedAndForgetsWhatWasWritten ) {
   chip.set( "sfp1.present", "1" );
   chip.set( "tray2.present", "0" );
   write( 0x1F, 0xF0 );
   write( 0x40, 0x01 );
   write( 0x05, 0x00 );
   chip.reset();
   EXPECT_EQ( read( 0x10 ), 0xEE );
   EXPECT_EQ( read( 0x07 ), 0x32 );
   EXPECT_EQ( read( 0x1F ), 0x00 );
   EXPECT_EQ( chip.get( "led.status" ), "0xff" );
   EXPECT_EQ( chip.get( "poe_reset" ), "1" );
}

TEST_F( EmulatorCpld, RefusesWhatCannotBe ) {
   const std::pair<const char*, const char*> rows[] = { { "sfp1.present", "2" }, { "sfp1.present", "yes" },
      { "sfp1.tx_disable", "1" }, { "sfp5.present", "1" }, { "tray4.present", "1" },
      { "psu3.power_good", "1" }, { "led.status", "1" }, { "poe_reset", "0" }, { "reboot_action", "1" },
      { "reset_reason", "256" }, { "version", "0x10000" }, { "led.port49", "1" } };
   for ( auto& [property, value] : rows ) {
      EXPECT_THROW( chip.set( property, value ), std::invalid_argument ) << property << " " << value;
   }
}
