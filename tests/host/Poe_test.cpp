#include "Plugin.h"
#include "support/HostServices.h"
#include "support/SocketServer.h"
#include "support/VirtualTime.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/** A host on hardware: behind the socket is a PoE controller that answers each command with a stored reply.
 */
class Poe : public Host::Test {
protected:
   Poe() {
      unsetenv( "SIMULATION_VMID" );
      EXPECT_EQ( plugin.poe_port_init( topology ), QL_STATUS_OK );
   }

   static std::string reply( uint8_t cmd, const std::map<size_t, uint8_t>& bytes = {} ) {
      std::string text( 12, '\0' );
      text[0] = static_cast<char>( cmd );
      for ( auto& [offset, value] : bytes ) {
         text.at( offset ) = static_cast<char>( value );
      }
      unsigned sum = 0;
      for ( size_t i = 0; i < 11; ++i ) {
         sum += static_cast<uint8_t>( text[i] );
      }
      text[11] = static_cast<char>( sum % 256 );
      return text;
   }

   /** "write 4/20 21 ff ..." with bus, chip and bytes; "read 4/20 ff 12" with register and size. */
   static std::string textOf( const Smbus::Request& request ) {
      auto word = request.address();
      char text[40];
      auto reg = static_cast<unsigned>( word & 0xFF );
      auto chip = static_cast<unsigned>( word >> 32 & 0x7F );
      auto bus = static_cast<unsigned>( word >> 39 & 0x7F );
      bool noStop = word >> 53 & 1;
      snprintf( text, sizeof( text ), "%s%s %u/%02x %02x", request.type() == Smbus::READ ? "read" : "write",
         noStop ? " no stop" : "", bus, chip, reg );
      std::string line = text;
      for ( auto byte : request.data() ) {
         snprintf( text, sizeof( text ), " %02x", static_cast<uint8_t>( byte ) );
         line += text;
      }
      EXPECT_EQ( request.size(), request.type() == Smbus::READ ? 12U : 11U );
      return line;
   }

   Smbus::TransactionResponse answer( const Smbus::TransactionRequest& transaction ) {
      Smbus::TransactionResponse response;
      response.set_failed( failing );
      for ( auto& request : transaction.request() ) {
         auto entry = response.add_response();
         if ( request.type() == Smbus::WRITE ) {
            command = static_cast<uint8_t>( request.address() & 0xFF );
         } else {
            entry->set_data( replies.count( command ) ? replies[command] : reply( command ) );
         }
      }
      return response;
   }

   /** What has been asked since the last call, a line a transaction. */
   std::vector<std::string> asked() {
      auto all = server.requests();
      std::vector<std::string> lines;
      for ( ; seen < all.size(); ++seen ) {
         EXPECT_EQ( all[seen].request_size(), 1 );
         lines.push_back( textOf( all[seen].request( 0 ) ) );
      }
      return lines;
   }

   /** The commands of the writes among them. */
   std::vector<std::string> commands() {
      std::vector<std::string> codes;
      for ( auto& line : asked() ) {
         if ( line.starts_with( "write" ) ) {
            codes.push_back( line.substr( line.find( '/' ) + 4, 2 ) );
         }
      }
      return codes;
   }

   static std::string arguments( const std::string& portId, const std::string& members = "" ) {
      return R"({ "did": 30, "driver": "BCM59121", "address": { "address": 32 },
         "driverArgs": { "numPorts": 12, "numAtPorts": 8, "portId": )" +
             portId + " }" + members + " }";
   }

   ql_poe_port* add( int id ) { return plugin.poe_port_add( arguments( std::to_string( id ) ).c_str() ); }

   static constexpr const char* topology = R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 4, "devices": [
      { "did": 30 } ] } ])";

   std::map<uint8_t, std::string> replies;
   bool failing = false;
   uint8_t command = 0;
   VirtualTime time;
   SocketServer server { SocketServer::answering( [this]( auto& request ) { return answer( request ); } ) };
   size_t seen = 0;
   Plugin plugin;
};

using PoeDeathTest = Poe;

TEST_F( Poe, APortIsMadeWithoutTraffic ) {
   auto port = add( 5 );
   ASSERT_NE( port, nullptr );
   EXPECT_THAT( asked(), IsEmpty() );
   EXPECT_TRUE( Host::hasTraced( 0, "Creating new BCM59121 PoE port id 5" ) );
   EXPECT_TRUE( Host::hasTraced( 0, "BCM59121 device created" ) );
}

TEST_F( Poe, AllPortsShareOneTableOfSixteenFunctions ) {
   auto first = add( 0 );
   auto second = add( 11 );
   EXPECT_NE( first, second );
   EXPECT_EQ( first->ops, second->ops );
   EXPECT_EQ( first->ops->size, 136U );
   auto slots = reinterpret_cast<void* const*>( first->ops );
   for ( int slot = 1; slot <= 16; ++slot ) {
      EXPECT_NE( slots[slot], nullptr ) << slot;
   }
}

TEST_F( Poe, AMessageIsAWriteAndAReadOfTwelveBytesEach ) {
   auto port = add( 5 );
   EXPECT_EQ( port->ops->set_pse( port, true ), QL_STATUS_OK );
   EXPECT_THAT(
      asked(), ElementsAre( "write 4/20 00 ff 05 01 ff ff ff ff ff ff ff fe", "read no stop 4/20 ff" ) );
   EXPECT_THAT( time.waits, ElementsAre( std::chrono::milliseconds( 4 ) ) );
   // From the first read on, everything goes out without a stop.
   EXPECT_EQ( port->ops->set_pse( port, false ), QL_STATUS_OK );
   EXPECT_THAT( asked(),
      ElementsAre( "write no stop 4/20 00 ff 05 00 ff ff ff ff ff ff ff fd", "read no stop 4/20 ff" ) );
}

TEST_F( Poe, AFailingServerIsToldByTheDriver ) {
   auto port = add( 5 );
   failing = true;
   EXPECT_EQ( port->ops->power_on( port, true ), QL_STATUS_FAILED );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "Error: Failed to write to PoE chip. Command: 1" );
   float volts = 7;
   EXPECT_EQ( port->ops->get_voltage( port, &volts ), QL_STATUS_FAILED );
   EXPECT_EQ( volts, 7 );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "Error: Failed to write to PoE chip. Command: 30." );
}

TEST_F( Poe, EveryCallbackReachesTheChip ) {
   replies = {
      { 0x20, reply( 0x20, { { 7, 1 }, { 9, 2 }, { 10, 2 } } ) },
      { 0x21, reply( 0x21, { { 3, 2 }, { 5, 4 }, { 9, 1 } } ) },
      { 0x3D, reply( 0x3D, { { 3, 4 }, { 4, 3 }, { 7, 6 }, { 8, 15 } } ) },
      { 0x30, reply( 0x30, { { 3, 3 }, { 4, 0xE8 }, { 5, 1 }, { 6, 0xF4 }, { 8, 220 }, { 10, 77 } } ) },
      { 0x3C, reply( 0x3C, { { 4, 40 }, { 6, 37 } } ) },
   };
   auto port = add( 9 );
   auto& ops = *port->ops;
   char* text = nullptr;
   ql_poe_port_state state, primary, alternative;
   ql_poe_port_pair_state pairs;
   ql_poe_device_class cls, primaryClass, alternativeClass;
   float value = 0, primaryPower = 0, alternativePower = 0;
   bool ok = false;

   EXPECT_EQ( ops.port_init( port ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "20", "17", "0a", "12", "08", "1c", "1e" ) );
   EXPECT_EQ( ops.set_pse( port, true ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "00" ) );
   EXPECT_EQ( ops.set_limit( port, QL_POE_LIMIT_USER, 15.4F ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "3d", "16", "15" ) );
   EXPECT_EQ( ops.set_shut_off_with_psu( port, 1, true ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "1e" ) );
   EXPECT_EQ( ops.power_on( port, true ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "01" ) );
   EXPECT_EQ( ops.set_legacy_detect( port, true ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "10" ) );

   EXPECT_EQ( ops.get_power_state( port, &state, &primary, &alternative, &pairs ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "21", "3d" ) );
   EXPECT_EQ( state, QL_POE_PORT_POWERED );
   EXPECT_EQ( primary, QL_POE_PORT_POWERED );
   EXPECT_EQ( alternative, QL_POE_PORT_DETECTING );
   EXPECT_EQ( pairs, QL_POE_PAIR_STATE_1 );
   EXPECT_EQ( ops.get_device_class( port, &cls, &primaryClass, &alternativeClass ), QL_STATUS_OK );
   EXPECT_THAT( commands(), IsEmpty() );
   EXPECT_EQ( cls, QL_POE_CLASS_4 );
   EXPECT_EQ( primaryClass, QL_POE_CLASS_3 );
   EXPECT_EQ( alternativeClass, QL_POE_CLASS_6 );
   EXPECT_EQ( ops.get_power( port, &value, &primaryPower, &alternativePower ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "30", "3c" ) );
   EXPECT_FLOAT_EQ( value, 7.7F );
   EXPECT_FLOAT_EQ( primaryPower, 4.0F );
   EXPECT_FLOAT_EQ( alternativePower, 3.7F );
   EXPECT_EQ( ops.get_voltage( port, &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 64.45F );
   EXPECT_EQ( ops.get_current( port, &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 0.5F );
   EXPECT_EQ( ops.get_temperature( port, &value ), QL_STATUS_OK );
   EXPECT_FLOAT_EQ( value, 0.0F );
   EXPECT_THAT( commands(), IsEmpty() );
   EXPECT_EQ( ops.get_crc_status( port, &ok ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "2d" ) );
   EXPECT_TRUE( ok );

   EXPECT_EQ( ops.reprogram_firmware( port, true, &text ), QL_STATUS_OK );
   EXPECT_STREQ( text, "0x01.02" );
   free( text );
   EXPECT_THAT( commands(), ElementsAre( "20" ) );
   auto length = ops.debug_info( port, &text, true );
   EXPECT_EQ( length, strlen( text ) );
   EXPECT_THAT( text, HasSubstr( "\n21 00 00 02 00 04 00 00 00 01 00 28\n" ) );
   free( text );
   EXPECT_EQ( commands().size(), 14U );
   length = ops.debug_info( port, &text, false );
   EXPECT_EQ( length, strlen( text ) );
   std::string report = text;
   free( text );
   EXPECT_THAT( report, HasSubstr( "\nPort status: powered                                  valid\n" ) );
   length = ops.get_information( port, &text );
   EXPECT_EQ( length, strlen( text ) );
   EXPECT_EQ( text, report );
   free( text );
   EXPECT_EQ( commands().size(), 28U );
}

TEST_F( Poe, ReadingsAreKeptForTwoSeconds ) {
   auto port = add( 5 );
   auto other = add( 5 );
   float value;
   EXPECT_EQ( port->ops->get_voltage( port, &value ), QL_STATUS_OK );
   EXPECT_EQ( other->ops->get_current( other, &value ), QL_STATUS_OK );
   time.advance( std::chrono::milliseconds( 1995 ) );
   EXPECT_EQ( port->ops->get_temperature( port, &value ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "30" ) );
   // 4 ms of the exchange and 1 ms more.
   time.advance( std::chrono::milliseconds( 1 ) );
   EXPECT_EQ( port->ops->get_temperature( port, &value ), QL_STATUS_OK );
   EXPECT_THAT( commands(), ElementsAre( "30" ) );
}

TEST_F( Poe, AnArgumentThatIsNoNumberThrows ) {
   try {
      plugin.poe_port_add( arguments( R"("first")" ).c_str() );
      ADD_FAILURE() << "nothing was thrown";
   } catch ( std::invalid_argument& error ) {
      EXPECT_STREQ( error.what(), "stoi" );
   }
}

TEST_F( PoeDeathTest, AControllerWithoutHamCanBeAddedAndNotUsed ) {
   auto port = plugin.poe_port_add( arguments( "5", R"(, "provideHam": 0)" ).c_str() );
   ASSERT_NE( port, nullptr );
   EXPECT_DEATH( port->ops->set_pse( port, true ), "Assertion `ham' failed" );
}

} // namespace
