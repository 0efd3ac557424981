#include "Objects.h"

#include <cassert>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

void release( char* text ) {
   // The whole text must be there.
   assert( !text || std::string_view( text ).size() < 1U << 20 );
   std::free( text );
}

void addTo( std::vector<Action>& actions, ql_temp_sensor* sensor ) {
   actions.push_back( [=] {
      float degrees = 0;
      sensor->ops->get_temperature( sensor, &degrees );
   } );
}

void addTo( std::vector<Action>& actions, ql_fan* fan ) {
   actions.push_back( [=] {
      int rpm = 0;
      fan->ops->get_rpm( fan, &rpm );
      assert( rpm >= 0 );
   } );
   actions.push_back( [=] { fan->ops->set_rpm( fan, input.word() ); } );
}

void addTo( std::vector<Action>& actions, ql_slot* slot ) {
   actions.push_back( [=] {
      char* text = nullptr;
      slot->ops->get_presence( slot, &text );
      release( text );
   } );
}

void addTo( std::vector<Action>& actions, ql_led* led ) {
   actions.push_back( [=] {
      led->ops->set_light_setting( led, static_cast<ql_led_status>( input.byte() % ( QL_LED_RELEASE + 1 ) ) );
   } );
}

void addTo( std::vector<Action>& actions, ql_gpio* gpio ) {
   actions.push_back( [=] {
      uint32_t value = 0;
      gpio->ops->bit_read( gpio, &value );
      assert( value <= 1 );
   } );
   actions.push_back( [=] { gpio->ops->bit_set( gpio ); } );
   actions.push_back( [=] { gpio->ops->bit_clear( gpio ); } );
}

void addTo( std::vector<Action>& actions, ql_xcvr* xcvr ) {
   auto& sfp = xcvr->ops->by_kind.sfp;
   actions.push_back( [=] { sfp.get_presence( xcvr ); } );
   for ( auto signal : { sfp.get_tx_fault, sfp.get_rx_los, sfp.get_tx_disable } ) {
      actions.push_back( [=] {
         int value = 0;
         signal( xcvr, &value );
         assert( value == 0 || value == 1 );
      } );
   }
   actions.push_back( [=] { sfp.set_tx_disable( xcvr, input.byte() & 1 ); } );
}

void addTo( std::vector<Action>& actions, ql_system* system ) {
   actions.push_back( [=] {
      char reason[100];
      time_t when = 0;
      char information[500];
      if ( system->ops->get_reload_cause( system, &reason, &when, &information ) == QL_STATUS_OK ) {
         assert( memchr( reason, 0, sizeof reason ) );
      }
   } );
   actions.push_back( [=] {
      char version[8];
      if ( system->ops->get_chip_info( system, &version ) == QL_STATUS_OK ) {
         assert( memchr( version, 0, sizeof version ) );
      }
   } );
   actions.push_back( [=] { system->ops->poe_reboot_action( system, input.byte() & 1 ); } );
}

void addPoeReadings( std::vector<Action>& actions, ql_poe_port* port ) {
   auto& ops = *port->ops;
   actions.push_back( [=] {
      ql_poe_port_state state {};
      ql_poe_port_state primary {};
      ql_poe_port_state alternative {};
      ql_poe_port_pair_state pairs {};
      ops.get_power_state( port, &state, &primary, &alternative, &pairs );
      assert( state <= QL_POE_PORT_OVERLOAD && pairs <= QL_POE_PAIR_STATE_3 );
   } );
   actions.push_back( [=] {
      ql_poe_device_class whole {};
      ql_poe_device_class primary {};
      ql_poe_device_class alternative {};
      ops.get_device_class( port, &whole, &primary, &alternative );
      assert( whole <= QL_POE_CLASS_INVALID );
   } );
   actions.push_back( [=] {
      float total = 0;
      float primary = 0;
      float alternative = 0;
      ops.get_power( port, &total, &primary, &alternative );
   } );
   for ( auto measure : { ops.get_voltage, ops.get_current, ops.get_temperature } ) {
      actions.push_back( [=] {
         float value = 0;
         measure( port, &value );
      } );
   }
   actions.push_back( [=] {
      bool isGood = false;
      ops.get_crc_status( port, &isGood );
   } );
   for ( auto raw : { false, true } ) {
      actions.push_back( [=] {
         char* text = nullptr;
         auto length = ops.debug_info( port, &text, raw );
         assert( !text || std::string_view( text ).size() == length );
         release( text );
      } );
   }
   actions.push_back( [=] {
      char* text = nullptr;
      ops.get_information( port, &text );
      release( text );
   } );
}

void addTo( std::vector<Action>& actions, ql_poe_port* port ) {
   auto& ops = *port->ops;
   addPoeReadings( actions, port );
   actions.push_back( [=] { ops.port_init( port ); } );
   for ( auto change : { ops.set_pse, ops.power_on, ops.set_legacy_detect } ) {
      actions.push_back( [=] { change( port, input.byte() & 1 ); } );
   }
   actions.push_back( [=] {
      auto mode = static_cast<ql_poe_power_limit_mode>( input.byte() & 1 );
      ops.set_limit( port, mode, static_cast<float>( static_cast<int8_t>( input.byte() ) ) );
   } );
   actions.push_back( [=] {
      auto supply = input.byte();
      ops.set_shut_off_with_psu( port, supply, input.byte() & 1 );
   } );
}

void addFirmwareUpdate( std::vector<Action>& actions, ql_poe_port* port ) {
   actions.push_back( [=] {
      char* revision = nullptr;
      port->ops->reprogram_firmware( port, input.byte() & 1, &revision );
      release( revision );
   } );
}

} // namespace

Input input;

bool Objects::add( const Object& object ) {
   // The text of a slot must outlive it.
   auto args = texts_.emplace_back( std::make_unique<std::string>( object.args ) )->c_str();
   if ( object.kind == "system" ) {
      return keep( ql_system_add( args ) );
   }
   if ( object.kind == "temp_sensor" ) {
      return keep( ql_temp_sensor_add( args, object.alert, object.critical ) );
   }
   if ( object.kind == "fan" ) {
      return keep( ql_fan_add( args ) );
   }
   if ( object.kind == "slot" ) {
      return keep( ql_slot_add( args ) );
   }
   if ( object.kind == "led" ) {
      return keep( ql_led_add( args ) );
   }
   if ( object.kind == "gpio" ) {
      return keep( ql_gpio_add( args ) );
   }
   if ( object.kind == "xcvr" ) {
      return keep( ql_xcvr_add( args ) );
   }
   // No driver makes a power supply.
   assert( object.kind == "poe_port" );
   auto port = ql_poe_port_add( args );
   if ( port && updatesFirmware_ ) {
      keep( port );
      addFirmwareUpdate( actions, port );
      return true;
   }
   return keep( port );
}

template <typename Record>
bool Objects::keep( Record* record ) {
   if ( record ) {
      addTo( actions, record );
   }
   return record;
}
