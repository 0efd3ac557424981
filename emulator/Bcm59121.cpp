#include "Bcm59121.h"

#include "Bcm59121Commands.h"
#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

namespace {

using namespace std::chrono_literals;

constexpr auto bootTime = 500ms;

/** The register number in front of a read. */
constexpr uint8_t replyRegister = 0xFF;

} // namespace

Bcm59121::Bcm59121( const Options& options ) : Bcm59121( sizeOf( options ) ) {}

Bcm59121::Bcm59121( Size size ) : state_( size.ports, size.twoPairPorts ), boot_( bootTime ) {
   state_.power.isAutomatic = size.isAutomatic;
   addChipProperties();
   addGroupProperties();
   for ( size_t index = 0; index < size.ports; ++index ) {
      addPortProperties( index );
      addPortSettings( index );
   }
}

bool Bcm59121::write( std::span<const uint8_t> bytes ) {
   bool isPointer = bytes.size() == 1 && bytes[0] == replyRegister;
   if ( bytes.empty() || isPointer ) {
      return true;
   }
   auto answer = answerBcm59121( state_, bytes );
   reply_ = answer.reply;
   busy_ = answer.time;
   return answer.isAcknowledged;
}

void Bcm59121::read( std::span<uint8_t> bytes ) {
   bool isBusy = busy_ > busy_.zero();
   for ( auto& byte : bytes ) {
      byte = isBusy || position_ >= reply_.size() ? 0xFF : reply_[position_++];
   }
}

void Bcm59121::advance( std::chrono::nanoseconds elapsed ) {
   if ( isHeld_ ) {
      return;
   }
   if ( boot_ > boot_.zero() ) {
      boot_ -= elapsed;
      if ( boot_ > boot_.zero() ) {
         return;
      }
      elapsed = -boot_;
      boot_ = boot_.zero();
      if ( state_.firmware.isRunning() ) {
         state_.start();
      }
   }
   busy_ -= std::min( busy_, elapsed );
   state_.advance( elapsed );
}

void Bcm59121::reset() {
   state_.stop();
   state_.firmware.restart();
   boot_ = bootTime;
   reply_.clear();
   busy_ = busy_.zero();
}

void Bcm59121::setReset( bool isHeld ) {
   if ( isHeld != isHeld_ ) {
      isHeld_ = isHeld;
      reset();
   }
}

Bcm59121::Size Bcm59121::sizeOf( const Options& options ) {
   const std::vector<std::string> known = { "ports", "two_pair_ports", "automatic" };
   for ( auto& [name, value] : options ) {
      if ( std::ranges::find( known, name ) == known.end() ) {
         throw std::invalid_argument(
            fmt::format( "no option {}{}", printable( name ), suggestion( name, known ) ) );
      }
   }
   auto option = [&]( const std::string& name, uint32_t lowest, uint32_t highest, uint32_t otherwise ) {
      auto found = options.find( name );
      return found == options.end() ? otherwise : unsignedIn( name, found->second, lowest, highest );
   };
   auto ports = option( "ports", 1, 64, 48 );
   return { ports, option( "two_pair_ports", 0, ports, ports ), option( "automatic", 0, 1, 0 ) == 1 };
}

} // namespace Emulator
