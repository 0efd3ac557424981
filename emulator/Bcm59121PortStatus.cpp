#include "Bcm59121Detection.h"
#include "Bcm59121Port.h"

/** What a port looks like from outside. */
namespace Emulator {

namespace {

/** Channel modes: up to 15.4 W, 30 W, 45 W, and no device. */
uint8_t modeOf( unsigned tenths ) { return tenths <= 154 ? 0 : tenths <= 300 ? 1 : 2; }

constexpr uint8_t modeUnknown = 3;

} // namespace

std::string Bcm59121Port::text() const {
   switch ( phase_ ) {
   case Phase::Stopped:
   case Phase::Disabled:
      return "disabled";
   case Phase::Detecting:
   case Phase::Classifying:
      return "detecting";
   case Phase::Requesting:
   case Phase::PoweringUp:
      return "requesting";
   case Phase::Powered:
      return "powered";
   case Phase::Fault:
      break;
   }
   return fault_->word;
}

uint8_t Bcm59121Port::statusCode() const {
   switch ( phase_ ) {
   case Phase::Stopped:
   case Phase::Disabled:
      return 0;
   case Phase::Detecting:
   case Phase::Classifying:
      return 1;
   case Phase::Powered:
      return 2;
   case Phase::Requesting:
   case Phase::PoweringUp:
      return 6;
   case Phase::Fault:
      break;
   }
   return fault_->portStatus;
}

uint8_t Bcm59121Port::pairState() const {
   return static_cast<uint8_t>( ( isPowered( 0 ) ? 1 : 0 ) + ( isPowered( 1 ) ? 2 : 0 ) );
}

uint8_t Bcm59121Port::signatures() const { return !isValid() ? 0 : isDual() ? 2 : 1; }

Bcm59121Port::Channel Bcm59121Port::channel( size_t pair ) const {
   Channel channel { detectionUnknown, 0, 0, modeUnknown, wattsOf( pair ) };
   if ( pair >= pairCount() ) {
      return channel;
   }
   channel.detection = pairs_[pair].detection;
   // A fault of the port is one of the channels that were to have its power.
   auto portFault = isValid( pair ) || !isValid() ? fault_ : nullptr;
   if ( auto fault = pairs_[pair].fault ? pairs_[pair].fault : portFault ) {
      channel.error = fault->channelError;
   }
   if ( !isValid( pair ) ) {
      return channel;
   }
   if ( isDual() ) {
      channel.detection |= ownSignature;
   }
   channel.pdClass = pdClass();
   if ( isClassified_ && class_ < classMismatch ) {
      channel.mode = modeOf( classPower() / validPairs() );
   }
   return channel;
}

} // namespace Emulator
