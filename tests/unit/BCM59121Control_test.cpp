#include "BCM59121Test.h"

#include <functional>
#include <limits>

using Host::TraceLine;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

class Bcm59121Control : public Bcm59121Test {
protected:
   /** The MPSS masks that go out for one call after the other; -1 where none goes out. */
   struct Step {
      uint8_t psu;
      bool shutOff;
      const char* sent;
   };

   void expectMasks( const std::vector<Step>& steps, uint8_t id = 5 ) {
      auto target = port( id );
      for ( auto& step : steps ) {
         SCOPED_TRACE( testing::Message() << "PSU " << int( step.psu ) << " " << step.shutOff );
         EXPECT_EQ( driver->setShutOffWithPsu( target, step.psu, step.shutOff ), QL_STATUS_OK );
         EXPECT_THAT( chip.takeLog(), ElementsAreArray( step.sent ? exchange( step.sent ) : Log {} ) );
      }
   }

   /** Byte 3 of the limit message for a port, which must be the one message but for the mode's and a query.
    */
   std::string limitFor( float watts, uint8_t id = 5 ) {
      EXPECT_EQ( driver->setPowerLimit( port( id ), QL_POE_LIMIT_USER, watts ), QL_STATUS_OK );
      for ( auto& message : chip.takeSent() ) {
         if ( message.starts_with( "16" ) ) {
            return message.substr( 9, 2 );
         }
      }
      return "none";
   }

   static constexpr const char* pairsQuery = "3D FF 09 FF FF FF FF FF FF FF FF 3D";
};

TEST_F( Bcm59121Control, ASettingIsOneMessage ) {
   const struct {
      const char* name;
      std::function<ql_status( Port* )> set;
      const char* message;
   } rows[] = {
      { "PSE on", [this]( Port* port ) { return driver->setPse( port, true ); },
         "00 FF 05 01 FF FF FF FF FF FF FF FE" },
      { "PSE off", [this]( Port* port ) { return driver->setPse( port, false ); },
         "00 FF 05 00 FF FF FF FF FF FF FF FD" },
      { "legacy detection", [this]( Port* port ) { return driver->setLegacyDetect( port, true ); },
         "10 FF 05 03 FF FF FF FF FF FF FF 10" },
      { "detection", [this]( Port* port ) { return driver->setLegacyDetect( port, false ); },
         "10 FF 05 02 FF FF FF FF FF FF FF 0F" },
      { "power on", [this]( Port* port ) { return driver->powerOn( port, true ); },
         "01 FF 05 01 FF FF FF FF FF FF FF FF" },
      { "power off", [this]( Port* port ) { return driver->powerOn( port, false ); },
         "03 FF 05 01 FF FF FF FF FF FF FF 01" },
      { "limit by class",
         [this]( Port* port ) { return driver->setPowerLimit( port, QL_POE_LIMIT_CLASS, 15.4F ); },
         "15 FF 05 01 FF FF FF FF FF FF FF 13" },
      { "shut off", [this]( Port* port ) { return driver->setShutOffWithPsu( port, 0, true ); },
         "1E FF 05 02 FF FF FF FF FF FF FF 1D" },
      { "CRC autocorrect", [this]( Port* ) { return driver->setCrcAutocorrect( true ); },
         "4E FF 01 01 FF FF FF FF FF FF FF 48" },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      make();
      EXPECT_EQ( row.set( port( 5 ) ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( row.message ) ) );

      make();
      Host::traces.clear();
      auto cmd = static_cast<uint8_t>( std::stoi( row.message, nullptr, 16 ) );
      chip.writeStatuses[cmd] = { QL_STATUS_FAILED };
      EXPECT_EQ( row.set( port( 5 ) ), QL_STATUS_FAILED );
      EXPECT_THAT( chip.takeLog(), ElementsAre( std::string( "write " ) + row.message ) );
      EXPECT_EQ( Host::tracesOf( 0 ).size(), 1U );

      make();
      Host::traces.clear();
      chip.replies[cmd] = { ScriptedPoeChip::corrupt( reply( cmd ) ) };
      EXPECT_EQ( row.set( port( 5 ) ), QL_STATUS_IO_ERROR );
      EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "Error: Checksum invalid" ) );
      chip.replies.clear();
      chip.takeLog();
   }
}

TEST_F( Bcm59121Control, AMessageCarriesThePortsOwnNumber ) {
   EXPECT_EQ( driver->setPse( port( 0 ), true ), QL_STATUS_OK );
   EXPECT_EQ( driver->setPse( port( 11 ), true ), QL_STATUS_OK );
   EXPECT_EQ( driver->setPse( port( 255 ), true ), QL_STATUS_OK );
   EXPECT_THAT(
      chip.takeSent(), ElementsAre( "00 FF 00 01 FF FF FF FF FF FF FF F9",
                          "00 FF 0B 01 FF FF FF FF FF FF FF 04", "00 FF FF 01 FF FF FF FF FF FF FF F8" ) );
}

TEST_F( Bcm59121Control, APowerSupplysBitIsTheTwoFoldShiftOfItsNumber ) {
   expectMasks( {
      { 0, true, "1E FF 05 02 FF FF FF FF FF FF FF 1D" },
      { 1, true, "1E FF 05 06 FF FF FF FF FF FF FF 21" },
      { 0, false, "1E FF 05 04 FF FF FF FF FF FF FF 1F" },
      { 2, true, "1E FF 05 14 FF FF FF FF FF FF FF 2F" },
      { 1, false, "1E FF 05 10 FF FF FF FF FF FF FF 2B" },
      { 2, false, "1E FF 05 00 FF FF FF FF FF FF FF 1B" },
   } );
}

TEST_F( Bcm59121Control, APowerSupplyBeyondTheMaskChangesNothing ) {
   for ( int psu : { 3, 4, 5, 31, 32, 255 } ) {
      expectMasks( { { static_cast<uint8_t>( psu ), true, nullptr },
         { static_cast<uint8_t>( psu ), false, nullptr } } );
   }
}

TEST_F( Bcm59121Control, AllPowerSuppliesShareBitZeroWhenAskedTo ) {
   make( { { "mpssValueZero", "true" } } );
   expectMasks( {
      { 0, true, "1E FF 05 01 FF FF FF FF FF FF FF 1C" },
      { 1, true, nullptr },
      { 1, false, "1E FF 05 00 FF FF FF FF FF FF FF 1B" },
      { 0, false, nullptr },
      { 255, true, "1E FF 05 01 FF FF FF FF FF FF FF 1C" },
   } );
}

TEST_F( Bcm59121Control, AnUnchangedMaskIsNotSent ) {
   expectMasks( {
      { 0, false, nullptr },
      { 0, true, "1E FF 05 02 FF FF FF FF FF FF FF 1D" },
      { 0, true, nullptr },
   } );
}

TEST_F( Bcm59121Control, AMaskCountsAsSentAlsoWhenItsMessageHasFailed ) {
   chip.writeStatuses[0x1E] = { QL_STATUS_FAILED };
   auto target = port( 5 );
   EXPECT_EQ( driver->setShutOffWithPsu( target, 1, true ), QL_STATUS_FAILED );
   EXPECT_EQ( driver->portMpssMask[5], 0x04 );
   chip.takeLog();
   EXPECT_EQ( driver->setShutOffWithPsu( target, 1, true ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
}

TEST_F( Bcm59121Control, EachPortHasAMaskOfItsOwn ) {
   expectMasks( { { 0, true, "1E FF 05 02 FF FF FF FF FF FF FF 1D" } }, 5 );
   expectMasks( { { 0, true, "1E FF 06 02 FF FF FF FF FF FF FF 1E" } }, 6 );
   EXPECT_EQ( driver->portMpssMask[4], 0 );
   EXPECT_EQ( driver->portMpssMask[5], 2 );
   EXPECT_EQ( driver->portMpssMask[6], 2 );
   EXPECT_EQ( driver->portMpssMask[7], 0 );
}

TEST_F( Bcm59121Control, TwoObjectsOfOnePortShareItsMask ) {
   expectMasks( { { 0, true, "1E FF 05 02 FF FF FF FF FF FF FF 1D" } } );
   expectMasks( { { 0, true, nullptr } } );
}

TEST_F( Bcm59121Control, AnUnknownPortsMaskGoesOutAsTold ) {
   expectMasks( { { 0, true, "1E FF 0C 02 FF FF FF FF FF FF FF 24" },
                   { 0, true, "1E FF 0C 02 FF FF FF FF FF FF FF 24" },
                   { 0, false, "1E FF 0C 00 FF FF FF FF FF FF FF 22" } },
      12 );
   expectMasks( { { 0, true, "1E FF FF 02 FF FF FF FF FF FF FF 17" } }, 255 );
   for ( int i = 0; i < 12; ++i ) {
      EXPECT_EQ( driver->portMpssMask[static_cast<size_t>( i )], 0 ) << i;
   }
}

TEST_F( Bcm59121Control, ALimitByClassDoesNotLookAtTheWatts ) {
   for ( float watts : { 0.0F, -1.0F, 1e30F } ) {
      EXPECT_EQ( driver->setPowerLimit( port( 9 ), QL_POE_LIMIT_CLASS, watts ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeSent(), ElementsAre( "15 FF 09 01 FF FF FF FF FF FF FF 17" ) );
   }
}

TEST_F( Bcm59121Control, ALimitInWattsIsSentBeforeItsMode ) {
   // 15.4 W * 1.03 = 15.862 W, and 79.31 steps of 0.2 W round up to 80.
   EXPECT_EQ( driver->setPowerLimit( port( 5 ), QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_OK );
   auto log = exchange( "16 FF 05 50 FF FF FF FF FF FF FF 63" );
   auto mode = exchange( "15 FF 05 02 FF FF FF FF FF FF FF 14" );
   log.insert( log.end(), mode.begin(), mode.end() );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( log ) );
}

TEST_F( Bcm59121Control, EveryOtherModeMeansALimitInWatts ) {
   EXPECT_EQ(
      driver->setPowerLimit( port( 5 ), static_cast<ql_poe_power_limit_mode>( 2 ), 15.4F ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(),
      ElementsAre( "16 FF 05 50 FF FF FF FF FF FF FF 63", "15 FF 05 02 FF FF FF FF FF FF FF 14" ) );
}

TEST_F( Bcm59121Control, ALimitIsThreePercentMoreInStepsOfAFifthWattRoundedUp ) {
   const struct {
      float watts;
      const char* byte;
   } rows[] = {
      // 0, 0.515, 51.5, 77.25, 79.31, 153.47, 153.985, 154.5, 159.65, 309
      { 0.0F, "00" },
      { 0.1F, "01" },
      { 10.0F, "34" },
      { 15.0F, "4E" },
      { 15.4F, "50" },
      // 103 in single precision; in double precision it is a little more, and 104
      { 20.0F, "67" },
      { 29.8F, "9A" },
      { 29.9F, "9A" },
      { 30.0F, "9B" },
      { 31.0F, "9B" },
      { 60.0F, "9B" },
      { 1e30F, "9B" },
      { std::numeric_limits<float>::infinity(), "9B" },
      // -5.15 rounds up to -5, of which the low 8 bits go out
      { -1.0F, "FB" },
      // defined, whatever is asked for
      { -1e30F, "00" },
      { -std::numeric_limits<float>::infinity(), "00" },
      { std::numeric_limits<float>::quiet_NaN(), "00" },
   };

   for ( auto& row : rows ) {
      EXPECT_EQ( limitFor( row.watts ), row.byte ) << row.watts;
   }
}

TEST_F( Bcm59121Control, AFourPairPortsLimitIsHalvedForAValidAlternativeChannel ) {
   const struct {
      const char* name;
      uint8_t detection;
      float watts;
      const char* byte;
   } rows[] = {
      // 30 W: 154.5 steps, or 77.25
      { "valid", 0x04, 30, "4E" },
      { "valid with high bits", 0x14, 30, "4E" },
      { "open circuit", 0x06, 30, "9B" },
      { "high bits alone", 0x40, 30, "9B" },
      { "unknown", 0x00, 30, "9B" },
      { "more than valid", 0x0C, 30, "9B" },
      // 60 W: 309 steps, or 154.5
      { "clipped", 0x00, 60, "9B" },
      { "halved and rounded up", 0x04, 60, "9B" },
   };

   for ( auto& row : rows ) {
      // The primary channel has no say.
      chip.answer( 0x3D, { { 3, row.detection == 4 ? uint8_t( 6 ) : uint8_t( 4 ) }, { 7, row.detection } } );
      EXPECT_EQ( limitFor( row.watts, 9 ), row.byte ) << row.name;
   }
}

TEST_F( Bcm59121Control, AFourPairPortIsAskedForItsChannelsFirst ) {
   EXPECT_EQ( driver->setPowerLimit( port( 9 ), QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( pairsQuery, "16 FF 09 50 FF FF FF FF FF FF FF 67",
                                    "15 FF 09 02 FF FF FF FF FF FF FF 18" ) );
}

TEST_F( Bcm59121Control, TheFirstFourPairPortIsTheOneBehindTheTwoPairPorts ) {
   driver->setPowerLimit( port( 7 ), QL_POE_LIMIT_USER, 15.4F );
   EXPECT_EQ( chip.takeSent().size(), 2U );
   driver->setPowerLimit( port( 8 ), QL_POE_LIMIT_USER, 15.4F );
   EXPECT_EQ( chip.takeSent().size(), 3U );
}

TEST_F( Bcm59121Control, NothingIsSetWhenTheChannelsCanNotBeAsked ) {
   chip.readStatuses[0x3D] = { QL_STATUS_NOT_SUPPORTED };
   EXPECT_EQ( driver->setPowerLimit( port( 9 ), QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_THAT( chip.takeSent(), ElementsAre( pairsQuery ) );
}

TEST_F( Bcm59121Control, TheModeStaysWhenTheLimitFails ) {
   chip.writeStatuses[0x16] = { QL_STATUS_FAILED };
   EXPECT_EQ( driver->setPowerLimit( port( 5 ), QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_FAILED );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "16 FF 05 50 FF FF FF FF FF FF FF 63" ) );
}

TEST_F( Bcm59121Control, AFailureOfTheModeIsTold ) {
   chip.writeStatuses[0x15] = { QL_STATUS_FAILED };
   EXPECT_EQ( driver->setPowerLimit( port( 5 ), QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_FAILED );
}

TEST_F( Bcm59121Control, ALimitUsesAYoungReplyOfTheChannels ) {
   driver->poeCache[9].perPairStatus = reply( 0x3D, { { 7, 4 } } );
   driver->poeCache[9].perPairStatusTime = { 999, 0 };
   EXPECT_EQ( limitFor( 30, 9 ), "4E" );
   driver->setPowerLimit( port( 9 ), QL_POE_LIMIT_USER, 30 );
   EXPECT_EQ( chip.takeSent().size(), 2U );
}

TEST_F( Bcm59121Control, ALimitDoesNotRefreshTheCache ) {
   chip.answer( 0x3D, { { 7, 4 } } );
   driver->poeCache[9].perPairStatus = "old";
   driver->poeCache[9].perPairStatusTime = { 998, 0 };
   EXPECT_EQ( limitFor( 30, 9 ), "4E" );
   EXPECT_EQ( driver->poeCache[9].perPairStatus, "old" );
   EXPECT_EQ( driver->poeCache[9].perPairStatusTime.tv_sec, 998 );
}

TEST_F( Bcm59121Control, ALimitOfAnUnknownPortIsAlwaysAsked ) {
   for ( int i = 0; i < 2; ++i ) {
      driver->setPowerLimit( port( 200 ), QL_POE_LIMIT_USER, 15.4F );
      EXPECT_THAT(
         chip.takeSent(), ElementsAre( "3D FF C8 FF FF FF FF FF FF FF FF FC",
                             "16 FF C8 50 FF FF FF FF FF FF FF 26", "15 FF C8 02 FF FF FF FF FF FF FF D7" ) );
   }
}

TEST_F( Bcm59121Control, CrcAutocorrectIsSentWhenItChanges ) {
   EXPECT_EQ( driver->setCrcAutocorrect( false ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );

   EXPECT_EQ( driver->setCrcAutocorrect( true ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( "4E FF 01 01 FF FF FF FF FF FF FF 48" ) ) );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "CRC autocorrect has been enabled." ) );
   EXPECT_TRUE( driver->crcAutocorrect );

   EXPECT_EQ( driver->setCrcAutocorrect( true ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );

   Host::traces.clear();
   EXPECT_EQ( driver->setCrcAutocorrect( false ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( "4E FF 01 00 FF FF FF FF FF FF FF 47" ) ) );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "CRC autocorrect has been disabled." ) );
   EXPECT_FALSE( driver->crcAutocorrect );
}

TEST_F( Bcm59121Control, CrcAutocorrectStaysOnWithAFirmwarePath ) {
   make( { { "firmwarePath", "poe.bin" } } );
   EXPECT_EQ( driver->setCrcAutocorrect( false ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "4E FF 01 01 FF FF FF FF FF FF FF 48" ) );
   EXPECT_EQ( driver->setCrcAutocorrect( false ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), IsEmpty() );
   EXPECT_TRUE( driver->crcAutocorrect );
}

TEST_F( Bcm59121Control, CrcAutocorrectCountsAsUnchangedWhenItsMessageFails ) {
   chip.readStatuses[0x4E] = { QL_STATUS_FAILED };
   EXPECT_EQ( driver->setCrcAutocorrect( true ), QL_STATUS_FAILED );
   EXPECT_FALSE( driver->crcAutocorrect );
   EXPECT_THAT( Host::tracesOf( 0 ), ElementsAre( "Error: Failed to read PoE chip" ) );
   chip.takeLog();
   EXPECT_EQ( driver->setCrcAutocorrect( true ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "4E FF 01 01 FF FF FF FF FF FF FF 48" ) );
}

} // namespace
