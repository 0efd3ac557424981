#include "Components/Gpio.h"

#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "FreshLibrary.h"
#include "MockDevices.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"
#include "TestRow.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

using Component::DeviceBase;
using Component::HardwareDevice;
using Component::LogicalDevice::Gpio;
using Component::LogicalDevice::RegGpio;
using Host::TraceLine;
using testing::ElementsAre;
using testing::Return;

namespace {

class LogicalGpio : public Host::Test {
protected:
   testing::StrictMock<MockGpio> gpio;
};

Drivers::DriverArgs bit( const std::string& reg, const std::string& bitpos ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "register", reg }, { "bitpos", bitpos } };
   return args;
}

class RegisterBit : public FreshLibrary {
protected:
   RegisterBit() { device.ham = &ham; }

   /** A bit of register 0x20. */
   RegGpio gpio( const std::string& bitpos ) { return { &device, bit( "32", bitpos ) }; }

   ScriptedHam ham;
   HardwareDevice device;
};

} // namespace

TEST_F( LogicalGpio, IsLaidOutAsHostsAndDriversKnowIt ) {
   Gpio& base = gpio;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( sizeof( Gpio ), 32U );
}

TEST_F( LogicalGpio, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockGpio> filled;
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &Gpio::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<Gpio*>( &*filled ) );
}

TEST_F( LogicalGpio, HasOneTableForAllObjects ) {
   MockGpio other;
   EXPECT_EQ( gpio.record.ops, other.record.ops );
   EXPECT_THAT( Layout::wordsOf( Gpio::ops_ ),
      ElementsAre( 32, Gpio::bitSetCallback, Gpio::bitClearCallback, Gpio::bitReadCallback ) );
}

TEST_F( LogicalGpio, HasItsOperationsInAnotherOrderThanItsTable ) {
   EXPECT_EQ( Layout::slotOf( &Gpio::bitClear ), 2U );
   EXPECT_EQ( Layout::slotOf( &Gpio::bitSet ), 3U );
   EXPECT_EQ( Layout::slotOf( &Gpio::bitRead ), 4U );
}

TEST_F( LogicalGpio, PassesTheSetCallbackOn ) {
   EXPECT_CALL( gpio, bitSet ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( gpio.record.ops->bit_set( &gpio.record ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "bitSetCallback" } ) );
}

TEST_F( LogicalGpio, PassesTheClearCallbackOn ) {
   EXPECT_CALL( gpio, bitClear ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( gpio.record.ops->bit_clear( &gpio.record ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "bitClearCallback" } ) );
}

TEST_F( LogicalGpio, PassesTheReadCallbackOn ) {
   uint32_t value = 0;
   EXPECT_CALL( gpio, bitRead( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( gpio.record.ops->bit_read( &gpio.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "bitReadCallback" } ) );
}

TEST_F( RegisterBit, IsLaidOutAsDriversKnowIt ) {
   auto set = gpio( "3" );
   EXPECT_EQ( Layout::offsetOf( set, set.device ), 32U );
   EXPECT_EQ( Layout::offsetOf( set, set.writeWithoutRead ), 40U );
   EXPECT_EQ( Layout::offsetOf( set, set.reg ), 44U );
   EXPECT_EQ( Layout::offsetOf( set, set.bitpos ), 48U );
   EXPECT_EQ( sizeof( RegGpio ), 56U );
}

TEST_F( RegisterBit, TakesItsPlaceFromTheArguments ) {
   RegGpio set( &device, bit( "45", "6" ) );
   EXPECT_EQ( set.device, &device );
   EXPECT_EQ( set.reg, 45 );
   EXPECT_EQ( set.bitpos, 6 );
   EXPECT_FALSE( set.writeWithoutRead );
   EXPECT_TRUE( ham.log.empty() );
}

TEST_F( RegisterBit, TakesTheNumberAtTheStartOfAText ) {
   RegGpio set( &device, bit( "0x10", "12abc" ) );
   EXPECT_EQ( set.reg, 0 ) << "decimal conversion stops at the x";
   EXPECT_EQ( set.bitpos, 12 );
}

TEST_F( RegisterBit, NeedsARegister ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "bitpos", "0" } };
   EXPECT_DEATH( RegGpio( &device, args ), assertionFailed( "it != args.driverArgs.end()" ) );
}

TEST_F( RegisterBit, NeedsABitPosition ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "register", "0" } };
   EXPECT_DEATH( RegGpio( &device, args ), assertionFailed( "it != args.driverArgs.end()" ) );
}

TEST_F( RegisterBit, ReadsTheRegisterBeforeItAsksForTheBitPosition ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "register", "none" } };
   EXPECT_THROW( RegGpio( &device, args ), std::invalid_argument );
}

TEST_F( RegisterBit, ThrowsForTextThatIsNoNumber ) {
   for ( std::string text : { "", "none", "-", " x1" } ) {
      EXPECT_THROW( RegGpio( &device, bit( text, "0" ) ), std::invalid_argument ) << text;
      EXPECT_THROW( RegGpio( &device, bit( "0", text ) ), std::invalid_argument ) << text;
   }
}

TEST_F( RegisterBit, ThrowsForANumberBeyond32Bits ) {
   EXPECT_THROW( RegGpio( &device, bit( "2147483648", "0" ) ), std::out_of_range );
   EXPECT_THROW( RegGpio( &device, bit( "0", "2147483648" ) ), std::out_of_range );
}

TEST_F( RegisterBit, IsReadInOneTransaction ) {
   ham.registers[0x20] = 0x08;
   uint32_t value = 99;
   EXPECT_EQ( gpio( "3" ).bitRead( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1U );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "read8 0x20 /1", "execute" ) );
}

TEST_F( RegisterBit, IsReadAsZeroOrOne ) {
   struct {
      uint16_t content;
      std::string bitpos;
      uint32_t value;
   } const rows[] = {
      { 0x01, "0", 1 },
      { 0xFE, "0", 0 },
      { 0x80, "7", 1 },
      { 0x7F, "7", 0 },
      { 0xFF, "3", 1 },
   };

   for ( auto& [content, bitpos, expected] : rows ) {
      ham.registers[0x20] = content;
      uint32_t value = 99;
      EXPECT_EQ( gpio( bitpos ).bitRead( &value ), QL_STATUS_OK );
      EXPECT_EQ( value, expected ) << "bit " << bitpos << " of " << content;
   }
}

TEST_F( RegisterBit, ThatCannotBeReadLeavesTheValueAlone ) {
   uint32_t value = 99;
   ham.statuses = { oddStatus };
   EXPECT_EQ( gpio( "3" ).bitRead( &value ), oddStatus );
   EXPECT_EQ( value, 99U );
}

TEST_F( RegisterBit, IsSetByReadAndWrite ) {
   ham.registers[0x20] = 0x41;
   EXPECT_EQ( gpio( "3" ).bitSet(), QL_STATUS_OK );
   EXPECT_THAT( ham.log,
      ElementsAre( "prepare", "read8 0x20 /1", "execute", "prepare", "write8 0x20=49 /1", "execute" ) );
}

TEST_F( RegisterBit, IsClearedByReadAndWrite ) {
   ham.registers[0x20] = 0x49;
   EXPECT_EQ( gpio( "3" ).bitClear(), QL_STATUS_OK );
   EXPECT_THAT( ham.log,
      ElementsAre( "prepare", "read8 0x20 /1", "execute", "prepare", "write8 0x20=41 /1", "execute" ) );
}

TEST_F( RegisterBit, IsWrittenAlsoWhenItStandsAlready ) {
   ham.registers[0x20] = 0x08;
   EXPECT_EQ( gpio( "3" ).bitSet(), QL_STATUS_OK );
   EXPECT_EQ( ham.log[4], "write8 0x20=08 /1" );
}

TEST_F( RegisterBit, IsNotWrittenWhenItsRegisterCannotBeRead ) {
   ham.statuses = { oddStatus, oddStatus };
   EXPECT_EQ( gpio( "3" ).bitSet(), oddStatus );
   EXPECT_EQ( gpio( "3" ).bitClear(), oddStatus );
   EXPECT_THAT(
      ham.log, ElementsAre( "prepare", "read8 0x20 /1", "execute", "prepare", "read8 0x20 /1", "execute" ) );
}

TEST_F( RegisterBit, GivesTheStatusOfAFailedWrite ) {
   ham.statuses = { QL_STATUS_OK, oddStatus, QL_STATUS_OK, oddStatus };
   EXPECT_EQ( gpio( "3" ).bitSet(), oddStatus );
   EXPECT_EQ( gpio( "3" ).bitClear(), oddStatus );
}

TEST_F( RegisterBit, CanBeSetWithoutReadingAsIfTheOthersWereClear ) {
   ham.registers[0x20] = 0x41;
   auto blind = gpio( "3" );
   blind.writeWithoutRead = true;
   EXPECT_EQ( blind.bitSet(), QL_STATUS_OK );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x20=08 /1", "execute" ) );
}

TEST_F( RegisterBit, CanBeClearedWithoutReadingAsIfTheOthersWereSet ) {
   ham.registers[0x20] = 0x41;
   auto blind = gpio( "3" );
   blind.writeWithoutRead = true;
   EXPECT_EQ( blind.bitClear(), QL_STATUS_OK );
   EXPECT_THAT( ham.log, ElementsAre( "prepare", "write8 0x20=f7 /1", "execute" ) );
}

TEST_F( RegisterBit, IsReadAllTheSameWhenItIsWrittenWithoutReading ) {
   ham.registers[0x20] = 0x08;
   auto blind = gpio( "3" );
   blind.writeWithoutRead = true;
   uint32_t value = 0;
   EXPECT_EQ( blind.bitRead( &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1U );
}

TEST_F( RegisterBit, BeyondTheRegisterReadsZeroAndChangesNothing ) {
   for ( std::string bitpos : { "8", "9", "31", "-1", "-24", "40", "63" } ) {
      SCOPED_TRACE( bitpos );
      ham.registers[0x20] = 0xFF;
      ham.log.clear();
      auto beyond = gpio( bitpos );
      uint32_t value = 99;
      EXPECT_EQ( beyond.bitRead( &value ), QL_STATUS_OK );
      EXPECT_EQ( value, 0U );
      EXPECT_EQ( beyond.bitClear(), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[0x20], 0xFF );
      ham.registers[0x20] = 0x00;
      EXPECT_EQ( beyond.bitSet(), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[0x20], 0x00 );
      EXPECT_EQ( std::count( ham.log.begin(), ham.log.end(), "execute" ), 5 );
   }
}

TEST_F( RegisterBit, PositionCountsModulo32 ) {
   struct {
      std::string bitpos;
      uint16_t mask;
   } const rows[] = {
      { "32", 0x01 },
      { "35", 0x08 },
      { "39", 0x80 },
      { "64", 0x01 },
      { "-32", 0x01 },
      { "-29", 0x08 },
      { "-2147483648", 0x01 },
      { "2147483623", 0x80 },
   };

   for ( auto& [bitpos, mask] : rows ) {
      SCOPED_TRACE( bitpos );
      auto wrapped = gpio( bitpos );
      ham.registers[0x20] = 0;
      EXPECT_EQ( wrapped.bitSet(), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[0x20], mask );
      uint32_t value = 99;
      EXPECT_EQ( wrapped.bitRead( &value ), QL_STATUS_OK );
      EXPECT_EQ( value, 1U );
      EXPECT_EQ( wrapped.bitClear(), QL_STATUS_OK );
      EXPECT_EQ( ham.registers[0x20], 0 );
   }
}

TEST_F( RegisterBit, UsesTheHamThatTheDeviceHasAtThatMoment ) {
   auto set = gpio( "3" );
   ScriptedHam another;
   device.ham = &another;
   EXPECT_EQ( set.bitSet(), QL_STATUS_OK );
   EXPECT_TRUE( ham.log.empty() );
   EXPECT_EQ( another.registers[0x20], 0x08 );
}

TEST_F( RegisterBit, IsWhatEveryHardwareDeviceOffers ) {
   std::unique_ptr<Gpio> made( device.newGpio( bit( "32", "3" ) ) );
   auto set = dynamic_cast<RegGpio*>( made.get() );
   ASSERT_NE( set, nullptr );
   EXPECT_EQ( set->device, &device );
   EXPECT_EQ( set->reg, 32 );
   EXPECT_EQ( set->bitpos, 3 );
}

namespace {

int hamsMade = 0;
ScriptedHam* sharedHam = nullptr;

Ham::Ham* makeSharedHam( const Topology::Topology&, const Drivers::DriverArgs& ) {
   ++hamsMade;
   return sharedHam;
}

} // namespace

TEST_F( RegisterBit, SharesItsDeviceAndHamWithTheOtherBitsOfTheDevice ) {
   sharedHam = &ham;
   TestRow row( Ham::hams, "Shared", makeSharedHam );
   Topology::loadTopology(
      R"([ { "type": "I2C", "ham": "Shared", "id": 1, "devices": [ { "did": 7 } ] } ])" );
   auto add = []( int bitpos ) {
      auto text = fmt::format( R"({{ "did": 7, "driver": "GpioDriver", "address": {{ "address": 32 }}, )"
                               R"("driverArgs": {{ "register": 32, "bitpos": {} }} }})",
         bitpos );
      return ql_gpio_add( text.c_str() );
   };
   auto low = add( 0 );
   auto high = add( 7 );
   EXPECT_EQ( low->ops->bit_set( low ), QL_STATUS_OK );
   EXPECT_EQ( high->ops->bit_set( high ), QL_STATUS_OK );
   EXPECT_EQ( ham.registers[0x20], 0x81 );
   EXPECT_EQ( hamsMade, 1 );
   EXPECT_EQ( DeviceBase::devices.size(), 1U );
}

using RegisterBitDeathTest = RegisterBit;

TEST_F( RegisterBitDeathTest, NeedsADeviceWithAHam ) {
   auto bit = gpio( "0" );
   device.ham = nullptr;
   uint32_t value = 0;
   EXPECT_DEATH( bit.bitRead( &value ), assertionFailed( "device->ham" ) );
   EXPECT_DEATH( bit.bitSet(), assertionFailed( "device->ham" ) );
   EXPECT_DEATH( bit.bitClear(), assertionFailed( "device->ham" ) );
}
