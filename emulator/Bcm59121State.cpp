#include "Bcm59121State.h"

#include <algorithm>
#include <functional>

namespace Emulator {

namespace {

using namespace std::chrono_literals;

constexpr auto crcCorrectionTime = 1s;

} // namespace

Bcm59121State::Bcm59121State( size_t count, size_t twoPairPorts )
   : ports( count, Bcm59121Port( power ) ), map( count, twoPairPorts ), crcFailures( map.groups() ) {}

void Bcm59121State::start() {
   for ( size_t i = 0; i < map.rows().size(); ++i ) {
      ports[i].start( map.rows()[i].isFourPair );
   }
}

void Bcm59121State::stop() {
   checksCrc = true;
   resetsOnCrcFailure = false;
   command0a = {};
   command17 = 0;
   map.abandon();
   for ( auto& port : ports ) {
      port.stop();
   }
}

void Bcm59121State::advance( std::chrono::nanoseconds elapsed ) {
   if ( firmware.advance( elapsed ) ) {
      start();
      return;
   }
   for ( auto& port : ports ) {
      port.advance( elapsed );
   }
   map.advance( elapsed );
   correctCrc( elapsed );
}

void Bcm59121State::correctCrc( std::chrono::nanoseconds elapsed ) {
   bool isCorrecting = resetsOnCrcFailure && std::ranges::any_of( crcFailures, std::identity() );
   crcAge = isCorrecting ? crcAge + elapsed : 0s;
   if ( crcAge >= crcCorrectionTime ) {
      std::ranges::fill( crcFailures, uint8_t { 0 } );
   }
}

void Bcm59121State::loseFirmware() {
   firmware.lose();
   stop();
}

void Bcm59121State::applyMap() {
   crcFailures.resize( std::max( crcFailures.size(), map.groups() ) );
   for ( size_t i = 0; i < ports.size(); ++i ) {
      if ( i < map.rows().size() ) {
         ports[i].move( map.rows()[i].isFourPair );
      } else {
         ports[i].stop();
      }
   }
}

void Bcm59121State::followSupply() {
   for ( auto& port : ports ) {
      port.followSupply();
   }
   for ( auto port = ports.rbegin(); port != ports.rend() && power.allocated > power.budget; ++port ) {
      if ( port->holdsPower() ) {
         port->shed();
      }
   }
}

} // namespace Emulator
