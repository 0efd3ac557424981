#include "Plugin.h"
#include "support/HostServices.h"
#include "support/SocketServer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <map>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/**
 * A host on hardware: the plug-in talks to a server at the socket that keeps plain registers for each chip.
 * What goes over the socket is written down as one line a transaction, with every field of every request.
 */
class Transport : public Host::Test {
protected:
   Transport() {
      unsetenv( "SIMULATION_VMID" );
      EXPECT_EQ( plugin.system_init( topology ), QL_STATUS_OK );
   }

   /** What the bit fields of the address word say, from the least significant on. */
   struct Word {
      explicit Word( uint64_t word ) : word_( word ) {}

      unsigned take( unsigned bits ) {
         auto value = static_cast<unsigned>( word_ & ( ( uint64_t { 1 } << bits ) - 1 ) );
         word_ >>= bits;
         return value;
      }

   private:
      uint64_t word_;
   };

   static std::string textOf( const Smbus::Request& request ) {
      Word word( request.address() );
      auto reg = word.take( 32 );
      auto chip = word.take( 7 );
      auto bus = word.take( 7 );
      auto accelerator = word.take( 7 );
      auto noStop = word.take( 1 );
      auto timeout = word.take( 3 );
      auto size = word.take( 2 );
      auto rest = word.take( 5 );
      char text[120];
      snprintf( text, sizeof( text ), "%s %u/%02x reg %02x",
         Smbus::RequestType_Name( request.type() ).c_str(), bus, chip, reg );
      std::string line = text;
      for ( auto byte : request.data() ) {
         snprintf( text, sizeof( text ), " =%02x", static_cast<uint8_t>( byte ) );
         line += text;
      }

      // The usual is left out: one byte, a register number of one byte, an I2C master without an address.
      const struct {
         const char* name;
         unsigned value;
         unsigned usual;
      } others[] = { { "accelerator", accelerator, 0 }, { "noStop", noStop, 0 }, { "timeout", timeout, 0 },
         { "addrSize", size, 1 }, { "delays", rest, 0 }, { "size", request.size(), 1 },
         { "flag", request.flag(), 0 }, { "pci", request.pciaddress(), 0 },
         { "master", static_cast<unsigned>( request.mastertype() ), 1 } };

      for ( auto& other : others ) {
         if ( other.value != other.usual ) {
            line += std::string( " " ) + other.name + "=" + std::to_string( other.value );
         }
      }
      return line;
   }

   Smbus::TransactionResponse answer( const Smbus::TransactionRequest& transaction ) {
      Smbus::TransactionResponse response;
      response.set_failed( failing );
      for ( auto& request : transaction.request() ) {
         Word word( request.address() );
         auto reg = word.take( 32 );
         auto chip = word.take( 7 );
         auto& content = registers[{ chip, reg }];
         auto entry = response.add_response();
         if ( request.type() == Smbus::READ ) {
            entry->set_data( std::string( 1, static_cast<char>( content ) ) );
         } else if ( !failing ) {
            content = static_cast<uint8_t>( request.data().at( 0 ) );
         }
      }
      return response;
   }

   /** What has been asked since the last call. */
   std::vector<std::string> asked() {
      auto all = server.requests();
      std::vector<std::string> lines;
      for ( ; seen < all.size(); ++seen ) {
         EXPECT_FALSE( all[seen].has_retries() );
         EXPECT_FALSE( all[seen].has_client() );
         std::string line;
         for ( auto& request : all[seen].request() ) {
            EXPECT_EQ( request.has_data(), request.type() == Smbus::WRITE );
            line += ( line.empty() ? "" : "; " ) + textOf( request );
         }
         lines.push_back( line );
      }
      return lines;
   }

   static std::string arguments(
      unsigned did, const char* driver, unsigned chip, const std::string& driverArgs ) {
      return R"({ "did": )" + std::to_string( did ) + R"(, "driver": ")" + driver +
             R"(", "address": { "address": )" + std::to_string( chip ) + R"( }, "driverArgs": { )" +
             driverArgs + " } }";
   }

   ql_xcvr* cage( unsigned id, unsigned bit ) {
      auto place = [bit]( const char* name, unsigned reg, unsigned shift ) {
         auto key = std::string( "\"" ) + name;
         return key + R"(Reg": )" + std::to_string( reg ) + ", " + key + R"(Bit": )" +
                std::to_string( bit + shift ) + ", " + key + R"(ActiveHigh": "true")";
      };
      auto driverArgs = R"("type": "sfp", "id": )" + std::to_string( id ) + ", " +
                        place( "presence", 0x1F, 0 ) + ", " + place( "rxLos", 0x10, 0 ) + ", " +
                        place( "txFault", 0x1F, 2 ) + ", " + place( "txDisable", 0x11, 0 );
      return plugin.xcvr_add( arguments( 21, "SelvaneXcvr", 0x30, driverArgs ).c_str() );
   }

   static constexpr const char* topology = R"([
      { "type": "I2C", "ham": "QuillonSmbus", "id": 3, "devices": [ { "did": 1 }, { "did": 10 } ] },
      { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [
         { "did": 20, "label": "CpuCpld", "driver": null, "address": { "address": 48 } },
         { "did": 21 }, { "did": 22 }, { "did": 23 } ] },
      { "type": "SCD", "ham": "QuillonSmbus", "pci": 66051, "accelerators": [ { "id": 9, "busses": [
         { "id": 4, "devices": [ { "did": 40 } ] } ] } ] } ])";

   std::map<std::pair<unsigned, unsigned>, uint8_t> registers;
   bool failing = false;
   SocketServer server { SocketServer::answering( [this]( auto& request ) { return answer( request ); } ) };
   size_t seen = 0;
   Plugin plugin;
};

TEST_F( Transport, FansSendTheirBytes ) {
   registers = { { { 0x2C, 0x52 }, 0x20 }, { { 0x2C, 0x5E }, 0x0D }, { { 0x2C, 0x5F }, 0x30 } };
   auto fan = plugin.fan_add(
      arguments( 10, "EMC2305", 0x2C, R"("fanId": 3, "maxRpm": 20000, "registerOffset": 2)" ).c_str() );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 3/2c reg 20 =00", "READ 3/2c reg 52" ) );
   int rpm = 0;
   EXPECT_EQ( fan->ops->get_rpm( fan, &rpm ), QL_STATUS_OK );
   EXPECT_EQ( rpm, 18635 );
   EXPECT_THAT( asked(), ElementsAre( "READ 3/2c reg 5e; READ 3/2c reg 5f" ) ) << "both in one batch";
   EXPECT_EQ( fan->ops->set_rpm( fan, 10000 ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 3/2c reg 50 =7f" ) );
}

TEST_F( Transport, FansThatFailSayHow ) {
   auto fan = plugin.fan_add(
      arguments( 10, "EMC2305", 0x2C, R"("fanId": 1, "maxRpm": 20000, "registerOffset": 0)" ).c_str() );
   int rpm = 7;
   EXPECT_EQ( fan->ops->get_rpm( fan, &rpm ), QL_STATUS_DEVICE_ERROR ) << "a count of 0 is a fan that stands";
   EXPECT_EQ( rpm, 0 );
   failing = true;
   rpm = 7;
   EXPECT_EQ( fan->ops->get_rpm( fan, &rpm ), QL_STATUS_FAILED );
   EXPECT_EQ( rpm, 7 );
   EXPECT_EQ( fan->ops->set_rpm( fan, 1 ), QL_STATUS_FAILED );
}

TEST_F( Transport, CagesArePolledInOneBatchOfAscendingRegisters ) {
   cage( 1, 0 );
   EXPECT_THAT( asked(), ElementsAre( "READ 5/30 reg 10; READ 5/30 reg 11; READ 5/30 reg 1f" ) );
   cage( 2, 1 );
   asked();
   Host::timers.at( 0 )->fire();
   EXPECT_THAT( asked(), ElementsAre( "READ 5/30 reg 10; READ 5/30 reg 11; READ 5/30 reg 1f" ) );
   EXPECT_THAT( Host::timers.at( 0 )->settings, ElementsAre( 1000U, 1000U ) );
}

TEST_F( Transport, CagesAnswerWithoutTraffic ) {
   registers = { { { 0x30, 0x1F }, 0x05 }, { { 0x30, 0x10 }, 0x02 } };
   auto first = cage( 1, 0 );
   auto second = cage( 2, 1 );
   asked();
   auto& ops = first->ops->by_kind.sfp;
   int value = 9;
   EXPECT_EQ( ops.get_presence( first ), QL_STATUS_OK );
   EXPECT_EQ( ops.get_tx_fault( first, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( ops.get_rx_los( first, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0 );
   EXPECT_EQ( ops.get_presence( second ), QL_STATUS_NOT_PRESENT );
   EXPECT_EQ( ops.get_rx_los( second, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_THAT( asked(), IsEmpty() );
}

TEST_F( Transport, TransmitDisableIsWrittenAgainstTheCache ) {
   registers[{ 0x30, 0x11 }] = 0x40;
   auto second = cage( 2, 1 );
   asked();
   // What the register has become meanwhile is not looked at.
   registers[{ 0x30, 0x11 }] = 0x80;
   EXPECT_EQ( second->ops->by_kind.sfp.set_tx_disable( second, 1 ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 5/30 reg 11 =42" ) );
}

TEST_F( Transport, AFailedPollFailsReadsAndIsTriedAgain ) {
   auto xcvr = cage( 1, 0 );
   failing = true;
   Host::timers.at( 0 )->fire();
   EXPECT_EQ( xcvr->ops->by_kind.sfp.get_presence( xcvr ), QL_STATUS_IO_ERROR );
   failing = false;
   Host::timers.at( 0 )->fire();
   EXPECT_EQ( xcvr->ops->by_kind.sfp.get_presence( xcvr ), QL_STATUS_NOT_PRESENT );
}

TEST_F( Transport, LedsSendTheirCodes ) {
   auto port = plugin.led_add(
      arguments( 22, "SelvanePortLed", 0x30, R"("ledName": "p1", "ledReg": 128, "portType": "rj45")" )
         .c_str() );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 5/30 reg 4c =00" ) );
   EXPECT_EQ( port->ops->set_light_setting( port, QL_LED_BEACON ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 5/30 reg 80 =e3" ) );
   EXPECT_EQ( port->ops->set_light_setting( port, QL_LED_BAD ), QL_STATUS_INVALID_ARGUMENT );
   auto status = plugin.led_add( arguments( 23, "SelvaneSystemLed", 0x30, R"("reg": 64, "id": 1)" ).c_str() );
   EXPECT_THAT( asked(), IsEmpty() );
   EXPECT_EQ( status->ops->set_light_setting( status, QL_LED_UNKNOWN ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "WRITE 5/30 reg 40 =09" ) );
}

TEST_F( Transport, BitsAreReadChangedAndWritten ) {
   registers[{ 0x30, 0x07 }] = 0x50;
   auto gpio =
      plugin.gpio_add( arguments( 20, "GpioDriver", 0x30, R"("register": 7, "bitpos": 3)" ).c_str() );
   uint32_t value = 9;
   EXPECT_EQ( gpio->ops->bit_read( gpio, &value ), QL_STATUS_OK );
   EXPECT_EQ( value, 0U );
   EXPECT_EQ( gpio->ops->bit_set( gpio ), QL_STATUS_OK );
   EXPECT_EQ( gpio->ops->bit_clear( gpio ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "READ 5/30 reg 07", "READ 5/30 reg 07", "WRITE 5/30 reg 07 =58",
                            "READ 5/30 reg 07", "WRITE 5/30 reg 07 =50" ) );
}

TEST_F( Transport, TheSystemTalksToTheCpldOfTheTopology ) {
   registers = { { { 0x30, 0x60 }, 0x40 }, { { 0x30, 0x00 }, 0x2A }, { { 0x30, 0x01 }, 0x01 } };
   auto system = plugin.system_add( "{}" );
   char reason[100] = "";
   EXPECT_EQ( system->ops->get_reload_cause( system, &reason, nullptr, nullptr ), QL_STATUS_OK );
   EXPECT_STREQ( reason, "The system rebooted due to a Power Loss" );
   char version[8] = "";
   EXPECT_EQ( system->ops->get_chip_info( system, &version ), QL_STATUS_OK );
   EXPECT_STREQ( version, "0x01.2a" );
   EXPECT_EQ( system->ops->poe_reboot_action( system, false ), QL_STATUS_OK );
   EXPECT_THAT( asked(), ElementsAre( "READ 5/30 reg 60", "WRITE 5/30 reg 60 =00", "READ 5/30 reg 00",
                            "READ 5/30 reg 01", "WRITE 5/30 reg 06 =01" ) );
   EXPECT_EQ( system->ops->get_reload_cause( system, &reason, nullptr, nullptr ), QL_STATUS_FAILED );
}

TEST_F( Transport, AChipBehindAnAcceleratorBearsItsWholePath ) {
   auto text =
      R"({ "did": 40, "driver": "GpioDriver", "address": { "address": 72, "addrSize": 2, "busTimeout": 5,
      "writeDelay": 2, "readDelay": 1, "extraDelay": 1 }, "driverArgs": { "register": 4660, "bitpos": 0 } })";
   auto gpio = plugin.gpio_add( text );
   ASSERT_NE( gpio, nullptr );
   uint32_t value = 9;
   EXPECT_EQ( gpio->ops->bit_read( gpio, &value ), QL_STATUS_OK );
   // Of the five delay bits, the lowest is the extra delay, then two of the write delay and two of the read
   // delay.
   EXPECT_THAT(
      asked(), ElementsAre( "READ 4/48 reg 1234 accelerator=9 timeout=5 delays=13 pci=66051 master=2" ) );
}

} // namespace
