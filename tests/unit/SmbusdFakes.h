#ifndef SMBUSD_FAKES_H
#define SMBUSD_FAKES_H

#include "smbusd/Bus.h"
#include "smbusd/EventLoop.h"
#include "smbusd/Frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Smbusd {

/** An address word: chip, bus, register and the size of its number. */
inline uint64_t addressWord( uint8_t chip, uint8_t bus, uint32_t reg = 0, unsigned addrSize = 1 ) {
   return reg | uint64_t { chip } << 32 | uint64_t { bus } << 39 | uint64_t { addrSize } << 57;
}

/** Adds a request of an I2C master. */
inline Smbus::Request& addRequest( Smbus::TransactionRequest& message, Smbus::RequestType type,
   uint64_t address, uint32_t size, const std::string& data = "" ) {
   auto& request = *message.add_request();
   request.set_type( type );
   request.set_address( address );
   request.set_size( size );
   request.set_mastertype( Smbus::I2C );
   if ( !data.empty() ) {
      request.set_data( data );
   }
   return request;
}

inline std::vector<uint8_t> serialised( const google::protobuf::MessageLite& message ) {
   std::vector<uint8_t> bytes( message.ByteSizeLong() );
   message.SerializeWithCachedSizesToArray( bytes.data() );
   return bytes;
}

inline std::vector<uint8_t> framed( const google::protobuf::MessageLite& message ) {
   std::vector<uint8_t> bytes;
   Frame::encode( message, bytes );
   return bytes;
}

/** A bus that answers reads with 0x01, 0x02 and so on, and fails as told. */
class FakeBus : public Bus {
public:
   explicit FakeBus( std::string name ) : name_( std::move( name ) ) {}

   /** How the next operations end; Ok when it is empty. One that fails has got its bytes all the same. */
   std::deque<Outcome> outcomes;
   /** Holds operations back until `release`. */
   bool holding = false;
   /** What an operation costs the thread. */
   std::chrono::microseconds work {};
   /** The operations so far, as their chip and register. */
   std::vector<std::string> log;

   std::string name() const override { return name_; }

   std::optional<Outcome> transfer( Operation& operation, Done done ) override {
      log.push_back( describe( operation ) );
      if ( holding ) {
         held_ = [this, &operation, done = std::move( done )] { done( carryOut( operation ) ); };
         return std::nullopt;
      }
      return carryOut( operation );
   }

   bool holds() const { return held_ != nullptr; }

   /** Ends the operation that is held back. */
   void release() { std::exchange( held_, nullptr )(); }

private:
   Outcome carryOut( Operation& operation ) {
      std::this_thread::sleep_for( work );
      for ( size_t i = 0; i < operation.length; ++i ) {
         operation.result.push_back( static_cast<uint8_t>( i + 1 ) );
      }
      if ( outcomes.empty() ) {
         return {};
      }
      auto outcome = outcomes.front();
      outcomes.pop_front();
      return outcome;
   }

   const std::string name_;
   std::function<void()> held_;
};

/** Has the busses that were made. */
class FakeBackend : public Backend {
public:
   FakeBus& make( uint8_t number ) {
      auto& bus = busses_[number];
      bus = std::make_unique<FakeBus>( "i2c-" + std::to_string( number ) );
      return *bus;
   }

   Bus* find( const BusKey& key ) override {
      auto found = busses_.find( key.bus );
      return found == busses_.end() ? nullptr : found->second.get();
   }

private:
   std::map<uint8_t, std::unique_ptr<FakeBus>> busses_;
};

/** Runs the loop until something is so. @return false when it isn't after five seconds */
template <typename Condition>
bool runUntil( EventLoop& loop, Condition condition ) {
   auto late = std::make_shared<bool>( false );
   loop.after( std::chrono::seconds( 5 ), [late] { *late = true; } );
   while ( !condition() && !*late ) {
      loop.runOnce();
   }
   return !*late;
}

} // namespace Smbusd

#endif
