#include "smbusd/EmulatedBackend.h"

#include "SmbusdFakes.h"

#include "emulator/BoardFile.h"
#include "emulator/Control.h"

using namespace Smbusd;
using namespace std::chrono_literals;

namespace {

/** A board with a temperature sensor at bus 3, 0x48, 24.5 degrees warm. */
class SmbusdEmulatedBackend : public testing::Test {
protected:
   Bus& bus( uint8_t number ) { return *backend.find( { Smbus::I2C, 0, 0, number } ); }

   static Operation readTwo( uint8_t chip = 0x48 ) {
      return { .kind = Operation::Kind::Read, .chip = chip, .length = 2 };
   }

   EventLoop loop;
   Emulator::Board board = Emulator::parseBoard( "emulator.json", R"({ "chips": [
      { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72, "set": { "temperature": 24.5 } } ] })" );
   EmulatedBackend backend { loop, board };
};

Bus::Done never() {
   return []( const Outcome& ) { ADD_FAILURE() << "ended later"; };
}

} // namespace

TEST_F( SmbusdEmulatedBackend, AnswersFromTheChipAtOnce ) {
   auto operation = readTwo();
   auto outcome = bus( 3 ).transfer( operation, never() );
   ASSERT_TRUE( outcome );
   EXPECT_EQ( outcome->result, I2c::Result::Ok );
   // 24.5 degrees in eighths, in the upper eleven bits.
   EXPECT_EQ( operation.result, ( std::vector<uint8_t> { 0x18, 0x80 } ) );
}

TEST_F( SmbusdEmulatedBackend, NamesItsBussesByNumber ) { EXPECT_EQ( bus( 3 ).name(), "i2c-3" ); }

TEST_F( SmbusdEmulatedBackend, HasOneBusForANumberWhateverTheController ) {
   EXPECT_EQ( backend.find( { Smbus::SCD, 0x700, 4, 3 } ), &bus( 3 ) );
}

TEST_F( SmbusdEmulatedBackend, TellsThatNobodyAcknowledges ) {
   auto operation = readTwo( 0x50 );
   EXPECT_EQ( bus( 3 ).transfer( operation, never() )->result, I2c::Result::NoAcknowledge );
}

TEST_F( SmbusdEmulatedBackend, TellsThatThereIsNoSuchBus ) {
   auto operation = readTwo();
   EXPECT_EQ( bus( 9 ).transfer( operation, never() )->result, I2c::Result::NoBus );
}

TEST_F( SmbusdEmulatedBackend, TakesTheTimeThatATransferTakes ) {
   ASSERT_EQ( Emulator::control( board, "fault inlet slow 30ms" ), "ok" );
   auto operation = readTwo();
   std::optional<Outcome> late;
   auto begin = std::chrono::steady_clock::now();
   EXPECT_FALSE( bus( 3 ).transfer( operation, [&]( const Outcome& outcome ) { late = outcome; } ) );
   EXPECT_TRUE( runUntil( loop, [&] { return late.has_value(); } ) );
   EXPECT_GE( std::chrono::steady_clock::now() - begin, 30ms );
   EXPECT_EQ( late->result, I2c::Result::Ok );
   EXPECT_EQ( operation.result, ( std::vector<uint8_t> { 0x18, 0x80 } ) );
}

TEST_F( SmbusdEmulatedBackend, TellsOfAHungBusWhenItsTimeIsOver ) {
   ASSERT_EQ( Emulator::control( board, "fault 3 hang 10ms" ), "ok" );
   auto operation = readTwo();
   std::optional<Outcome> late;
   EXPECT_FALSE( bus( 3 ).transfer( operation, [&]( const Outcome& outcome ) { late = outcome; } ) );
   EXPECT_TRUE( runUntil( loop, [&] { return late.has_value(); } ) );
   EXPECT_EQ( late->result, I2c::Result::TimedOut );
}
