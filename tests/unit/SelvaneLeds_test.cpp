#include "Drivers/Selvane/SelvanePortLed.h"
#include "Drivers/Selvane/SelvaneSystemLed.h"

#include "Assertion.h"
#include "FieldOrder.h"
#include "HostServices.h"
#include "ScriptedHam.h"

#include <memory>
#include <optional>
#include <stdexcept>

namespace {

using Component::LogicalDevice::Led;
using Drivers::DriverArgs;
using Drivers::SelvanePortLed;
using Drivers::SelvaneSystemLed;
using Host::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto rejected = std::nullopt;

const char* const statusNames[] = { "Off", "Good", "Warning", "Bad", "Inactive", "Unknown", "Beacon",
   "release" };

class PortLed : public Host::Test {
protected:
   PortLed() { device.ham = &ham; }

   static DriverArgs args( const std::string& portType, const std::string& reg = "70" ) {
      DriverArgs args;
      args.driverArgs = { { "ledName", "port7" }, { "ledReg", reg }, { "portType", portType } };
      return args;
   }

   std::unique_ptr<Led> newLed( const DriverArgs& given ) {
      return std::unique_ptr<Led>( device.newLed( given ) );
   }

   ScriptedHam ham;
   SelvanePortLed device;
};

using PortLedDeathTest = PortLed;

TEST_F( PortLed, IsMadeWithATraceAndNothingElse ) {
   std::unique_ptr<Component::DeviceBase> made( SelvanePortLed::create( {}, &ham ) );
   EXPECT_TRUE( dynamic_cast<SelvanePortLed*>( made.get() ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Creating SelvanePortLed device" } ) );
   EXPECT_THAT( ham.log, IsEmpty() );
}

TEST_F( PortLed, WritesTheStartUpRegisterAtInitWhateverBecomesOfIt ) {
   ham.statuses = { QL_STATUS_FAILED };
   device.init();
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x4c=00 /1", "execute" ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( PortLed, IsMadeWithoutATrace ) {
   newLed( args( "sfp" ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( PortLed, WritesTheCodeOfEachStatusByTheKindOfPort ) {
   struct Row {
      std::optional<unsigned> sfp, other;
   };

   const Row rows[] = { { 0xB3, 0xB3 }, { 0xA3, 0x93 }, { 0x93, 0xA3 }, { rejected, rejected },
      { 0x93, 0xA3 }, { rejected, rejected }, { 0xD3, 0xE3 }, { rejected, rejected } };
   for ( auto portType : { "sfp", "other", "sfp2", "SFP", "" } ) {
      auto led = newLed( args( portType ) );
      for ( uint32_t status = 0; status < 8; ++status ) {
         auto expected = std::string( portType ) == "sfp" ? rows[status].sfp : rows[status].other;
         ham.log.clear();
         Host::traces.clear();
         auto result = led->setLightSetting( static_cast<ql_led_status>( status ) );
         auto line = fmt::format( "setting CPLD System Led port7 to {}", statusNames[status] );
         if ( expected ) {
            EXPECT_EQ( result, QL_STATUS_OK ) << portType << " " << status;
            EXPECT_THAT( ham.log,
               ElementsAre( "prepare", fmt::format( "write8 0x46={:02x} /1", *expected ), "execute" ) );
            EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, line } ) );
         } else {
            EXPECT_EQ( result, QL_STATUS_INVALID_ARGUMENT ) << portType << " " << status;
            EXPECT_THAT( ham.log, IsEmpty() );
            EXPECT_THAT( Host::traces,
               ElementsAre( TraceLine { 6, line },
                  TraceLine { 0, fmt::format( "led port7 was given an unexpected setting {}", status ) } ) );
         }
      }
   }
}

TEST_F( PortLed, PassesAFailedWriteOn ) {
   auto led = newLed( args( "sfp" ) );
   ham.statuses = { QL_STATUS_IO_ERROR };
   EXPECT_EQ( led->setLightSetting( QL_LED_GOOD ), QL_STATUS_IO_ERROR );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, "setting CPLD System Led port7 to Good" },
                                 TraceLine { 6, "Setting status for SelvanePortLed LED port7 failed." } ) );
}

TEST_F( PortLedDeathTest, EndsTheProcessForANumberThatIsNoStatus ) {
   for ( auto portType : { "sfp", "other" } ) {
      auto led = newLed( args( portType ) );
      for ( uint32_t status : { 8U, 0xFFFFFFFFU } ) {
         EXPECT_DEATH( led->setLightSetting( static_cast<ql_led_status>( status ) ),
            assertionFailed( "( unsigned )status < sizeof ( strs ) / sizeof ( *strs )" ) );
      }
   }
}

TEST_F( PortLedDeathTest, NeedsAHam ) {
   auto led = newLed( args( "sfp" ) );
   device.ham = nullptr;
   EXPECT_DEATH( device.init(), assertionFailed( "ham" ) );
   EXPECT_DEATH( led->setLightSetting( QL_LED_OFF ), assertionFailed( "ham" ) );
}

TEST_F( PortLed, IsLaidOutAsDriversKnowIt ) {
   auto led = newLed( args( "sfp" ) );
   auto& port = dynamic_cast<SelvanePortLed::PortLed&>( *led );
   EXPECT_EQ( sizeof( SelvanePortLed ), sizeof( Component::HardwareDevice ) );
   EXPECT_TRUE( inOrder( port.usesBlinkTimer, port.device, port.name, port.ledReg, port.portType ) );
}

TEST_F( PortLed, NarrowsItsRegisterTo8Bits ) {
   auto led = newLed( args( "sfp", "332" ) );
   led->setLightSetting( QL_LED_OFF );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x4c=b3 /1", "execute" ) );
}

TEST_F( PortLed, ThrowsForMissingAndMalformedArguments ) {
   for ( auto key : { "ledName", "ledReg", "portType" } ) {
      auto given = args( "sfp" );
      given.driverArgs.erase( key );
      EXPECT_THROW( device.newLed( given ), std::out_of_range ) << key;
   }
   for ( auto number : { "x", "", "99999999999" } ) {
      try {
         device.newLed( args( "sfp", number ) );
         ADD_FAILURE() << number;
      } catch ( const std::logic_error& error ) {
         EXPECT_STREQ( error.what(), "stoi" );
      }
   }
   EXPECT_THROW( device.newLed( args( "sfp", "x" ) ), std::invalid_argument );
   EXPECT_THROW( device.newLed( args( "sfp", "99999999999" ) ), std::out_of_range );
}

TEST_F( PortLed, WantsTheBlinkTimerAndLeavesItsList ) {
   auto led = newLed( args( "sfp" ) );
   EXPECT_TRUE( led->usesBlinkTimer );
   EXPECT_FALSE( led->handleBlinkTimer( true ) );
   EXPECT_FALSE( led->handleBlinkTimer( false ) );
}

TEST_F( PortLed, DeclaresOneRegisterForSimulation ) {
   auto& values = *device.expectedValues();
   ASSERT_EQ( values.size(), 1U );
   EXPECT_EQ( values.at( 0x46 ).val, 0xFFU );
   EXPECT_EQ( values.at( 0x46 ).size, 1U );
}

class SystemLed : public Host::Test {
protected:
   SystemLed() { device.ham = &ham; }

   std::unique_ptr<Led> newLed( const std::string& reg, const std::string& id ) {
      DriverArgs args;
      args.driverArgs = { { "reg", reg }, { "id", id } };
      return std::unique_ptr<Led>( device.newLed( args ) );
   }

   ScriptedHam ham;
   SelvaneSystemLed device;
};

using SystemLedDeathTest = SystemLed;

TEST_F( SystemLed, IsMadeWithATraceAndNothingElse ) {
   std::unique_ptr<Component::DeviceBase> made( SelvaneSystemLed::create( {}, &ham ) );
   EXPECT_TRUE( dynamic_cast<SelvaneSystemLed*>( made.get() ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Creating SelvaneSystemLed device" } ) );
   made->init();
   EXPECT_THAT( ham.log, IsEmpty() );
}

TEST_F( SystemLed, IsOfTheClassThatItsRegisterSelects ) {
   struct Row {
      const char* reg;
      const char* trace;
   };

   const Row rows[] = { { "64", "Creating new SelvaneSystemLed Status LED with id 5" },
      { "320", "Creating new SelvaneSystemLed Status LED with id 5" },
      { "65", "Creating new SelvaneSystemLed Power LED with id 5" },
      { "66", "Creating new SelvaneSystemLed CloudAndFan LED with id 5" },
      { "67", "Creating new SelvaneSystemLed CloudAndFan LED with id 5" } };
   for ( auto& row : rows ) {
      Host::traces.clear();
      EXPECT_TRUE( newLed( row.reg, "261" ) ) << row.reg;
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, row.trace } ) ) << row.reg;
   }
   EXPECT_TRUE( dynamic_cast<SelvaneSystemLed::StatusLed*>( newLed( "64", "1" ).get() ) );
   EXPECT_TRUE( dynamic_cast<SelvaneSystemLed::PowerLed*>( newLed( "65", "1" ).get() ) );
   EXPECT_TRUE( dynamic_cast<SelvaneSystemLed::CloudAndFanLed*>( newLed( "66", "1" ).get() ) );
   EXPECT_TRUE( dynamic_cast<SelvaneSystemLed::CloudAndFanLed*>( newLed( "67", "1" ).get() ) );
}

TEST_F( SystemLed, IsNullForAnyOtherRegister ) {
   for ( auto reg : { "63", "68", "0", "0x42" } ) {
      Host::traces.clear();
      EXPECT_FALSE( newLed( reg, "1" ) ) << reg;
      EXPECT_THAT( Host::traces,
         ElementsAre( TraceLine { 0, "Error: failed to find driverArg for SelvaneSystemLed::newLed" } ) );
   }
}

TEST_F( SystemLed, ThrowsForMissingAndMalformedArguments ) {
   DriverArgs args;
   args.driverArgs = { { "reg", "64" } };
   EXPECT_THROW( device.newLed( args ), std::out_of_range );
   args.driverArgs = { { "id", "1" } };
   EXPECT_THROW( device.newLed( args ), std::out_of_range );
   EXPECT_THROW( newLed( "x", "1" ), std::invalid_argument );
   EXPECT_THROW( newLed( "64", "x" ), std::invalid_argument );
   EXPECT_THROW( newLed( "99999999999", "1" ), std::out_of_range );
   EXPECT_THROW( newLed( "64", "99999999999" ), std::out_of_range );
}

struct SystemLedRow {
   const char* name;
   const char* reg;
   const char* id;
   const char* traceName;
   std::optional<unsigned> codes[8];
};

TEST_F( SystemLed, WritesTheCodeOfEachStatusByItsClass ) {
   const SystemLedRow rows[] = {
      { "status", "64", "1", "Status", { 0x00, 0x01, 0x02, rejected, rejected, 0x09, 0x0C, rejected } },
      { "power", "65", "2", "Cloud and Fan",
         { 0x07, 0x06, rejected, 0x05, rejected, rejected, rejected, rejected } },
      { "cloud", "66", "2", "Cloud and Fan",
         { 0x07, 0x06, 0x05, rejected, rejected, rejected, rejected, rejected } },
      { "fan", "67", "4", "Cloud and Fan",
         { 0x07, 0x06, 0x05, rejected, rejected, rejected, rejected, rejected } },
      { "cloud with id 3", "66", "3", "Cloud and Fan",
         { 0x07, 0x06, 0x05, 0x05, rejected, rejected, rejected, rejected } },
      { "status with id 3", "64", "3", "Status",
         { 0x00, 0x01, 0x02, rejected, rejected, 0x09, 0x0C, rejected } },
   };
   for ( auto& row : rows ) {
      auto led = newLed( row.reg, row.id );
      for ( uint32_t status = 0; status < 8; ++status ) {
         ham.log.clear();
         Host::traces.clear();
         auto result = led->setLightSetting( static_cast<ql_led_status>( status ) );
         auto line =
            fmt::format( "setting CPLD System {} Led {} to {}", row.traceName, row.id, statusNames[status] );
         if ( row.codes[status] ) {
            EXPECT_EQ( result, QL_STATUS_OK ) << row.name << " " << status;
            EXPECT_THAT( ham.log,
               ElementsAre( "prepare",
                  fmt::format( "write8 0x{:02x}={:02x} /1", std::stoi( row.reg ), *row.codes[status] ),
                  "execute" ) );
            EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, line } ) );
         } else {
            EXPECT_EQ( result, QL_STATUS_INVALID_ARGUMENT ) << row.name << " " << status;
            EXPECT_THAT( ham.log, IsEmpty() );
            EXPECT_THAT( Host::traces,
               ElementsAre( TraceLine { 6, line },
                  TraceLine {
                     0, fmt::format( "led {} was given an unexpected setting {}", row.id, status ) } ) );
         }
      }
   }
}

TEST_F( SystemLed, PassesAFailedWriteOn ) {
   auto led = newLed( "64", "7" );
   ham.statuses = { QL_STATUS_FAILED };
   EXPECT_EQ( led->setLightSetting( QL_LED_OFF ), QL_STATUS_FAILED );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 6, "Setting status for SelvaneSystemLed 7 failed." } ) );
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );
}

TEST_F( SystemLedDeathTest, EndsTheProcessForANumberThatIsNoStatus ) {
   for ( auto reg : { "64", "65", "66" } ) {
      auto led = newLed( reg, "1" );
      EXPECT_DEATH( led->setLightSetting( static_cast<ql_led_status>( 8 ) ),
         assertionFailed( "( unsigned )status < sizeof ( strs ) / sizeof ( *strs )" ) );
   }
}

TEST_F( SystemLedDeathTest, NeedsAHam ) {
   auto led = newLed( "64", "1" );
   device.ham = nullptr;
   EXPECT_DEATH( led->setLightSetting( QL_LED_OFF ), assertionFailed( "ham" ) );
}

TEST_F( SystemLed, IsLaidOutAsDriversKnowIt ) {
   auto led = newLed( "66", "1" );
   auto& cloud = dynamic_cast<SelvaneSystemLed::CloudAndFanLed&>( *led );
   EXPECT_EQ( sizeof( SelvaneSystemLed ), sizeof( Component::HardwareDevice ) );
   EXPECT_EQ( sizeof( cloud.id ) + sizeof( cloud.reg ), 2U );
   EXPECT_TRUE( inOrder( cloud.usesBlinkTimer, cloud.device, cloud.id, cloud.reg ) );
}

TEST_F( SystemLed, WantsTheBlinkTimerAndLeavesItsList ) {
   for ( auto reg : { "64", "65", "66" } ) {
      auto led = newLed( reg, "1" );
      EXPECT_TRUE( led->usesBlinkTimer );
      EXPECT_FALSE( led->handleBlinkTimer( true ) );
   }
}

TEST_F( SystemLed, DeclaresFourRegistersForSimulation ) {
   auto& values = *device.expectedValues();
   ASSERT_EQ( values.size(), 4U );
   for ( uint32_t reg = 0x40; reg <= 0x43; ++reg ) {
      EXPECT_EQ( values.at( reg ).val, 0xFFU );
      EXPECT_EQ( values.at( reg ).size, 1U );
   }
}

} // namespace
