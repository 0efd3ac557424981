#include "Bcm59121Firmware.h"

#include <fmt/format.h>

#include <algorithm>

namespace Emulator {

namespace {

using namespace std::chrono_literals;

constexpr size_t revisionSize = 2;
constexpr size_t memorySize = size_t { 1 } << 20;
constexpr auto clearTime = 3s;
constexpr auto storeTime = 750ms;
constexpr auto loadTime = 6s;

} // namespace

void Bcm59121Firmware::clear() {
   image_.clear();
   state_ = State::Clearing;
   left_ = clearTime;
}

void Bcm59121Firmware::append( std::span<const uint8_t> block ) {
   auto room = memorySize - image_.size();
   block = block.first( std::min( block.size(), room ) );
   image_.insert( image_.end(), block.begin(), block.end() );
   left_ = storeTime;
}

void Bcm59121Firmware::load() {
   isGood_ = left_ <= 0s && image_.size() >= revisionSize;
   state_ = State::Loading;
   left_ = loadTime;
}

void Bcm59121Firmware::lose() {
   image_.clear();
   state_ = State::Stopped;
   left_ = 0s;
}

void Bcm59121Firmware::restart() {
   if ( state_ != State::Running ) {
      state_ = State::Stopped;
   }
   left_ = 0s;
}

bool Bcm59121Firmware::advance( std::chrono::nanoseconds elapsed ) {
   left_ -= std::min( left_, elapsed );
   if ( left_ > 0s ) {
      return false;
   }
   if ( state_ == State::Clearing ) {
      state_ = State::Stopped;
   }
   if ( state_ != State::Loading ) {
      return false;
   }
   state_ = isGood_ ? State::Running : State::Failed;
   return isGood_;
}

std::string Bcm59121Firmware::text() const {
   switch ( state_ ) {
   case State::Running:
      return fmt::format( "{:#04x}.{:02x}", image_[0], image_[1] );
   case State::Clearing:
      return "clearing";
   case State::Loading:
      return "loading";
   case State::Failed:
      return "failed";
   case State::Stopped:
      break;
   }
   return "none";
}

} // namespace Emulator
