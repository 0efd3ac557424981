#ifndef EMULATOR_BCM59121_PORT_H
#define EMULATOR_BCM59121_PORT_H

#include "Bcm59121Device.h"
#include "Bcm59121Fault.h"
#include "Bcm59121Power.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Emulator {

/**
 * One port of the BCM59121: finds out what is plugged in, classifies it, and powers it while the budget and
 * its limit allow.
 *
 * What the model makes simpler than the part: a device is looked at once, not again and again; a load that is
 * too high is cut off at once; a port or channel that was shut off stays so until the device goes or the port
 * is switched on or enabled anew.
 */
class Bcm59121Port {
public:
   /** What the bus sets, with the values of power-on. */
   struct Settings {
      bool isEnabled = false;
      uint8_t detectionType = 2;
      uint8_t powerMode = 0;
      uint8_t violationType = 1;
      /** User-defined limit of each channel with a valid detection, in 0.2 W. */
      uint8_t limit = 155;
      /** Shut-off inputs that this port minds. */
      uint8_t mpssMask = 0;
      /* Kept for whoever looks. */
      uint8_t command08 = 0;
      uint8_t command12 = 0;
   };

   struct Counts {
      uint8_t mpsAbsent = 0;
      uint8_t overload = 0;
      uint8_t shorted = 0;
      uint8_t denied = 0;
      uint8_t invalidSignature = 0;
   };

   /** One channel as the chip tells of it. */
   struct Channel {
      uint8_t detection;
      uint8_t pdClass;
      uint8_t error;
      uint8_t mode;
      double watts;
   };

   explicit Bcm59121Port( Bcm59121Power& power ) : power_( &power ) {}

   /* The life of the port. */

   /** The chip runs. */
   void start( bool isFourPair );
   /** It is in reset or runs no image: everything is as at power-on, but for what is plugged in. */
   void stop();
   /** It has other channels: it loses its power and keeps its settings. */
   void move( bool isFourPair );
   void advance( std::chrono::nanoseconds elapsed );

   /* What the bus does. */

   const Settings& settings() const { return settings_; }

   /**
    * Limits and masks act at once. Detection type and power mode leave a powered port alone. More than the
    * budget may then be given away.
    */
   void change( const Settings& settings );
   void powerOn();
   void powerOff();

   /* What the bench does. */

   const Bcm59121Device& device() const { return device_; }

   void plug( const Bcm59121Device& device );
   /** @return false if the port has no power that a fault could end */
   bool trip( const Bcm59121Fault& fault );
   /** The same for one channel, 0 or 1. The other one keeps its power. */
   bool trip( const Bcm59121Fault& fault, size_t pair );
   /** The supply's voltage, budget or shut-off inputs have changed. */
   void followSupply();
   /** Gives its power back for want of budget. */
   void shed();

   /* What it looks like. */

   bool isPowered() const { return phase_ == Phase::Powered; }

   /** It has a part of the budget: it is powered or about to be. */
   bool holdsPower() const { return isPowered() || phase_ == Phase::PoweringUp; }

   /** "disabled", "detecting", "requesting", "powered", or a fault's word. */
   std::string text() const;
   uint8_t statusCode() const;

   uint8_t faultCode() const { return fault_ ? fault_->faultCode : 0; }

   /** 1, 2 and 3: power on the primary channel, on the alternative, on both. */
   uint8_t pairState() const;

   uint8_t pdClass() const { return isClassified_ ? class_ : 0; }

   /** 0 before a valid detection, 1 for one signature, 2 for two. */
   uint8_t signatures() const;
   /** @param pair 0 for the primary channel, 1 for the alternative one */
   Channel channel( size_t pair ) const;

   const Counts& counts() const { return counts_; }

   bool isFourPair() const { return isFourPair_; }

   double volts() const { return isPowered() ? power_->volts : 0; }

   /** What the device takes. */
   double watts() const { return wattsOf( 0 ) + wattsOf( 1 ); }

private:
   struct PairSet {
      /** What the last detection has found, as the chip codes it. */
      uint8_t detection = 0;
      /** Why it has no power although the other one may. */
      const Bcm59121Fault* fault = nullptr;
   };

   enum class Phase { Stopped, Disabled, Detecting, Classifying, Requesting, PoweringUp, Powered, Fault };

   void enter( Phase phase, std::optional<std::chrono::nanoseconds> time = std::nullopt );
   /** The time of the phase has passed. */
   void expire();
   void restart();
   void detect();
   void classify();
   void request();
   void fail( Bcm59121Fault::Kind kind );
   void countFault( Bcm59121Fault::Kind kind );
   void allocate();
   void release();
   void checkLoad();

   size_t pairCount() const { return isFourPair_ ? 2 : 1; }

   bool isValid( size_t pair ) const;

   bool isValid() const { return isValid( 0 ) || isValid( 1 ); }

   /** Pair sets with a valid detection. */
   unsigned validPairs() const { return isValid( 0 ) + isValid( 1 ); }

   bool isDual() const;
   bool isPowered( size_t pair ) const;
   /** It has power, and something takes it. */
   bool isLoaded( size_t pair ) const;
   double wattsOf( size_t pair ) const;

   /* In 0.1 W. */
   unsigned classPower() const;
   unsigned limit() const;
   bool mayPower() const;
   /** Nothing is decided about what is plugged in. */
   bool isLooking() const;

   Bcm59121Power* power_;
   bool isFourPair_ = false;
   Settings settings_;
   Counts counts_;
   Bcm59121Device device_;

   Phase phase_ = Phase::Stopped;
   std::optional<std::chrono::nanoseconds> left_;
   const Bcm59121Fault* fault_ = nullptr;
   std::array<PairSet, 2> pairs_;
   bool isClassified_ = false;
   uint8_t class_ = 0;
   /** Somebody wants the device powered. */
   bool isWanted_ = false;
   unsigned allocated_ = 0;
};

} // namespace Emulator

#endif
