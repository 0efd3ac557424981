#include "Drivers/BCM59121Messages.h"

#include "Alarms.h"
#include "Assertion.h"
#include "BCM59121Test.h"

#include <array>
#include <functional>

using Host::TraceLine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

using namespace std::chrono_literals;

/** A text of bytes, as a message or the start of one. */
std::string bytes( const std::vector<int>& values ) { return { values.begin(), values.end() }; }

class Bcm59121Messages : public Bcm59121Test {
protected:
   ql_status query( uint8_t cmd = 0x21 ) { return driver->queryPort( 5, cmd, text, lastQuery ); }

   ql_status config( uint16_t waitUnits = 1, bool readReply = true ) {
      return driver->configCustom(
         0x0E, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, waitUnits, readReply );
   }

   std::string text = "held";
   timespec lastQuery {};

   const std::string question = "21 FF 05 FF FF FF FF FF FF FF FF 1D";
   /** 0x0E and 0xA1 to 0xAA: 14 + 10 * 160 + 55 = 1669 = 0x685. */
   const std::string setting = "0E A1 A2 A3 A4 A5 A6 A7 A8 A9 AA 85";
};

using Bcm59121MessagesDeathTest = Bcm59121Messages;

/** The three ways to send a message and read a reply, so that what they share is tested on each. */
struct Exchange {
   const char* name;
   uint8_t cmd;
   std::function<ql_status( Drivers::BCM59121&, std::string& )> run;
};

const std::array<Exchange, 3> exchanges { {
   { "queryCustom", 0x3D,
      []( Drivers::BCM59121& driver, std::string& text ) {
         timespec lastQuery {};
         return driver.queryCustom(
            0x3D, 0xFF, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, text, lastQuery );
      } },
   { "configCustom", 0x15,
      []( Drivers::BCM59121& driver, std::string& ) {
         return driver.configCustom( 0x15, 0xFF, 1, 2, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, true );
      } },
   { "queryDebug", 0x4F,
      []( Drivers::BCM59121& driver, std::string& text ) { return driver.queryDebug( 1, 0x4F, text ); } },
} };

TEST( Bcm59121Checksum, IsTheLowByteOfTheSumOfElevenBytes ) {
   const struct {
      std::string message;
      int sum;
   } rows[] = {
      { bytes( { 0x21, 0xFF, 5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0 } ), 0x1D },
      { bytes( { 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x77 } ), 0 },
      { bytes( { 1, 2, 4, 8, 16, 32, 64, 0, 0, 0, 0, 0 } ), 0x7F },
      { bytes( { 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0 } ), 0 },
      // 11 * 255 = 2805 = 0xAF5
      { bytes( { 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0 } ), 0xF5 },
   };

   for ( auto& row : rows ) {
      auto message = row.message;
      auto raw = reinterpret_cast<uint8_t*>( message.data() );
      EXPECT_EQ( Drivers::calcCheckSum( raw ), row.sum );
      EXPECT_EQ( message, row.message );
      Drivers::setCheckSum( raw );
      EXPECT_EQ( raw[11], row.sum );
      EXPECT_EQ( message.substr( 0, 11 ), row.message.substr( 0, 11 ) );
   }
}

TEST( Bcm59121Reply, ReadsAsZeroBeyondItsEnd ) {
   EXPECT_EQ( Drivers::byteAt( "\x21\xFF", 1 ), 0xFF );
   EXPECT_EQ( Drivers::byteAt( "\x21\xFF", 2 ), 0 );
   EXPECT_EQ( Drivers::byteAt( "", 0 ), 0 );
}

TEST( Bcm59121Measurement, IsAnUnsignedBigEndianWordScaledAndShifted ) {
   EXPECT_EQ( Drivers::getMeasurementVal( 0x01, 0x02, 1.0, 0.0 ), 258.0 );
   EXPECT_EQ( Drivers::getMeasurementVal( 0xFF, 0xFF, 1.0, 0.0 ), 65535.0 );
   EXPECT_EQ( Drivers::getMeasurementVal( 0x00, 0x0A, 0.5, 33.0 ), 38.0 );
   EXPECT_EQ( Drivers::getMeasurementVal( 0x01, 0x00, -2.0, 1.0 ), -511.0 );
}

TEST( Bcm59121Temperature, FallsFrom275DegreesByFiveQuartersAStep ) {
   const struct {
      uint8_t hi, lo;
      double degrees;
   } rows[] = {
      { 0, 120, 125.0 },
      { 0, 220, 0.0 },
      { 0, 0, 275.0 },
      { 0, 121, 123.75 },
      { 0, 200, 25.0 },
      { 0, 224, -5.0 },
      { 1, 0, -45.0 },
   };

   for ( auto& row : rows ) {
      EXPECT_EQ( Drivers::getTemperatureVal( row.hi, row.lo ), row.degrees )
         << int( row.hi ) << " " << int( row.lo );
   }
}

TEST( Bcm59121DualSignature, NeedsBothDetectionsAndThePortsMark ) {
   const struct {
      const char* name;
      uint8_t primary, alternative, mark;
      bool dual;
   } rows[] = {
      { "all three", 0x14, 0x14, 2, true },
      { "primary without its high bit", 0x04, 0x14, 2, false },
      { "alternative without its high bit", 0x14, 0x04, 2, false },
      { "primary with another high bit", 0x34, 0x14, 2, false },
      { "another mark", 0x14, 0x14, 3, false },
      { "no mark", 0x14, 0x14, 0, false },
   };

   for ( auto& row : rows ) {
      auto portStatus = ScriptedPoeChip::reply( 0x21, { { 10, row.mark } } );
      auto pairs = ScriptedPoeChip::reply( 0x3D, { { 3, row.primary }, { 7, row.alternative } } );
      EXPECT_EQ( Drivers::isDualSigPd( portStatus, pairs ), row.dual ) << row.name;
   }
   EXPECT_FALSE( Drivers::isDualSigPd( "", "" ) );
   EXPECT_FALSE( Drivers::isDualSigPd( ScriptedPoeChip::reply( 0x21, { { 10, 2 } } ), "\x3D\x01\x02\x14" ) );
}

TEST_F( Bcm59121Messages, AQueryIsAWriteAWaitAndARead ) {
   chip.answer( 0x21, { { 3, 2 } } );
   EXPECT_EQ( query(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( question ) ) );
   EXPECT_EQ( text, reply( 0x21, { { 3, 2 } } ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, AQueryCarriesItsElevenBytesInOrder ) {
   EXPECT_EQ( driver->queryCustom(
                 0x2D, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7, 0xB8, 0xB9, 0xBA, text, lastQuery ),
      QL_STATUS_OK );
   // 0x2D = 45; 45 + 10 * 176 + 55 = 1860 = 0x744
   EXPECT_THAT( chip.takeSent(), ElementsAre( "2D B1 B2 B3 B4 B5 B6 B7 B8 B9 BA 44" ) );
}

TEST_F( Bcm59121Messages, AQueryOfOnesHasAWrappedChecksum ) {
   EXPECT_EQ( driver->queryCustom(
                 0x20, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, text, lastQuery ),
      QL_STATUS_OK );
   // 32 + 10 * 255 = 2582 = 0xA16
   EXPECT_THAT( chip.takeSent(), ElementsAre( "20 FF FF FF FF FF FF FF FF FF FF 16" ) );
}

TEST_F( Bcm59121Messages, AQueryWithoutATimeGoesToTheWire ) {
   lastQuery = { 0, 0 };
   EXPECT_EQ( query(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( question ) );
}

TEST_F( Bcm59121Messages, AYoungReplyIsUsedAgain ) {
   const struct {
      const char* name;
      std::chrono::nanoseconds age;
      bool asks;
   } rows[] = {
      { "asked in the future", -5s, false },
      { "asked just now", 0s, false },
      { "1.999 s", 1999ms, false },
      { "1.999999 s", 1999999us, false },
      { "2 s", 2000ms, true },
      { "2.001 s", 2001ms, true },
      { "a day", 24h, true },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      time.now = 100000s + 250ms;
      auto asked = time.now - row.age;
      auto seconds = std::chrono::duration_cast<std::chrono::seconds>( asked );
      timespec last { seconds.count(), ( asked - seconds ).count() };
      lastQuery = last;
      text = "";
      EXPECT_EQ( query(), QL_STATUS_OK );
      if ( row.asks ) {
         EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( question ) ) );
         EXPECT_EQ( text, reply( 0x21 ) );
         EXPECT_EQ( lastQuery.tv_sec, 100000 );
         EXPECT_EQ( lastQuery.tv_nsec, 250000000 );
      } else {
         EXPECT_THAT( chip.takeLog(), IsEmpty() );
         EXPECT_EQ( text, "" );
         EXPECT_EQ( lastQuery.tv_sec, last.tv_sec );
         EXPECT_EQ( lastQuery.tv_nsec, last.tv_nsec );
      }
   }
}

TEST_F( Bcm59121Messages, InTheFirstTwoSecondsOfTheClockNothingIsAsked ) {
   time.now = 1999ms;
   lastQuery = { 0, 0 };
   EXPECT_EQ( query(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
   EXPECT_EQ( text, "held" );
}

TEST_F( Bcm59121Messages, AQuerysTimeIsTakenBeforeItsWrite ) {
   time.now = 1000s + 7ns;
   query();
   EXPECT_EQ( lastQuery.tv_sec, 1000 );
   EXPECT_EQ( lastQuery.tv_nsec, 7 );
   EXPECT_EQ( time.now, 1000s + 7ns + 4ms );
}

TEST_F( Bcm59121Messages, AQueryWhoseWriteFailsReadsNothing ) {
   chip.writeStatuses[0x21] = { QL_STATUS_FAILED };
   EXPECT_EQ( query(), QL_STATUS_FAILED );
   EXPECT_THAT( chip.takeLog(), ElementsAre( "write " + question ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "Error: Failed to write to PoE chip. Command: 21." } ) );
   EXPECT_EQ( text, "held" );
   EXPECT_EQ( lastQuery.tv_sec, 1000 );
}

TEST_F( Bcm59121Messages, AFailedReadLeavesTheReply ) {
   chip.readStatuses[0x21] = { QL_STATUS_NOT_SUPPORTED };
   EXPECT_EQ( query(), QL_STATUS_NOT_SUPPORTED );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( question ) ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: Failed to read PoE chip" } ) );
   EXPECT_EQ( text, "held" );
   EXPECT_EQ( lastQuery.tv_sec, 1000 );
}

TEST_F( Bcm59121Messages, ASettingIsAWriteAWaitAndARead ) {
   EXPECT_EQ( config(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( setting ) ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, ASettingIsSentAgainAtOnce ) {
   config();
   config();
   EXPECT_THAT( chip.takeSent(), ElementsAre( setting, setting ) );
}

TEST_F( Bcm59121Messages, ASettingWaitsInUnitsOfFourMilliseconds ) {
   const struct {
      uint16_t units;
      unsigned microseconds;
   } rows[] = { { 0, 0 }, { 1, 4000 }, { 3, 12000 }, { 5, 20000 }, { 2000, 8000000 }, { 65535, 262140000 } };

   for ( auto& row : rows ) {
      EXPECT_EQ( config( row.units ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( setting, row.microseconds ) ) ) << row.units;
   }
}

TEST_F( Bcm59121Messages, ASettingWithoutReplyReadsNothing ) {
   chip.readStatuses[0x0E] = { QL_STATUS_FAILED };
   EXPECT_EQ( config( 3, false ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAre( "write " + setting, "wait 12000" ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, ASettingWhoseWriteFailsWaitsForNothing ) {
   for ( bool readReply : { true, false } ) {
      Host::traces.clear();
      chip.writeStatuses[0x0E] = { QL_STATUS_FAILED };
      EXPECT_EQ( config( 3, readReply ), QL_STATUS_FAILED );
      EXPECT_THAT( chip.takeLog(), ElementsAre( "write " + setting ) );
      EXPECT_THAT(
         Host::traces, ElementsAre( TraceLine { 0, "Error: Failed to write to PoE chip. Command: e" } ) );
   }
}

TEST_F( Bcm59121Messages, ASettingWhoseReadFailsTellsTheStatus ) {
   chip.readStatuses[0x0E] = { QL_STATUS_NOT_SUPPORTED };
   EXPECT_EQ( config(), QL_STATUS_NOT_SUPPORTED );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: Failed to read PoE chip" } ) );
}

TEST_F( Bcm59121Messages, ASettingOfAPortHasItsNumberAndOneValue ) {
   // 0x12 + 255 + 6 + 0x44 + 7 * 255 = 2132 = 0x854
   EXPECT_EQ( driver->configPort( port( 6 ), 0x12, 0x44, 5 ), QL_STATUS_OK );
   EXPECT_THAT(
      chip.takeLog(), ElementsAreArray( exchange( "12 FF 06 44 FF FF FF FF FF FF FF 54", 20000 ) ) );
}

TEST_F( Bcm59121Messages, ASettingOfTheSystemHasOneValue ) {
   // 0x17 + 255 + 0x33 + 8 * 255 = 2369 = 0x941
   EXPECT_EQ( driver->configSystem( 0x17, 0x33, 3 ), QL_STATUS_OK );
   EXPECT_THAT(
      chip.takeLog(), ElementsAreArray( exchange( "17 FF 33 FF FF FF FF FF FF FF FF 41", 12000 ) ) );
}

TEST_F( Bcm59121Messages, AReportsQueryAlwaysGoesToTheWire ) {
   chip.answer( 0x2D, { { 8, 1 } } );
   for ( int i = 0; i < 2; ++i ) {
      EXPECT_EQ( driver->queryDebug( 1, 0x2D, text ), QL_STATUS_OK );
      // 0x2D + 255 + 1 + 8 * 255 = 2341 = 0x925
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( "2D FF 01 FF FF FF FF FF FF FF FF 25" ) ) );
      EXPECT_EQ( text, reply( 0x2D, { { 8, 1 } } ) );
   }
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, AReportsQueryReadsAlsoWhenItsWriteHasFailed ) {
   chip.writeStatuses[0x21] = { QL_STATUS_FAILED };
   EXPECT_EQ( driver->queryDebug( 5, 0x21, text ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( question ) ) );
   EXPECT_EQ( text, reply( 0x21 ) );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, AReportsQueryWhoseReadFailsEmptiesTheReply ) {
   chip.readStatuses[0x21] = { QL_STATUS_NOT_SUPPORTED };
   EXPECT_EQ( driver->queryDebug( 5, 0x21, text ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( text, "" );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Messages, AWrongChecksumIsAnIoError ) {
   for ( auto& exchange : exchanges ) {
      SCOPED_TRACE( exchange.name );
      Host::traces.clear();
      text = "held";
      auto bad = ScriptedPoeChip::corrupt( reply( exchange.cmd, { { 3, 9 } } ) );
      chip.replies[exchange.cmd] = { bad };
      EXPECT_EQ( exchange.run( *driver, text ), QL_STATUS_IO_ERROR );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: Checksum invalid" } ) );
      EXPECT_EQ( text, exchange.name == std::string( "configCustom" ) ? "held" : bad );
   }
}

TEST_F( Bcm59121Messages, AnotherCommandByteIsADeviceError ) {
   const struct {
      uint8_t code;
      const char* trace;
   } rows[] = {
      { 0xAF, "Error: Failed to read PoE chip. Error code: ffffffaf" },
      { 0x80, "Error: Failed to read PoE chip. Error code: ffffff80" },
      { 0x7F, "Error: Failed to read PoE chip. Error code: 7f" },
      { 0x00, "Error: Failed to read PoE chip. Error code: 0" },
   };

   for ( auto& exchange : exchanges ) {
      for ( auto& row : rows ) {
         SCOPED_TRACE( testing::Message() << exchange.name << " " << row.trace );
         Host::traces.clear();
         chip.replies[exchange.cmd] = { reply( row.code, { { 4, 1 } } ) };
         EXPECT_EQ( exchange.run( *driver, text ), QL_STATUS_DEVICE_ERROR );
         EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, row.trace } ) );
         if ( exchange.name != std::string( "configCustom" ) ) {
            EXPECT_EQ( text, reply( row.code, { { 4, 1 } } ) );
         }
      }
   }
}

TEST_F( Bcm59121Messages, AWrongChecksumHidesAWrongCommandByte ) {
   for ( auto& exchange : exchanges ) {
      SCOPED_TRACE( exchange.name );
      Host::traces.clear();
      chip.replies[exchange.cmd] = { ScriptedPoeChip::corrupt( reply( 0xAF ) ) };
      EXPECT_EQ( exchange.run( *driver, text ), QL_STATUS_IO_ERROR );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "Error: Checksum invalid" } ) );
   }
}

TEST_F( Bcm59121Messages, AShortReplyCountsAsFilledUpWithZeros ) {
   for ( auto& exchange : exchanges ) {
      SCOPED_TRACE( exchange.name );
      // Its missing checksum reads 0, which it is not.
      chip.replies[exchange.cmd] = { std::string( 1, static_cast<char>( exchange.cmd ) ) };
      EXPECT_EQ( exchange.run( *driver, text ), QL_STATUS_IO_ERROR );
      // All zeros have a good checksum, and the command byte of nobody's question here.
      chip.replies[exchange.cmd] = { "" };
      EXPECT_EQ( exchange.run( *driver, text ), QL_STATUS_DEVICE_ERROR );
   }
}

TEST_F( Bcm59121Messages, AnEmptyReplyIsAGoodReceiptOfTheCommandZero ) {
   chip.replies[0x00] = { "" };
   EXPECT_EQ( driver->configSystem( 0x00, 1, 1 ), QL_STATUS_OK );
}

TEST_F( Bcm59121Messages, NoMessageSetsANumberOfRetries ) {
   for ( auto& exchange : exchanges ) {
      exchange.run( *driver, text );
   }
   EXPECT_FALSE( chip.retryCountIsSet );
}

TEST( Bcm59121Waits, LastAlsoWhenTheHostTakesSignals ) {
   using Clock = std::chrono::steady_clock;
   Alarms alarms( 5ms );
   auto begin = Clock::now();
   Drivers::waitMicroseconds( 40000 );
   EXPECT_GE( Clock::now() - begin, 40ms );
   begin = Clock::now();
   Drivers::waitSeconds( 1 );
   EXPECT_GE( Clock::now() - begin, 1s );
   EXPECT_GT( Alarms::count, 100 );
}

TEST_F( Bcm59121MessagesDeathTest, ADeviceWithoutHamEndsTheProcessWhenItIsUsed ) {
   driver->ham = nullptr;
   for ( auto& exchange : exchanges ) {
      EXPECT_DEATH( exchange.run( *driver, text ), assertionFailed( "ham" ) ) << exchange.name;
   }
}

} // namespace
