#include "Worker.h"

#include <utility>

namespace Smbusd::I2cDev {

Worker::Worker() : thread_( [this]( const std::stop_token& stop ) { work( stop ); } ) {}

void Worker::run( std::function<void()> job ) {
   {
      std::lock_guard lock( mutex_ );
      job_ = std::move( job );
   }
   changed_.notify_one();
}

void Worker::work( const std::stop_token& stop ) {
   std::unique_lock lock( mutex_ );
   while ( changed_.wait( lock, stop, [this] { return job_ != nullptr; } ) ) {
      auto job = std::exchange( job_, nullptr );
      lock.unlock();
      job();
      lock.lock();
   }
}

} // namespace Smbusd::I2cDev
