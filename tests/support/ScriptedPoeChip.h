#ifndef SCRIPTED_POE_CHIP_H
#define SCRIPTED_POE_CHIP_H

#include "Ham/Ham.h"
#include "VirtualTime.h"

#include <fmt/format.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

/**
 * The PoE controller behind a Ham of its own: a write is a request, the next read is its reply. Tells what
 * went over the bus, and the waits of the test's clock between.
 */
class ScriptedPoeChip : public Ham::Ham {
public:
   using Bytes = std::map<size_t, uint8_t>;

   /** A whole reply with a good checksum; bytes that are not given are 0. */
   static std::string reply( uint8_t cmd, const Bytes& bytes = {} ) {
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

   /** The same with a checksum that is off by one. */
   static std::string corrupt( std::string text ) {
      ++text[11];
      return text;
   }

   /** By command. The last of several replies stays in force; without one the chip answers with zeros. */
   std::map<uint8_t, std::deque<std::string>> replies;
   /** By command: how the next accesses end, QL_STATUS_OK behind the last. */
   std::map<uint8_t, std::deque<ql_status>> writeStatuses, readStatuses;

   void answer( uint8_t cmd, const Bytes& bytes ) { replies[cmd] = { reply( cmd, bytes ) }; }

   /** "write" with the register and the data in hexadecimal, "read" with register and size, "wait" in
    * microseconds. */
   std::vector<std::string> takeLog() {
      logWaits();
      waitsSeen_ = 0;
      if ( VirtualTime::current ) {
         VirtualTime::current->waits.clear();
      }
      return std::exchange( log_, {} );
   }

   /** The writes alone, without the word: 12 bytes each for a message. */
   std::vector<std::string> takeSent() {
      std::vector<std::string> sent;
      for ( auto& line : takeLog() ) {
         if ( line.starts_with( "write " ) ) {
            sent.push_back( line.substr( 6 ) );
         }
      }
      return sent;
   }

   void prepare() override { request_ = Request::None; }

   void addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override {
      logWaits();
      auto line = fmt::format( "write {:02X}", reg );
      auto bytes = static_cast<const uint8_t*>( data );
      for ( uint32_t i = 0; i < size; ++i ) {
         line += fmt::format( " {:02X}", bytes[i] );
      }
      log_.push_back( line + odd( flag, regSize ) );
      command_ = static_cast<uint8_t>( reg );
      request_ = Request::Write;
   }

   ResponseId addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize ) override {
      logWaits();
      log_.push_back(
         fmt::format( "read {:02X} {}{}", reg, size, noStop ? " no stop" : "" ) + odd( false, regSize ) );
      request_ = Request::Read;
      return 0;
   }

   ql_status execute() override {
      auto& statuses = ( request_ == Request::Write ? writeStatuses : readStatuses )[command_];
      if ( statuses.empty() ) {
         return QL_STATUS_OK;
      }
      auto status = statuses.front();
      statuses.pop_front();
      return status;
   }

   std::string getBlock( ResponseId, size_t ) override {
      auto& given = replies[command_];
      if ( given.empty() ) {
         return reply( command_ );
      }
      auto text = given.front();
      if ( given.size() > 1 ) {
         given.pop_front();
      }
      return text;
   }

private:
   enum class Request { None, Write, Read };

   static std::string odd( bool flag, uint8_t regSize ) {
      return fmt::format( "{}{}", flag ? " flag" : "", regSize == 1 ? "" : fmt::format( " /{}", regSize ) );
   }

   void logWaits() {
      if ( !VirtualTime::current ) {
         return;
      }
      auto& waits = VirtualTime::current->waits;
      for ( ; waitsSeen_ < waits.size(); ++waitsSeen_ ) {
         log_.push_back( fmt::format( "wait {}", waits[waitsSeen_].count() ) );
      }
   }

   Request request_ = Request::None;
   uint8_t command_ = 0;
   std::vector<std::string> log_;
   size_t waitsSeen_ = 0;
};

#endif
