#include "Callbacks.h"

#include "QuietHost.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <thread>

using namespace std::chrono_literals;

std::string nameOf( ql_status status ) {
   static const char* const names[] = { "QL_STATUS_OK", "QL_STATUS_NOT_PRESENT", "QL_STATUS_DEVICE_ERROR",
      "QL_STATUS_INVALID_ARGUMENT", "QL_STATUS_IO_ERROR", "QL_STATUS_NOT_SUPPORTED", "QL_STATUS_FAILED" };
   return status < std::size( names ) ? names[status]
                                      : fmt::format( "status {}", static_cast<int>( status ) );
}

std::ostream& operator<<( std::ostream& stream, const Outcome& outcome ) {
   return stream << nameOf( outcome.status ) << " \"" << outcome.text << '"';
}

const Outcome& Callback::expected( Harm harm ) const {
   switch ( harm ) {
   case Harm::Refused:
      return refused;
   case Harm::Corrupt:
      return corrupt;
   case Harm::Checksum:
      return checksum;
   case Harm::None:
      break;
   }
   return good;
}

namespace {

const Outcome done { QL_STATUS_OK, "" };
/** The server tells that the transaction has failed. */
const Outcome failed { QL_STATUS_FAILED, "" };
const Outcome ioError { QL_STATUS_IO_ERROR, "" };

Outcome ok( const std::string& text ) { return { QL_STATUS_OK, text }; }

/** The PoE controller's answer takes 4 ms and more. */
constexpr int poeRarity = 40;
/** Some twenty of them. */
constexpr int reportRarity = 2000;

class Rows {
public:
   /** Reads bytes that nothing protects, so that wrong ones are taken for right. */
   void reads( const std::string& name, const char* chip, std::function<Outcome()> call, const Outcome& good,
      const Outcome& corrupt, const Outcome& checksum ) {
      rows.push_back( { name, chip, std::move( call ), good, failed, corrupt, checksum } );
   }

   /** Writes, and does not depend on what it reads. */
   void writes( const std::string& name, const char* chip, std::function<ql_status()> call ) {
      rows.push_back( { name, chip, without( std::move( call ) ), done, failed, done, done } );
   }

   /** Talks to no chip. */
   void answers( const std::string& name, std::function<Outcome()> call, const Outcome& always ) {
      rows.push_back( { name, "", std::move( call ), always, always, always, always } );
   }

   /** A cage's signal, from a poll of the moment. */
   void polls( const std::string& name, std::function<Outcome()> call, const Outcome& good,
      const Outcome& corrupt, const Outcome& checksum ) {
      rows.push_back( { name, "cpld",
         [call = std::move( call )] {
            poll();
            return call();
         },
         good, ioError, corrupt, checksum } );
   }

   /** Exchanges messages with a checksum, to which both kinds of wrong bytes are one. */
   void exchanges( const std::string& name, std::function<Outcome()> call, const Outcome& good ) {
      rows.push_back( { name, "poe", std::move( call ), good, failed, ioError, ioError, false, poeRarity } );
   }

   static std::function<Outcome()> without( std::function<ql_status()> call ) {
      return [call = std::move( call )] { return Outcome { call(), "" }; };
   }

   /** Fires the timers as the host's would. */
   static void poll() {
      for ( auto& timer : timers ) {
         if ( timer->armed ) {
            timer->armed = false;
            timer->function( timer->argument );
         }
      }
   }

   std::vector<Callback> rows;
};

/** No value that a callback writes. */
constexpr int untouched = -1000;

std::string textOf( float value, int digits = 3 ) {
   return value == untouched ? "" : fmt::format( "{:.{}f}", value, digits );
}

template <typename Record, typename Value>
std::function<Outcome()> reading( Record* record, ql_status ( *get )( Record*, Value* ) ) {
   return [record, get] {
      auto value = static_cast<Value>( untouched );
      auto status = get( record, &value );
      return Outcome { status, value == static_cast<Value>( untouched ) ? "" : fmt::format( "{}", value ) };
   };
}

std::function<Outcome()> reading( ql_poe_port* port, ql_status ( *get )( ql_poe_port*, float* ) ) {
   return [port, get] {
      float value = untouched;
      auto status = get( port, &value );
      return Outcome { status, textOf( value ) };
   };
}

void addSensors( Rows& rows, const SwitchBoard& board ) {
   const struct {
      const char* name;
      const char* chip;
      const char* degrees;
      // Bit 7 of the first byte is the sign, which stands for -128. Bit 0 of the second is none of the
      // value's.
      const char* corrupt;
   } sensors[] = {
      { "inlet", "inlet", "24.5", "-103.5" },
      { "outlet", "outlet", "35.125", "-92.875" },
      { "asic", "asic", "58.25", "-69.75" },
      { "poe", "poe-temp", "41", "-87" },
   };

   for ( auto& row : sensors ) {
      auto sensor = board.sensor( row.name );
      rows.reads( std::string( row.name ) + " temperature", row.chip,
         reading( sensor, sensor->ops->get_temperature ), ok( row.degrees ), ok( row.corrupt ),
         ok( row.degrees ) );
   }
}

void addFans( Rows& rows, SwitchBoard& board ) {
   for ( auto name : { "fan1", "fan2", "fan3" } ) {
      auto fan = board.fan( name );
      // 8000 rpm are a count of 983, read as 0x1E and five bits of 0xB8; the speed is 7864320 by the count.
      // 0x9E and 0x38 make 5063, 0x1F and 0xB9 make 1015.
      rows.reads( std::string( name ) + " speed", "fans", reading( fan, fan->ops->get_rpm ), ok( "8000" ),
         ok( "1553" ), ok( "7748" ) );
      // The speed that it has.
      rows.writes(
         std::string( name ) + " set speed", "fans", [fan] { return fan->ops->set_rpm( fan, 8000 ); } );
      rows.answers(
         std::string( name ) + " report",
         [fan] {
            char* text = nullptr;
            auto status = fan->ops->debug_info( fan, &text );
            return Outcome { status, text ? "a text" : "" };
         },
         done );
   }
   auto tray = board.slot( "tray1" );
   rows.answers(
      "tray1 identification",
      [tray] {
         char* text = nullptr;
         auto status = tray->ops->get_presence( tray, &text );
         std::string line( text ? text : "" );
         free( text );
         return Outcome { status, line.substr( 0, line.find( '\n' ) ) };
      },
      ok( "FruFactoryIds: QLDevice" ) );
}

/** Modules are in cages 1 and 2, and 2 receives nothing; so register 0x10 is 0xEC and 0x1F is 0. */
void addCages( Rows& rows, const SwitchBoard& board ) {
   const Outcome notPresent { QL_STATUS_NOT_PRESENT, "" };
   ql_xcvr* cages[4];
   for ( int i = 0; i < 4; ++i ) {
      cages[i] = board.cage( fmt::format( "sfp{}", i + 1 ).c_str() );
   }
   auto& ops = cages[0]->ops->by_kind.sfp;
   auto presence = [&ops]( ql_xcvr* cage ) {
      return Rows::without( [&ops, cage] { return ops.get_presence( cage ); } );
   };
   // Bits 0, 2, 4, 5 and 7 of register 0x10.
   rows.polls( "sfp1 presence", presence( cages[0] ), done, done, notPresent );
   rows.polls( "sfp3 presence", presence( cages[2] ), notPresent, notPresent, notPresent );
   rows.polls( "sfp1 loss of signal", reading( cages[0], ops.get_rx_los ), ok( "0" ), ok( "0" ), ok( "0" ) );
   rows.polls( "sfp2 loss of signal", reading( cages[1], ops.get_rx_los ), ok( "1" ), ok( "1" ), ok( "1" ) );
   rows.polls( "sfp4 loss of signal", reading( cages[3], ops.get_rx_los ), ok( "1" ), ok( "0" ), ok( "1" ) );
   // Bits 0 and 7 of register 0x1F.
   rows.polls(
      "sfp1 transmit fault", reading( cages[0], ops.get_tx_fault ), ok( "0" ), ok( "0" ), ok( "1" ) );
   rows.polls(
      "sfp4 transmitter off", reading( cages[3], ops.get_tx_disable ), ok( "0" ), ok( "1" ), ok( "0" ) );
   rows.writes( "sfp2 set transmitter off", "cpld", [&ops, cage = cages[1]] {
      Rows::poll();
      return ops.set_tx_disable( cage, 0 );
   } );
   rows.rows.back().writesBack = true;
}

void addLights( Rows& rows, const SwitchBoard& board ) {
   const struct {
      const char* name;
      ql_led_status status;
      bool has;
   } lights[] = {
      { "led.sfp1", QL_LED_GOOD, true },
      { "led.sfp1", QL_LED_BAD, false },
      { "led.port1", QL_LED_BEACON, true },
      { "led.port1", QL_LED_RELEASE, false },
      { "led.status", QL_LED_UNKNOWN, true },
      { "led.status", QL_LED_BAD, false },
      { "led.power", QL_LED_BAD, true },
      { "led.power", QL_LED_WARNING, false },
      { "led.fan", QL_LED_BAD, true },
      { "led.cloud", QL_LED_BAD, false },
   };

   for ( auto& row : lights ) {
      auto led = board.led( row.name );
      auto set = [led, status = row.status] { return led->ops->set_light_setting( led, status ); };
      auto name = fmt::format( "{} set to {}", row.name, static_cast<int>( row.status ) );
      if ( row.has ) {
         rows.writes( name, "cpld", set );
      } else {
         rows.answers( name, Rows::without( set ), { QL_STATUS_INVALID_ARGUMENT, "" } );
      }
   }
}

void addBits( Rows& rows, const SwitchBoard& board ) {
   auto tray = board.gpio( "tray1.absent" );
   auto supply = board.gpio( "psu2.power_good" );
   auto reset = board.gpio( "poe.reset" );
   auto reads = [&rows]( const char* name, ql_gpio* gpio, const char* good, const char* checksum ) {
      rows.reads(
         name, "cpld", reading( gpio, gpio->ops->bit_read ), ok( good ), ok( good ), ok( checksum ) );
   };
   // Bits 0 and 5 of register 0x07, and bit 0 of register 0x05.
   reads( "tray1 absent", tray, "0", "1" );
   reads( "psu2 power good", supply, "1", "1" );
   reads( "PoE reset", reset, "0", "1" );
   // Both write the register and change nothing in it, since it has inputs only.
   rows.writes( "tray1 absent set", "cpld", [tray] { return tray->ops->bit_set( tray ); } );
   rows.writes( "tray1 absent clear", "cpld", [tray] { return tray->ops->bit_clear( tray ); } );
}

void addSystem( Rows& rows, const SwitchBoard& board ) {
   auto system = board.system();
   auto ops = system->ops;
   // Version 1.2a: the registers 0x01 and 0x2A.
   rows.reads(
      "system version", "cpld",
      [system, ops] {
         char version[8] = "";
         auto status = ops->get_chip_info( system, &version );
         return Outcome { status, version };
      },
      ok( "0x01.2a" ), ok( "0x81.aa" ), ok( "0x00.2b" ) );
   auto cause = [system, ops] {
      char reason[100] = "";
      auto status = ops->get_reload_cause( system, &reason, nullptr, nullptr );
      return Outcome { status, reason };
   };
   // The first call consumes it; from then on register 0x60 is 0, and 0x80 or 0x01 with a wrong bit.
   cause();
   rows.reads( "system reload cause", "cpld", cause, failed,
      ok( "Software shut down system due to critical system temperature" ),
      ok( "The system rebooted due to unknown reasons." ) );
   for ( bool keep : { true, false } ) {
      rows.writes( keep ? "system keep PoE" : "system reset PoE", "cpld",
         [system, ops, keep] { return ops->poe_reboot_action( system, keep ); } );
   }
   const Outcome notSupported { QL_STATUS_NOT_SUPPORTED, "" };
   rows.answers(
      "system power off", Rows::without( [system, ops] { return ops->poweroff( system ); } ), notSupported );
   rows.answers( "system power cycle", Rows::without( [system, ops] { return ops->powercycle( system ); } ),
      notSupported );
}

/** A port whose device has its power. */
ql_poe_port* poweredPort( const SwitchBoard& board, const char* name ) {
   auto port = board.port( name );
   port->ops->port_init( port );
   port->ops->set_pse( port, true );
   std::this_thread::sleep_for( 600ms ); // detection and classification
   port->ops->power_on( port, true );
   std::this_thread::sleep_for( 300ms );
   return port;
}

/** A device of class 4 that takes 22.5 W. */
void addPort( Rows& rows, const SwitchBoard& board ) {
   auto port = poweredPort( board, "port1" );
   auto ops = port->ops;
   // 838 steps of 0.06445 V; 22.5 W at 54 V.
   rows.exchanges( "port1 voltage", reading( port, ops->get_voltage ), ok( "54.009" ) );
   rows.exchanges( "port1 current", reading( port, ops->get_current ), ok( "0.417" ) );
   rows.exchanges( "port1 temperature", reading( port, ops->get_temperature ), ok( "40.000" ) );
   rows.exchanges(
      "port1 power",
      [port, ops] {
         float total = untouched, primary = untouched, alternative = untouched;
         auto status = ops->get_power( port, &total, &primary, &alternative );
         return Outcome { status, textOf( total, 1 ) + textOf( primary, 1 ) + textOf( alternative, 1 ) };
      },
      ok( "22.522.50.0" ) );
   rows.exchanges(
      "port1 state",
      [port, ops] {
         auto state = QL_POE_PORT_OVERLOAD, primary = state, alternative = state;
         auto pairs = QL_POE_PAIR_STATE_3;
         auto status = ops->get_power_state( port, &state, &primary, &alternative, &pairs );
         bool touched = state != QL_POE_PORT_OVERLOAD;
         return Outcome { status,
            touched ? fmt::format( "{}{}{}{}", static_cast<int>( state ), static_cast<int>( primary ),
                         static_cast<int>( alternative ), static_cast<int>( pairs ) )
                    : "" };
      },
      // Powered, by its primary channel; the other has found nothing.
      ok( "4411" ) );
   rows.exchanges(
      "port1 checks",
      [port, ops] {
         bool passed = false;
         auto status = ops->get_crc_status( port, &passed );
         return Outcome { status, passed ? "passed" : "" };
      },
      ok( "passed" ) );
   auto sets = [&rows]( const char* name, std::function<ql_status()> call ) {
      rows.exchanges( name, Rows::without( std::move( call ) ), done );
   };
   sets( "port1 enable", [port, ops] { return ops->set_pse( port, true ); } );
   sets( "port1 power on", [port, ops] { return ops->power_on( port, true ); } );
   sets( "port1 limit", [port, ops] { return ops->set_limit( port, QL_POE_LIMIT_CLASS, 0 ); } );
   sets( "port1 legacy", [port, ops] { return ops->set_legacy_detect( port, false ); } );
   rows.answers(
      "port1 report",
      [port, ops] {
         char* text = nullptr;
         auto length = ops->get_information( port, &text );
         bool whole = text && length > 0 && strlen( text ) == length;
         free( text );
         return Outcome { QL_STATUS_OK, whole ? "a text" : "" };
      },
      ok( "a text" ) );
   rows.rows.back().chip = "poe";
   rows.rows.back().rarity = reportRarity;
}

} // namespace

std::vector<Callback> makeCallbacks( SwitchBoard& board ) {
   Rows rows;
   addSensors( rows, board );
   addFans( rows, board );
   addCages( rows, board );
   addLights( rows, board );
   addBits( rows, board );
   addPort( rows, board );
   addSystem( rows, board );
   return rows.rows;
}
