#ifndef SCRIPTED_HAM_H
#define SCRIPTED_HAM_H

#include "Ham/Ham.h"

#include <fmt/format.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

/**
 * A Ham over plain registers that tells what it was asked. Reads answer from `registers`, in the byte order
 * of Ham::read16; `statuses` holds what the next calls of execute return, QL_STATUS_OK when it is empty. Like
 * real hardware it writes at execute, and only when that succeeds.
 */
class ScriptedHam : public Ham::Ham {
public:
   std::map<Register, uint16_t> registers;
   std::deque<ql_status> statuses;
   /** One line a call, such as "read16 0x00 /1", "write8 0x20=00 /1", "execute". */
   std::vector<std::string> log;
   std::map<uint32_t, Utils::ExpectedVal>* expected = nullptr;

   void prepare() override {
      log.push_back( "prepare" );
      queued_.clear();
      writes_.clear();
   }

   ql_status execute() override {
      log.push_back( "execute" );
      auto status = QL_STATUS_OK;
      if ( !statuses.empty() ) {
         status = statuses.front();
         statuses.pop_front();
      }
      if ( status == QL_STATUS_OK ) {
         for ( auto& [reg, value] : writes_ ) {
            registers[reg] = value;
         }
      }
      return status;
   }

   ResponseId addRead8( Register reg, uint8_t regSize ) override {
      return queueRead( fmt::format( "read8 0x{:02x} /{}", reg, regSize ), reg );
   }

   ResponseId addRead16( Register reg, uint8_t regSize ) override {
      return queueRead( fmt::format( "read16 0x{:02x} /{}", reg, regSize ), reg );
   }

   void addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize ) override {
      log.push_back(
         fmt::format( "write8 0x{:02x}={:02x}{} /{}", reg, value, flag ? " flag" : "", regSize ) );
      writes_.emplace_back( reg, value );
   }

   void addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize ) override {
      log.push_back(
         fmt::format( "write16 0x{:02x}={:04x}{} /{}", reg, value, flag ? " flag" : "", regSize ) );
      writes_.emplace_back( reg, value );
   }

   uint8_t get8( ResponseId id ) override {
      return static_cast<uint8_t>( registers[queued_.at( id )] & 0xFF );
   }

   uint16_t get16( ResponseId id ) override { return registers[queued_.at( id )]; }

   void setExpected( std::map<uint32_t, Utils::ExpectedVal>* values ) override {
      log.push_back( "setExpected" );
      expected = values;
   }

   void setDriverName( std::string driver, std::string name ) override {
      log.push_back( "setDriverName " + driver + " '" + name + "'" );
   }

private:
   ResponseId queueRead( const std::string& line, Register reg ) {
      log.push_back( line );
      queued_.push_back( reg );
      return static_cast<ResponseId>( queued_.size() - 1 );
   }

   std::vector<Register> queued_;
   std::vector<std::pair<Register, uint16_t>> writes_;
};

#endif
