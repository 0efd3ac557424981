#include "EmulatorController.h"

#include <gtest/gtest.h>

using namespace Emulator;
using namespace std::chrono_literals;

/** What ports do with what is plugged in. The bench counts ports from 1, the bus from 0. */
namespace {

class EmulatorBcm59121Ports : public ::testing::Test {
protected:
   /** Bytes 3 to 10 of the per-pair status. */
   std::string pairs( uint8_t port ) {
      auto reply = chip.tell( 0x3D, { static_cast<uint8_t>( port - 1 ) } );
      return textOf( { reply.begin() + 3, reply.begin() + 11 } );
   }

   /** Status and fault code. */
   std::string status( uint8_t port ) {
      auto reply = chip.tell( 0x21, { static_cast<uint8_t>( port - 1 ) } );
      return textOf( { reply[3], reply[4] } );
   }

   /** MPS absent, overload, short, denied, invalid signature. */
   std::string counts( uint8_t port ) {
      auto reply = chip.tell( 0x22, { static_cast<uint8_t>( port - 1 ) } );
      return textOf( { reply.begin() + 3, reply.begin() + 8 } );
   }

   /** Pair state: 1 for the primary channel, 2 for the alternative one, 3 for both. */
   unsigned poweredPairs( uint8_t port ) {
      return chip.tell( 0x21, { static_cast<uint8_t>( port - 1 ) } )[9];
   }

   /** Primary and alternative channel, in 0.1 W. */
   std::string pairPower( uint8_t port ) {
      auto reply = chip.tell( 0x3C, { static_cast<uint8_t>( port - 1 ) } );
      return textOf( { reply.begin() + 3, reply.begin() + 7 } );
   }

   void set( uint8_t command, uint8_t port, uint8_t value ) {
      chip.tell( command, { static_cast<uint8_t>( port - 1 ), value } );
   }

   Controller chip;
};

struct Signature {
   const char* name;
   uint8_t port;
   uint8_t detectionType;
   const char* device;
   const char* pairs;
   const char* state;
};

// Detection codes: 1 short, 2 high capacitance, 3 low resistance, 4 valid, 5 high resistance, 6 open; channel
// modes: 0 up to 15.4 W, 1 up to 30 W, 2 up to 45 W, 3 without a device.
const Signature signatures[] = {
   { "nothing", 1, 2, "type=none", "06 00 00 03 00 00 00 03", "detecting" },
   { "a cable", 1, 2, "type=open", "06 00 00 03 00 00 00 03", "detecting" },
   { "a short", 1, 2, "type=short", "01 00 00 03 00 00 00 03", "detecting" },
   { "a low resistance", 1, 2, "type=low-resistance", "03 00 00 03 00 00 00 03", "detecting" },
   { "a high resistance", 1, 2, "type=high-resistance", "05 00 00 03 00 00 00 03", "detecting" },
   { "a legacy device that is not looked for", 1, 2, "type=legacy", "02 00 00 03 00 00 00 03", "detecting" },
   { "a legacy device that is looked for", 1, 3, "type=legacy", "04 00 00 00 00 00 00 03", "requesting" },
   { "a legacy device with 2 points", 1, 5, "type=legacy", "04 00 00 00 00 00 00 03", "requesting" },
   { "a device where only legacy is looked for", 1, 1, "class=3", "00 00 00 03 00 00 00 03", "detecting" },
   { "a device where nothing is looked for", 1, 0, "class=3", "00 00 00 03 00 00 00 03", "detecting" },
   { "class 3", 1, 2, "class=3", "04 03 00 00 00 00 00 03", "requesting" },
   { "class 4 where legacy is looked for too", 1, 3, "class=4", "04 04 00 01 00 00 00 03", "requesting" },
   { "class 8 on one channel", 1, 2, "class=8", "04 04 00 01 00 00 00 03", "requesting" },
   { "two signatures on one channel", 1, 2, "type=dual class=3", "04 03 00 00 00 00 00 03", "requesting" },
   { "a class that does not match", 1, 2, "class=mismatch", "04 0E 00 03 00 00 00 03", "detecting" },
   { "too much current", 9, 2, "class=over-current", "04 0F 00 03 04 0F 00 03", "detecting" },
   { "nothing on two channels", 9, 2, "type=none", "06 00 00 03 06 00 00 03", "detecting" },
   { "class 3 on two channels", 9, 2, "class=3", "04 03 00 00 04 03 00 00", "requesting" },
   { "class 6 on two channels", 9, 2, "class=6", "04 06 00 01 04 06 00 01", "requesting" },
   { "class 8 on two channels of Type-3", 9, 2, "class=8", "04 06 00 01 04 06 00 01", "requesting" },
   { "two signatures of class 2", 9, 2, "type=dual class=2", "14 02 00 00 14 02 00 00", "requesting" },
   { "class 6 on the primary of two channels", 9, 2, "type=single/open class=6", "04 04 00 01 06 00 00 03",
      "requesting" },
   { "class 3 on the alternative of two channels", 9, 2, "type=open/single class=3",
      "06 00 00 03 04 03 00 00", "requesting" },
   { "a short beside a device", 9, 2, "type=single/short class=3", "04 03 00 00 01 00 00 03", "requesting" },
   { "one of two signatures", 9, 2, "type=dual/open class=3", "04 03 00 00 06 00 00 03", "requesting" },
   { "another resistance on each channel", 9, 2, "type=high-resistance/low-resistance",
      "05 00 00 03 03 00 00 03", "detecting" },
   { "a device on the channel that a port has not", 1, 2, "type=open/single class=3",
      "06 00 00 03 00 00 00 03", "detecting" },
   { "two signatures of class 5", 9, 2, "type=dual class=5", "14 04 00 01 14 04 00 01", "requesting" },
};

} // namespace

TEST_F( EmulatorBcm59121Ports, FindWhatIsPluggedInAsTheTableTells ) {
   for ( auto& row : signatures ) {
      chip.reset();
      chip.advance( 1s );
      chip.bench( fmt::format( "{} detach", row.port ) );
      set( 0x10, row.port, row.detectionType );
      chip.enable( row.port );
      chip.bench( fmt::format( "{} attach {}", row.port, row.device ) );
      chip.advance( 1s );
      EXPECT_EQ( pairs( row.port ), row.pairs ) << row.name;
      EXPECT_EQ( chip.state( row.port ), row.state ) << row.name;
   }
}

TEST_F( EmulatorBcm59121Ports, LookForNothingBeforeTheyAreEnabled ) {
   chip.bench( "1 attach class=3" );
   chip.advance( 1h );
   EXPECT_EQ( status( 1 ), "00 00" );
   EXPECT_EQ( pairs( 1 ), "00 00 00 03 00 00 00 03" );
   EXPECT_EQ( chip.state( 1 ), "disabled" );
}

TEST_F( EmulatorBcm59121Ports, GiveNoPowerBeforeTheHostSaysSo ) {
   chip.enable( 1 );
   chip.bench( "1 attach class=3" );
   chip.advance( 1h );
   EXPECT_EQ( status( 1 ), "06 00" );
   chip.powerOn( 1 );
   chip.advance( 1s );
   EXPECT_EQ( status( 1 ), "02 00" );
}

TEST_F( EmulatorBcm59121Ports, TakeTheirTimeToDetectToClassifyAndToPower ) {
   set( 0x00, 1, 1 );
   chip.bench( "1 attach class=3" );
   set( 0x01, 1, 1 );
   chip.advance( 299ms );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
   chip.bench( "1 detach" );
   chip.bench( "1 attach class=3" );
   set( 0x01, 1, 1 );
   chip.advance( 329ms );
   EXPECT_EQ( chip.state( 1 ), "detecting" ) << "300 ms for detection and 50 ms for the class";
   chip.advance( 1ms );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
   chip.advance( 74ms );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
   chip.advance( 1ms );
   EXPECT_EQ( chip.state( 1 ), "powered" );
}

TEST_F( EmulatorBcm59121Ports, AskAgainForTheNextDevice ) {
   chip.power( 1, "class=3" );
   chip.bench( "1 detach" );
   chip.advance( 5s );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
   chip.bench( "1 attach class=4" );
   chip.advance( 5s );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}

TEST_F( EmulatorBcm59121Ports, KeepPowerForAMomentWhenTheDeviceHasGone ) {
   chip.power( 1, "class=3 draw=10" );
   EXPECT_EQ( chip.get( "port1.power" ), "10" );
   chip.bench( "1 detach" );
   EXPECT_EQ( chip.get( "port1.power" ), "0" );
   chip.advance( 349ms );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   chip.advance( 1ms );
   EXPECT_EQ( chip.state( 1 ), "mps-absent" );
   EXPECT_EQ( status( 1 ), "04 01" );
   EXPECT_EQ( counts( 1 ), "01 00 00 00 00" );
   chip.advance( 750ms );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
}

TEST_F( EmulatorBcm59121Ports, KeepPowerForALoadThatComesBackInTime ) {
   chip.power( 1, "class=3 draw=10" );
   chip.set( "port1.draw", "0.5" );
   chip.advance( 300ms );
   chip.set( "port1.draw", "10" );
   chip.advance( 1h );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( counts( 1 ), "00 00 00 00 00" );
}

TEST_F( EmulatorBcm59121Ports, EndPowerForALoadBelow10Milliamperes ) {
   // At 54 V that is 0.54 W.
   chip.power( 1, "class=3 draw=0.54" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   chip.set( "port1.draw", "0.53" );
   chip.advance( 350ms );
   EXPECT_EQ( chip.state( 1 ), "mps-absent" );
}

TEST_F( EmulatorBcm59121Ports, ForgetTheDeviceThatIsSwitchedOffAndFindItAgain ) {
   chip.power( 1, "class=3" );
   set( 0x03, 1, 1 );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
   chip.advance( 1h );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}

TEST_F( EmulatorBcm59121Ports, LoseTheirPowerWhenTheyAreDisabled ) {
   chip.power( 1, "class=3" );
   set( 0x00, 1, 0 );
   EXPECT_EQ( status( 1 ), "00 00" );
   EXPECT_EQ( chip.get( "allocated" ), "0" );
}

namespace {

struct Trip {
   const char* action;
   const char* status;
   const char* channelError;
   const char* counts;
};

const Trip trips[] = {
   { "overload", "04 03", "03", "00 01 00 00 00" },
   { "short", "04 02", "02", "00 00 01 00 00" },
   { "thermal", "04 05", "05", "00 00 00 00 00" },
   { "startup", "04 06", "06", "00 00 00 00 00" },
};

} // namespace

TEST_F( EmulatorBcm59121Ports, ShutOffForAFaultAndStaySoUntilSwitchedOn ) {
   for ( auto& row : trips ) {
      chip.reset();
      chip.advance( 1s );
      chip.bench( "1 detach" );
      chip.power( 1, "class=3" );
      chip.bench( std::string( "1 " ) + row.action );
      chip.advance( 1h );
      EXPECT_EQ( chip.state( 1 ), row.action );
      EXPECT_EQ( status( 1 ), row.status ) << row.action;
      EXPECT_EQ( pairs( 1 ).substr( 6, 2 ), row.channelError ) << row.action;
      EXPECT_EQ( counts( 1 ), row.counts ) << row.action;
      EXPECT_EQ( chip.get( "allocated" ), "0" ) << row.action;
      chip.powerOn( 1 );
      chip.advance( 1s );
      EXPECT_EQ( chip.state( 1 ), "powered" ) << row.action;
   }
}

TEST_F( EmulatorBcm59121Ports, LookForTheNextDeviceAfterAFault ) {
   chip.power( 1, "class=3" );
   chip.bench( "1 overload" );
   chip.bench( "1 detach" );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
}

TEST_F( EmulatorBcm59121Ports, ShowAFaultOnBothChannelsOfA4PairPort ) {
   chip.power( 9, "class=6" );
   chip.bench( "9 short" );
   EXPECT_EQ( pairs( 9 ), "04 06 02 01 04 06 02 01" );
}

TEST_F( EmulatorBcm59121Ports, GivePowerOnTheChannelThatReachesTheDevice ) {
   chip.power( 9, "type=single/open class=4 draw=20" );
   chip.power( 10, "type=open/single class=4 draw=20" );
   EXPECT_EQ( poweredPairs( 9 ), 1U );
   EXPECT_EQ( pairPower( 9 ), "00 C8 00 00" );
   EXPECT_EQ( poweredPairs( 10 ), 2U );
   EXPECT_EQ( pairPower( 10 ), "00 00 00 C8" );
   EXPECT_EQ( chip.get( "allocated" ), "60" );
}

TEST_F( EmulatorBcm59121Ports, ShowAFaultOnTheChannelThatReachesTheDevice ) {
   chip.power( 9, "type=single/open class=3" );
   chip.bench( "9 thermal" );
   EXPECT_EQ( pairs( 9 ), "04 03 05 00 06 00 00 03" );
}

TEST_F( EmulatorBcm59121Ports, ShutOffOneChannelForItsFault ) {
   // 51 W are 0x01fe.
   chip.power( 9, "class=6 draw=51" );
   chip.bench( "9 overload primary" );
   EXPECT_EQ( status( 9 ), "02 00" );
   EXPECT_EQ( poweredPairs( 9 ), 2U );
   EXPECT_EQ( pairs( 9 ), "04 06 03 01 04 06 00 01" );
   EXPECT_EQ( pairPower( 9 ), "00 00 01 FE" );
   EXPECT_EQ( counts( 9 ), "00 01 00 00 00" );
   chip.advance( 1h );
   EXPECT_EQ( poweredPairs( 9 ), 2U );
   chip.powerOn( 9 );
   EXPECT_EQ( poweredPairs( 9 ), 3U );
   EXPECT_EQ( pairs( 9 ), "04 06 00 01 04 06 00 01" );
}

TEST_F( EmulatorBcm59121Ports, ShutOffWithTheirLastChannel ) {
   chip.power( 9, "class=6" );
   chip.bench( "9 overload primary" );
   chip.bench( "9 short alternative" );
   EXPECT_EQ( status( 9 ), "04 02" );
   EXPECT_EQ( pairs( 9 ), "04 06 03 01 04 06 02 01" );
   EXPECT_EQ( counts( 9 ), "00 01 01 00 00" );
   EXPECT_EQ( chip.get( "allocated" ), "0" );
   chip.powerOn( 9 );
   chip.advance( 1s );
   EXPECT_EQ( poweredPairs( 9 ), 3U );
}

TEST_F( EmulatorBcm59121Ports, GiveEachOfTwoSignaturesItsHalf ) {
   chip.power( 9, "type=dual class=4 draw=50" );
   EXPECT_EQ( pairPower( 9 ), "00 FA 00 FA" );
   chip.bench( "9 short alternative" );
   EXPECT_EQ( pairPower( 9 ), "00 FA 00 00" );
}

TEST_F( EmulatorBcm59121Ports, CountInvalidSignatures ) {
   chip.enable( 1 );
   chip.bench( "1 attach type=short" );
   chip.advance( 1s );
   EXPECT_EQ( counts( 1 ), "00 00 00 00 01" );
   chip.bench( "1 detach" );
   chip.bench( "1 attach type=legacy" );
   chip.advance( 1s );
   EXPECT_EQ( counts( 1 ), "00 00 00 00 02" );
   chip.bench( "1 detach" );
   chip.advance( 1s );
   EXPECT_EQ( counts( 1 ), "00 00 00 00 02" );
}

TEST_F( EmulatorBcm59121Ports, CountNoFurtherThan255 ) {
   chip.enable( 1 );
   for ( int i = 0; i < 300; ++i ) {
      chip.bench( "1 attach type=short" );
      chip.advance( 1s );
      chip.bench( "1 detach" );
   }
   EXPECT_EQ( counts( 1 ), "00 00 00 00 FF" );
}

namespace {

struct Limit {
   const char* name;
   uint8_t port;
   const char* device;
   uint8_t violation;
   uint8_t limit;
   const char* within;
   const char* beyond;
};

// Class 3 may take 15.4 W and class 6 60 W; a user's limit is 0.2 W a step for each channel that the
// device is found on.
const Limit limits[] = {
   { "class", 1, "class=3", 1, 0, "15.4", "15.5" },
   { "class on two channels", 9, "class=6", 1, 0, "60", "60.1" },
   { "class of two signatures", 9, "type=dual class=2", 1, 0, "14", "14.1" },
   { "user on one channel", 1, "class=3", 2, 80, "16", "16.1" },
   { "user on two channels", 9, "class=6", 2, 80, "32", "32.1" },
   { "user on one of two channels", 9, "type=single/open class=4", 2, 80, "16", "16.1" },
   { "the highest that a user may set", 1, "class=4", 2, 155, "31", "31.1" },
};

} // namespace

TEST_F( EmulatorBcm59121Ports, CutOffALoadAboveTheirLimit ) {
   for ( auto& row : limits ) {
      chip.reset();
      chip.advance( 1s );
      chip.bench( fmt::format( "{} detach", row.port ) );
      set( 0x16, row.port, row.limit );
      set( 0x15, row.port, row.violation );
      chip.power( row.port, row.device );
      auto draw = fmt::format( "port{}.draw", row.port );
      chip.set( draw, row.within );
      EXPECT_EQ( chip.state( row.port ), "powered" ) << row.name;
      EXPECT_EQ( chip.get( "allocated" ), row.within ) << row.name;
      chip.set( draw, row.beyond );
      EXPECT_EQ( chip.state( row.port ), "overload" ) << row.name;
   }
}

TEST_F( EmulatorBcm59121Ports, CutOffALoadAboveALimitThatIsLowered ) {
   chip.power( 1, "class=4 draw=22.5" );
   set( 0x16, 1, 100 );
   EXPECT_EQ( chip.state( 1 ), "powered" ) << "the limit is that of the class";
   set( 0x15, 1, 2 );
   EXPECT_EQ( chip.state( 1 ), "overload" );
}

TEST_F( EmulatorBcm59121Ports, HaveNoLimitWithoutAViolationType ) {
   set( 0x15, 1, 0 );
   chip.power( 1, "class=1 draw=40" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
}

TEST_F( EmulatorBcm59121Ports, GiveADeviceNoMoreThanTheClassItGets ) {
   chip.power( 1, "class=6 draw=51" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( chip.get( "port1.power" ), "30" );
}

namespace {

struct Mode {
   uint8_t mode;
   uint8_t single;
   uint8_t dual;
};

// The highest class of 802.3af, high inrush, before and with 802.3at, before 802.3bt, Type-3 and Type-4.
const Mode modes[] = { { 0, 3, 3 }, { 1, 3, 3 }, { 2, 4, 4 }, { 3, 4, 4 }, { 4, 6, 4 }, { 5, 6, 4 },
   { 6, 8, 5 } };

} // namespace

TEST_F( EmulatorBcm59121Ports, GiveTheClassesOfTheirPowerMode ) {
   chip.enable( 9 );
   chip.enable( 10 );
   chip.bench( "9 attach class=8" );
   chip.bench( "10 attach type=dual class=5" );
   for ( auto& row : modes ) {
      set( 0x1C, 9, row.mode );
      set( 0x1C, 10, row.mode );
      chip.advance( 1s );
      EXPECT_EQ( chip.tell( 0x21, { 8 } )[5], row.single ) << +row.mode;
      EXPECT_EQ( chip.tell( 0x21, { 9 } )[5], row.dual ) << +row.mode;
   }
}

TEST_F( EmulatorBcm59121Ports, AreDeniedPowerThatTheBudgetLacks ) {
   chip.set( "budget", "40" );
   chip.power( 1, "class=4" );
   chip.power( 2, "class=3" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( status( 2 ), "05 04" );
   EXPECT_EQ( pairs( 2 ), "04 03 04 00 00 00 00 03" );
   EXPECT_EQ( counts( 2 ), "00 00 00 01 00" );
   auto power = chip.tell( 0x23, { 0 } );
   EXPECT_EQ( textOf( { power.begin() + 2, power.begin() + 6 } ), "01 2C 00 64" ) << "30 W given, 10 W left";
}

TEST_F( EmulatorBcm59121Ports, GetPowerWhenTheBudgetHasItAgain ) {
   chip.set( "budget", "45.4" );
   chip.power( 1, "class=4" );
   chip.power( 2, "class=4" );
   EXPECT_EQ( chip.state( 2 ), "denied" );
   chip.advance( 1h );
   EXPECT_EQ( counts( 2 ), "00 00 00 01 00" ) << "one request is denied once";
   chip.bench( "1 detach" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 2 ), "powered" );
   EXPECT_EQ( status( 2 ), "02 00" );
}

TEST_F( EmulatorBcm59121Ports, GetTheLastOfTheBudget ) {
   chip.set( "budget", "46.2" );
   for ( uint8_t port = 1; port <= 3; ++port ) {
      chip.power( port, "class=3" );
      EXPECT_EQ( chip.state( port ), "powered" ) << +port;
   }
   EXPECT_EQ( chip.get( "allocated" ), "46.2" );
}

TEST_F( EmulatorBcm59121Ports, LoseTheirPowerFromTheHighestDownWhenTheBudgetShrinks ) {
   for ( uint8_t port = 1; port <= 3; ++port ) {
      chip.power( port, "class=4" );
   }
   chip.set( "budget", "59" );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( chip.state( 2 ), "denied" );
   EXPECT_EQ( chip.state( 3 ), "denied" );
   chip.set( "budget", "740" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 2 ), "powered" );
   EXPECT_EQ( chip.state( 3 ), "powered" );
}

TEST_F( EmulatorBcm59121Ports, DoNotGetThePowerThatTheyWerePromisedWhenItGoes ) {
   for ( auto [property, value] : { std::pair( "budget", "1" ), std::pair( "shutoff", "1" ) } ) {
      chip.reset();
      chip.advance( 1s );
      chip.bench( "1 detach" );
      set( 0x1E, 1, 0x01 );
      chip.enable( 1 );
      chip.bench( "1 attach class=4" );
      chip.advance( 1s );
      set( 0x01, 1, 1 );
      EXPECT_EQ( chip.get( "allocated" ), "30" );
      chip.set( property, value );
      EXPECT_EQ( chip.state( 1 ), "denied" ) << property;
      EXPECT_EQ( chip.get( "allocated" ), "0" );
      chip.set( "budget", "740" );
   }
}

TEST_F( EmulatorBcm59121Ports, LoseTheirPowerWhenALimitTakesMoreThanTheBudget ) {
   chip.set( "budget", "60" );
   chip.power( 1, "class=3" );
   chip.power( 2, "class=4" );
   set( 0x16, 1, 155 );
   set( 0x15, 1, 2 );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( chip.state( 2 ), "denied" );
}

TEST_F( EmulatorBcm59121Ports, MindTheShutOffInputsOfTheirMask ) {
   set( 0x1E, 1, 0x06 );
   set( 0x1E, 2, 0x10 );
   chip.power( 1, "class=3" );
   chip.power( 2, "class=3" );
   chip.power( 3, "class=3" );
   chip.set( "shutoff", "0x04" );
   EXPECT_EQ( chip.tell( 0x23, { 0 } )[6], 0x04 );
   EXPECT_EQ( chip.state( 1 ), "denied" );
   EXPECT_EQ( chip.state( 2 ), "powered" );
   EXPECT_EQ( chip.state( 3 ), "powered" );
   set( 0x1E, 3, 0xFF );
   EXPECT_EQ( chip.state( 3 ), "denied" );
   chip.set( "shutoff", "0" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   EXPECT_EQ( chip.state( 3 ), "powered" );
}

TEST_F( EmulatorBcm59121Ports, AreLockedOutWhileTheSupplyIsTooLowOrTooHigh ) {
   // The thresholds are 36.03 V and 59.00 V.
   struct Row {
      const char* volts;
      const char* status;
      const char* channelError;
   };

   const Row rows[] = {
      { "36.02", "05 07", "07" },
      { "36.03", "01 00", "00" },
      { "58.99", "01 00", "00" },
      { "59", "05 00", "08" },
   };
   chip.power( 1, "class=3" );
   for ( auto& row : rows ) {
      chip.set( "supply", "20" );
      EXPECT_EQ( chip.state( 1 ), "uvlo" );
      chip.set( "supply", row.volts );
      EXPECT_EQ( status( 1 ), row.status ) << row.volts;
      EXPECT_EQ( pairs( 1 ).substr( 6, 2 ), row.channelError ) << row.volts;
      EXPECT_EQ( chip.state( 2 ), "disabled" );
   }
   EXPECT_EQ( chip.state( 1 ), "ovlo" );
   EXPECT_EQ( chip.get( "allocated" ), "0" );
}

TEST_F( EmulatorBcm59121Ports, LookAgainWhenADetectionTypeChanges ) {
   chip.enable( 1 );
   chip.bench( "1 attach type=legacy" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "detecting" );
   set( 0x10, 1, 3 );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}

TEST_F( EmulatorBcm59121Ports, ArePoweredThroughAChangeOfDetectionTypeAndMode ) {
   chip.power( 1, "class=4" );
   set( 0x10, 1, 3 );
   set( 0x1C, 1, 0 );
   EXPECT_EQ( chip.state( 1 ), "powered" );
}

TEST( EmulatorBcm59121AutomaticPorts, PowerEachDeviceByThemselves ) {
   Controller chip( { { "ports", "2" }, { "automatic", "1" } } );
   EXPECT_EQ( chip.get( "port1.enabled" ), "1" );
   chip.bench( "1 attach class=3" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   chip.bench( "1 detach" );
   chip.advance( 2s );
   chip.bench( "1 attach class=4" );
   chip.advance( 1s );
   EXPECT_EQ( chip.state( 1 ), "powered" );
   chip.tell( 0x03, { 0, 1 } );
   chip.advance( 1h );
   EXPECT_EQ( chip.state( 1 ), "requesting" );
}
