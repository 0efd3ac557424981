#include "Assertion.h"
#include "BCM59121Test.h"
#include "Drivers/Dummy.h"
#include "FirmwareDirectory.h"
#include "ScriptedHam.h"

#include <algorithm>

using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using namespace std::chrono_literals;

constexpr const char* query = "20 FF 05 FF FF FF FF FF FF FF FF 1C";
constexpr const char* global17 = "17 FF 00 FF FF FF FF FF FF FF FF 0E";
constexpr const char* autocorrect = "4E FF 01 01 FF FF FF FF FF FF FF 48";
constexpr const char* global0A = "0A FF 6D 01 2F 01 FF FF FF FF FF A2";
constexpr const char* port12 = "12 FF 05 00 FF FF FF FF FF FF FF 0F";
constexpr const char* port08 = "08 FF 05 00 FF FF FF FF FF FF FF 05";
constexpr const char* port1E = "1E FF 05 00 FF FF FF FF FF FF FF 1B";

class Bcm59121Startup : public Bcm59121Test {
protected:
   Bcm59121Startup() {
      loadTopology( "CpuCpld" );
      cpld.ham = &cpldHam;
      Component::DeviceBase::devices[20] = &cpld;
   }

   ~Bcm59121Startup() override { Component::DeviceBase::devices.clear(); }

   /** `keys` are further ones of the device, each with a comma in front. */
   static void loadTopology( const std::string& label, const std::string& keys = "" ) {
      auto text =
         R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [ { "did": 20, "label": ")" +
         label + R"(", "driver": null, "address": { "address": 48 })" + keys + " } ] } ]";
      ASSERT_EQ( Topology::loadTopology( text.c_str() ), QL_STATUS_OK );
      Host::traces.clear();
   }

   /** The lines of the driver, without those of finding the CPLD. */
   static Log lines() {
      Log texts;
      for ( auto& line : Host::tracesOf( 0 ) ) {
         if ( !line.starts_with( "looking for already" ) && !line.starts_with( "using previously" ) ) {
            texts.push_back( line );
         }
      }
      return texts;
   }

   static Log together( const std::vector<Log>& parts ) {
      Log all;
      for ( auto& part : parts ) {
         all.insert( all.end(), part.begin(), part.end() );
      }
      return all;
   }

   ScriptedHam cpldHam;
   Drivers::Dummy cpld;
};

using Bcm59121StartupDeathTest = Bcm59121Startup;

/** The whole map of 12 ports, of which 8 to 11 are 4-pair ports on channels 0 to 7 of group 1. */
const std::vector<std::string> rowsOf12Ports {
   "0E FF 00 00 00 00 00 01 00 01 FF 0E",
   "0E FF 01 00 00 01 01 01 00 01 FF 11",
   "0E FF 02 00 00 02 02 01 00 01 FF 14",
   "0E FF 03 00 00 03 03 01 00 01 FF 17",
   "0E FF 04 00 00 04 04 01 00 01 FF 1A",
   "0E FF 05 00 00 05 05 01 00 01 FF 1D",
   "0E FF 06 00 00 06 06 01 00 01 FF 20",
   "0E FF 07 00 00 07 07 01 00 01 FF 23",
   "0E FF 08 01 01 00 01 01 00 01 FF 19",
   "0E FF 09 01 01 02 03 01 00 01 FF 1E",
   "0E FF 0A 01 01 04 05 01 00 01 FF 23",
   "0E FF 0B 01 01 06 07 01 00 01 FF 28",
};

TEST_F( Bcm59121Startup, TheFirstPortBringsTheControllerUpToo ) {
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(),
      ElementsAreArray( together( { exchange( query ), exchange( global17, 20000 ), exchange( global0A ),
         exchange( port12 ), exchange( port08 ), exchange( port1E ) } ) ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 0, "PoE port init: configuring PoE port 5" },
                       Host::TraceLine { 0, "Global level configurations." },
                       Host::TraceLine { 6, "ql_status Drivers::BCM59121::setCrcAutocorrect(bool)" } ) );
   EXPECT_TRUE( driver->globalConfigDone );
   EXPECT_THAT( cpldHam.log, IsEmpty() );
}

TEST_F( Bcm59121Startup, WithAFirmwarePathAutocorrectIsTurnedOn ) {
   make( { { "firmwarePath", "poe.bin" } } );
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(),
      ElementsAreArray( together( { exchange( query ), exchange( global17, 20000 ), exchange( autocorrect ),
         exchange( global0A ), exchange( port12 ), exchange( port08 ), exchange( port1E ) } ) ) );
   EXPECT_THAT(
      Host::tracesOf( 0 ), ElementsAre( "PoE port init: configuring PoE port 5",
                              "Global level configurations.", "CRC autocorrect has been enabled." ) );
}

TEST_F( Bcm59121Startup, FurtherPortsAreStartedAlone ) {
   driver->portInit( port( 5 ) );
   chip.takeLog();
   Host::traces.clear();
   EXPECT_EQ( driver->portInit( port( 6 ) ), QL_STATUS_OK );
   EXPECT_EQ( driver->portInit( port( 9 ) ), QL_STATUS_OK );
   EXPECT_THAT(
      chip.takeSent(), ElementsAre( "12 FF 06 00 FF FF FF FF FF FF FF 10",
                          "08 FF 06 00 FF FF FF FF FF FF FF 06", "1E FF 06 00 FF FF FF FF FF FF FF 1C",
                          "12 FF 09 00 FF FF FF FF FF FF FF 13", "08 FF 09 00 FF FF FF FF FF FF FF 09",
                          "1C FF 09 05 FF FF FF FF FF FF FF 22", "1E FF 09 00 FF FF FF FF FF FF FF 1F" ) );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "PoE port init: configuring PoE port 6", "PoE port init: configuring PoE port 9" ) );
}

TEST_F( Bcm59121Startup, AFourPairPortsMessagesAreEachWaitedForAndRead ) {
   driver->portInit( port( 5 ) );
   chip.takeLog();
   EXPECT_EQ( driver->portInit( port( 9 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(),
      ElementsAreArray( together( { exchange( "12 FF 09 00 FF FF FF FF FF FF FF 13" ),
         exchange( "08 FF 09 00 FF FF FF FF FF FF FF 09" ), exchange( "1C FF 09 05 FF FF FF FF FF FF FF 22" ),
         exchange( "1E FF 09 00 FF FF FF FF FF FF FF 1F" ) } ) ) );
}

TEST_F( Bcm59121Startup, TheChipHasItsTimeAfterItIsTakenOutOfReset ) {
   class NotingHam : public ScriptedHam {
   public:
      ql_status execute() override {
         waitsBefore = VirtualTime::current->waits.size();
         return ScriptedHam::execute();
      }

      size_t waitsBefore = 77;
   } noting;

   make( { { "resetReg", "5" }, { "outOfResetVal", "0" } } );
   cpld.ham = &noting;
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_EQ( noting.waitsBefore, 0U );
   EXPECT_EQ( time.waits.at( 0 ), 800ms );
}

TEST_F( Bcm59121Startup, OnlyFourPairPortsGetAPowerMode ) {
   const struct {
      const char* numAtPorts;
      int id;
      bool mode;
   } rows[] = { { "8", 7, false }, { "8", 8, true }, { "12", 11, false }, { "0", 0, true },
      { "12", 12, true } };

   for ( auto& row : rows ) {
      SCOPED_TRACE( testing::Message() << row.numAtPorts << " " << row.id );
      make( { { "numAtPorts", row.numAtPorts } } );
      driver->portInit( port( row.id ) );
      auto sent = chip.takeSent();
      auto modes = std::count_if(
         sent.begin(), sent.end(), []( const std::string& message ) { return message.starts_with( "1C" ); } );
      EXPECT_EQ( modes, row.mode ? 1 : 0 );
   }
}

TEST_F( Bcm59121Startup, APortsMaskIsClearedAndSentInAnyCase ) {
   for ( int id : { 0, 5, 11 } ) {
      std::fill_n( driver->portMpssMask.get(), 12, uint8_t( 0xFF ) );
      driver->portInit( port( id ) );
      for ( int other = 0; other < 12; ++other ) {
         EXPECT_EQ( driver->portMpssMask.get()[other], other == id ? 0 : 0xFF ) << id << " " << other;
      }
   }
   chip.takeLog();
   driver->portInit( port( 5 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( port12, port08, port1E ) );
}

TEST_F( Bcm59121Startup, AnUnknownPortIsStartedLikeAnyOther ) {
   EXPECT_EQ( driver->portInit( port( 200 ) ), QL_STATUS_OK );
   auto sent = chip.takeSent();
   ASSERT_EQ( sent.size(), 7U );
   EXPECT_THAT( Log( sent.begin() + 3, sent.end() ),
      ElementsAre( "12 FF C8 00 FF FF FF FF FF FF FF D2", "08 FF C8 00 FF FF FF FF FF FF FF C8",
         "1C FF C8 05 FF FF FF FF FF FF FF E1", "1E FF C8 00 FF FF FF FF FF FF FF DE" ) );
}

TEST_F( Bcm59121Startup, ADriverOfNoPortsHasNoCacheToLookAt ) {
   make( { { "numPorts", "0" }, { "numAtPorts", "0" } } );
   EXPECT_EQ( driver->portInit( port( 0 ) ), QL_STATUS_OK );
   EXPECT_EQ( chip.takeSent().size(), 7U );
}

TEST_F( Bcm59121Startup, AFailureStopsNothingAndTheGreatestIsTold ) {
   make( { { "firmwarePath", "poe.bin" } } );
   const Log all { "20 FF 09 FF FF FF FF FF FF FF FF 20", global17, autocorrect, global0A,
      "12 FF 09 00 FF FF FF FF FF FF FF 13", "08 FF 09 00 FF FF FF FF FF FF FF 09",
      "1C FF 09 05 FF FF FF FF FF FF FF 22", "1E FF 09 00 FF FF FF FF FF FF FF 1F" };

   const struct {
      const char* name;
      std::map<uint8_t, ql_status> writes;
      ql_status status;
   } rows[] = {
      { "the query does not count", { { 0x20, QL_STATUS_FAILED } }, QL_STATUS_OK },
      { "0x17", { { 0x17, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x4E", { { 0x4E, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x0A", { { 0x0A, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x12", { { 0x12, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x08", { { 0x08, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x1C", { { 0x1C, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "0x1E", { { 0x1E, QL_STATUS_FAILED } }, QL_STATUS_FAILED },
      { "the first is the greatest", { { 0x17, QL_STATUS_NOT_SUPPORTED }, { 0x1E, QL_STATUS_DEVICE_ERROR } },
         QL_STATUS_NOT_SUPPORTED },
      { "the last is the greatest", { { 0x17, QL_STATUS_DEVICE_ERROR }, { 0x1E, QL_STATUS_NOT_SUPPORTED } },
         QL_STATUS_NOT_SUPPORTED },
      { "one in the middle is the greatest",
         { { 0x4E, QL_STATUS_DEVICE_ERROR }, { 0x12, QL_STATUS_IO_ERROR }, { 0x1C, QL_STATUS_NOT_PRESENT } },
         QL_STATUS_IO_ERROR },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      driver->globalConfigDone = false;
      driver->crcAutocorrect = false;
      for ( auto& [cmd, status] : row.writes ) {
         chip.writeStatuses[cmd] = { status };
      }
      EXPECT_EQ( driver->portInit( port( 9 ) ), row.status );
      EXPECT_THAT( chip.takeSent(), ElementsAreArray( all ) );
      EXPECT_TRUE( driver->globalConfigDone );
   }
}

TEST_F( Bcm59121Startup, TheChipIsTakenOutOfResetFirst ) {
   make( { { "resetReg", "4660" }, { "outOfResetVal", "7" } } );
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( cpldHam.log, ElementsAre( "prepare", "write8 0x1234=07 /1", "execute" ) );
   EXPECT_THAT( chip.takeLog(),
      ElementsAreArray( together( { { "wait 800000" }, exchange( query ), exchange( global17, 20000 ),
         exchange( global0A ), exchange( port12 ), exchange( port08 ), exchange( port1E ) } ) ) );

   EXPECT_EQ( driver->portInit( port( 6 ) ), QL_STATUS_OK );
   EXPECT_EQ( cpldHam.log.size(), 3U );
}

TEST_F( Bcm59121Startup, AFailedResetEndsTheStartAndTheNextOneTriesAgain ) {
   make( { { "resetReg", "1" }, { "outOfResetVal", "1" } } );
   cpldHam.statuses = { QL_STATUS_NOT_SUPPORTED };
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_THAT( lines(), ElementsAre( "PoE port init: configuring PoE port 5", "Global level configurations.",
                            "Taking PoE chip out of reset failed." ) );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
   EXPECT_FALSE( driver->globalConfigDone );

   EXPECT_EQ( driver->portInit( port( 6 ) ), QL_STATUS_OK );
   EXPECT_EQ( cpldHam.log.size(), 6U );
   EXPECT_EQ( chip.takeSent().size(), 6U );
   EXPECT_TRUE( driver->globalConfigDone );
}

TEST_F( Bcm59121Startup, OneResetArgumentAloneLeavesTheChipInReset ) {
   make( { { "resetReg", "1" } } );
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( cpldHam.log, IsEmpty() );
}

TEST_F( Bcm59121StartupDeathTest, AMissingCpldEndsTheProcess ) {
   Host::echoTraces = true;
   loadTopology( "Cpld" );
   make( { { "resetReg", "1" }, { "outOfResetVal", "1" } } );
   EXPECT_DEATH( driver->portInit( port( 5 ) ),
      AllOf( HasSubstr( "Unable to locate device CpuCpld" ), assertionFailed( "device" ) ) );
}

TEST_F( Bcm59121StartupDeathTest, ACpldWithoutHamEndsTheProcess ) {
   cpld.ham = nullptr;
   make( { { "resetReg", "1" }, { "outOfResetVal", "1" } } );
   EXPECT_DEATH( driver->portInit( port( 5 ) ), assertionFailed( "ham" ) );
}

TEST_F( Bcm59121StartupDeathTest, ACpldThatNobodyHasMadeIsMadeAsADummy ) {
   Component::DeviceBase::devices.clear();
   loadTopology( "CpuCpld", R"(, "provideHam": 0)" );
   make( { { "resetReg", "1" }, { "outOfResetVal", "1" } } );
   // Without a Ham it can't be used; that it was asked for under this driver shows before.
   Host::echoTraces = true;
   EXPECT_DEATH( driver->portInit( port( 5 ) ),
      AllOf( HasSubstr( "creating HardwareDevice Dummy" ), assertionFailed( "ham" ) ) );
}

TEST_F( Bcm59121Startup, TheStatusIsLookedUpInTheCacheOfPortZero ) {
   driver->poeCache[0].sysStatus = reply( 0x20 );
   driver->poeCache[0].sysStatusTime = { 999, 0 };
   driver->portInit( port( 5 ) );
   EXPECT_THAT( chip.takeSent(), ElementsAre( global17, global0A, port12, port08, port1E ) );
}

TEST_F( Bcm59121Startup, TheStatusIsNotKept ) {
   driver->portInit( port( 0 ) );
   EXPECT_EQ( driver->poeCache[0].sysStatus, "" );
   EXPECT_EQ( driver->poeCache[0].sysStatusTime.tv_sec, 0 );
}

TEST_F( Bcm59121Startup, AChipWithoutImageGetsItsFirmware ) {
   FirmwareDirectory files;
   files.add( "poe.bin", "\x03\x04" );
   make( { { "firmwarePath", "poe.bin" } } );
   chip.replies[0x20] = { reply( 0xAF ), reply( 0xAF ), reply( 0x20, { { 7, 3 }, { 9, 2 }, { 10, 4 } } ) };
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(),
      ElementsAre( query, query, "E0 C0 FF FF FF FF FF FF FF FF FF 97", "E0 40 FF FF FF FF FF FF FF FF FF 17",
         query, global17, autocorrect, global0A, port12, port08, port1E ) );
   EXPECT_THAT(
      lines(), ElementsAre( "PoE port init: configuring PoE port 5", "Global level configurations.",
                  "Error: Failed to read PoE chip. Error code: ffffffaf",
                  "Error: Failed to read PoE chip. Error code: ffffffaf", "Current firmware revision 0x00.00",
                  "Clearing current image", "Writing firmware", "Loading firmware",
                  "New firmware revision 0x03.04", "CRC autocorrect has been enabled." ) );
   EXPECT_TRUE( driver->globalConfigDone );
}

TEST_F( Bcm59121Startup, AFailureOfTheFirmwareIsNotTold ) {
   chip.replies[0x20] = { reply( 0xAF ) };
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( query, query, global17, global0A, port12, port08, port1E ) );
   EXPECT_TRUE( Host::hasTraced( 0, "PoE firmware not found." ) );
}

TEST_F( Bcm59121Startup, OnlyTheErrorCodeOfAMissingImageLoadsFirmware ) {
   const struct {
      const char* name;
      std::string reply;
   } rows[] = {
      { "another error code", reply( 0xAE ) },
      { "a wrong checksum", ScriptedPoeChip::corrupt( reply( 0xAF ) ) },
      { "a good reply with the code elsewhere", reply( 0x20, { { 1, 0xAF } } ) },
      { "no reply at all", "" },
   };

   for ( auto& row : rows ) {
      driver->globalConfigDone = false;
      chip.replies[0x20] = { row.reply };
      EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK ) << row.name;
      EXPECT_THAT( chip.takeSent(), ElementsAre( query, global17, global0A, port12, port08, port1E ) )
         << row.name;
   }
}

TEST_F( Bcm59121Startup, ALoadedFirmwareMakesTheNextStartGlobal ) {
   FirmwareDirectory files;
   files.add( "poe.bin", "\x03\x04" );
   make( { { "firmwarePath", "poe.bin" }, { "resetReg", "1" }, { "outOfResetVal", "1" } } );
   driver->portInit( port( 5 ) );
   chip.replies[0x20] = { reply( 0x20 ), reply( 0x20, { { 9, 2 } } ) };
   char* revision = nullptr;
   EXPECT_EQ( driver->reprogramFirmware( port( 5 ), false, &revision ), QL_STATUS_OK );
   free( revision );
   chip.takeLog();
   EXPECT_EQ( driver->portInit( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( query, global17, global0A, port12, port08, port1E ) );
   EXPECT_EQ( cpldHam.log.size(), 6U );
}

TEST_F( Bcm59121Startup, ThePortMapIsARowForEachPort ) {
   EXPECT_EQ( driver->configPortMap( port( 5 ) ), QL_STATUS_OK );
   std::vector<Log> parts { exchange( query ), exchange( "02 FF 02 0C FF FF FF FF FF FF FF 08", 12000 ),
      { "wait 400000" } };
   for ( auto& row : rowsOf12Ports ) {
      parts.push_back( exchange( row, 12000 ) );
   }
   parts.insert(
      parts.end(), { exchange( "02 FF 03 FF FF FF FF FF FF FF FF FC", 12000 ), { "wait 400000" },
                      exchange( "E0 F0 FF FF FF FF FF FF FF FF FF C7", 12000 ), { "wait 400000" } } );
   EXPECT_THAT( chip.takeLog(), ElementsAreArray( together( parts ) ) );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 0, "Configuring 4-pair port mapping" } ) );
}

TEST_F( Bcm59121Startup, TheChannelsOfAPairNeedNotBeginWithAGroup ) {
   const struct {
      const char* numPorts;
      const char* numAtPorts;
      Log sent;
   } rows[] = {
      { "3", "1",
         { query, "02 FF 02 03 FF FF FF FF FF FF FF FF", "0E FF 00 00 00 00 00 01 00 01 FF 0E",
            "0E FF 01 01 00 01 02 01 00 01 FF 13", "0E FF 02 01 00 03 04 01 00 01 FF 18",
            "02 FF 03 FF FF FF FF FF FF FF FF FC", "E0 F0 FF FF FF FF FF FF FF FF FF C7" } },
      { "0", "0",
         { query, "02 FF 02 00 FF FF FF FF FF FF FF FC", "02 FF 03 FF FF FF FF FF FF FF FF FC",
            "E0 F0 FF FF FF FF FF FF FF FF FF C7" } },
      // The last two begin the second group.
      { "10", "10",
         { query, "02 FF 02 0A FF FF FF FF FF FF FF 06", "0E FF 00 00 00 00 00 01 00 01 FF 0E",
            "0E FF 01 00 00 01 01 01 00 01 FF 11", "0E FF 02 00 00 02 02 01 00 01 FF 14",
            "0E FF 03 00 00 03 03 01 00 01 FF 17", "0E FF 04 00 00 04 04 01 00 01 FF 1A",
            "0E FF 05 00 00 05 05 01 00 01 FF 1D", "0E FF 06 00 00 06 06 01 00 01 FF 20",
            "0E FF 07 00 00 07 07 01 00 01 FF 23", "0E FF 08 00 01 00 00 01 00 01 FF 17",
            "0E FF 09 00 01 01 01 01 00 01 FF 1A", "02 FF 03 FF FF FF FF FF FF FF FF FC",
            "E0 F0 FF FF FF FF FF FF FF FF FF C7" } },
      // Channels 7 and 8: the second counts as channel 0, of the first one's group.
      { "8", "7",
         { query, "02 FF 02 08 FF FF FF FF FF FF FF 04", "0E FF 00 00 00 00 00 01 00 01 FF 0E",
            "0E FF 01 00 00 01 01 01 00 01 FF 11", "0E FF 02 00 00 02 02 01 00 01 FF 14",
            "0E FF 03 00 00 03 03 01 00 01 FF 17", "0E FF 04 00 00 04 04 01 00 01 FF 1A",
            "0E FF 05 00 00 05 05 01 00 01 FF 1D", "0E FF 06 00 00 06 06 01 00 01 FF 20",
            "0E FF 07 01 00 07 00 01 00 01 FF 1D", "02 FF 03 FF FF FF FF FF FF FF FF FC",
            "E0 F0 FF FF FF FF FF FF FF FF FF C7" } },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( testing::Message() << row.numPorts << " " << row.numAtPorts );
      make( { { "numPorts", row.numPorts }, { "numAtPorts", row.numAtPorts } } );
      EXPECT_EQ( driver->configPortMap( port( 5 ) ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeSent(), ElementsAreArray( row.sent ) );
   }
}

TEST_F( Bcm59121Startup, APortMapInForceIsLeftAlone ) {
   for ( int flags : { 0x08, 0xFF } ) {
      chip.answer( 0x20, { { 9, static_cast<uint8_t>( flags ) } } );
      EXPECT_EQ( driver->configPortMap( port( 5 ) ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( exchange( query ) ) );
   }
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( Bcm59121Startup, OtherFlagsAreNoPortMap ) {
   chip.answer( 0x20, { { 9, 0xF7 } } );
   driver->configPortMap( port( 5 ) );
   EXPECT_EQ( chip.takeSent().size(), 16U );
}

TEST_F( Bcm59121Startup, AFailedQueryMapsAsIfNoMapWereInForce ) {
   chip.replies[0x20] = { ScriptedPoeChip::corrupt( reply( 0x20, { { 9, 0x08 } } ) ) };
   EXPECT_EQ( driver->configPortMap( port( 5 ) ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( chip.takeSent().size(), 16U );
}

TEST_F( Bcm59121Startup, ThePortMapIsLookedUpInItsPortsCacheAndNotKept ) {
   driver->poeCache[5].sysStatus = reply( 0x20, { { 9, 0x08 } } );
   driver->poeCache[5].sysStatusTime = { 999, 0 };
   EXPECT_EQ( driver->configPortMap( port( 5 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );

   chip.answer( 0x20, { { 9, 0x08 } } );
   EXPECT_EQ( driver->configPortMap( port( 6 ) ), QL_STATUS_OK );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "20 FF 06 FF FF FF FF FF FF FF FF 1D" ) );
   EXPECT_EQ( driver->poeCache[6].sysStatus, "" );
   EXPECT_EQ( driver->poeCache[6].sysStatusTime.tv_sec, 0 );
}

TEST_F( Bcm59121Startup, AFailureStopsNoPortMapAndTheGreatestIsTold ) {
   using Statuses = std::deque<ql_status>;
   Statuses lastOf12( 11, QL_STATUS_OK );
   lastOf12.push_back( QL_STATUS_FAILED );

   const struct {
      const char* name;
      Statuses query, announce, row, last;
      ql_status status;
   } rows[] = {
      { "query", { QL_STATUS_FAILED }, {}, {}, {}, QL_STATUS_FAILED },
      { "announcement", {}, { QL_STATUS_FAILED }, {}, {}, QL_STATUS_FAILED },
      { "end of rows", {}, { QL_STATUS_OK, QL_STATUS_FAILED }, {}, {}, QL_STATUS_FAILED },
      { "first row", {}, {}, { QL_STATUS_FAILED }, {}, QL_STATUS_FAILED },
      { "last row", {}, {}, lastOf12, {}, QL_STATUS_FAILED },
      { "last step", {}, {}, {}, { QL_STATUS_FAILED }, QL_STATUS_FAILED },
      { "the query is the floor", { QL_STATUS_IO_ERROR }, { QL_STATUS_DEVICE_ERROR }, {}, {},
         QL_STATUS_IO_ERROR },
      { "the last is the greatest", { QL_STATUS_NOT_PRESENT }, { QL_STATUS_DEVICE_ERROR },
         { QL_STATUS_IO_ERROR }, { QL_STATUS_NOT_SUPPORTED }, QL_STATUS_NOT_SUPPORTED },
      { "a row is the greatest", {}, { QL_STATUS_DEVICE_ERROR, QL_STATUS_DEVICE_ERROR },
         { QL_STATUS_OK, QL_STATUS_IO_ERROR }, { QL_STATUS_NOT_PRESENT }, QL_STATUS_IO_ERROR },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      chip.writeStatuses = { { 0x20, row.query }, { 0x02, row.announce }, { 0x0E, row.row },
         { 0xE0, row.last } };
      EXPECT_EQ( driver->configPortMap( port( 5 ) ), row.status );
      EXPECT_EQ( chip.takeSent().size(), 16U );
   }
}

} // namespace
