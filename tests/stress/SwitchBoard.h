#ifndef STRESS_SWITCH_BOARD_H
#define STRESS_SWITCH_BOARD_H

#include "host/Plugin.h"

#include <rapidjson/document.h>

#include <string>

/** The text of a file of the switch's own board. */
std::string boardFile( const std::string& name );

/** The switch's own board before a host: the library with the board's topology, and the board's objects. */
class SwitchBoard {
public:
   /** Connects to the server. */
   SwitchBoard();

   ql_temp_sensor* sensor( const char* name ) const;

   ql_fan* fan( const char* name ) const { return plugin_.fan_add( argsOf( name ).c_str() ); }

   /** The slot keeps its arguments. */
   ql_slot* slot( const char* name );

   ql_xcvr* cage( const char* name ) const { return plugin_.xcvr_add( argsOf( name ).c_str() ); }

   ql_led* led( const char* name ) const { return plugin_.led_add( argsOf( name ).c_str() ); }

   ql_gpio* gpio( const char* name ) const { return plugin_.gpio_add( argsOf( name ).c_str() ); }

   ql_poe_port* port( const char* name ) const { return plugin_.poe_port_add( argsOf( name ).c_str() ); }

   ql_system* system() const { return plugin_.system_add( "{}" ); }

private:
   const rapidjson::Value& objectOf( const char* name ) const;
   std::string argsOf( const char* name ) const;

   Plugin plugin_;
   rapidjson::Document objects_;
   std::string slotArgs_;
};

#endif
