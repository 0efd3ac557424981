/*
 * A host that works with every object of the board of boards/selvane, while a hostile server answers: replies
 * of the right lengths with any contents, blocks of any length, PoE messages with a right or a wrong
 * checksum, transactions that fail in each way. One byte of the input says what the host does next, and the
 * bytes behind it are the replies. A number that is shorter than asked for ends the process by contract and
 * is not sent.
 */

#include "FirmwareDirectory.h"

#include "QLSocket.h"
#include "quillon/ql.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <smbus.pb.h>

#include <cassert>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

struct ql_timer {
   void ( *function )( void* );
   void* argument;
   bool isArmed = false;
};

namespace {

/** What the input has not told yet; behind its end there are zeros. */
struct Input {
   const uint8_t* next = nullptr;
   const uint8_t* end = nullptr;

   uint8_t byte() { return next < end ? *next++ : uint8_t { 0 }; }

   int word() {
      int high = byte();
      return high << 8 | byte();
   }

   std::string bytes( size_t count ) {
      std::string text( count, '\0' );
      for ( auto& each : text ) {
         each = static_cast<char>( byte() );
      }
      return text;
   }
};

Input input;
/** While objects are made all goes well: their chips must take what they are set to. */
bool isHostile = false;

/** The ends of a transaction that are none of its answers. */
enum Ending : uint8_t {
   lost = 0xFF,
   refused = 0xFE,
   refusedSilently = 0xFD,
   tooShort = 0xFC,
   tooLong = 0xFB
};

constexpr uint32_t poeMessage = 12;
uint8_t poeCommand = 0;

/** A reply of the PoE controller: mostly to the last command, and mostly with the right checksum. */
std::string poeReply() {
   constexpr uint8_t anyBytes = 0xFF;
   auto choice = input.byte();
   auto reply = input.bytes( poeMessage );
   if ( choice != anyBytes ) {
      reply[0] = static_cast<char>( choice & 1 ? choice : poeCommand );
      reply.back() = static_cast<char>( std::accumulate( reply.begin(), reply.end() - 1, 0 ) );
   }
   return reply;
}

std::string answerTo( const Smbus::Request& request ) {
   switch ( request.type() ) {
   case Smbus::READ:
      if ( request.size() == poeMessage ) {
         return poeReply();
      }
      return input.bytes( std::max( request.size(), 1U ) );
   case Smbus::PROCESS_CALL:
      return input.bytes( 2 );
   case Smbus::BLOCK_READ:
      return input.bytes( input.byte() );
   default:
      poeCommand = static_cast<uint8_t>( request.address() );
      return "";
   }
}

} // namespace

namespace {

/** The host's time, which waits move on. The fuzzer has threads of its own, with the real time. */
std::chrono::nanoseconds now = std::chrono::seconds( 1000 );
thread_local bool isHost = false;

void wait( std::chrono::nanoseconds time ) {
   if ( isHost ) {
      now += time;
   } else {
      auto seconds = std::chrono::floor<std::chrono::seconds>( time );
      timespec real { seconds.count(), ( time - seconds ).count() };
      nanosleep( &real, nullptr );
   }
}

} // namespace

extern "C" {

unsigned sleep( unsigned seconds ) {
   wait( std::chrono::seconds( seconds ) );
   return 0;
}

int usleep( useconds_t time ) {
   wait( std::chrono::microseconds( time ) );
   return 0;
}

int clock_gettime( clockid_t clock, timespec* time ) {
   if ( clock != CLOCK_MONOTONIC || !isHost ) {
      return static_cast<int>( syscall( SYS_clock_gettime, clock, time ) );
   }
   auto seconds = std::chrono::floor<std::chrono::seconds>( now );
   *time = { seconds.count(), ( now - seconds ).count() };
   return 0;
}
}

namespace QuillonLibrary {

// Stands before the class of the library, which speaks to a server.

QLSocket::QLSocket() = default;
QLSocket::~QLSocket() = default;

int QLSocket::setup() { return 0; }

void QLSocket::cleanup() {}

int QLSocket::sendRequestWait( Smbus::TransactionRequest* request, Smbus::TransactionResponse** response ) {
   auto ending = isHostile ? input.byte() : uint8_t { 0 };
   if ( ending == lost ) {
      errno = ETIMEDOUT;
      return -1;
   }
   auto reply = std::make_unique<Smbus::TransactionResponse>();
   reply->set_failed( ending == refused || ending == refusedSilently );
   if ( ending == refused ) {
      reply->set_reason( input.bytes( input.byte() ) );
   }
   for ( auto& each : request->request() ) {
      reply->add_response()->set_data( answerTo( each ) );
   }
   if ( ending == tooLong ) {
      reply->add_response();
   } else if ( ending == tooShort && reply->response_size() > 0 ) {
      reply->mutable_response()->RemoveLast();
   }
   *response = reply.release();
   return 0;
}

} // namespace QuillonLibrary

namespace {

std::vector<std::unique_ptr<ql_timer>> timers;

} // namespace

void ql_trace( int, const char* format, ... ) {
   // Formatted, so that what the library gives is looked at.
   char line[512];
   va_list arguments;
   va_start( arguments, format );
   vsnprintf( line, sizeof line, format, arguments );
   va_end( arguments );
}

ql_timer* ql_timer_add( void ( *function )( void* ), void* argument ) {
   timers.emplace_back( new ql_timer { function, argument } );
   return timers.back().get();
}

int ql_timer_set( ql_timer* timer, uint32_t ) {
   timer->isArmed = true;
   return 0;
}

void ql_timer_delete( ql_timer* timer ) { timer->isArmed = false; }

namespace {

using Action = std::function<void()>;

std::string read( const std::string& path ) {
   std::ostringstream text;
   text << std::ifstream( path ).rdbuf();
   return text.str();
}

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
   actions.push_back( [=] {
      char* revision = nullptr;
      ops.reprogram_firmware( port, input.byte() & 1, &revision );
      release( revision );
   } );
}

/** All that a host can do with the objects of a board's document. */
class HostOfAll {
public:
   HostOfAll() {
      firmware_.add( "selvane.fw", std::string( "\x01\x23", 2 ) + std::string( 300, '\x5A' ) );
      auto topology = read( BOARD "/topology.json" );
      document_.Parse( read( BOARD "/objects.json" ).c_str() );
      assert( ql_system_init( topology.c_str() ) == QL_STATUS_OK );
      for ( auto& object : document_["objects"].GetArray() ) {
         add( object );
      }
      actions_.push_back( [] { now += std::chrono::seconds( 3 ); } );
      actions_.push_back( [] { fireTimers(); } );
   }

   void run() {
      isHostile = true;
      while ( input.next < input.end ) {
         auto choice = input.word();
         actions_[static_cast<size_t>( choice ) % actions_.size()]();
      }
   }

private:
   void add( rapidjson::Value& object ) {
      std::string kind = object["kind"].GetString();
      if ( kind == "system" ) {
         addTo( actions_, ql_system_add( "" ) );
         return;
      }
      auto args = textOf( object["args"] );
      if ( kind == "temp_sensor" ) {
         addTo( actions_, ql_temp_sensor_add( args.c_str(), 60, 70 ) );
      } else if ( kind == "fan" ) {
         addTo( actions_, ql_fan_add( args.c_str() ) );
      } else if ( kind == "slot" ) {
         // Its text must outlive it.
         texts_.push_back( std::make_unique<std::string>( args ) );
         addTo( actions_, ql_slot_add( texts_.back()->c_str() ) );
      } else if ( kind == "led" ) {
         addTo( actions_, ql_led_add( args.c_str() ) );
      } else if ( kind == "gpio" ) {
         addTo( actions_, ql_gpio_add( args.c_str() ) );
      } else if ( kind == "xcvr" ) {
         addTo( actions_, ql_xcvr_add( args.c_str() ) );
      } else {
         assert( kind == "poe_port" );
         addTo( actions_, ql_poe_port_add( args.c_str() ) );
      }
   }

   std::string textOf( rapidjson::Value& args ) {
      if ( args.HasMember( "driverArgs" ) && args["driverArgs"].HasMember( "numPorts" ) ) {
         args["driverArgs"].AddMember( "firmwarePath", "selvane.fw", document_.GetAllocator() );
      }
      rapidjson::StringBuffer text;
      rapidjson::Writer writer( text );
      args.Accept( writer );
      return text.GetString();
   }

   static void fireTimers() {
      for ( auto& timer : timers ) {
         if ( std::exchange( timer->isArmed, false ) ) {
            timer->function( timer->argument );
         }
      }
   }

   FirmwareDirectory firmware_;
   rapidjson::Document document_;
   std::vector<std::unique_ptr<std::string>> texts_;
   std::vector<Action> actions_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   // Objects of the library live until the process ends.
   isHost = true;
   static auto& host = *new HostOfAll;
   input = { data, data + size };
   host.run();
   isHost = false;
   return 0;
}
