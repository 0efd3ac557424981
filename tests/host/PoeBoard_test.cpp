#include "FirmwareDirectory.h"
#include "Plugin.h"
#include "support/HostServices.h"
#include "support/SocketServer.h"
#include "support/VirtualTime.h"

#include "emulator/BoardFile.h"
#include "emulator/Control.h"
#include "smbusd/EmulatedBackend.h"
#include "smbusd/Transaction.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string fileOf( const std::string& file ) {
   std::ifstream stream( file );
   return { std::istreambuf_iterator<char>( stream ), {} };
}

/** A host of the Selvane board, whose chips are emulated. Time passes only where somebody waits. */
class PoeBoard : public Host::Test {
protected:
   PoeBoard() {
      unsetenv( "SIMULATION_VMID" );
      EXPECT_EQ( plugin.poe_port_init( fileOf( SELVANE "/topology.json" ).c_str() ), QL_STATUS_OK );
   }

   /** A port of the board, with these driver arguments besides. */
   ql_poe_port* add( int number, const std::map<std::string, std::string>& driverArgs = {} ) {
      auto name = fmt::format( "port{}", number );
      rapidjson::Document document;
      document.Parse( fileOf( SELVANE "/objects.json" ).c_str() );
      for ( auto& object : document["objects"].GetArray() ) {
         if ( object["name"] == name.c_str() ) {
            auto& args = object["args"];
            auto text = [&]( const std::string& words ) {
               return rapidjson::Value( words.c_str(), document.GetAllocator() );
            };
            for ( auto& [key, value] : driverArgs ) {
               args["driverArgs"].AddMember( text( key ), text( value ), document.GetAllocator() );
            }
            rapidjson::StringBuffer json;
            rapidjson::Writer<rapidjson::StringBuffer> writer( json );
            args.Accept( writer );
            return plugin.poe_port_add( json.GetString() );
         }
      }
      throw std::invalid_argument( name );
   }

   /** A port that is ready for a device. */
   ql_poe_port* enable( int number, const std::map<std::string, std::string>& driverArgs = {} ) {
      auto port = add( number, driverArgs );
      EXPECT_EQ( port->ops->port_init( port ), QL_STATUS_OK );
      EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_OK );
      time.advance( 3s );
      return port;
   }

   void powerOn( ql_poe_port* port ) {
      EXPECT_EQ( port->ops->power_on( port, true ), QL_STATUS_OK );
      time.advance( 3s );
   }

   /** The bench's answer to a line, and three seconds for what it leads to. */
   std::string bench( const std::string& line ) {
      auto answer = Emulator::control( board, line );
      time.advance( 3s );
      return answer;
   }

   struct State {
      ql_poe_port_state port;
      ql_poe_port_state primary;
      ql_poe_port_state alternative;
      ql_poe_port_pair_state pairs;
   };

   static State stateOf( ql_poe_port* port ) {
      State state {};
      EXPECT_EQ(
         port->ops->get_power_state( port, &state.port, &state.primary, &state.alternative, &state.pairs ),
         QL_STATUS_OK );
      return state;
   }

   static float read( ql_poe_port* port, ql_status ( *get )( ql_poe_port*, float* ) ) {
      float value = -1;
      EXPECT_EQ( get( port, &value ), QL_STATUS_OK );
      return value;
   }

   bool crcOf( ql_poe_port* port ) {
      bool ok = false;
      time.advance( 3s );
      EXPECT_EQ( port->ops->get_crc_status( port, &ok ), QL_STATUS_OK );
      return ok;
   }

   Smbus::TransactionResponse answer( const Smbus::TransactionRequest& request ) {
      auto message = request.SerializeAsString();
      Smbusd::Transaction transaction;
      EXPECT_TRUE(
         transaction.parse( { reinterpret_cast<const uint8_t*>( message.data() ), message.size() } ) );
      if ( transaction.plan( backend ) ) {
         transaction.run( loop, [] {} );
      }
      return transaction.response();
   }

   VirtualTime time;
   FirmwareDirectory files;
   Emulator::Board board = Emulator::loadBoard( SELVANE "/emulator.json" );
   Smbusd::EventLoop loop;
   Smbusd::EmulatedBackend backend { loop, board };
   SocketServer server { SocketServer::answering( [this]( auto& request ) { return answer( request ); } ) };
   Plugin plugin;
};

TEST_F( PoeBoard, AControllerInResetDoesNotAnswer ) {
   auto port = add( 1 );
   EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_FAILED );
}

TEST_F( PoeBoard, TheFirstPortTakesTheControllerOutOfResetAndAllStartUp ) {
   EXPECT_EQ( bench( "get poe.reset" ), "ok 1" );
   for ( int number = 1; number <= 48; ++number ) {
      auto port = add( number );
      EXPECT_EQ( port->ops->port_init( port ), QL_STATUS_OK ) << number;
   }
   EXPECT_EQ( bench( "get poe.reset" ), "ok 0" );
   EXPECT_EQ( bench( "get cpld.poe_reset" ), "ok 0" );
   EXPECT_EQ( bench( "get poe.r0x0a" ), "ok 0x6d012f01" );
   EXPECT_EQ( bench( "get poe.port40.mode" ), "ok 802.3at" );
   EXPECT_EQ( bench( "get poe.port41.mode" ), "ok 802.3bt-type3" );
   EXPECT_EQ( bench( "get poe.port48.mode" ), "ok 802.3bt-type3" );
}

TEST_F( PoeBoard, ADeviceIsFoundPoweredMeasuredAndMissed ) {
   auto port = add( 7 );
   ASSERT_EQ( port->ops->port_init( port ), QL_STATUS_OK );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DISABLED );
   EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_OK );
   time.advance( 3s );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DETECTING );

   EXPECT_EQ( bench( "poe 7 attach class=4 draw=22.5" ), "ok" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_REQUESTING );

   powerOn( port );
   auto state = stateOf( port );
   EXPECT_EQ( state.port, QL_POE_PORT_POWERED );
   EXPECT_EQ( state.primary, QL_POE_PORT_POWERED );
   EXPECT_EQ( state.alternative, QL_POE_PORT_DETECTING );
   EXPECT_EQ( state.pairs, QL_POE_PAIR_STATE_1 );
   ql_poe_device_class all, primary, alternative;
   EXPECT_EQ( port->ops->get_device_class( port, &all, &primary, &alternative ), QL_STATUS_OK );
   EXPECT_EQ( all, QL_POE_CLASS_4 );
   EXPECT_EQ( primary, QL_POE_CLASS_4 );
   // 838 steps of 0.06445 V; 22.5 W at 54 V.
   EXPECT_FLOAT_EQ( read( port, port->ops->get_voltage ), 54.0091F );
   EXPECT_FLOAT_EQ( read( port, port->ops->get_current ), 0.417F );
   EXPECT_FLOAT_EQ( read( port, port->ops->get_temperature ), 40 );
   float total, first, second;
   EXPECT_EQ( port->ops->get_power( port, &total, &first, &second ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( total, 22.5F );
   EXPECT_FLOAT_EQ( first, 22.5F );
   EXPECT_FLOAT_EQ( second, 0 );

   EXPECT_EQ( bench( "poe 7 detach" ), "ok" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DETECTING );
   EXPECT_FLOAT_EQ( read( port, port->ops->get_voltage ), 0 );
}

TEST_F( PoeBoard, ADualSignatureDeviceHasItsPowerOnBothChannels ) {
   auto port = enable( 48 );
   EXPECT_EQ( bench( "poe 48 attach type=dual class=4 draw=50" ), "ok" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_REQUESTING_DUAL );
   ql_poe_device_class all, primary, alternative;
   EXPECT_EQ( port->ops->get_device_class( port, &all, &primary, &alternative ), QL_STATUS_OK );
   EXPECT_EQ( all, QL_POE_CLASS_4 );
   EXPECT_EQ( alternative, QL_POE_CLASS_4 );

   powerOn( port );
   auto state = stateOf( port );
   EXPECT_EQ( state.port, QL_POE_PORT_POWERED );
   EXPECT_EQ( state.alternative, QL_POE_PORT_POWERED );
   EXPECT_EQ( state.pairs, QL_POE_PAIR_STATE_3 );
   float total, first, second;
   EXPECT_EQ( port->ops->get_power( port, &total, &first, &second ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( total, 50 );
   EXPECT_FLOAT_EQ( first, 25 );
   EXPECT_FLOAT_EQ( second, 25 );
}

TEST_F( PoeBoard, ADeviceHasItsPowerOnTheChannelThatReachesIt ) {
   struct Row {
      const char* type;
      ql_poe_port_state primary;
      ql_poe_port_state alternative;
      ql_poe_port_pair_state pairs;
      ql_poe_device_class primaryClass;
      ql_poe_device_class alternativeClass;
      float primaryPower;
      float alternativePower;
   };

   const Row rows[] = {
      { "single/open", QL_POE_PORT_POWERED, QL_POE_PORT_DETECTING, QL_POE_PAIR_STATE_1, QL_POE_CLASS_4,
         QL_POE_CLASS_0, 20, 0 },
      { "open/single", QL_POE_PORT_DETECTING, QL_POE_PORT_POWERED, QL_POE_PAIR_STATE_2, QL_POE_CLASS_0,
         QL_POE_CLASS_4, 0, 20 },
   };
   auto port = enable( 48 );
   for ( auto& row : rows ) {
      EXPECT_EQ( bench( fmt::format( "poe 48 attach type={} class=4 draw=20", row.type ) ), "ok" );
      powerOn( port );
      auto state = stateOf( port );
      EXPECT_EQ( state.port, QL_POE_PORT_POWERED ) << row.type;
      EXPECT_EQ( state.primary, row.primary ) << row.type;
      EXPECT_EQ( state.alternative, row.alternative ) << row.type;
      EXPECT_EQ( state.pairs, row.pairs ) << row.type;
      ql_poe_device_class all, primaryClass, alternativeClass;
      EXPECT_EQ( port->ops->get_device_class( port, &all, &primaryClass, &alternativeClass ), QL_STATUS_OK );
      EXPECT_EQ( primaryClass, row.primaryClass ) << row.type;
      EXPECT_EQ( alternativeClass, row.alternativeClass ) << row.type;
      float total, primary, alternative;
      EXPECT_EQ( port->ops->get_power( port, &total, &primary, &alternative ), QL_STATUS_OK );
      EXPECT_FLOAT_EQ( primary, row.primaryPower ) << row.type;
      EXPECT_FLOAT_EQ( alternative, row.alternativePower ) << row.type;
      bench( "poe 48 detach" );
   }
}

TEST_F( PoeBoard, AFaultOfOneChannelLeavesTheOtherItsPower ) {
   struct Row {
      const char* line;
      ql_poe_port_state primary;
      ql_poe_port_state alternative;
      ql_poe_port_pair_state pairs;
   };

   const Row rows[] = {
      { "poe 41 overload primary", QL_POE_PORT_OVERLOAD, QL_POE_PORT_POWERED, QL_POE_PAIR_STATE_2 },
      { "poe 41 short alternative", QL_POE_PORT_POWERED, QL_POE_PORT_FAULT, QL_POE_PAIR_STATE_1 },
   };
   auto port = enable( 41 );
   for ( auto& row : rows ) {
      powerOn( port );
      EXPECT_EQ( bench( row.line ), "ok" );
      auto state = stateOf( port );
      EXPECT_EQ( state.port, QL_POE_PORT_POWERED ) << row.line;
      EXPECT_EQ( state.primary, row.primary ) << row.line;
      EXPECT_EQ( state.alternative, row.alternative ) << row.line;
      EXPECT_EQ( state.pairs, row.pairs ) << row.line;
   }
}

TEST_F( PoeBoard, A4PairPortGivesASingleSignatureItsClass ) {
   auto port = enable( 41 );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_REQUESTING ) << "a device is there from the start";
   ql_poe_device_class all, primary, alternative;
   EXPECT_EQ( port->ops->get_device_class( port, &all, &primary, &alternative ), QL_STATUS_OK );
   EXPECT_EQ( all, QL_POE_CLASS_6 );
}

TEST_F( PoeBoard, FaultsReachTheHost ) {
   struct Row {
      const char* line;
      ql_poe_port_state state;
      ql_poe_port_state primary;
   };

   const Row rows[] = {
      { "poe 7 overload", QL_POE_PORT_OVERLOAD, QL_POE_PORT_REQUESTING },
      { "poe 7 short", QL_POE_PORT_FAULT, QL_POE_PORT_REQUESTING },
      { "poe 7 thermal", QL_POE_PORT_FAULT, QL_POE_PORT_REQUESTING },
      { "poe 7 startup", QL_POE_PORT_FAULT, QL_POE_PORT_REQUESTING },
      { "set poe.budget 10", QL_POE_PORT_DETECTING, QL_POE_PORT_REQUESTING },
      { "set poe.supply 20", QL_POE_PORT_FAULT, QL_POE_PORT_DETECTING },
   };
   auto port = enable( 7 );
   bench( "poe 7 attach class=3" );
   for ( auto& row : rows ) {
      powerOn( port );
      EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED ) << row.line;
      time.advance( 3s );
      EXPECT_EQ( bench( row.line ), "ok" );
      EXPECT_EQ( stateOf( port ).port, row.state ) << row.line;
      EXPECT_EQ( stateOf( port ).primary, row.primary ) << row.line;
      bench( "set poe.budget 740" );
   }
}

TEST_F( PoeBoard, ALimitIsKept ) {
   auto port = enable( 7 );
   bench( "poe 7 attach class=4 draw=15.9" );
   powerOn( port );
   EXPECT_EQ( port->ops->set_limit( port, QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port7.limit" ), "ok 16" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED );
   bench( "set poe.port7.draw 16.1" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_OVERLOAD );
   EXPECT_EQ( port->ops->set_limit( port, QL_POE_LIMIT_CLASS, 0 ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port7.limit" ), "ok class" );
   powerOn( port );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED );
}

TEST_F( PoeBoard, ALimitOfA4PairPortIsSharedByItsChannels ) {
   auto port = enable( 41 );
   powerOn( port );
   // 50 W and 3 percent are 51.5 W, of which each channel has 25.75 W, 129 steps of 0.2 W.
   EXPECT_EQ( port->ops->set_limit( port, QL_POE_LIMIT_USER, 50 ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port41.limit" ), "ok 25.8" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED );
   EXPECT_EQ( bench( "get poe.allocated" ), "ok 51.6" );
}

TEST_F( PoeBoard, ALimitOfA4PairPortIsThatOfTheOneChannelInUse ) {
   auto port = enable( 48 );
   bench( "poe 48 attach type=single/open class=4 draw=12" );
   powerOn( port );
   // 15 W and 3 percent are 15.45 W, 78 steps of 0.2 W.
   EXPECT_EQ( port->ops->set_limit( port, QL_POE_LIMIT_USER, 15 ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port48.limit" ), "ok 15.6" );
   EXPECT_EQ( bench( "get poe.allocated" ), "ok 15.6" );
}

TEST_F( PoeBoard, APortIsShutOffWithTheSupplyThatItMinds ) {
   auto port = enable( 7 );
   bench( "poe 7 attach class=3" );
   powerOn( port );
   EXPECT_EQ( port->ops->set_shut_off_with_psu( port, 1, true ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port7.mpss" ), "ok 0x04" );
   bench( "set poe.shutoff 0x02" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED );
   bench( "set poe.shutoff 0x04" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DETECTING );
   bench( "set poe.shutoff 0" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_POWERED );
}

TEST_F( PoeBoard, EachSupplyHasItsBitOfTheShutOffInputs ) {
   auto port = enable( 7 );
   const std::pair<uint8_t, const char*> rows[] = { { 0, "ok 0x02" }, { 1, "ok 0x04" }, { 2, "ok 0x10" } };
   for ( auto& [psu, mask] : rows ) {
      EXPECT_EQ( port->ops->set_shut_off_with_psu( port, psu, true ), QL_STATUS_OK );
      EXPECT_EQ( bench( "get poe.port7.mpss" ), mask ) << +psu;
      EXPECT_EQ( port->ops->set_shut_off_with_psu( port, psu, false ), QL_STATUS_OK );
      EXPECT_EQ( bench( "get poe.port7.mpss" ), "ok 0x00" ) << +psu;
   }
}

TEST_F( PoeBoard, AllSuppliesShareTheFirstShutOffInputWhenTheTopologySaysSo ) {
   auto port = enable( 7, { { "mpssValueZero", "true" } } );
   EXPECT_EQ( port->ops->set_shut_off_with_psu( port, 1, true ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.port7.mpss" ), "ok 0x01" );
}

TEST_F( PoeBoard, LegacyDevicesAreFoundWhenTheHostWants ) {
   auto port = enable( 7 );
   bench( "poe 7 attach type=legacy draw=6" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DETECTING );
   EXPECT_EQ( port->ops->set_legacy_detect( port, true ), QL_STATUS_OK );
   time.advance( 3s );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_REQUESTING );
}

TEST_F( PoeBoard, AWrongCrcIsToldAtTheFourthPollAndCorrected ) {
   auto port = enable( 41 );
   EXPECT_TRUE( crcOf( port ) );
   bench( "poe chip crc 5" );
   for ( int poll = 1; poll <= 3; ++poll ) {
      EXPECT_TRUE( crcOf( port ) ) << poll;
   }
   EXPECT_FALSE( crcOf( port ) );
   EXPECT_EQ( Emulator::control( board, "get poe.crc_reset" ), "ok 1" );
   EXPECT_TRUE( crcOf( port ) );
   EXPECT_EQ( bench( "get poe.crc_reset" ), "ok 0" );
}

TEST_F( PoeBoard, AWrongCrcIsToldAtOnceWhereThereIsFirmware ) {
   auto port = enable( 41, { { "firmwarePath", "poe.bin" } } );
   EXPECT_EQ( bench( "get poe.crc_reset" ), "ok 1" );
   EXPECT_TRUE( crcOf( port ) );
   // Channel 7 is in the last byte of the reply. It is corrected within a second.
   time.advance( 3s );
   EXPECT_EQ( Emulator::control( board, "set poe.group5.crc 0x80" ), "ok" );
   bool ok = true;
   EXPECT_EQ( port->ops->get_crc_status( port, &ok ), QL_STATUS_OK );
   EXPECT_FALSE( ok );
   EXPECT_TRUE( crcOf( port ) );
   time.advance( 3s );
   EXPECT_EQ( Emulator::control( board, "set poe.group4.crc 0xff" ), "ok" );
   ok = false;
   EXPECT_EQ( port->ops->get_crc_status( port, &ok ), QL_STATUS_OK );
   EXPECT_TRUE( ok ) << "another group";
}

// Byte 2 is the port or the group of channels where it is no result, and the last byte the sum of the others.
TEST_F( PoeBoard, ARawReportHoldsEveryReply ) {
   auto port = enable( 48 );
   bench( "poe 48 attach type=open/single class=4 draw=22.5" );
   powerOn( port );
   char* text = nullptr;
   auto size = port->ops->debug_info( port, &text, true );
   EXPECT_STREQ( text, "Port 48\n"
                       "20 ff 2f 00 00 00 00 01 00 0a 05 5e\n"
                       "21 ff 2f 02 00 04 00 00 00 02 01 58\n"
                       "22 ff 2f 00 00 00 00 00 00 00 00 50\n"
                       "23 ff 01 2c 1b bc 00 00 00 00 00 26\n"
                       "25 ff 2f 01 00 02 00 00 00 00 00 56\n"
                       "26 ff 2f 05 01 9b 00 00 00 00 00 f5\n"
                       "27 ff 01 00 00 00 00 00 00 00 00 27\n"
                       "2b ff 2f 00 00 00 00 1f 00 00 00 78\n"
                       "2d ff 06 00 03 46 00 00 01 00 00 7c\n"
                       "2e ff 2f 00 00 00 00 00 00 00 00 5c\n"
                       "30 ff 2f 03 46 01 a1 00 bc 00 e1 e6\n"
                       "3c ff 2f 00 00 00 e1 00 00 00 00 4b\n"
                       "3d ff 2f 06 00 00 03 04 04 00 01 7d\n"
                       "4f ff 01 00 00 00 00 00 00 00 00 4f\n" );
   EXPECT_EQ( size, strlen( text ) );
   free( text );
}

TEST_F( PoeBoard, AReportTellsTheChannelsOfA4PairPortApart ) {
   auto port = enable( 48 );
   bench( "poe 48 attach type=single/open class=4 draw=22.5" );
   powerOn( port );
   char* text = nullptr;
   port->ops->get_information( port, &text );
   std::string report = text;
   free( text );
   for ( auto line : {
            "Primary channel power: 22.50W ",
            "Alternative channel power: 0.00W ",
            "Primary channel detection: valid ",
            "Primary channel PD class: 4 ",
            "Primary channel mode: 30W ",
            "Alternative channel detection: open circuit ",
            "Alternative channel PD class: 0 ",
            "Alternative channel mode: n/a ",
         } ) {
      EXPECT_THAT( report, HasSubstr( std::string( "\n" ) + line ) );
   }
}

TEST_F( PoeBoard, AReportHoldsNothingThatIsNotValid ) {
   auto port = enable( 7 );
   bench( "poe 7 attach class=4 draw=22.5" );
   powerOn( port );
   char* text = nullptr;
   port->ops->get_information( port, &text );
   std::string report = text;
   free( text );
   for ( auto line : {
            "4-pair port mapping: yes ",
            "Firmware version: 0x01.05 ",
            "Port status: powered ",
            "Total power allocated: 30.00W ",
            "Available power: 710.00W ",
            "PSE functionality: enabled ",
            "Detection type: 4 point ",
            "Power mode: IEEE 802.3at ",
            "Violation type: class based ",
            "User defined power limit: 31.00W ",
            "Power management: static ",
            "UVLO threshold: 36.03V ",
            "OVLO threshold: 59.00V ",
            "V48 voltage: 54.01V ",
            "CRC status: ok ",
            "Port MPSS mask: 0x0000 ",
            "Current: 417.00mA ",
            "Temperature: 40.00C ",
            "Power: 22.50W ",
            "Primary channel power: 22.50W ",
            "Primary channel detection: valid ",
            "Primary channel PD class: 4 ",
            "Primary channel error status: none ",
            "Primary channel mode: 30W ",
            "Alternative channel detection: unknown ",
            "CRC functionality: enabled ",
            "Reset on CRC failure: no ",
         } ) {
      EXPECT_THAT( report, HasSubstr( std::string( "\n" ) + line ) );
   }
   for ( auto word : { "checksum error", "hardware error", "SMBus error" } ) {
      EXPECT_THAT( report, Not( HasSubstr( word ) ) );
   }
}

TEST_F( PoeBoard, ASpoiledReplyIsAnErrorAndTheNextOneIsNot ) {
   auto port = enable( 7 );
   bench( "fault poe checksum 1" );
   EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_IO_ERROR );
   EXPECT_TRUE( Host::hasTraced( 0, "Error: Checksum invalid" ) );
   EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_OK );
}

/** A file: its revision, and the image, which begins with the revision again. */
std::string firmware( char first, char second, size_t size ) {
   std::string image( size, 'f' );
   image[0] = first;
   image[1] = second;
   return image.substr( 0, 2 ) + image;
}

TEST_F( PoeBoard, FirmwareIsReplacedByAFileOfAnotherRevision ) {
   files.add( "poe.bin", firmware( 2, 0x2A, 1000 ) );
   auto port = add( 1, { { "firmwarePath", "poe.bin" } } );
   ASSERT_EQ( port->ops->port_init( port ), QL_STATUS_OK );
   char* revision = nullptr;
   EXPECT_EQ( port->ops->reprogram_firmware( port, true, &revision ), QL_STATUS_OK );
   EXPECT_STREQ( revision, "0x01.05" );
   free( revision );
   EXPECT_EQ( port->ops->reprogram_firmware( port, false, &revision ), QL_STATUS_OK );
   EXPECT_STREQ( revision, "0x02.2a" );
   free( revision );
   EXPECT_EQ( bench( "get poe.firmware" ), "ok 0x02.2a" );
   EXPECT_EQ( port->ops->reprogram_firmware( port, false, &revision ), QL_STATUS_OK );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "PoE firmware is up to date." );
   free( revision );
}

TEST_F( PoeBoard, AnEmptyImageDoesNotRun ) {
   files.add( "poe.bin", "\x09\x09" );
   auto port = add( 1, { { "firmwarePath", "poe.bin" } } );
   ASSERT_EQ( port->ops->port_init( port ), QL_STATUS_OK );
   char* revision = nullptr;
   EXPECT_EQ( port->ops->reprogram_firmware( port, false, &revision ), QL_STATUS_DEVICE_ERROR );
   EXPECT_EQ( bench( "get poe.firmware" ), "ok failed" );
   EXPECT_STREQ( revision, "0x00.00" );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "Failed to reprogram firmware" );
   free( revision );
}

TEST_F( PoeBoard, StartUpLoadsTheFirmwareThatTheControllerHasLost ) {
   files.add( "poe.bin", firmware( 7, 0x11, 500 ) );
   auto port = add( 1, { { "firmwarePath", "poe.bin" } } );
   EXPECT_EQ( bench( "poe chip lose-firmware" ), "ok" );
   EXPECT_EQ( port->ops->port_init( port ), QL_STATUS_OK );
   EXPECT_EQ( bench( "get poe.firmware" ), "ok 0x07.11" );
   EXPECT_EQ( bench( "get poe.crc_reset" ), "ok 1" );
   EXPECT_EQ( stateOf( port ).port, QL_POE_PORT_DISABLED );
}

} // namespace
