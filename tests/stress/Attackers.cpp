#include "Attackers.h"

#include "Client.h"

#include <iterator>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr size_t mostPayload = 1U << 20;

/** Bytes without a meaning: a part of a block that is made once. */
std::string noise( std::mt19937& random, size_t size ) {
   static const auto block = [] {
      std::mt19937 generator( 1 );
      std::string bytes( 2 * mostPayload, '\0' );
      for ( auto& byte : bytes ) {
         byte = static_cast<char>( generator() );
      }
      return bytes;
   }();
   return block.substr( random() % mostPayload, size );
}

/** The head of a frame. */
std::string head( size_t size ) {
   std::string bytes;
   for ( int shift = 24; shift >= 0; shift -= 8 ) {
      bytes += static_cast<char>( size >> shift );
   }
   return bytes;
}

/** The frame of a message of so many reads. */
std::string asking( size_t requests, uint32_t size ) {
   // A repeated field may be given in several pieces, and so messages can be strung together.
   auto one = reading( attackedBus, attackedChip, 0, size ).SerializeAsString();
   auto bytes = head( requests * one.size() );
   for ( size_t i = 0; i < requests; ++i ) {
      bytes += one;
   }
   return bytes;
}

void sendNoise( const std::string& socket, std::mt19937& random ) {
   Client client( socket );
   client.send( noise( random, 1 + random() % 4096 ) );
   client.receive( 1, 5ms );
}

void sendWhatIsNoMessage( const std::string& socket, std::mt19937& random ) {
   auto size = random() % 2000;
   Client client( socket );
   client.send( head( size ) + noise( random, size ) );
   client.receive( 1, 5ms );
}

void announceTooMuch( const std::string& socket, std::mt19937& random ) {
   Client client( socket );
   client.send( head( mostPayload + 1 + random() % 1000 ) );
   client.receive( 1, 5ms );
}

void stallInTheLastByteOfTheLongestFrame( const std::string& socket, std::mt19937& random ) {
   Client client( socket );
   client.send( head( mostPayload ) + noise( random, mostPayload - 1 ) );
   std::this_thread::sleep_for( 50ms );
}

void vanishInTheMiddleOfAFrame( const std::string& socket, std::mt19937& random ) {
   auto bytes = asking( 10, 2 );
   Client( socket ).send( bytes.substr( 0, random() % bytes.size() ) );
}

void leaveALongAnswerUnread( const std::string& socket, std::mt19937& ) {
   Client client( socket );
   client.send( asking( 120, 8192 ) );
   client.receive( 1, 50ms );
   std::this_thread::sleep_for( 50ms );
}

void vanishBeforeTheAnswerToTheLongestMessage( const std::string& socket, std::mt19937& ) {
   static const auto bytes = asking( 45000, 1 );
   Client( socket ).send( bytes );
}

void askForWhatCanNotBe( const std::string& socket, std::mt19937& random ) {
   Client client( socket );
   auto upTo = [&random]( unsigned most ) { return static_cast<unsigned>( random() % ( most + 1 ) ); };
   auto byteUpTo = [&upTo]( unsigned most ) { return static_cast<uint8_t>( upTo( most ) ); };
   for ( int i = 0; i < 10; ++i ) {
      // The first four busses are the clients'.
      auto bus = static_cast<uint8_t>( 4 + byteUpTo( 123 ) );
      auto message = reading( bus, byteUpTo( 127 ), byteUpTo( 255 ), upTo( 70000 ) );
      message.mutable_request( 0 )->set_type( static_cast<Smbus::RequestType>( upTo( 4 ) ) );
      message.mutable_request( 0 )->set_data( noise( random, upTo( 64 ) ) );
      message.set_retries( upTo( 200 ) );
      client.ask( message );
   }
}

void sendByteByByte( const std::string& socket, std::mt19937& ) {
   Client client( socket );
   for ( auto byte : asking( 1, 2 ) ) {
      client.send( { &byte, 1 } );
      std::this_thread::sleep_for( 1ms );
   }
   EXPECT_EQ( client.answer().response_size(), 1 );
}

const Attacker all[] = {
   { "send noise", sendNoise },
   { "send what is no message", sendWhatIsNoMessage },
   { "announce too much", announceTooMuch },
   { "stall in the last byte of the longest frame", stallInTheLastByteOfTheLongestFrame },
   { "vanish in the middle of a frame", vanishInTheMiddleOfAFrame },
   { "leave a long answer unread", leaveALongAnswerUnread },
   { "vanish before the answer to the longest message", vanishBeforeTheAnswerToTheLongestMessage },
   { "ask for what can't be", askForWhatCanNotBe },
   { "send byte by byte", sendByteByByte },
};

} // namespace

const std::span<const Attacker> attackers = all;
