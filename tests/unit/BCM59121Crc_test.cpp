#include "BCM59121Test.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

using namespace std::chrono_literals;

/** The CRC status, its hidden failures, and the autocorrection that follows from it. */
class Bcm59121Crc : public Bcm59121Test {
protected:
   /** A poll of the CRC status with a reply of its own. */
   bool pollCrc( Port* target, uint8_t result ) {
      chip.answer( 0x2D, { { 8, result } } );
      time.advance( 2s );
      bool ok = false;
      EXPECT_EQ( driver->getCrcStatus( target, &ok ), QL_STATUS_OK );
      return ok;
   }

   static constexpr const char* autocorrectOn = "4E FF 01 01 FF FF FF FF FF FF FF 48";
   static constexpr const char* autocorrectOff = "4E FF 01 00 FF FF FF FF FF FF FF 47";
   static constexpr const char* chipStatusQuery = "2D FF 00 01 FF FF FF FF FF FF FF 26";
   static constexpr const char* channelCrcQuery = "4C FF 00 01 FF FF FF FF FF FF FF 45";
};

TEST_F( Bcm59121Crc, TheCrcQueryGoesToThePortsGroup ) {
   const struct {
      const char* name;
      Arguments arguments;
      uint8_t id;
      const char* query;
   } rows[] = {
      { "chip status of group 0", {}, 7, "2D FF 00 01 FF FF FF FF FF FF FF 26" },
      { "chip status of group 1", {}, 8, "2D FF 01 01 FF FF FF FF FF FF FF 27" },
      { "channel CRC of group 0", { { "firmwarePath", "poe.bin" } }, 7,
         "4C FF 00 01 FF FF FF FF FF FF FF 45" },
      { "channel CRC of group 1", { { "firmwarePath", "poe.bin" } }, 8,
         "4C FF 01 01 FF FF FF FF FF FF FF 46" },
      { "a path that is empty", { { "firmwarePath", "" } }, 7, "4C FF 00 01 FF FF FF FF FF FF FF 45" },
   };

   for ( auto& row : rows ) {
      make( row.arguments );
      bool ok;
      EXPECT_EQ( driver->getCrcStatus( port( row.id ), &ok ), QL_STATUS_OK ) << row.name;
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( row.query ) ) ) << row.name;
   }
}

TEST_F( Bcm59121Crc, WithAFirmwarePathAnyChannelsBitTwoIsAFailure ) {
   make( { { "firmwarePath", "poe.bin" } } );

   const struct {
      const char* name;
      ScriptedPoeChip::Bytes bytes;
      bool ok;
   } rows[] = {
      { "all clear", {}, true },
      { "first", { { 3, 0x04 } }, false },
      { "second", { { 4, 0x04 } }, false },
      { "third", { { 5, 0x04 } }, false },
      { "fourth", { { 6, 0x04 } }, false },
      { "fifth", { { 7, 0x04 } }, false },
      { "sixth", { { 8, 0x04 } }, false },
      { "seventh", { { 9, 0x04 } }, false },
      { "last", { { 10, 0x04 } }, false },
      { "in front of the channels", { { 2, 0x04 } }, true },
      { "other bits", { { 3, 0xFB }, { 10, 0xFB } }, true },
      { "all bits", { { 3, 0xFF } }, false },
   };

   auto target = port( 5 );
   for ( auto& row : rows ) {
      chip.answer( 0x4C, row.bytes );
      time.advance( 2s );
      bool ok = !row.ok;
      EXPECT_EQ( driver->getCrcStatus( target, &ok ), QL_STATUS_OK ) << row.name;
      EXPECT_EQ( ok, row.ok ) << row.name;
      EXPECT_THAT( chip.takeSent(), ElementsAre( channelCrcQuery ) ) << row.name;
      EXPECT_EQ( target->crcFailCountdown, 3 ) << row.name;
   }
}

TEST_F( Bcm59121Crc, ThreeFailingCrcPollsAreHidden ) {
   auto target = port( 5 );
   for ( int left : { 2, 1, 0 } ) {
      EXPECT_TRUE( pollCrc( target, 0 ) );
      EXPECT_EQ( target->crcFailCountdown, left );
      EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery ) );
   }
   EXPECT_FALSE( pollCrc( target, 0 ) );
   EXPECT_EQ( target->crcFailCountdown, 0 );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery, autocorrectOn ) );
   EXPECT_FALSE( pollCrc( target, 0 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery ) );

   EXPECT_TRUE( pollCrc( target, 1 ) );
   EXPECT_EQ( target->crcFailCountdown, 3 );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery, autocorrectOff ) );
   EXPECT_TRUE( pollCrc( target, 1 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery ) );
}

TEST_F( Bcm59121Crc, EachPortHasFailuresOfItsOwnToHide ) {
   auto first = port( 5 );
   auto second = port( 6 );
   for ( bool expected : { true, true, true, false } ) {
      EXPECT_EQ( pollCrc( first, 0 ), expected );
   }
   EXPECT_EQ( second->crcFailCountdown, 3 );
   EXPECT_TRUE( pollCrc( second, 0 ) );
   EXPECT_EQ( first->crcFailCountdown, 0 );
}

TEST_F( Bcm59121Crc, AFailedQueryLeavesTheStatusAlone ) {
   for ( bool before : { true, false } ) {
      bool ok = before;
      chip.readStatuses[0x2D] = { QL_STATUS_FAILED };
      EXPECT_EQ( driver->getCrcStatus( port( 5 ), &ok ), QL_STATUS_FAILED );
      EXPECT_EQ( ok, before );
   }
}

TEST_F( Bcm59121Crc, AnyBitOfTheCrcByteMeansThatItHasPassed ) {
   auto target = port( 5 );
   for ( int result : { 1, 2, 0x80, 0xFF } ) {
      pollCrc( target, 0 );
      EXPECT_EQ( target->crcFailCountdown, 2 );
      EXPECT_TRUE( pollCrc( target, static_cast<uint8_t>( result ) ) );
      EXPECT_EQ( target->crcFailCountdown, 3 );
   }
}

TEST_F( Bcm59121Crc, PollsOfOneReplyCountEach ) {
   auto target = port( 5 );
   bool ok = false;
   for ( bool expected : { true, true, true, false } ) {
      EXPECT_EQ( driver->getCrcStatus( target, &ok ), QL_STATUS_OK );
      EXPECT_EQ( ok, expected );
   }
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery, autocorrectOn ) );
}

TEST_F( Bcm59121Crc, TheLastGroupToFailOwnsAutocorrect ) {
   auto first = port( 0 );
   auto second = port( 8 );
   first->crcFailCountdown = second->crcFailCountdown = 0;
   EXPECT_FALSE( pollCrc( first, 0 ) );
   EXPECT_EQ( driver->crcAutocorrectChip, 0 );
   EXPECT_FALSE( pollCrc( second, 0 ) );
   EXPECT_EQ( driver->crcAutocorrectChip, 1 );
   chip.takeLog();

   EXPECT_TRUE( pollCrc( first, 1 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery ) );
   EXPECT_TRUE( pollCrc( second, 1 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "2D FF 01 01 FF FF FF FF FF FF FF 27", autocorrectOff ) );
}

TEST_F( Bcm59121Crc, AnotherPortOfTheOwningGroupTurnsAutocorrectOff ) {
   auto failing = port( 0 );
   failing->crcFailCountdown = 0;
   EXPECT_FALSE( pollCrc( failing, 0 ) );
   chip.takeLog();
   EXPECT_TRUE( pollCrc( port( 1 ), 1 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( chipStatusQuery, autocorrectOff ) );
}

TEST_F( Bcm59121Crc, ACrcStatusIsGoodAlsoWhenAutocorrectCanNotBeSet ) {
   auto target = port( 5 );
   target->crcFailCountdown = 0;
   chip.writeStatuses[0x4E] = { QL_STATUS_FAILED, QL_STATUS_OK, QL_STATUS_FAILED };
   EXPECT_FALSE( pollCrc( target, 0 ) );
   EXPECT_FALSE( driver->crcAutocorrect );
   EXPECT_FALSE( pollCrc( target, 0 ) );
   EXPECT_TRUE( driver->crcAutocorrect );
   EXPECT_TRUE( pollCrc( target, 1 ) );
   EXPECT_TRUE( driver->crcAutocorrect );
   EXPECT_EQ( driver->poeCache[5].crcStatus, reply( 0x2D, { { 8, 1 } } ) );
}

} // namespace
