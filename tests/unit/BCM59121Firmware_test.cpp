#include "Assertion.h"
#include "BCM59121Test.h"
#include "FailingMalloc.h"
#include "FirmwareDirectory.h"

#include <fmt/format.h>

#include <cstdlib>
#include <functional>
#include <numeric>

using Host::TraceLine;
using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr const char* query = "20 FF 05 FF FF FF FF FF FF FF FF 1C";
constexpr const char* clear = "E0 C0 FF FF FF FF FF FF FF FF FF 97";
constexpr const char* load = "E0 40 FF FF FF FF FF FF FF FF FF 17";

constexpr uint8_t runs = 0x02;

class Bcm59121Firmware : public Bcm59121Test {
protected:
   Bcm59121Firmware() {
      make( { { "firmwarePath", "poe.bin" } } );
      chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4 ) };
   }

   ~Bcm59121Firmware() override { free( text ); }

   /** A system status of a chip that runs this revision. */
   static std::string revision( uint8_t first, uint8_t second, uint8_t flags = runs ) {
      return reply( 0x20, { { 7, first }, { 9, flags }, { 10, second } } );
   }

   /** Bytes that count up from 0. */
   static std::string image( size_t size ) {
      std::string bytes( size, '\0' );
      std::iota( bytes.begin(), bytes.end(), '\0' );
      return bytes;
   }

   /** A block as it goes out, filled up with zeros. */
   static std::string block( const std::string& bytes, size_t size ) {
      std::string line = "write E0";
      for ( size_t i = 0; i < size; ++i ) {
         line += fmt::format( " {:02X}", i < bytes.size() ? static_cast<uint8_t>( bytes[i] ) : 0 );
      }
      return line;
   }

   /** A whole run with these blocks. */
   static Log run( const Log& blocks ) {
      Log log { std::string( "write " ) + query, "wait 4000", "read FF 12 no stop",
         std::string( "write " ) + clear, "wait 12000", "read FF 12 no stop", "wait 4000000" };
      log.insert( log.end(), blocks.begin(), blocks.end() );
      for ( auto line : { std::string( "wait 1000000" ), std::string( "write " ) + load,
               std::string( "wait 8000000" ), std::string( "write " ) + query, std::string( "wait 4000" ),
               std::string( "read FF 12 no stop" ) } ) {
         log.push_back( line );
      }
      return log;
   }

   ql_status reprogram( bool skip = false ) {
      free( std::exchange( text, nullptr ) );
      Host::traces.clear();
      return driver->reprogramFirmware( port( 5 ), skip, &text );
   }

   FirmwareDirectory files;
   char* text = nullptr;
};

using Bcm59121FirmwareDeathTest = Bcm59121Firmware;

TEST_F( Bcm59121Firmware, IsClearedWrittenAndLoadedWhenItsRevisionDiffers ) {
   files.add( "poe.bin", "\x03\x04" + image( 70 ) );
   driver->globalConfigDone = true;
   EXPECT_EQ( reprogram(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( run( { block( image( 70 ).substr( 0, 35 ), 35 ),
                                   block( image( 70 ).substr( 35 ), 35 ) } ) ) );
   EXPECT_THAT( Host::traces,
      ElementsAre(
         TraceLine {
            6, "ql_status Drivers::BCM59121::reprogramFirmware(Drivers::BCM59121::PoePort*, bool, char**)" },
         TraceLine { 0, "Current firmware revision 0x01.02" }, TraceLine { 0, "Clearing current image" },
         TraceLine { 0, "Writing firmware" }, TraceLine { 0, "Loading firmware" },
         TraceLine { 0, "New firmware revision 0x03.04" } ) );
   EXPECT_STREQ( text, "0x03.04" );
   EXPECT_FALSE( driver->globalConfigDone );
   EXPECT_THAT( files.opened, ElementsAre( "/usr/share/firmware/poe.bin" ) );
}

TEST_F( Bcm59121Firmware, WritesNothingIntoTheCache ) {
   files.add( "poe.bin", "\x03\x04" + image( 1 ) );
   reprogram();
   for ( auto& cache : driver->poeCache ) {
      EXPECT_EQ( cache.sysStatus, "" );
      EXPECT_EQ( cache.sysStatusTime.tv_sec, 0 );
   }
}

TEST_F( Bcm59121Firmware, LooksAtTheCacheOfPortZeroWhicheverThePort ) {
   driver->poeCache[0].sysStatus = revision( 7, 8 );
   driver->poeCache[0].sysStatusTime = { 999, 0 };
   EXPECT_EQ( reprogram( true ), QL_STATUS_OK );
   EXPECT_STREQ( text, "0x07.08" );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );

   std::swap( driver->poeCache[0], driver->poeCache[5] );
   EXPECT_EQ( reprogram( true ), QL_STATUS_OK );
   EXPECT_STREQ( text, "0x01.02" );
   EXPECT_THAT( chip.takeSent(), ElementsAre( query ) );
}

TEST_F( Bcm59121Firmware, OnItsWayOutIsOnlyTold ) {
   driver->globalConfigDone = true;
   EXPECT_EQ( reprogram( true ), QL_STATUS_OK );
   EXPECT_STREQ( text, "0x01.02" );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( query ) ) );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "Current firmware revision 0x01.02", "Skipping PoE firmware reprogram." ) );
   EXPECT_THAT( files.opened, IsEmpty() );
   EXPECT_TRUE( driver->globalConfigDone );
}

TEST_F( Bcm59121Firmware, OfAChipThatFailsIsToldFromWhatItsReplyHolds ) {
   const struct {
      const char* name;
      std::function<void()> fault;
      ql_status status;
      const char* text;
   } rows[] = {
      { "write", [this] { chip.writeStatuses[0x20] = { QL_STATUS_FAILED }; }, QL_STATUS_FAILED, "0x00.00" },
      { "read", [this] { chip.readStatuses[0x20] = { QL_STATUS_NOT_SUPPORTED }; }, QL_STATUS_NOT_SUPPORTED,
         "0x00.00" },
      { "checksum", [this] { chip.replies[0x20] = { ScriptedPoeChip::corrupt( revision( 5, 6 ) ) }; },
         QL_STATUS_IO_ERROR, "0x05.06" },
      { "error code",
         [this] {
            chip.replies[0x20] = { reply( 0xAF, { { 7, 9 }, { 10, 8 } } ) };
         },
         QL_STATUS_DEVICE_ERROR, "0x09.08" },
      { "short reply", [this] { chip.replies[0x20] = { std::string( "\x20\0\0\0\0\0\0\x0A", 8 ) }; },
         QL_STATUS_IO_ERROR, "0x0a.00" },
      { "no reply at all", [this] { chip.replies[0x20] = { "" }; }, QL_STATUS_DEVICE_ERROR, "0x00.00" },
   };

   for ( auto& row : rows ) {
      row.fault();
      EXPECT_EQ( reprogram( true ), row.status ) << row.name;
      EXPECT_STREQ( text, row.text ) << row.name;
      EXPECT_EQ( Host::tracesOf( 0 ).back(), "Skipping PoE firmware reprogram." ) << row.name;
   }
}

TEST_F( Bcm59121Firmware, RevisionBytesAreShownSignedAndTheTextIsCut ) {
   const struct {
      uint8_t first, second;
      const char* traced;
      const char* text;
   } rows[] = {
      { 0x00, 0x00, "0x00.00", "0x00.00" },
      { 0x7F, 0x0A, "0x7f.0a", "0x7f.0a" },
      { 0x9C, 0x05, "0xffffff9c.05", "0xffffff9" },
      { 0x05, 0x9C, "0x05.ffffff9c", "0x05.ffff" },
      { 0xFF, 0xFF, "0xffffffff.ffffffff", "0xfffffff" },
   };

   for ( auto& row : rows ) {
      chip.replies[0x20] = { revision( row.first, row.second ) };
      reprogram( true );
      EXPECT_EQ( Host::tracesOf( 0 )[0], std::string( "Current firmware revision " ) + row.traced );
      EXPECT_STREQ( text, row.text );
   }
}

TEST_F( Bcm59121Firmware, ANewRevisionIsShownSignedToo ) {
   chip.replies[0x20] = { revision( 1, 2 ), revision( 0x9C, 0x05 ) };
   files.add( "poe.bin", "\x9C\x05" );
   EXPECT_EQ( reprogram(), QL_STATUS_OK );
   EXPECT_STREQ( text, "0xffffff9" );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "New firmware revision 0xffffff9c.05" );
}

TEST_F( Bcm59121Firmware, WithoutMemoryForTheRevisionNothingIsDone ) {
   FailingMalloc malloc( 10 );
   EXPECT_EQ( reprogram(), QL_STATUS_DEVICE_ERROR );
   EXPECT_EQ( text, nullptr );
   EXPECT_THAT(
      Host::tracesOf( 0 ), ElementsAre( "Error: Failed to allocate memory for firmware revision" ) );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
}

TEST_F( Bcm59121Firmware, WithoutAPathThereIsNone ) {
   for ( auto arguments : { Arguments {}, Arguments { { "firmwarePath", "" } } } ) {
      make( arguments );
      // In place of any status before.
      chip.readStatuses[0x20] = { QL_STATUS_FAILED };
      EXPECT_EQ( reprogram(), QL_STATUS_INVALID_ARGUMENT );
      EXPECT_STREQ( text, "0x00.00" );
      EXPECT_EQ( Host::tracesOf( 0 ).back(), "PoE firmware not found." );
      EXPECT_THAT( chip.takeSent(), ElementsAre( query ) );
      EXPECT_THAT( files.opened, IsEmpty() );
   }
}

TEST_F( Bcm59121FirmwareDeathTest, ThatCanNotBeReadEndsTheProcess ) {
   Host::echoTraces = true;
   files.addDirectory( "poe.d" );
   for ( auto path : { "missing.bin", "poe.d", "missing/poe.bin" } ) {
      make( { { "firmwarePath", path } } );
      EXPECT_DEATH( reprogram(),
         AllOf( HasSubstr( std::string( "Unable to read PSE firmware file: /usr/share/firmware/" ) + path ),
            HasSubstr( "Drivers/BCM59121" ), assertionFailed( "0" ), Not( HasSubstr( "Clearing" ) ) ) )
         << path;
   }
}

TEST_F( Bcm59121Firmware, LiesWhereItsPathLeadsExactlyAsGiven ) {
   files.addDirectory( "poe.d" );
   files.add( "poe.bin", "\x01\x02" );
   make( { { "firmwarePath", "poe.d//../poe.bin" } } );
   EXPECT_EQ( reprogram(), QL_STATUS_OK );
   EXPECT_THAT( files.opened, ElementsAre( "/usr/share/firmware/poe.d//../poe.bin" ) );
}

TEST_F( Bcm59121Firmware, OfTheSameRevisionIsLeftAlone ) {
   files.add( "poe.bin", "\x01\x02" + image( 70 ) );
   driver->globalConfigDone = true;
   EXPECT_EQ( reprogram(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( query ) ) );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "Current firmware revision 0x01.02", "PoE firmware is up to date." ) );
   EXPECT_STREQ( text, "0x01.02" );
   EXPECT_TRUE( driver->globalConfigDone );
}

TEST_F( Bcm59121Firmware, OfTheSameRevisionAbove0x80IsLeftAloneToo ) {
   chip.replies[0x20] = { revision( 0x9C, 0x85 ) };
   files.add( "poe.bin", "\x9C\x85" + image( 70 ) );
   EXPECT_EQ( reprogram(), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( query ) );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "PoE firmware is up to date." );
}

TEST_F( Bcm59121Firmware, IsLoadedWhenEitherByteOfItsRevisionDiffers ) {
   for ( auto content : { "\x01\x03", "\x02\x02", "\x02\x01" } ) {
      chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4 ) };
      files.add( "poe.bin", content );
      EXPECT_EQ( reprogram(), QL_STATUS_OK );
      EXPECT_THAT( chip.takeSent(), ElementsAre( query, clear, load, query ) );
   }
}

TEST_F( Bcm59121Firmware, OfTheSameRevisionKeepsTheQuerysFailure ) {
   files.add( "poe.bin", "\x05\x06" );
   chip.replies[0x20] = { ScriptedPoeChip::corrupt( revision( 5, 6 ) ) };
   EXPECT_EQ( reprogram(), QL_STATUS_IO_ERROR );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "PoE firmware is up to date." );
}

TEST_F( Bcm59121Firmware, WithoutAnImageIsClearedAndLoadedWithNoBlock ) {
   for ( auto content : { "\x03\x04", "\x03", "" } ) {
      // Also with a block size that would be none.
      for ( auto size : { "36", "1" } ) {
         make( { { "firmwarePath", "poe.bin" }, { "firmwareDownloadSize", size } } );
         chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4 ) };
         files.add( "poe.bin", content );
         EXPECT_EQ( reprogram(), QL_STATUS_OK );
         EXPECT_THAT( chip.takeLog(), ElementsAreArray( run( {} ) ) );
      }
   }
}

TEST_F( Bcm59121Firmware, GoesOutInFullBlocksFilledUpWithZeros ) {
   const struct {
      const char* downloadSize;
      size_t imageSize, blockSize, blocks;
   } rows[] = {
      { "36", 35, 35, 1 },
      { "36", 36, 35, 2 },
      { "36", 34, 35, 1 },
      { "36", 1, 35, 1 },
      { "36", 105, 35, 3 },
      { "2", 3, 1, 3 },
      { "33", 33, 32, 2 },
      // the size wraps in 8 bits
      { "0", 300, 255, 2 },
      { "0", 255, 255, 1 },
      { "255", 254, 254, 1 },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( testing::Message() << row.imageSize << " bytes by " << row.downloadSize );
      make( { { "firmwarePath", "poe.bin" }, { "firmwareDownloadSize", row.downloadSize } } );
      chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4 ) };
      auto bytes = image( row.imageSize );
      files.add( "poe.bin", "\x03\x04" + bytes );
      Log blocks;
      for ( size_t i = 0; i < row.blocks; ++i ) {
         blocks.push_back( block( bytes.substr( i * row.blockSize ), row.blockSize ) );
      }
      EXPECT_EQ( reprogram(), QL_STATUS_OK );
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( run( blocks ) ) );
   }
}

TEST_F( Bcm59121FirmwareDeathTest, BlocksOfNoBytesEndTheProcessBeforeTheChipIsCleared ) {
   Host::echoTraces = true;
   make( { { "firmwarePath", "poe.bin" }, { "firmwareDownloadSize", "1" } } );
   files.add( "poe.bin", "\x03\x04" + image( 1 ) );
   EXPECT_DEATH( reprogram(), AllOf( assertionFailed( "block > 0" ), Not( HasSubstr( "Clearing" ) ) ) );
}

TEST_F( Bcm59121Firmware, ALoadGoesOnPastEveryFailure ) {
   using Statuses = std::deque<ql_status>;

   const struct {
      const char* name;
      Statuses queryWrites, queryReads, imageWrites, imageReads;
      ql_status status;
   } rows[] = {
      // The chip's answers in order: the first query, the clearing, one block, the load, the last query.
      { "nothing", {}, {}, {}, {}, QL_STATUS_OK },
      { "first query", {}, { QL_STATUS_FAILED }, {}, {}, QL_STATUS_FAILED },
      { "clearing, write", {}, {}, { QL_STATUS_FAILED }, {}, QL_STATUS_FAILED },
      { "clearing, read", {}, {}, {}, { QL_STATUS_FAILED }, QL_STATUS_FAILED },
      { "block", {}, {}, { QL_STATUS_OK, QL_STATUS_FAILED }, {}, QL_STATUS_OK },
      { "load", {}, {}, { QL_STATUS_OK, QL_STATUS_OK, QL_STATUS_FAILED }, {}, QL_STATUS_FAILED },
      { "load has no reply", {}, {}, {}, { QL_STATUS_OK, QL_STATUS_FAILED }, QL_STATUS_OK },
      { "last query, write", { QL_STATUS_OK, QL_STATUS_FAILED }, {}, {}, {}, QL_STATUS_FAILED },
      { "last query, read", {}, { QL_STATUS_OK, QL_STATUS_FAILED }, {}, {}, QL_STATUS_FAILED },
      { "greatest is the first", {}, { QL_STATUS_FAILED, QL_STATUS_DEVICE_ERROR }, { QL_STATUS_IO_ERROR }, {},
         QL_STATUS_FAILED },
      { "greatest is the clearing", {}, { QL_STATUS_NOT_PRESENT, QL_STATUS_DEVICE_ERROR },
         { QL_STATUS_IO_ERROR }, {}, QL_STATUS_IO_ERROR },
      { "greatest is the load", {}, { QL_STATUS_DEVICE_ERROR, QL_STATUS_DEVICE_ERROR },
         { QL_STATUS_NOT_PRESENT, QL_STATUS_OK, QL_STATUS_NOT_SUPPORTED }, {}, QL_STATUS_NOT_SUPPORTED },
      { "greatest is the last", {}, { QL_STATUS_DEVICE_ERROR, QL_STATUS_NOT_SUPPORTED },
         { QL_STATUS_NOT_PRESENT }, {}, QL_STATUS_NOT_SUPPORTED },
   };

   files.add( "poe.bin", "\x03\x04" + image( 35 ) );
   auto sent = block( image( 35 ), 35 ).substr( 6 );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      chip.replies[0x20] = { revision( 1, 2 ) };
      chip.writeStatuses = { { 0x20, row.queryWrites }, { 0xE0, row.imageWrites } };
      chip.readStatuses = { { 0x20, row.queryReads }, { 0xE0, row.imageReads } };
      EXPECT_EQ( reprogram(), row.status );
      EXPECT_THAT( chip.takeSent(), ElementsAre( query, clear, sent, load, query ) );
   }
}

TEST_F( Bcm59121Firmware, AFailedLoadIsAtLeastADeviceError ) {
   const struct {
      const char* name;
      ql_status before, after;
   } rows[] = {
      { "nothing else", QL_STATUS_OK, QL_STATUS_DEVICE_ERROR },
      { "a lesser failure", QL_STATUS_NOT_PRESENT, QL_STATUS_DEVICE_ERROR },
      { "a greater failure", QL_STATUS_IO_ERROR, QL_STATUS_IO_ERROR },
   };

   files.add( "poe.bin", "\x03\x04" );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      driver->globalConfigDone = true;
      chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4, static_cast<uint8_t>( ~runs ) ) };
      chip.writeStatuses[0xE0] = { row.before };
      EXPECT_EQ( reprogram(), row.after );
      EXPECT_EQ( Host::tracesOf( 0 ).back(), "Failed to reprogram firmware" );
      EXPECT_STREQ( text, "0x03.04" );
      EXPECT_TRUE( driver->globalConfigDone );
   }
}

TEST_F( Bcm59121Firmware, AfterAFailedLastQueryTheFirstReplyStands ) {
   const struct {
      const char* name;
      std::function<void()> fault;
      ql_status status;
   } rows[] = {
      { "write",
         [this] {
            chip.writeStatuses[0x20] = { QL_STATUS_OK, QL_STATUS_FAILED };
         },
         QL_STATUS_FAILED },
      { "read",
         [this] {
            chip.readStatuses[0x20] = { QL_STATUS_OK, QL_STATUS_FAILED };
         },
         QL_STATUS_FAILED },
      { "checksum", [this] { chip.replies[0x20][1] = ScriptedPoeChip::corrupt( revision( 3, 4, 0 ) ); },
         QL_STATUS_IO_ERROR },
      { "error code", [this] { chip.replies[0x20][1] = reply( 0xAF ); }, QL_STATUS_DEVICE_ERROR },
   };

   files.add( "poe.bin", "\x03\x04" );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      chip.replies[0x20] = { revision( 1, 2 ), revision( 3, 4, 0 ) };
      row.fault();
      EXPECT_EQ( reprogram(), row.status );
      EXPECT_STREQ( text, "0x01.02" );
      EXPECT_EQ( Host::tracesOf( 0 ).back(), "New firmware revision 0x01.02" );
   }
}

TEST_F( Bcm59121Firmware, ARunWithoutAnyReplyTakesItsBytesAsZero ) {
   files.add( "poe.bin", "\x03\x04" );
   chip.readStatuses[0x20] = { QL_STATUS_FAILED, QL_STATUS_FAILED };
   EXPECT_EQ( reprogram(), QL_STATUS_FAILED );
   EXPECT_STREQ( text, "0x00.00" );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "Failed to reprogram firmware" );
}

} // namespace
