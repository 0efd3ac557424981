#ifndef LOGGING_HAM_H
#define LOGGING_HAM_H

#include "Ham/Ham.h"

#include <fmt/format.h>

#include <string>
#include <vector>

/**
 * A Ham that tells every call with its arguments; written data must be a text that ends in a zero. Every
 * queued read is number 7, and a block is 100 times x.
 */
class LoggingHam : public Ham::Ham {
public:
   std::vector<std::string> log;
   ql_status status = QL_STATUS_OK;
   /** Where the characters of the last block lie. */
   const void* block = nullptr;

   void init() override { log.push_back( "init()" ); }

   void prepare() override { log.push_back( "prepare()" ); }

   ql_status execute() override {
      log.push_back( "execute()" );
      return status;
   }

   ResponseId addRecvByte() override { return queued( "addRecvByte" ); }

   ResponseId addRead8( Register reg, uint8_t regSize ) override {
      return queued( "addRead8", reg, regSize );
   }

   ResponseId addRead16( Register reg, uint8_t regSize ) override {
      return queued( "addRead16", reg, regSize );
   }

   ResponseId addRead32( Register reg, uint8_t regSize ) override {
      return queued( "addRead32", reg, regSize );
   }

   ResponseId addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize ) override {
      return queued( "addRead", reg, size, noStop, regSize );
   }

   ResponseId addReadBlock( Register reg, uint8_t regSize ) override {
      return queued( "addReadBlock", reg, regSize );
   }

   void addSendByte( uint8_t value, bool flag ) override { queued( "addSendByte", value, flag ); }

   void addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize ) override {
      queued( "addWrite8", reg, value, flag, regSize );
   }

   void addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize ) override {
      queued( "addWrite16", reg, value, flag, regSize );
   }

   void addWrite32( Register reg, uint32_t value, bool flag, uint8_t regSize ) override {
      queued( "addWrite32", reg, value, flag, regSize );
   }

   void addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override {
      queued( "addWrite", reg, static_cast<const char*>( data ), size, flag, regSize );
   }

   void addWriteBlock( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override {
      queued( "addWriteBlock", reg, static_cast<const char*>( data ), size, flag, regSize );
   }

   ResponseId addProcessCall( Register reg, uint16_t value, uint8_t regSize ) override {
      return queued( "addProcessCall", reg, value, regSize );
   }

   uint8_t get8( ResponseId id ) override {
      queued( "get8", id );
      return 0x8A;
   }

   uint16_t get16( ResponseId id ) override {
      queued( "get16", id );
      return 0x16AB;
   }

   uint32_t get32( ResponseId id ) override {
      queued( "get32", id );
      return 0x32ABCDEF;
   }

   std::string getBlock( ResponseId id, size_t size ) override {
      queued( "getBlock", id, size );
      std::string content( 100, 'x' );
      block = content.data();
      return content;
   }

private:
   template <typename... Args>
   ResponseId queued( const char* operation, Args... args ) {
      std::vector<std::string> texts { fmt::format( "{}", args )... };
      log.push_back( fmt::format( "{}({})", operation, fmt::join( texts, ", " ) ) );
      return 7;
   }
};

#endif
