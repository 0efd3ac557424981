#include "Drivers/EMC2305.h"

#include "Assertion.h"
#include "FieldOrder.h"
#include "HostServices.h"
#include "ScriptedHam.h"

#include <limits>
#include <memory>
#include <stdexcept>

namespace {

using Drivers::DriverArgs;
using Drivers::EMC2305;
using Host::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

class Emc2305 : public Host::Test {
protected:
   Emc2305() { device.ham = &ham; }

   static DriverArgs args( const std::string& fanId, const std::string& maxRpm, const std::string& offset ) {
      DriverArgs args;
      args.driverArgs = { { "fanId", fanId }, { "maxRpm", maxRpm }, { "registerOffset", offset } };
      return args;
   }

   std::unique_ptr<EMC2305::Fan> newFan(
      const std::string& fanId = "1", const std::string& maxRpm = "20000", const std::string& offset = "0" ) {
      auto fan = static_cast<EMC2305::Fan*>( device.newFan( args( fanId, maxRpm, offset ) ) );
      ham.log.clear();
      Host::traces.clear();
      return std::unique_ptr<EMC2305::Fan>( fan );
   }

   ScriptedHam ham;
   EMC2305 device;
};

using Emc2305DeathTest = Emc2305;

TEST_F( Emc2305, WritesItsConfigurationBeforeItExists ) {
   std::unique_ptr<Component::DeviceBase> made( EMC2305::create( {}, &ham ) );
   EXPECT_TRUE( dynamic_cast<EMC2305*>( made.get() ) );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x20=00 /1", "execute" ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Creating EMC2305 Device" } ) );
}

TEST_F( Emc2305, ComesIntoBeingOnAChipThatRefusesItsConfiguration ) {
   ham.statuses = { QL_STATUS_IO_ERROR };
   std::unique_ptr<Component::DeviceBase> made( EMC2305::create( {}, &ham ) );
   EXPECT_TRUE( made );
   EXPECT_THAT(
      Host::tracesOf( 0 ), ElementsAre( "Creating EMC2305 Device", "Error writing config register" ) );
}

struct RegisterRow {
   int offset;
   unsigned setting, config1, tachLow, tachHigh;
};

TEST_F( Emc2305, FindsAFansRegistersByItsOffset ) {
   const RegisterRow rows[] = {
      { 0, 0x30, 0x32, 0x3F, 0x3E },
      { 1, 0x40, 0x42, 0x4F, 0x4E },
      { 2, 0x50, 0x52, 0x5F, 0x5E },
      { 3, 0x60, 0x62, 0x6F, 0x6E },
      { 4, 0x70, 0x72, 0x7F, 0x7E },
      // kept in 8 bits
      { 13, 0x00, 0x02, 0x0F, 0x0E },
      { -1, 0x20, 0x22, 0x2F, 0x2E },
   };
   for ( auto& row : rows ) {
      auto fan = newFan( "1", "20000", std::to_string( row.offset ) );
      EXPECT_EQ( fan->settingReg, row.setting ) << row.offset;
      EXPECT_EQ( fan->config1Reg, row.config1 ) << row.offset;
      EXPECT_EQ( fan->tachLowReg, row.tachLow ) << row.offset;
      EXPECT_EQ( fan->tachHighReg, row.tachHigh ) << row.offset;
   }
}

TEST_F( Emc2305, MakesAFanThatKnowsItsRangeAndTopSpeed ) {
   ham.registers[0x52] = 0x40;
   std::unique_ptr<EMC2305::Fan> fan(
      static_cast<EMC2305::Fan*>( device.newFan( args( "3", "18000", "2" ) ) ) );
   EXPECT_EQ( fan->device, &device );
   EXPECT_EQ( fan->id, 2 );
   EXPECT_EQ( fan->maxRpm, 18000 );
   EXPECT_EQ( fan->tachMultiplier, 4 );
   EXPECT_EQ( fan->record.ops, &Component::LogicalDevice::Fan::ops_ );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x52 /1", "execute" ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Creating new EMC2305 Fan id 3" },
                                 TraceLine { 5, "Fan 2 tach multipler = 4" } ) );
}

TEST_F( Emc2305, TakesTheMultiplierFromBits6And5 ) {
   const std::pair<uint16_t, int> rows[] = { { 0x00, 1 }, { 0x20, 2 }, { 0x40, 4 }, { 0x60, 8 }, { 0x9F, 1 },
      { 0xFF, 8 }, { 0x27, 2 }, { 0x6E, 8 } };
   for ( auto& [content, multiplier] : rows ) {
      ham.registers[0x32] = content;
      EXPECT_EQ( newFan()->tachMultiplier, multiplier ) << content;
   }
}

TEST_F( Emc2305, CountsWithMultiplierOneWhenTheRangeCannotBeRead ) {
   ham.registers[0x32] = 0x60;
   ham.statuses = { QL_STATUS_IO_ERROR };
   std::unique_ptr<EMC2305::Fan> fan( static_cast<EMC2305::Fan*>( device.newFan( args( "4", "1", "0" ) ) ) );
   EXPECT_EQ( fan->tachMultiplier, 1 );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Creating new EMC2305 Fan id 4" },
                                 TraceLine { 0, "Error reading config1 register for fan 3" } ) );
}

TEST_F( Emc2305, NarrowsTheFanIdTo8Bits ) { EXPECT_EQ( newFan( "261" )->id, 4 ); }

TEST_F( Emc2305DeathTest, HasFansOneToFive ) {
   for ( auto id : { "0", "6", "-1", "256" } ) {
      EXPECT_DEATH( newFan( id ), assertionFailed( "fanId >= 1 && fanId <= 5" ) ) << id;
   }
   Host::echoTraces = true;
   auto given = args( "6", "1", "0" );
   given.driverArgs.erase( "maxRpm" );
   EXPECT_DEATH( device.newFan( given ), testing::AllOf( assertionFailed( "fanId >= 1 && fanId <= 5" ),
                                            testing::HasSubstr( "5: Creating new EMC2305 Fan id 6" ) ) )
      << "the trace comes first, the top speed last";
}

TEST_F( Emc2305DeathTest, WantsAFanIdAndATopSpeed ) {
   auto given = args( "1", "1", "0" );
   given.driverArgs.erase( "fanId" );
   EXPECT_DEATH( device.newFan( given ), assertionFailed( "it != args.driverArgs.end()" ) );
   given = args( "1", "1", "0" );
   given.driverArgs.erase( "maxRpm" );
   EXPECT_DEATH( device.newFan( given ), assertionFailed( "it != args.driverArgs.end()" ) );
}

TEST_F( Emc2305, ThrowsWithoutARegisterOffset ) {
   auto given = args( "1", "1", "0" );
   given.driverArgs.erase( "registerOffset" );
   try {
      device.newFan( given );
      FAIL();
   } catch ( const std::invalid_argument& exception ) {
      EXPECT_STREQ( exception.what(), "stoi" );
   }
}

TEST_F( Emc2305, ThrowsForNumbersThatAreNone ) {
   EXPECT_THROW( newFan( "x" ), std::invalid_argument );
   EXPECT_THROW( newFan( "1", "x" ), std::invalid_argument );
   EXPECT_THROW( newFan( "1", "99999999999" ), std::out_of_range );
}

TEST_F( Emc2305, ReadsBothTachometerBytesInOneBatch ) {
   ham.registers = { { 0x32, 0x27 }, { 0x3E, 0x0D }, { 0x3F, 0x30 } };
   auto fan = newFan();
   int rpm = 0;
   EXPECT_EQ( fan->getRpm( &rpm ), QL_STATUS_OK );
   EXPECT_EQ( rpm, 18635 );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x3e /1", "read8 0x3f /1", "execute" ) );
   EXPECT_THAT( Host::traces,
      ElementsAre(
         TraceLine { 5, "EMC2305::getFanRpm -- id: 0 tachLow: 48, tachHigh: 13, count: 422 rpm: 18635" } ) );
}

struct SpeedRow {
   uint16_t config1, high, low;
   int rpm;
};

TEST_F( Emc2305, TurnsTheCountIntoASpeed ) {
   const SpeedRow rows[] = {
      { 0x27, 0x0D, 0x30, 18635 },
      { 0x6E, 0x0D, 0x30, 74543 },
      { 0x00, 0x00, 0x08, 3932160 },
      { 0x60, 0x00, 0x08, 31457280 },
      { 0x00, 0xFF, 0xF8, 480 },
      { 0x00, 0xFF, 0xFF, 480 },
      { 0x40, 0x80, 0x00, 3840 },
   };
   for ( auto& row : rows ) {
      ham.registers = { { 0x32, row.config1 }, { 0x3E, row.high }, { 0x3F, row.low } };
      auto fan = newFan();
      int rpm = 0;
      EXPECT_EQ( fan->getRpm( &rpm ), QL_STATUS_OK );
      EXPECT_EQ( rpm, row.rpm ) << row.high << " " << row.low;
   }
}

TEST_F( Emc2305, CallsACountOfZeroADeviceError ) {
   for ( auto low : std::initializer_list<uint16_t> { 0x00, 0x07 } ) {
      ham.registers = { { 0x3E, 0x00 }, { 0x3F, low } };
      auto fan = newFan();
      int rpm = 1234;
      EXPECT_EQ( fan->getRpm( &rpm ), QL_STATUS_DEVICE_ERROR );
      EXPECT_EQ( rpm, 0 );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: invalid fan count" } ) );
   }
}

TEST_F( Emc2305, PassesAFailedReadOnAndLeavesTheSpeedAlone ) {
   auto fan = newFan();
   ham.statuses = { QL_STATUS_FAILED };
   int rpm = 1234;
   EXPECT_EQ( fan->getRpm( &rpm ), QL_STATUS_FAILED );
   EXPECT_EQ( rpm, 1234 );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

struct LevelRow {
   int maxRpm, rpm;
   unsigned level;
};

TEST_F( Emc2305, DrivesAFanInProportionWithoutClamping ) {
   const LevelRow rows[] = {
      { 20000, 0, 0 },
      { 20000, 10000, 127 },
      { 20000, 20000, 255 },
      { 20000, 20100, 0 },
      { 20000, -10000, 0x81 },
      { 20000, -79, 0xFF },
      // the product wraps at 32 bits: 8421505 * 255 is 2147483775, read as -2147483521
      { 1000000, 8421505, 0x9D },
      { -1, 1, 1 },
      // INT_MIN * 255 wraps to INT_MIN, and INT_MIN / -1 is beyond 32 bits
      { -1, std::numeric_limits<int>::min(), 0 },
   };
   for ( auto& row : rows ) {
      auto fan = newFan( "1", std::to_string( row.maxRpm ), "2" );
      EXPECT_EQ( fan->setRpm( row.rpm ), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[0x50], row.level ) << row.rpm << " of " << row.maxRpm;
   }
}

TEST_F( Emc2305, WritesTheDriveByteAndTellsOfIt ) {
   auto fan = newFan();
   EXPECT_EQ( fan->setRpm( 20000 ), QL_STATUS_OK );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x30=ff /1", "execute" ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Setting fan 0 rpm to 20000" } ) );
}

TEST_F( Emc2305, IsLaidOutAsDriversKnowIt ) {
   EXPECT_EQ( sizeof( EMC2305 ), sizeof( Component::HardwareDevice ) );
   auto fan = newFan();
   EXPECT_EQ( sizeof( fan->device ) + sizeof( fan->id ) + sizeof( fan->maxRpm ) + sizeof( fan->settingReg ) +
                 sizeof( fan->tachMultiplier ),
      8U + 1 + 4 + 1 + 1 );
   EXPECT_EQ( sizeof( EMC2305::Fan ), sizeof( Component::LogicalDevice::Fan ) + 24 );
   EXPECT_TRUE( inOrder( fan->device, fan->id, fan->maxRpm, fan->settingReg, fan->config1Reg, fan->tachLowReg,
      fan->tachHighReg, fan->tachMultiplier ) );
}

TEST_F( Emc2305DeathTest, NeedsAHam ) {
   EXPECT_DEATH( EMC2305::create( {}, nullptr ), assertionFailed( "ham" ) );
}

TEST_F( Emc2305, PassesAFailedWriteOnAndTellsOfIt ) {
   auto fan = newFan( "2" );
   ham.statuses = { QL_STATUS_IO_ERROR };
   EXPECT_EQ( fan->setRpm( 500 ), QL_STATUS_IO_ERROR );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Setting fan 1 rpm to 500" },
                                 TraceLine { 0, "Error: setting fan 1 to 500 rpm failed with status 4" } ) );
}

TEST_F( Emc2305DeathTest, RulesOutATopSpeedOfZero ) {
   auto fan = newFan( "1", "0" );
   EXPECT_DEATH( fan->setRpm( 1 ), assertionFailed( "fan->maxRpm != 0" ) );
}

TEST_F( Emc2305, HasNoDebugReport ) {
   auto fan = newFan();
   char untouched = 0;
   char* text = &untouched;
   EXPECT_EQ( fan->debugInfo( &text ), QL_STATUS_OK );
   EXPECT_EQ( text, &untouched );
}

TEST_F( Emc2305, DeclaresFifteenRegistersForSimulation ) {
   std::map<uint32_t, uint64_t> values;
   for ( auto& [reg, value] : *device.expectedValues() ) {
      EXPECT_TRUE( value.isNumber );
      EXPECT_EQ( value.size, 1U );
      values[reg] = value.val;
   }
   std::map<uint32_t, uint64_t> expected = { { 0x32, 0x27 } };
   for ( uint32_t fan = 0; fan < 5; ++fan ) {
      expected.emplace( 0x32 + 16 * fan, 0x6E );
      expected[0x3E + 16 * fan] = 0x0D;
      expected[0x3F + 16 * fan] = 0x30;
   }
   EXPECT_EQ( values.size(), 15U );
   EXPECT_EQ( values, expected );
}

} // namespace
