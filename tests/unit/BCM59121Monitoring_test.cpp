#include "BCM59121Test.h"

#include <array>
#include <functional>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

using namespace std::chrono_literals;

constexpr auto noState = static_cast<ql_poe_port_state>( 77 );
constexpr auto noClass = static_cast<ql_poe_device_class>( 77 );

/** What the getters have written; before that, values that they never give. */
struct Readings {
   ql_poe_port_state state = noState, primaryState = noState, alternativeState = noState;
   ql_poe_port_pair_state pairState = static_cast<ql_poe_port_pair_state>( 77 );
   ql_poe_device_class cls = noClass, primaryClass = noClass, alternativeClass = noClass;
   float amps = 777, volts = 777, degrees = 777, total = 777, primary = 777, alternative = 777;
   bool ok = false;
   bool operator==( const Readings& ) const = default;
};

class Bcm59121Monitoring : public Bcm59121Test {
protected:
   using Getter = std::function<ql_status( Port*, Readings& )>;

   const Getter getPowerState = [this]( Port* port, Readings& to ) {
      return driver->getPowerState( port, &to.state, &to.primaryState, &to.alternativeState, &to.pairState );
   };
   const Getter getDeviceClass = [this]( Port* port, Readings& to ) {
      return driver->getDeviceClass( port, &to.cls, &to.primaryClass, &to.alternativeClass );
   };
   const Getter getCurrent = [this](
                                Port* port, Readings& to ) { return driver->getCurrent( port, &to.amps ); };
   const Getter getVoltage = [this](
                                Port* port, Readings& to ) { return driver->getVoltage( port, &to.volts ); };
   const Getter getTemperature = [this]( Port* port, Readings& to ) {
      return driver->getTemperature( port, &to.degrees );
   };
   const Getter getPower = [this]( Port* port, Readings& to ) {
      return driver->getPower( port, &to.total, &to.primary, &to.alternative );
   };
   const Getter getCrcStatus = [this](
                                  Port* port, Readings& to ) { return driver->getCrcStatus( port, &to.ok ); };

   struct NamedGetter {
      const char* name;
      const Getter& get;
      /** Its queries of port 5, in order. */
      Log queries;
   };

   const std::vector<NamedGetter> getters {
      { "power state", getPowerState,
         { "21 FF 05 FF FF FF FF FF FF FF FF 1D", "3D FF 05 FF FF FF FF FF FF FF FF 39" } },
      { "device class", getDeviceClass,
         { "21 FF 05 FF FF FF FF FF FF FF FF 1D", "3D FF 05 FF FF FF FF FF FF FF FF 39" } },
      { "current", getCurrent, { "30 FF 05 FF FF FF FF FF FF FF FF 2C" } },
      { "voltage", getVoltage, { "30 FF 05 FF FF FF FF FF FF FF FF 2C" } },
      { "temperature", getTemperature, { "30 FF 05 FF FF FF FF FF FF FF FF 2C" } },
      { "power", getPower, { "30 FF 05 FF FF FF FF FF FF FF FF 2C", "3C FF 05 FF FF FF FF FF FF FF FF 38" } },
      { "CRC status", getCrcStatus, { "2D FF 00 01 FF FF FF FF FF FF FF 26" } },
   };

   static uint8_t commandOf( const std::string& message ) {
      return static_cast<uint8_t>( std::stoi( message, nullptr, 16 ) );
   }

   /** Reads anew, whatever the age of the replies. */
   Readings read( const Getter& get, int id ) {
      time.advance( 2s );
      Readings readings;
      EXPECT_EQ( get( port( id ), readings ), QL_STATUS_OK );
      return readings;
   }
};

TEST_F( Bcm59121Monitoring, AGetterAsksForItsRepliesInOrder ) {
   for ( auto& getter : getters ) {
      SCOPED_TRACE( getter.name );
      make();
      Readings readings;
      EXPECT_EQ( getter.get( port( 5 ), readings ), QL_STATUS_OK );
      Log expected;
      for ( auto& query : getter.queries ) {
         auto log = exchange( query );
         expected.insert( expected.end(), log.begin(), log.end() );
      }
      EXPECT_THAT( chip.takeLog(), ElementsAreArray( expected ) );
      EXPECT_NE( readings, Readings() );
   }
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );
}

TEST_F( Bcm59121Monitoring, AFailedQueryIsToldAndLeavesTheOutputsAndTheCache ) {
   const struct {
      const char* name;
      std::function<void( uint8_t )> fault;
      ql_status status;
      const char* trace;
   } faults[] = {
      { "write", [this]( uint8_t cmd ) { chip.writeStatuses[cmd] = { QL_STATUS_FAILED }; }, QL_STATUS_FAILED,
         "Error: Failed to write to PoE chip. Command: " },
      { "read", [this]( uint8_t cmd ) { chip.readStatuses[cmd] = { QL_STATUS_NOT_SUPPORTED }; },
         QL_STATUS_NOT_SUPPORTED, "Error: Failed to read PoE chip" },
      { "checksum",
         [this]( uint8_t cmd ) { chip.replies[cmd] = { ScriptedPoeChip::corrupt( reply( cmd ) ) }; },
         QL_STATUS_IO_ERROR, "Error: Checksum invalid" },
      { "error code", [this]( uint8_t cmd ) { chip.replies[cmd] = { reply( 0x7F ) }; },
         QL_STATUS_DEVICE_ERROR, "Error: Failed to read PoE chip. Error code: 7f" },
   };

   for ( auto& getter : getters ) {
      for ( size_t failing = 0; failing < getter.queries.size(); ++failing ) {
         for ( auto& fault : faults ) {
            SCOPED_TRACE( testing::Message() << getter.name << ", query " << failing << ", " << fault.name );
            make();
            Host::traces.clear();
            auto& cache = driver->poeCache[5];
            cache.portStatus = cache.perPairStatus = cache.measurement = cache.perPairPower =
               cache.crcStatus = "old";
            fault.fault( commandOf( getter.queries[failing] ) );
            auto target = port( 5 );

            Readings readings;
            EXPECT_EQ( getter.get( target, readings ), fault.status );

            EXPECT_EQ( readings, Readings() );
            EXPECT_THAT( chip.takeSent(), ElementsAreArray( getter.queries.data(), failing + 1 ) );
            ASSERT_EQ( Host::tracesOf( 0 ).size(), 1U );
            EXPECT_THAT( Host::tracesOf( 0 )[0], testing::StartsWith( fault.trace ) );
            for ( auto text : { &cache.portStatus, &cache.perPairStatus, &cache.measurement,
                     &cache.perPairPower, &cache.crcStatus } ) {
               EXPECT_EQ( *text, "old" );
            }
            for ( auto asked : { &cache.portStatusTime, &cache.perPairStatusTime, &cache.measurementTime,
                     &cache.perPairPowerTime, &cache.crcStatusTime } ) {
               EXPECT_EQ( asked->tv_sec, 0 );
            }
            EXPECT_EQ( target->crcFailCountdown, 3 );

            // The next call asks for everything again, at once.
            chip.replies.clear();
            EXPECT_EQ( getter.get( target, readings ), QL_STATUS_OK );
            EXPECT_THAT( chip.takeSent(), ElementsAreArray( getter.queries ) );
         }
      }
   }
}

TEST_F( Bcm59121Monitoring, GettersOfOneReplyShareIt ) {
   const struct {
      const char* name;
      const Getter& first;
      const Getter& second;
      std::vector<std::string> asked;
   } rows[] = {
      { "voltage, current", getVoltage, getCurrent, {} },
      { "current, temperature", getCurrent, getTemperature, {} },
      { "temperature, voltage", getTemperature, getVoltage, {} },
      { "power, voltage", getPower, getVoltage, {} },
      { "voltage, power", getVoltage, getPower, { "3C FF 05 FF FF FF FF FF FF FF FF 38" } },
      { "state, class", getPowerState, getDeviceClass, {} },
      { "class, state", getDeviceClass, getPowerState, {} },
      { "CRC, voltage", getCrcStatus, getVoltage, { "30 FF 05 FF FF FF FF FF FF FF FF 2C" } },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      make();
      Readings readings;
      row.first( port( 5 ), readings );
      chip.takeLog();
      EXPECT_EQ( row.second( port( 5 ), readings ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeSent(), ElementsAreArray( row.asked ) );
   }
}

TEST_F( Bcm59121Monitoring, BothReadingsComeFromTheOneReply ) {
   chip.answer( 0x30, { { 3, 0x03 }, { 4, 0xE8 }, { 5, 0x01 }, { 6, 0xF4 } } );
   Readings readings;
   getVoltage( port( 5 ), readings );
   chip.answer( 0x30, {} );
   getCurrent( port( 5 ), readings );
   EXPECT_EQ( readings.volts, 64.45F );
   EXPECT_EQ( readings.amps, 0.5F );
}

TEST_F( Bcm59121Monitoring, AReplyIsUsedForTwoSecondsFromTheStartOfItsExchange ) {
   for ( auto& getter : getters ) {
      SCOPED_TRACE( getter.name );
      make();
      time.now = 1000s;
      Readings readings;
      getter.get( port( 5 ), readings );
      chip.takeLog();

      time.now = 1000s + 1999ms;
      EXPECT_EQ( getter.get( port( 5 ), readings ), QL_STATUS_OK );
      EXPECT_THAT( chip.takeSent(), IsEmpty() );

      // The second query of a getter begins 4 ms behind the first.
      time.now = 1000s + 2s;
      EXPECT_EQ( getter.get( port( 5 ), readings ), QL_STATUS_OK );
      auto sent = chip.takeSent();
      ASSERT_FALSE( sent.empty() );
      EXPECT_EQ( sent[0], getter.queries[0] );
   }
}

TEST_F( Bcm59121Monitoring, EachReplyHasAnAgeOfItsOwn ) {
   Readings readings;
   getVoltage( port( 5 ), readings );
   time.advance( 1s );
   getPower( port( 5 ), readings );
   chip.takeLog();
   time.advance( 1s );
   getPower( port( 5 ), readings );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "30 FF 05 FF FF FF FF FF FF FF FF 2C" ) );
   time.advance( 1s );
   getPower( port( 5 ), readings );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "3C FF 05 FF FF FF FF FF FF FF FF 38" ) );
}

TEST_F( Bcm59121Monitoring, EachPortHasRepliesOfItsOwn ) {
   Readings readings;
   getVoltage( port( 5 ), readings );
   getVoltage( port( 6 ), readings );
   EXPECT_EQ( chip.takeSent().size(), 2U );
   getVoltage( port( 5 ), readings );
   EXPECT_EQ( chip.takeSent().size(), 0U );
   EXPECT_EQ( driver->poeCache[4].measurement, "" );
}

TEST_F( Bcm59121Monitoring, TwoObjectsOfOnePortShareItsReplies ) {
   Readings readings;
   getVoltage( port( 5 ), readings );
   getVoltage( port( 5 ), readings );
   EXPECT_EQ( chip.takeSent().size(), 1U );
}

TEST_F( Bcm59121Monitoring, AGetterFillsItsOwnSlotsOfTheCache ) {
   chip.answer( 0x21, { { 3, 1 } } );
   chip.answer( 0x3D, { { 3, 2 } } );
   chip.answer( 0x30, { { 3, 3 } } );
   chip.answer( 0x3C, { { 3, 4 } } );
   chip.answer( 0x2D, { { 8, 5 } } );
   Readings readings;
   time.now = 1000s;
   getPowerState( port( 5 ), readings );
   getPower( port( 5 ), readings );
   getCrcStatus( port( 5 ), readings );
   auto& cache = driver->poeCache[5];
   EXPECT_EQ( cache.portStatus, reply( 0x21, { { 3, 1 } } ) );
   EXPECT_EQ( cache.perPairStatus, reply( 0x3D, { { 3, 2 } } ) );
   EXPECT_EQ( cache.measurement, reply( 0x30, { { 3, 3 } } ) );
   EXPECT_EQ( cache.perPairPower, reply( 0x3C, { { 3, 4 } } ) );
   EXPECT_EQ( cache.crcStatus, reply( 0x2D, { { 8, 5 } } ) );
   EXPECT_EQ( cache.sysStatus, "" );
   // 4 ms for each exchange
   EXPECT_EQ( cache.portStatusTime.tv_nsec, 0 );
   EXPECT_EQ( cache.perPairStatusTime.tv_nsec, 4'000'000 );
   EXPECT_EQ( cache.measurementTime.tv_nsec, 8'000'000 );
   EXPECT_EQ( cache.perPairPowerTime.tv_nsec, 12'000'000 );
   EXPECT_EQ( cache.crcStatusTime.tv_nsec, 16'000'000 );
   EXPECT_EQ( cache.crcStatusTime.tv_sec, 1000 );
   EXPECT_EQ( cache.sysStatusTime.tv_sec, 0 );
}

TEST_F( Bcm59121Monitoring, AnUnknownPortIsAskedEachTime ) {
   chip.answer( 0x30, { { 3, 0x03 }, { 4, 0xE8 } } );
   for ( int id : { 12, 200, 255 } ) {
      for ( int i = 0; i < 2; ++i ) {
         for ( auto& getter : getters ) {
            Readings readings;
            EXPECT_EQ( getter.get( port( id ), readings ), QL_STATUS_OK ) << getter.name;
            EXPECT_EQ( chip.takeSent().size(), getter.queries.size() ) << getter.name;
         }
      }
   }
   Readings readings;
   EXPECT_EQ( getVoltage( port( 200 ), readings ), QL_STATUS_OK );
   EXPECT_EQ( readings.volts, 64.45F );
   EXPECT_THAT( chip.takeSent(), ElementsAre( "30 FF C8 FF FF FF FF FF FF FF FF EF" ) );
   EXPECT_EQ( driver->poeCache.size(), 12U );
}

TEST_F( Bcm59121Monitoring, APortsStateFollowsItsStatusAndFaultCode ) {
   const struct {
      uint8_t status, fault;
      ql_poe_port_state state;
   } rows[] = {
      { 0, 0, QL_POE_PORT_DISABLED },
      { 0, 3, QL_POE_PORT_DISABLED },
      { 1, 0, QL_POE_PORT_DETECTING },
      { 2, 0, QL_POE_PORT_POWERED },
      { 2, 3, QL_POE_PORT_POWERED },
      { 3, 0, QL_POE_PORT_FAULT },
      { 3, 4, QL_POE_PORT_FAULT },
      { 4, 0, QL_POE_PORT_FAULT },
      { 4, 1, QL_POE_PORT_FAULT },
      { 4, 2, QL_POE_PORT_FAULT },
      { 4, 3, QL_POE_PORT_OVERLOAD },
      { 4, 4, QL_POE_PORT_DETECTING },
      { 4, 5, QL_POE_PORT_FAULT },
      { 4, 6, QL_POE_PORT_FAULT },
      { 4, 7, QL_POE_PORT_FAULT },
      { 4, 8, QL_POE_PORT_FAULT },
      { 4, 255, QL_POE_PORT_FAULT },
      { 5, 0, QL_POE_PORT_FAULT },
      { 5, 3, QL_POE_PORT_OVERLOAD },
      { 5, 4, QL_POE_PORT_DETECTING },
      { 5, 9, QL_POE_PORT_FAULT },
      { 6, 0, QL_POE_PORT_REQUESTING },
      { 6, 3, QL_POE_PORT_REQUESTING },
      { 7, 0, QL_POE_PORT_FAULT },
      { 7, 3, QL_POE_PORT_FAULT },
      { 8, 0, QL_POE_PORT_FAULT },
      { 128, 0, QL_POE_PORT_FAULT },
      { 255, 3, QL_POE_PORT_FAULT },
   };

   for ( auto& row : rows ) {
      for ( int id : { 5, 9 } ) {
         chip.answer( 0x21, { { 3, row.status }, { 4, row.fault } } );
         EXPECT_EQ( read( getPowerState, id ).state, row.state )
            << int( row.status ) << " " << int( row.fault );
      }
   }
}

TEST_F( Bcm59121Monitoring, ADualSignatureRequestNeedsAFourPairPort ) {
   const struct {
      const char* name;
      uint8_t id, status, primary, alternative, mark;
      ql_poe_port_state state;
   } rows[] = {
      { "first 4-pair port", 8, 6, 0x14, 0x14, 2, QL_POE_PORT_REQUESTING_DUAL },
      { "last 4-pair port", 11, 6, 0x14, 0x14, 2, QL_POE_PORT_REQUESTING_DUAL },
      { "last 2-pair port", 7, 6, 0x14, 0x14, 2, QL_POE_PORT_REQUESTING },
      { "no mark", 8, 6, 0x14, 0x14, 1, QL_POE_PORT_REQUESTING },
      { "primary not dual", 8, 6, 0x04, 0x14, 2, QL_POE_PORT_REQUESTING },
      { "alternative not dual", 8, 6, 0x14, 0x04, 2, QL_POE_PORT_REQUESTING },
      { "not requesting", 8, 2, 0x14, 0x14, 2, QL_POE_PORT_POWERED },
   };

   for ( auto& row : rows ) {
      chip.answer( 0x21, { { 3, row.status }, { 10, row.mark } } );
      chip.answer( 0x3D, { { 3, row.primary }, { 7, row.alternative } } );
      auto readings = read( getPowerState, row.id );
      EXPECT_EQ( readings.state, row.state ) << row.name;
      // The two channels of such a port only request.
      auto channels = row.state == QL_POE_PORT_POWERED ? QL_POE_PORT_POWERED : QL_POE_PORT_REQUESTING;
      EXPECT_EQ( readings.primaryState, channels ) << row.name;
      EXPECT_EQ( readings.alternativeState, channels ) << row.name;
   }
}

TEST_F( Bcm59121Monitoring, AHostMayHaveOneStateForAll ) {
   chip.answer( 0x21, { { 3, 6 }, { 10, 2 } } );
   chip.answer( 0x3D, { { 3, 0x14 }, { 7, 0x14 } } );
   auto state = noState;
   ql_poe_port_pair_state pairs;
   EXPECT_EQ( driver->getPowerState( port( 8 ), &state, &state, &state, &pairs ), QL_STATUS_OK );
   EXPECT_EQ( state, QL_POE_PORT_REQUESTING ) << "the alternative channel's comes last";
}

TEST_F( Bcm59121Monitoring, APairStateIsTheChipsNumberUpToThree ) {
   const struct {
      uint8_t code;
      unsigned pairState;
   } rows[] = { { 0, 0 }, { 1, 1 }, { 2, 2 }, { 3, 3 }, { 4, 0 }, { 5, 0 }, { 128, 0 }, { 255, 0 } };

   for ( auto& row : rows ) {
      chip.answer( 0x21, { { 9, row.code } } );
      EXPECT_EQ( read( getPowerState, 5 ).pairState, row.pairState ) << int( row.code );
   }
}

TEST_F( Bcm59121Monitoring, AChannelsStateFollowsItsDetectionItsErrorAndThePort ) {
   const struct {
      const char* name;
      uint8_t portStatus, portFault, detection, error;
      ql_poe_port_state state;
   } rows[] = {
      { "powered", 2, 0, 4, 0, QL_POE_PORT_POWERED },
      { "powered, high bits", 2, 0, 0x14, 0, QL_POE_PORT_POWERED },
      { "powered, MPS absent", 2, 0, 4, 1, QL_POE_PORT_FAULT },
      { "powered, short", 2, 0, 4, 2, QL_POE_PORT_FAULT },
      { "powered, overload", 2, 0, 4, 3, QL_POE_PORT_OVERLOAD },
      { "powered, power denied", 2, 0, 4, 4, QL_POE_PORT_FAULT },
      { "powered, OVLO", 2, 0, 4, 8, QL_POE_PORT_FAULT },
      { "powered, unknown error", 2, 0, 4, 255, QL_POE_PORT_FAULT },
      { "disabled, valid", 0, 0, 4, 0, QL_POE_PORT_REQUESTING },
      { "detecting, valid", 1, 0, 4, 0, QL_POE_PORT_REQUESTING },
      { "fault, valid", 4, 1, 4, 0, QL_POE_PORT_REQUESTING },
      { "overload, valid with error", 4, 3, 4, 3, QL_POE_PORT_REQUESTING },
      { "requesting, valid", 6, 0, 4, 0, QL_POE_PORT_REQUESTING },
      { "disabled, open", 0, 0, 6, 0, QL_POE_PORT_DISABLED },
      { "disabled, open with error", 0, 0, 6, 3, QL_POE_PORT_DISABLED },
      { "powered, open", 2, 0, 6, 0, QL_POE_PORT_DETECTING },
      { "powered, open with error", 2, 0, 6, 3, QL_POE_PORT_DETECTING },
      { "powered, unknown", 2, 0, 0, 0, QL_POE_PORT_DETECTING },
      { "powered, high bits alone", 2, 0, 0x40, 0, QL_POE_PORT_DETECTING },
      { "powered, more than valid", 2, 0, 0x0C, 0, QL_POE_PORT_DETECTING },
      { "fault, low resistance", 4, 1, 3, 0, QL_POE_PORT_DETECTING },
      { "requesting, high resistance", 6, 0, 5, 0, QL_POE_PORT_DETECTING },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      chip.answer( 0x21, { { 3, row.portStatus }, { 4, row.portFault } } );
      // The other channel is open without error, or valid and powered.
      bool open = ( row.detection & 0x0F ) == 4;
      auto other = static_cast<uint8_t>( open ? 6 : 4 );
      chip.answer( 0x3D, { { 3, row.detection }, { 5, row.error }, { 7, other } } );
      EXPECT_EQ( read( getPowerState, 5 ).primaryState, row.state );
      chip.answer( 0x3D, { { 3, other }, { 7, row.detection }, { 9, row.error } } );
      EXPECT_EQ( read( getPowerState, 5 ).alternativeState, row.state );
   }
}

TEST_F( Bcm59121Monitoring, APoweredPortWithAnOpenAlternativeChannelShowsIt ) {
   chip.answer( 0x21, { { 3, 2 } } );
   chip.answer( 0x3D, { { 3, 4 }, { 7, 6 } } );
   auto readings = read( getPowerState, 9 );
   EXPECT_EQ( readings.state, QL_POE_PORT_POWERED );
   EXPECT_EQ( readings.primaryState, QL_POE_PORT_POWERED );
   EXPECT_EQ( readings.alternativeState, QL_POE_PORT_DETECTING );
}

TEST_F( Bcm59121Monitoring, AClassIsTheChipsNumberUpToACap ) {
   const struct {
      uint8_t code;
      unsigned onTwoPairs, onFourPairs, dual;
   } rows[] = {
      { 0, 0, 0, 0 },
      { 1, 1, 1, 1 },
      { 3, 3, 3, 3 },
      { 4, 4, 4, 4 },
      { 5, 5, 5, 4 },
      { 6, 6, 6, 4 },
      { 7, 7, 6, 4 },
      { 8, 8, 6, 4 },
      { 9, 9, 6, 4 },
      { 14, 9, 6, 4 },
      { 15, 9, 6, 4 },
      { 128, 9, 6, 4 },
      { 255, 9, 6, 4 },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( int( row.code ) );
      for ( int channel = 0; channel < 3; ++channel ) {
         SCOPED_TRACE( channel );
         // One byte at a time, so that no output can take another's.
         auto code = [&]( int which ) { return which == channel ? row.code : uint8_t( 0 ); };
         auto shown = [&]( const Readings& readings ) {
            std::array classes { readings.cls, readings.primaryClass, readings.alternativeClass };
            for ( int which = 0; which < 3; ++which ) {
               if ( which != channel ) {
                  EXPECT_EQ( classes[static_cast<size_t>( which )], 0U );
               }
            }
            return classes[static_cast<size_t>( channel )];
         };
         chip.answer( 0x21, { { 5, code( 0 ) }, { 10, 2 } } );
         chip.answer( 0x3D, { { 4, code( 1 ) }, { 8, code( 2 ) } } );
         EXPECT_EQ( shown( read( getDeviceClass, 7 ) ), row.onTwoPairs );
         EXPECT_EQ( shown( read( getDeviceClass, 8 ) ), row.onFourPairs );
         chip.answer( 0x3D, { { 3, 0x14 }, { 4, code( 1 ) }, { 7, 0x14 }, { 8, code( 2 ) } } );
         EXPECT_EQ( shown( read( getDeviceClass, 7 ) ), row.onTwoPairs );
         EXPECT_EQ( shown( read( getDeviceClass, 8 ) ), row.dual );
      }
   }
}

TEST_F( Bcm59121Monitoring, CurrentIsInMilliamperes ) {
   const struct {
      uint8_t hi, lo;
      float amps;
   } rows[] = { { 0, 0, 0.0F }, { 0, 1, 0.001F }, { 0x01, 0xF4, 0.5F }, { 0xFF, 0xFF, 65.535F } };

   for ( auto& row : rows ) {
      chip.answer( 0x30, { { 5, row.hi }, { 6, row.lo } } );
      EXPECT_EQ( read( getCurrent, 5 ).amps, row.amps );
   }
}

TEST_F( Bcm59121Monitoring, VoltageIsInStepsOf64Point45Millivolts ) {
   const struct {
      uint8_t hi, lo;
      float volts;
   } rows[] = {
      { 0, 0, 0.0F },
      { 0, 1, 0.06445F },
      { 0x03, 0xE8, 64.45F },
      // 838 * 64.45 = 54009.1
      { 0x03, 0x46, 54.0091F },
      // 65535 * 64.45 = 4223730.75
      { 0xFF, 0xFF, 4223.73075F },
   };

   for ( auto& row : rows ) {
      chip.answer( 0x30, { { 3, row.hi }, { 4, row.lo } } );
      EXPECT_EQ( read( getVoltage, 5 ).volts, row.volts );
   }
}

TEST_F( Bcm59121Monitoring, TemperatureFallsFrom275Degrees ) {
   const struct {
      uint8_t hi, lo;
      float degrees;
   } rows[] = { { 0, 120, 125.0F }, { 0, 220, 0.0F }, { 0, 0, 275.0F }, { 1, 0, -45.0F } };

   for ( auto& row : rows ) {
      chip.answer( 0x30, { { 7, row.hi }, { 8, row.lo } } );
      EXPECT_EQ( read( getTemperature, 5 ).degrees, row.degrees );
   }
}

TEST_F( Bcm59121Monitoring, PowerIsInTenthsOfAWatt ) {
   chip.answer( 0x30, { { 9, 0x02 }, { 10, 0x5B } } );
   chip.answer( 0x3C, { { 3, 0x01 }, { 4, 0x2D }, { 5, 0xFF }, { 6, 0xFF } } );
   auto readings = read( getPower, 9 );
   EXPECT_EQ( readings.total, 60.3F );
   EXPECT_EQ( readings.primary, 30.1F );
   EXPECT_EQ( readings.alternative, 6553.5F );
}

TEST_F( Bcm59121Monitoring, ShortRepliesReadAsZero ) {
   // Each reply that is held ends early, or is empty.
   driver->poeCache[9].portStatus = std::string( "\x21\xFF\x09\x06", 4 );
   driver->poeCache[9].portStatusTime = { 1000, 0 };
   driver->poeCache[9].perPairStatusTime = { 1000, 0 };
   driver->poeCache[9].measurement = std::string( "\x30\xFF\x09\x03", 4 );
   driver->poeCache[9].measurementTime = { 1000, 0 };
   driver->poeCache[9].perPairPowerTime = { 1000, 0 };
   Readings readings;
   EXPECT_EQ( getPowerState( port( 9 ), readings ), QL_STATUS_OK );
   EXPECT_EQ( readings.state, QL_POE_PORT_REQUESTING );
   EXPECT_EQ( readings.primaryState, QL_POE_PORT_DETECTING );
   EXPECT_EQ( readings.pairState, 0U );
   EXPECT_EQ( getVoltage( port( 9 ), readings ), QL_STATUS_OK );
   // 0x0300 = 768; 768 * 64.45 = 49497.6
   EXPECT_EQ( readings.volts, 49.4976F );
   EXPECT_EQ( getPower( port( 9 ), readings ), QL_STATUS_OK );
   EXPECT_EQ( readings.alternative, 0.0F );
   EXPECT_THAT( chip.takeLog(), IsEmpty() );
}

} // namespace
