#include "Drivers/Selvane/SelvaneXcvr.h"

#include "Assertion.h"
#include "FieldOrder.h"
#include "HostServices.h"
#include "ScriptedHam.h"

#include <memory>
#include <stdexcept>

namespace {

using Drivers::DriverArgs;
using Drivers::SelvaneXcvr;
using Host::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

/** Where a cage's signals lie, as arguments of it. */
struct Place {
   const char* reg;
   const char* bit;
   const char* activeHigh;
};

class Xcvr : public Host::Test {
protected:
   Xcvr() { device.ham = &ham; }

   static DriverArgs args( Place presence, Place rxLos, Place txFault, Place txDisable ) {
      DriverArgs args;
      for ( auto& [name, place] : std::map<std::string, Place> { { "presence", presence }, { "rxLos", rxLos },
               { "txFault", txFault }, { "txDisable", txDisable } } ) {
         args.driverArgs[name + "Reg"] = place.reg;
         args.driverArgs[name + "Bit"] = place.bit;
         args.driverArgs[name + "ActiveHigh"] = place.activeHigh;
      }
      return args;
   }

   /** A cage with its signals in registers 16 and 31; presence is active low, the others are active high. */
   static DriverArgs usualArgs() {
      return args(
         { "16", "0", "false" }, { "16", "1", "true" }, { "16", "2", "true" }, { "31", "3", "true" } );
   }

   SelvaneXcvr::SfpXcvr* newCage( const DriverArgs& given = usualArgs(), uint32_t id = 1 ) {
      cages.emplace_back( static_cast<SelvaneXcvr::SfpXcvr*>( device.newSfpXcvr( id, given ) ) );
      ham.log.clear();
      Host::traces.clear();
      return cages.back().get();
   }

   /** The hardware changes, and the poll sees it. */
   void poll( uint8_t reg, uint8_t content ) {
      ham.registers[reg] = content;
      device.pollCallback();
      ham.log.clear();
      Host::traces.clear();
   }

   void failPoll() {
      ham.statuses = { QL_STATUS_FAILED };
      device.pollCallback();
   }

   ScriptedHam ham;
   SelvaneXcvr device;
   std::vector<std::unique_ptr<SelvaneXcvr::SfpXcvr>> cages;
};

using XcvrDeathTest = Xcvr;

TEST_F( Xcvr, IsMadeWithATimerThatDoesNotRun ) {
   Host::traces.clear();
   std::unique_ptr<Component::DeviceBase> made( SelvaneXcvr::create( {}, nullptr ) );
   EXPECT_TRUE( dynamic_cast<SelvaneXcvr*>( made.get() ) );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "Creating SelvaneXcvr device" }, TraceLine { 0, "creating timer" } ) );
   ASSERT_EQ( Host::timers.size(), 2U );
   EXPECT_FALSE( Host::timers.back()->armed );
}

TEST_F( Xcvr, PollsEverySecondFromItsInitOn ) {
   Host::traces.clear();
   device.init();
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "SelvaneXcvr::init()" },
                                 TraceLine { 0, "setting polling interval to 1000ms" } ) );
   auto& timer = *Host::timers.at( 0 );
   EXPECT_THAT( timer.settings, ElementsAre( 1000U ) );
   timer.fire();
   EXPECT_THAT( timer.settings, ElementsAre( 1000U, 1000U ) );
   ham.statuses = { QL_STATUS_FAILED };
   timer.fire();
   EXPECT_TRUE( device.cacheStale );
   EXPECT_THAT( timer.settings, ElementsAre( 1000U, 1000U, 1000U ) ) << "a failed poll is retried as well";
   timer.fire();
   EXPECT_FALSE( device.cacheStale );
}

TEST_F( XcvrDeathTest, EndsTheProcessWhenTheTimerCannotBeSet ) {
   Host::timerSetResult = 1;
   EXPECT_DEATH( device.init(), assertionFailed( "pollStart()" ) );
}

TEST_F( Xcvr, DestroysItsTimer ) {
   { SelvaneXcvr other; }
   EXPECT_TRUE( Host::hasTraced( 0, "destroying timer" ) );
   EXPECT_TRUE( Host::timers.back()->deleted );
}

TEST_F( Xcvr, IsLaidOutAsDriversKnowIt ) {
   EXPECT_TRUE( inOrder( device.pollInterval, device.cacheStale, device.registerCache ) );
   auto& cage = *newCage();
   EXPECT_TRUE( inOrder( cage.device, cage.presenceReg, cage.presenceBit, cage.presenceActiveHigh,
      cage.rxLosReg, cage.rxLosBit, cage.rxLosActiveHigh, cage.txFaultReg, cage.txFaultBit,
      cage.txFaultActiveHigh, cage.txDisableReg, cage.txDisableBit, cage.txDisableActiveHigh ) );
}

TEST_F( Xcvr, NarrowsRegistersAndBitsTo8Bits ) {
   auto cage = newCage( args(
      { "272", "256", "false" }, { "-1", "-1", "true" }, { "16", "2", "true" }, { "31", "3", "true" } ) );
   EXPECT_EQ( cage->presenceReg, 16 );
   EXPECT_EQ( cage->presenceBit, 0 );
   EXPECT_EQ( cage->rxLosReg, 255 );
   EXPECT_EQ( cage->rxLosBit, 255 );
}

TEST_F( Xcvr, CountsBitsModulo32 ) {
   auto cage = newCage(
      args( { "16", "32", "true" }, { "16", "33", "true" }, { "16", "2", "true" }, { "31", "35", "true" } ) );
   poll( 16, 0x02 );
   EXPECT_EQ( cage->getPresence(), QL_STATUS_NOT_PRESENT );
   poll( 16, 0x01 );
   EXPECT_EQ( cage->getPresence(), QL_STATUS_OK );
   EXPECT_EQ( cage->setTxDisable( 1 ), QL_STATUS_OK );
   EXPECT_EQ( ham.registers[31], 0x08 );
}

TEST_F( Xcvr, ForgetsASharedRegisterUntilAPollWhenTheNewCageCannotBeRead ) {
   auto first = newCage();
   poll( 16, 0x06 );
   ham.statuses = { QL_STATUS_FAILED };
   newCage( usualArgs(), 2 );
   EXPECT_EQ( device.registerCache.at( 16 ), 0x00 );
   int value = 9;
   EXPECT_EQ( first->getRxLos( &value ), QL_STATUS_IO_ERROR );
   device.pollCallback();
   EXPECT_EQ( first->getRxLos( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
}

TEST_F( XcvrDeathTest, NeedsAHam ) {
   device.ham = nullptr;
   EXPECT_DEATH( device.pollCallback(), assertionFailed( "ham" ) );
   EXPECT_DEATH( device.setRegisterBit( 16, 0, 1, true ), assertionFailed( "ham" ) );
}

TEST_F( Xcvr, ReadsTheRegistersOfANewCageAtOnce ) {
   ham.registers = { { 16, 0x06 }, { 31, 0x08 } };
   Host::traces.clear();
   cages.emplace_back( static_cast<SelvaneXcvr::SfpXcvr*>( device.newSfpXcvr( 260, usualArgs() ) ) );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x10 /1", "read8 0x1f /1", "execute" ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, "SelvaneXcvr::updateRegisterCache()" },
                                 TraceLine { 6, "Register cache updated for SelvaneXcvr" },
                                 TraceLine { 0, "creating new SfpXcvr with id=4" } ) );
   EXPECT_EQ( cages[0]->id, 260U );
   EXPECT_EQ( device.registerCache, ( std::map<uint8_t, uint8_t> { { 16, 0x06 }, { 31, 0x08 } } ) );
   EXPECT_FALSE( device.cacheStale );
}

TEST_F( Xcvr, PollsEachRegisterOnceInAscendingOrder ) {
   newCage(
      args( { "200", "0", "true" }, { "5", "1", "true" }, { "31", "2", "true" }, { "5", "3", "true" } ) );
   newCage(
      args( { "200", "4", "true" }, { "5", "5", "true" }, { "4", "6", "true" }, { "5", "7", "true" } ) );
   device.pollCallback();
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x04 /1", "read8 0x05 /1", "read8 0x1f /1",
                            "read8 0xc8 /1", "execute" ) );
}

TEST_F( Xcvr, PollsAnEmptyBatchWithoutCages ) {
   device.pollCallback();
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "execute" ) );
   EXPECT_FALSE( device.cacheStale );
}

TEST_F( Xcvr, LetsTwoCagesShareARegister ) {
   auto first = newCage();
   auto second = newCage(
      args( { "16", "4", "false" }, { "16", "5", "true" }, { "16", "6", "true" }, { "31", "7", "true" } ),
      2 );
   poll( 16, 0x22 );
   int los = 0;
   EXPECT_EQ( first->getRxLos( &los ), QL_STATUS_OK );
   EXPECT_EQ( los, 1 );
   EXPECT_EQ( second->getRxLos( &los ), QL_STATUS_OK );
   EXPECT_EQ( los, 1 );
   poll( 16, 0x02 );
   EXPECT_EQ( second->getRxLos( &los ), QL_STATUS_OK );
   EXPECT_EQ( los, 0 );
   EXPECT_THAT( ham.log, IsEmpty() );
}

struct PresenceRow {
   const char* activeHigh;
   uint8_t content;
   ql_status presence;
};

TEST_F( Xcvr, TellsPresenceByContentAndPolarity ) {
   const PresenceRow rows[] = {
      { "false", 0x00, QL_STATUS_OK },
      { "false", 0x01, QL_STATUS_NOT_PRESENT },
      { "true", 0x00, QL_STATUS_NOT_PRESENT },
      { "true", 0x01, QL_STATUS_OK },
      { "True", 0x00, QL_STATUS_OK },
      { "", 0x01, QL_STATUS_NOT_PRESENT },
   };
   for ( auto& row : rows ) {
      auto cage = newCage( args( { "16", "0", row.activeHigh }, { "17", "0", "true" }, { "17", "0", "true" },
         { "17", "0", "true" } ) );
      poll( 16, row.content );
      EXPECT_EQ( cage->getPresence(), row.presence ) << row.activeHigh << " " << int { row.content };
   }
}

TEST_F( Xcvr, AnswersReadsFromItsCacheWithoutTraffic ) {
   auto cage = newCage();
   poll( 16, 0x02 );
   ham.registers[16] = 0x04;
   int value = 9;
   EXPECT_EQ( cage->getRxLos( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( cage->getTxFault( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   EXPECT_EQ( cage->getTxDisable( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   EXPECT_EQ( cage->getPresence(), QL_STATUS_OK );
   EXPECT_THAT( ham.log, IsEmpty() );
}

TEST_F( Xcvr, TracesEachReadWithItsPlace ) {
   auto cage = newCage( usualArgs(), 260 );
   poll( 16, 0x02 );
   int value = 0;
   cage->getRxLos( &value );
   cage->getTxFault( &value );
   cage->getTxDisable( &value );
   cage->getPresence();
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 6, "getRxLos(): id=4" },
         TraceLine { 6, "getRegisterBit(): reg=10, bit=1, activeHigh=1, regContent=2, value=1" },
         TraceLine { 6, "getTxFault(): id=4" },
         TraceLine { 6, "getRegisterBit(): reg=10, bit=2, activeHigh=1, regContent=2, value=0" },
         TraceLine { 6, "getTxDisable(): id=4" },
         TraceLine { 6, "getRegisterBit(): reg=1f, bit=3, activeHigh=1, regContent=0, value=0" },
         TraceLine { 6, "getPresence(): id=4" },
         TraceLine { 6, "getRegisterBit(): reg=10, bit=0, activeHigh=0, regContent=2, value=1" } ) );
}

TEST_F( Xcvr, FailsReadsAfterAFailedPollUntilOneSucceeds ) {
   auto cage = newCage();
   poll( 16, 0x06 );
   failPoll();
   EXPECT_TRUE( device.cacheStale );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "Failed to poll information for SelvaneXcvr" ) );
   EXPECT_EQ( device.registerCache.at( 16 ), 0x06 ) << "the contents stay";
   int value = 9;
   EXPECT_EQ( cage->getTxFault( &value ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( cage->getRxLos( &value ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( cage->getTxDisable( &value ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( value, 9 );
   EXPECT_EQ( cage->getPresence(), QL_STATUS_IO_ERROR );
   device.pollCallback();
   EXPECT_FALSE( device.cacheStale );
   EXPECT_EQ( cage->getTxFault( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
}

TEST_F( Xcvr, StartsStaleWhenANewCageCannotBeRead ) {
   ham.statuses = { QL_STATUS_FAILED };
   auto cage = newCage();
   EXPECT_TRUE( device.cacheStale );
   EXPECT_EQ( cage->getPresence(), QL_STATUS_IO_ERROR );
}

struct WriteRow {
   const char* activeHigh;
   int value;
   uint8_t before, after;
};

TEST_F( Xcvr, WritesOneBitAgainstItsCache ) {
   const WriteRow rows[] = {
      { "true", 1, 0x00, 0x08 },
      { "true", 0, 0xFF, 0xF7 },
      { "true", 5, 0x41, 0x49 },
      { "false", 1, 0xFF, 0xF7 },
      { "false", 0, 0x00, 0x08 },
      { "false", -1, 0x08, 0x00 },
   };
   for ( auto& row : rows ) {
      auto cage = newCage( args( { "16", "0", "true" }, { "16", "1", "true" }, { "16", "2", "true" },
         { "31", "3", row.activeHigh } ) );
      poll( 31, row.before );
      // The hardware moves on unseen: the write goes by the cache.
      ham.registers[31] = 0x5A;
      EXPECT_EQ( cage->setTxDisable( row.value ), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[31], row.after ) << row.activeHigh << " " << row.value;
      EXPECT_EQ( device.registerCache.at( 31 ), row.after );
      EXPECT_THAT(
         ham.log, ElementsAre( "prepare", fmt::format( "write8 0x1f={:02x} /1", row.after ), "execute" ) );
   }
}

TEST_F( Xcvr, TracesEachWrite ) {
   auto cage = newCage( usualArgs(), 257 );
   cage->setTxDisable( 1 );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "setTxDisable(): id=1" },
         TraceLine { 6, "setRegisterBit(): reg=1f, bit=3, activeHigh=1, regContent=0, value=1" } ) );
}

TEST_F( Xcvr, KeepsItsCacheWhenAWriteFails ) {
   auto cage = newCage();
   ham.statuses = { QL_STATUS_FAILED };
   EXPECT_EQ( cage->setTxDisable( 1 ), QL_STATUS_FAILED );
   EXPECT_EQ( device.registerCache.at( 31 ), 0x00 );
}

TEST_F( Xcvr, WritesWithAStaleCacheToo ) {
   auto cage = newCage();
   poll( 31, 0x40 );
   failPoll();
   EXPECT_EQ( cage->setTxDisable( 1 ), QL_STATUS_OK );
   EXPECT_EQ( ham.registers[31], 0x48 );
}

TEST_F( Xcvr, SeesWhatItWroteUntilThePollKnowsBetter ) {
   auto cage = newCage();
   ASSERT_EQ( cage->setTxDisable( 1 ), QL_STATUS_OK );
   int value = 0;
   cage->getTxDisable( &value );
   EXPECT_EQ( value, 1 );
   poll( 31, 0x00 );
   cage->getTxDisable( &value );
   EXPECT_EQ( value, 0 );
}

TEST_F( Xcvr, TakesBitNumbersBeyondTheRegister ) {
   auto cage = newCage(
      args( { "16", "8", "true" }, { "16", "9", "false" }, { "16", "31", "true" }, { "31", "12", "true" } ) );
   poll( 16, 0xFF );
   poll( 31, 0x55 );
   int value = 9;
   EXPECT_EQ( cage->getTxFault( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   EXPECT_EQ( cage->getRxLos( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 ) << "0 before polarity";
   EXPECT_EQ( cage->getPresence(), QL_STATUS_NOT_PRESENT );
   EXPECT_EQ( cage->setTxDisable( 1 ), QL_STATUS_OK );
   EXPECT_EQ( ham.registers[31], 0x55 );
}

TEST_F( Xcvr, ReadsEachSignalWithItsOwnPolarity ) {
   // Each signal alone is active low, then each alone active high.
   for ( int odd = 0; odd < 4; ++odd ) {
      for ( bool oddIsHigh : { false, true } ) {
         const char* polarity[4];
         for ( int i = 0; i < 4; ++i ) {
            polarity[i] = ( i == odd ) == oddIsHigh ? "true" : "false";
         }
         auto cage = newCage( args( { "16", "0", polarity[0] }, { "16", "1", polarity[1] },
            { "16", "2", polarity[2] }, { "16", "3", polarity[3] } ) );
         poll( 16, 0x0F );
         int los = 9, fault = 9, disable = 9;
         EXPECT_EQ( cage->getRxLos( &los ), QL_STATUS_OK );
         EXPECT_EQ( cage->getTxFault( &fault ), QL_STATUS_OK );
         EXPECT_EQ( cage->getTxDisable( &disable ), QL_STATUS_OK );
         auto high = [&]( int i ) { return ( i == odd ) == oddIsHigh; };
         EXPECT_EQ( cage->getPresence(), high( 0 ) ? QL_STATUS_OK : QL_STATUS_NOT_PRESENT );
         EXPECT_EQ( los, high( 1 ) ) << odd;
         EXPECT_EQ( fault, high( 2 ) ) << odd;
         EXPECT_EQ( disable, high( 3 ) ) << odd;
      }
   }
}

TEST_F( Xcvr, PollsARegisterThatOnlyAWriteHasNamed ) {
   EXPECT_EQ( device.setRegisterBit( 78, 2, 1, true ), QL_STATUS_OK );
   EXPECT_EQ( ham.registers[78], 0x04 );
   ham.log.clear();
   device.pollCallback();
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x4e /1", "execute" ) );
}

TEST_F( Xcvr, LooksAtNothingWhileItsCacheIsStale ) {
   failPoll();
   Host::traces.clear();
   int value = 9;
   EXPECT_EQ( device.getRegisterBit( 77, 0, &value, true ), QL_STATUS_IO_ERROR );
   EXPECT_TRUE( device.registerCache.empty() );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Xcvr, KeepsTheRegistersOfACageThatCouldNotBeMade ) {
   newCage();
   poll( 16, 0x06 );
   auto given = usualArgs();
   given.driverArgs.erase( "txDisableReg" );
   EXPECT_THROW( device.newSfpXcvr( 2, given ), std::out_of_range );
   EXPECT_EQ( device.registerCache.at( 16 ), 0x00 ) << "until the next poll";
   device.pollCallback();
   EXPECT_EQ( device.registerCache.at( 16 ), 0x06 );
}

/** A Ham whose first response has another number than 0. */
class LateHam : public ScriptedHam {
public:
   ResponseId addRead8( Register reg, uint8_t regSize ) override {
      return ScriptedHam::addRead8( reg, regSize ) + 5;
   }

   uint8_t get8( ResponseId id ) override { return ScriptedHam::get8( id - 5 ); }
};

TEST_F( Xcvr, TakesItsResponsesFromTheLastNumberBackwards ) {
   LateHam late;
   late.registers = { { 16, 0x11 }, { 31, 0x22 } };
   newCage();
   device.ham = &late;
   device.pollCallback();
   EXPECT_EQ( device.registerCache, ( std::map<uint8_t, uint8_t> { { 16, 0x11 }, { 31, 0x22 } } ) );
   device.ham = &ham;
}

TEST_F( Xcvr, AnswersFromItsLastPollWhenTheHostsTimerFails ) {
   device.init();
   auto cage = newCage();
   ham.registers[16] = 0x02;
   Host::timerSetResult = 1;
   Host::timers.at( 0 )->fire();
   EXPECT_FALSE( Host::timers.at( 0 )->armed );
   int value = 0;
   EXPECT_EQ( cage->getRxLos( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
}

TEST_F( Xcvr, PollsARegisterThatOnlyAReadHasNamed ) {
   int value = 9;
   EXPECT_EQ( device.getRegisterBit( 77, 0, &value, true ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   device.pollCallback();
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x4d /1", "execute" ) );
}

TEST_F( Xcvr, ThrowsForAMissingKey ) {
   for ( auto signal : { "presence", "rxLos", "txFault", "txDisable" } ) {
      for ( auto part : { "Reg", "Bit", "ActiveHigh" } ) {
         auto given = usualArgs();
         given.driverArgs.erase( std::string( signal ) + part );
         EXPECT_THROW( device.newSfpXcvr( 1, given ), std::out_of_range ) << signal << part;
      }
   }
}

TEST_F( Xcvr, ThrowsForARegisterThatIsNoNumber ) {
   for ( auto key : { "presenceReg", "presenceBit", "rxLosReg", "rxLosBit", "txFaultReg", "txFaultBit",
            "txDisableReg", "txDisableBit" } ) {
      auto given = usualArgs();
      given.driverArgs[key] = "sixteen";
      EXPECT_THROW( device.newSfpXcvr( 1, given ), std::invalid_argument ) << key;
      given.driverArgs[key] = "99999999999";
      EXPECT_THROW( device.newSfpXcvr( 1, given ), std::out_of_range ) << key;
   }
}

TEST_F( Xcvr, OffersOnlySfpCages ) {
   EXPECT_THROW( device.newQsfpXcvr( 1, {} ), NotImplementedException );
   EXPECT_THROW( device.newCmisXcvr( 1, {} ), NotImplementedException );
}

TEST_F( Xcvr, DeclaresTwoRegistersForSimulation ) {
   auto& values = *device.expectedValues();
   ASSERT_EQ( values.size(), 2U );
   EXPECT_EQ( values.at( 0x10 ).val, 0xFFU );
   EXPECT_EQ( values.at( 0x1F ).val, 0x30U );
   EXPECT_EQ( values.at( 0x10 ).size, 1U );
   EXPECT_EQ( values.at( 0x1F ).size, 1U );
}

} // namespace
