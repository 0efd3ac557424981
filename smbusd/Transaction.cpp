#include "Transaction.h"

#include "Frame.h"
#include "Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace Smbusd {

bool Transaction::parse( std::span<const uint8_t> message ) {
   response_.Clear();
   steps_.clear();
   busses_.clear();
   current_ = 0;
   failures_ = 0;
   return request_.ParseFromArray( message.data(), static_cast<int>( message.size() ) );
}

namespace {

/** Tags and lengths around the data of an answer are never more. */
constexpr size_t answerOverhead = 16;

} // namespace

bool Transaction::plan( Backend& backend ) {
   steps_.reserve( static_cast<size_t>( request_.request_size() ) );
   size_t answerSize = answerOverhead;
   for ( auto& request : request_.request() ) {
      try {
         addStep( request, backend );
      } catch ( const std::invalid_argument& error ) {
         fail( steps_.size(), error.what() );
         return false;
      }
      answerSize += answerOverhead + steps_.back().operation.length;
      if ( answerSize > Frame::maxPayload ) {
         fail( steps_.size() - 1, fmt::format( "the answers would exceed {} bytes", Frame::maxPayload ) );
         return false;
      }
   }
   return true;
}

void Transaction::addStep( const Smbus::Request& request, Backend& backend ) {
   auto operation = operationOf( request );
   auto key = busOf( request );
   auto bus = backend.find( key );
   if ( !bus ) {
      throw std::invalid_argument(
         fmt::format( "{} {}: no such bus", describe( key ), describe( operation ) ) );
   }
   if ( std::ranges::find( busses_, bus ) == busses_.end() ) {
      busses_.push_back( bus );
   }
   steps_.push_back( { bus, std::move( operation ) } );
}

void Transaction::run( EventLoop& loop, std::function<void()> done ) {
   loop_ = &loop;
   done_ = std::move( done );
   response_.set_failed( false );
   proceed( loop.now() );
}

namespace {

/** So long requests run before other clients get their turn; the clock is looked at after every few. */
constexpr std::chrono::milliseconds turn { 1 };
constexpr size_t requestsBetweenLooks = 8;

} // namespace

void Transaction::proceed( EventLoop::Clock::time_point begin ) {
   for ( size_t run = 0; current_ < steps_.size(); ++run ) {
      if ( run % requestsBetweenLooks == requestsBetweenLooks - 1 &&
           EventLoop::Clock::now() > begin + turn ) {
         loop_->post( [this] { proceed( EventLoop::Clock::now() ); } );
         return;
      }
      auto& step = steps_[current_];
      spare_.clear();
      spare_.swap( step.operation.result );
      auto outcome = step.bus->transfer( step.operation, [this]( const Outcome& late ) {
         settle( late );
         proceed( EventLoop::Clock::now() );
      } );
      if ( !outcome ) {
         return;
      }
      settle( *outcome );
   }
   // Its taker may be the end of this object.
   std::exchange( done_, nullptr )();
}

namespace {

constexpr unsigned defaultRetries = 2;
/** Keeps a client from holding a bus for hours. */
constexpr unsigned maxRetries = 100;

unsigned retriesOf( const Smbus::TransactionRequest& request ) {
   return request.has_retries() ? std::min( request.retries(), maxRetries ) : defaultRetries;
}

} // namespace

void Transaction::settle( const Outcome& outcome ) {
   auto& [bus, operation] = steps_[current_];
   if ( outcome.result == I2c::Result::Ok ) {
      response_.add_response()->mutable_data()->assign( operation.result.begin(), operation.result.end() );
      spare_.swap( operation.result );
      ++current_;
      failures_ = 0;
   } else if ( ++failures_ > retriesOf( request_ ) ) {
      fail( current_, fmt::format( "{} {}: {}", bus->name(), describe( operation ), describe( outcome ) ) );
      current_ = steps_.size();
   }
}

void Transaction::fail( size_t step, std::string_view why ) {
   response_.Clear();
   response_.set_failed( true );
   response_.set_reason( fmt::format( "request {}: {}", step + 1, why ) );
   Log::debug( "{}", response_.reason() );
}

} // namespace Smbusd
