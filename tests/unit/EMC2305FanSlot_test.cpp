#include "Drivers/EMC2305.h"

#include "Assertion.h"
#include "FieldOrder.h"
#include "HostServices.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

using Drivers::DriverArgs;
using Drivers::EMC2305;
using Host::TraceLine;
using testing::ElementsAre;

constexpr char argsText[] = R"({ "did": 10, "driver": "EMC2305", "name": "tray's" })";

class FanSlot : public Host::Test {
protected:
   FanSlot() {
      args.jsonText = argsText;
      args.driverArgs = { { "fanId", "2" }, { "maxRpm", "20000" }, { "modelName", "M" }, { "serialNum", "S" },
         { "airflowDirection", "backToFrontAirflow" } };
   }

   std::unique_ptr<EMC2305::FanSlot> newSlot() {
      return std::unique_ptr<EMC2305::FanSlot>( static_cast<EMC2305::FanSlot*>( device.newSlot( args ) ) );
   }

   static std::string presenceOf( EMC2305::FanSlot& slot ) {
      char* text = nullptr;
      EXPECT_EQ( slot.getPresence( &text ), QL_STATUS_OK );
      std::string copy = text ? text : "";
      free( text );
      return copy;
   }

   DriverArgs args;
   EMC2305 device;
};

using FanSlotDeathTest = FanSlot;

TEST_F( FanSlot, GivesTheExactIdentificationText ) {
   EXPECT_EQ( presenceOf( *newSlot() ),
      "FruFactoryIds: QLDevice\n"
      "device.group = 'FanTray'\n"
      "slotId = 2\n"
      "device.fanTray = ( 'FanTray%d' % slotId, )\n"
      "fanTray = device.fanTray\n"
      "fanTray.slotId = slotId\n"
      "fanTray.modelName = 'M-B'\n"
      "fanTray.serialNum = 'S'\n"
      "fan = fanTray.newFan( 'Fan%d' % ( slotId ) )\n"
      "fan.airflowDirection = 'backToFrontAirflow'\n"
      "fan.maxRpm = 20000\n"
      "fan.p = 0.900000\n"
      "fan.libPath = ''\n"
      "fan.devArgs = '{ \"did\": 10, \"driver\": \"EMC2305\", \"name\": \"tray's\" }'\n" );
}

TEST_F( FanSlot, GivesEqualTextInNewMemoryEachTime ) {
   auto slot = newSlot();
   char* first = nullptr;
   char* second = nullptr;
   ASSERT_EQ( slot->getPresence( &first ), QL_STATUS_OK );
   ASSERT_EQ( slot->getPresence( &second ), QL_STATUS_OK );
   EXPECT_NE( first, second );
   EXPECT_STREQ( first, second );
   free( first );
   free( second );
}

TEST_F( FanSlot, TellsOfItsMakingAndOfEachQuestion ) {
   auto slot = newSlot();
   presenceOf( *slot );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Creating new EMC2305 Slot for Fan id 2" },
                                 TraceLine { 5, "FanSlot::getPresence id: 1" } ) );
}

TEST_F( FanSlot, KeepsItsArgumentsAndPointsAtTheHostsText ) {
   auto slot = newSlot();
   EXPECT_EQ( slot->id, 1 );
   EXPECT_EQ( slot->devArgs, argsText );
   EXPECT_EQ( slot->driverArgs, args.driverArgs );
   EXPECT_EQ( slot->record.ops, &Component::LogicalDevice::Slot::ops_ );
}

TEST_F( FanSlot, NamesItsModelByTheAirflow ) {
   const std::pair<const char*, const char*> rows[] = { { "frontToBackAirflow", "M-F" },
      { "backToFrontAirflow", "M-B" }, { "FrontToBackAirflow", "M-B" }, { "", "M-B" },
      { "anything", "M-B" } };
   for ( auto& [airflow, model] : rows ) {
      args.driverArgs["airflowDirection"] = airflow;
      EXPECT_EQ( newSlot()->modelName, model ) << airflow;
   }
}

TEST_F( FanSlot, PrintsTheProportionWithSixDecimals ) {
   const std::pair<const char*, const char*> rows[] = { { "1.25", "1.250000" }, { "0.5x", "0.500000" },
      { " -2", "-2.000000" }, { "0.1", "0.100000" } };
   for ( auto& [text, printed] : rows ) {
      args.driverArgs["prop"] = text;
      EXPECT_THAT(
         presenceOf( *newSlot() ), testing::HasSubstr( std::string( "fan.p = " ) + printed + "\n" ) );
   }
}

TEST_F( FanSlot, LeavesQuotesAsTheyStand ) {
   args.driverArgs["serialNum"] = "it's";
   EXPECT_THAT( presenceOf( *newSlot() ), testing::HasSubstr( "fanTray.serialNum = 'it's'\n" ) );
}

TEST_F( FanSlot, IsNullWithoutAFanId ) {
   args.driverArgs.erase( "fanId" );
   EXPECT_FALSE( newSlot() );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: expected 'fanId' in driverArgs" } ) );
}

TEST_F( FanSlotDeathTest, HasTraysOneToFive ) {
   for ( auto id : { "0", "6" } ) {
      args.driverArgs["fanId"] = id;
      EXPECT_DEATH( newSlot(), assertionFailed( "fanId >= 1 && fanId <= 5" ) ) << id;
   }
}

TEST_F( FanSlotDeathTest, LooksAtTheFanIdBeforeTheTopSpeed ) {
   args.driverArgs["fanId"] = "6";
   args.driverArgs.erase( "maxRpm" );
   Host::echoTraces = true;
   EXPECT_DEATH( newSlot(), testing::AllOf( assertionFailed( "fanId >= 1 && fanId <= 5" ),
                               testing::HasSubstr( "5: Creating new EMC2305 Slot for Fan id 6" ) ) );
}

TEST_F( FanSlotDeathTest, WantsATopSpeed ) {
   args.driverArgs.erase( "maxRpm" );
   EXPECT_DEATH( newSlot(), assertionFailed( "maxRpmIt != args.driverArgs.end()" ) );
}

TEST_F( FanSlot, NarrowsTheFanIdTo8Bits ) {
   args.driverArgs["fanId"] = "258";
   auto slot = newSlot();
   EXPECT_EQ( slot->id, 1 );
   EXPECT_THAT( presenceOf( *slot ), testing::HasSubstr( "slotId = 2\n" ) );
}

TEST_F( FanSlot, PrintsANegativeTopSpeedUnsigned ) {
   args.driverArgs["maxRpm"] = "-1";
   EXPECT_THAT( presenceOf( *newSlot() ), testing::HasSubstr( "fan.maxRpm = 4294967295\n" ) );
}

TEST_F( FanSlot, ThrowsForNumbersThatAreNone ) {
   for ( auto key : { "fanId", "maxRpm" } ) {
      auto all = args.driverArgs;
      args.driverArgs[key] = "two";
      EXPECT_THROW( newSlot(), std::invalid_argument ) << key;
      args.driverArgs[key] = "99999999999";
      EXPECT_THROW( newSlot(), std::out_of_range ) << key;
      args.driverArgs = all;
   }
}

TEST_F( FanSlot, IsLaidOutAsDriversKnowIt ) {
   auto slot = newSlot();
   EXPECT_TRUE( inOrder( slot->p, slot->maxRpm, slot->modelName, slot->serialNum, slot->airflowDirection ) );
}

TEST_F( FanSlot, ThrowsWithoutATextThatItPrints ) {
   for ( auto key : { "modelName", "serialNum", "airflowDirection" } ) {
      auto all = args.driverArgs;
      args.driverArgs.erase( key );
      EXPECT_THROW( newSlot(), std::out_of_range ) << key;
      args.driverArgs = all;
   }
}

TEST_F( FanSlot, ThrowsForAProportionThatIsNoNumber ) {
   const std::pair<const char*, bool> rows[] = { { "x", true }, { "", true }, { "1e99", false } };
   for ( auto& [text, invalid] : rows ) {
      args.driverArgs["prop"] = text;
      try {
         newSlot();
         FAIL() << text;
      } catch ( const std::invalid_argument& exception ) {
         EXPECT_TRUE( invalid );
         EXPECT_STREQ( exception.what(), "stof" );
      } catch ( const std::out_of_range& exception ) {
         EXPECT_FALSE( invalid );
         EXPECT_STREQ( exception.what(), "stof" );
      }
   }
}

} // namespace
