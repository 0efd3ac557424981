#include "Bcm59121Port.h"

#include "Bcm59121Detection.h"

#include <algorithm>
#include <span>

namespace Emulator {

namespace {

using namespace std::chrono_literals;
using DeviceKind = Bcm59121Device::Kind;

// IEEE 802.3: at most 500 ms, 75 ms and 400 ms; the power goes 300 ms to 400 ms after the load, and comes no
// sooner than 750 ms after an error.
constexpr auto detectionTime = 300ms;
constexpr auto classificationTime = 50ms;
constexpr auto powerUpTime = 75ms;
constexpr auto disconnectTime = 350ms;
constexpr auto errorDelay = 750ms;

/** A load below 10 mA does not maintain its power. */
constexpr double leastAmperes = 0.01;

constexpr uint8_t violationNone = 0;
constexpr uint8_t violationUser = 2;

bool hasLoad( DeviceKind kind ) { return kind != DeviceKind::None && kind != DeviceKind::Open; }

void count( uint8_t& counter ) { counter = static_cast<uint8_t>( std::min( counter + 1, 0xFF ) ); }

} // namespace

void Bcm59121Port::start( bool isFourPair ) {
   isFourPair_ = isFourPair;
   settings_.isEnabled = power_->isAutomatic;
   settings_.powerMode = isFourPair ? powerModeBeforeBt : powerModeAt;
   isWanted_ = power_->isAutomatic;
   restart();
}

void Bcm59121Port::stop() {
   release();
   settings_ = {};
   counts_ = {};
   fault_ = nullptr;
   pairs_ = {};
   isClassified_ = false;
   enter( Phase::Stopped );
}

void Bcm59121Port::move( bool isFourPair ) {
   if ( phase_ == Phase::Stopped ) {
      return start( isFourPair );
   }
   isFourPair_ = isFourPair;
   isWanted_ = power_->isAutomatic;
   restart();
}

void Bcm59121Port::advance( std::chrono::nanoseconds elapsed ) {
   if ( fault_ && fault_->kind == Bcm59121Fault::Kind::Denied && mayPower() ) {
      fault_ = nullptr;
      enter( Phase::Requesting );
      request();
   }
   while ( left_ && *left_ <= elapsed ) {
      elapsed -= *left_;
      left_.reset();
      expire();
   }
   if ( left_ ) {
      *left_ -= elapsed;
   }
}

void Bcm59121Port::change( const Settings& settings ) {
   bool isSwitched = settings.isEnabled != settings_.isEnabled;
   bool looksAnew =
      settings.detectionType != settings_.detectionType || settings.powerMode != settings_.powerMode;
   settings_ = settings;
   if ( isSwitched ) {
      isWanted_ = power_->isAutomatic;
      restart();
   } else if ( looksAnew && isLooking() ) {
      restart();
   } else if ( isPowered() ) {
      release();
      allocate();
      followSupply();
   }
}

void Bcm59121Port::powerOn() {
   isWanted_ = settings_.isEnabled;
   if ( phase_ == Phase::Requesting ) {
      request();
   } else if ( phase_ == Phase::Fault && fault_->portStatus == 4 ) {
      restart();
   } else if ( isPowered() ) {
      for ( auto& pair : pairs_ ) {
         pair.fault = nullptr;
      }
   }
}

void Bcm59121Port::powerOff() {
   isWanted_ = false;
   restart();
}

void Bcm59121Port::plug( const Bcm59121Device& device ) {
   bool isOther = device.type != device_.type;
   bool hasOtherClass = device.pdClass != device_.pdClass;
   bool isGone = std::ranges::none_of( std::span( device.type ).first( pairCount() ), hasLoad );
   device_ = device;
   if ( isPowered() && ( isGone || !isOther ) ) {
      checkLoad();
   } else if ( phase_ != Phase::Stopped && ( isOther || ( hasOtherClass && isLooking() ) ) ) {
      isWanted_ = isWanted_ && power_->isAutomatic;
      restart();
   }
}

bool Bcm59121Port::trip( const Bcm59121Fault& fault ) {
   if ( !holdsPower() ) {
      return false;
   }
   fail( fault.kind );
   return true;
}

bool Bcm59121Port::trip( const Bcm59121Fault& fault, size_t pair ) {
   if ( !isPowered( pair ) ) {
      return false;
   }
   pairs_[pair].fault = &fault;
   if ( pairState() == 0 ) {
      fail( fault.kind );
   } else {
      countFault( fault.kind );
   }
   return true;
}

void Bcm59121Port::followSupply() {
   if ( phase_ == Phase::Stopped || phase_ == Phase::Disabled ) {
      return;
   }
   bool wasLockedOut = fault_ && ( fault_->kind == Bcm59121Fault::Kind::UnderVoltage ||
                                    fault_->kind == Bcm59121Fault::Kind::OverVoltage );
   if ( power_->isUnder() || power_->isOver() || wasLockedOut ) {
      restart();
   } else if ( holdsPower() && settings_.mpssMask & power_->shutOff ) {
      shed();
   } else if ( isPowered() ) {
      checkLoad();
   }
}

void Bcm59121Port::shed() {
   bool wasWanted = isWanted_;
   fail( Bcm59121Fault::Kind::Denied );
   isWanted_ = wasWanted;
}

double Bcm59121Port::wattsOf( size_t pair ) const {
   if ( !isLoaded( pair ) ) {
      return 0;
   }
   // A device that was given a lower class than it asked for keeps to that.
   auto draw = class_ < device_.pdClass ? std::min( device_.draw, classPower() / 10.0 ) : device_.draw;
   // Of two signatures each has its half, even alone.
   return isDual() ? draw / 2 : draw / ( isLoaded( 0 ) + isLoaded( 1 ) );
}

void Bcm59121Port::enter( Phase phase, std::optional<std::chrono::nanoseconds> time ) {
   phase_ = phase;
   left_ = time;
}

void Bcm59121Port::expire() {
   switch ( phase_ ) {
   case Phase::Detecting:
      return detect();
   case Phase::Classifying:
      return classify();
   case Phase::PoweringUp:
      enter( Phase::Powered );
      return checkLoad();
   case Phase::Powered:
      return fail( Bcm59121Fault::Kind::MpsAbsent );
   default:
      return restart();
   }
}

void Bcm59121Port::restart() {
   release();
   fault_ = nullptr;
   pairs_ = {};
   isClassified_ = false;
   if ( !settings_.isEnabled ) {
      enter( Phase::Disabled );
   } else if ( power_->isUnder() || power_->isOver() ) {
      fail( power_->isUnder() ? Bcm59121Fault::Kind::UnderVoltage : Bcm59121Fault::Kind::OverVoltage );
   } else {
      enter( Phase::Detecting, detectionTime );
   }
}

void Bcm59121Port::detect() {
   bool isInvalid = false;
   for ( size_t pair = 0; pair < pairCount(); ++pair ) {
      auto found = bcm59121Detect( settings_.detectionType, device_.type[pair] );
      pairs_[pair].detection = found;
      isInvalid |= found != detectionUnknown && found != detectionOpen;
   }
   if ( isValid() ) {
      enter( Phase::Classifying, classificationTime );
   } else if ( isInvalid ) {
      count( counts_.invalidSignature );
   }
}

void Bcm59121Port::classify() {
   isClassified_ = true;
   if ( device_.pdClass >= classMismatch ) {
      class_ = device_.pdClass;
      return enter( Phase::Detecting );
   }
   auto highest = bcm59121HighestClass( settings_.powerMode, validPairs() == 2, isDual() );
   bool isLegacy = device_.type[isValid( 0 ) ? 0 : 1] == DeviceKind::Legacy;
   class_ = isLegacy ? 0 : std::min( device_.pdClass, highest );
   enter( Phase::Requesting );
   request();
}

void Bcm59121Port::request() {
   if ( !isWanted_ ) {
      return;
   }
   if ( !mayPower() ) {
      return shed();
   }
   allocate();
   enter( Phase::PoweringUp, powerUpTime );
}

void Bcm59121Port::fail( Bcm59121Fault::Kind kind ) {
   release();
   fault_ = &bcm59121Fault( kind );
   isWanted_ = power_->isAutomatic;
   enter( Phase::Fault );
   if ( kind == Bcm59121Fault::Kind::MpsAbsent ) {
      left_ = errorDelay;
   }
   countFault( kind );
}

void Bcm59121Port::countFault( Bcm59121Fault::Kind kind ) {
   using Kind = Bcm59121Fault::Kind;
   switch ( kind ) {
   case Kind::MpsAbsent:
      return count( counts_.mpsAbsent );
   case Kind::Short:
      return count( counts_.shorted );
   case Kind::Overload:
      return count( counts_.overload );
   case Kind::Denied:
      return count( counts_.denied );
   default:
      return;
   }
}

void Bcm59121Port::allocate() {
   allocated_ = limit();
   power_->allocated += allocated_;
}

void Bcm59121Port::release() {
   power_->allocated -= allocated_;
   allocated_ = 0;
}

void Bcm59121Port::checkLoad() {
   if ( settings_.violationType != violationNone && watts() > limit() / 10.0 ) {
      return fail( Bcm59121Fault::Kind::Overload );
   }
   if ( watts() >= leastAmperes * power_->volts ) {
      left_.reset();
   } else if ( !left_ ) {
      left_ = disconnectTime;
   }
}

bool Bcm59121Port::isValid( size_t pair ) const { return pairs_[pair].detection == detectionValid; }

bool Bcm59121Port::isDual() const {
   return validPairs() == 2 && std::ranges::count( device_.type, DeviceKind::Dual ) == 2;
}

bool Bcm59121Port::isPowered( size_t pair ) const {
   return isPowered() && isValid( pair ) && !pairs_[pair].fault;
}

bool Bcm59121Port::isLoaded( size_t pair ) const {
   return isPowered( pair ) && hasLoad( device_.type[pair] );
}

unsigned Bcm59121Port::classPower() const { return bcm59121ClassPower( class_ ) * ( isDual() ? 2 : 1 ); }

unsigned Bcm59121Port::limit() const {
   return settings_.violationType == violationUser ? settings_.limit * 2 * validPairs() : classPower();
}

bool Bcm59121Port::mayPower() const {
   return !( settings_.mpssMask & power_->shutOff ) && power_->allocated + limit() <= power_->budget;
}

bool Bcm59121Port::isLooking() const {
   return phase_ == Phase::Detecting || phase_ == Phase::Classifying || phase_ == Phase::Requesting;
}

} // namespace Emulator
