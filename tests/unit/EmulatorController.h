#ifndef EMULATOR_CONTROLLER_H
#define EMULATOR_CONTROLLER_H

#include "EmulatorBus.h"

#include "emulator/Bcm59121.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <numeric>
#include <sstream>
#include <string>

namespace Emulator {

/** The bytes of a text such as "21 FF 05". */
inline Bytes bytesOf( const std::string& text ) {
   std::istringstream stream( text );
   stream >> std::hex;
   Bytes bytes;
   for ( unsigned byte = 0; stream >> byte; ) {
      bytes.push_back( static_cast<uint8_t>( byte ) );
   }
   return bytes;
}

inline std::string textOf( const Bytes& bytes ) { return fmt::format( "{:02X}", fmt::join( bytes, " " ) ); }

/** A BCM59121 as a host and somebody at the bench meet it. */
class Controller : public Bcm59121 {
public:
   /** Eight 2-pair ports and four 4-pair ports, booted. */
   explicit Controller( const Options& options = { { "ports", "12" }, { "two_pair_ports", "8" } } )
      : Bcm59121( options ) {
      advance( std::chrono::milliseconds( 500 ) );
   }

   bool send( const std::string& message ) { return sendTo( *this, bytesOf( message ) ); }

   /** What can be read now. */
   std::string reply() { return textOf( readRegister( *this, 0xFF, 12 ) ); }

   /** A message of 12 bytes, a pause of 20 ms, and what can be read then. */
   std::string ask( const std::string& message ) {
      if ( !send( message ) ) {
         return "no acknowledge";
      }
      advance( std::chrono::milliseconds( 20 ) );
      return reply();
   }

   /** Asks with a command, its first arguments from byte 2 on, and 0xff behind them. */
   Bytes tell( uint8_t command, Bytes arguments, uint8_t subCommand = 0xFF ) {
      Bytes message { command, subCommand };
      message.insert( message.end(), arguments.begin(), arguments.end() );
      message.resize( 11, 0xFF );
      message.push_back( static_cast<uint8_t>( std::accumulate( message.begin(), message.end(), 0 ) ) );
      return bytesOf( ask( textOf( message ) ) );
   }

   /** The port of the bench, which counts from 1, over the bus. */
   void enable( uint8_t port ) { tell( 0x00, { static_cast<uint8_t>( port - 1 ), 1 } ); }

   void powerOn( uint8_t port ) { tell( 0x01, { static_cast<uint8_t>( port - 1 ), 1 } ); }

   /** An enabled port whose device has got power. */
   void power( uint8_t port, const std::string& device ) {
      enable( port );
      bench( fmt::format( "{} attach {}", port, device ) );
      powerOn( port );
      advance( std::chrono::seconds( 1 ) );
   }

   /** An action of words. */
   void bench( const std::string& text ) {
      std::vector<std::string_view> words;
      for ( size_t begin = 0; begin < text.size(); ) {
         auto end = std::min( text.find( ' ', begin ), text.size() );
         words.push_back( std::string_view( text ).substr( begin, end - begin ) );
         begin = end + 1;
      }
      act( words );
   }

   std::string state( int port ) const { return get( fmt::format( "port{}.state", port ) ); }
};

} // namespace Emulator

#endif
