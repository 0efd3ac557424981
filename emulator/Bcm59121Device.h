#ifndef EMULATOR_BCM59121_DEVICE_H
#define EMULATOR_BCM59121_DEVICE_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace Emulator {

/** What is plugged into a port of the BCM59121. */
struct Bcm59121Device {
   enum class Kind {
      /** Nothing. */
      None,
      /** One signature on all pairs. */
      Single,
      /** A signature of its own on each pair set of a 4-pair port. */
      Dual,
      /** A capacitor in place of a signature, as devices before the standard have it. */
      Legacy,
      Short,
      LowResistance,
      HighResistance,
      /** A cable without an end. */
      Open
   };

   /** What the primary and the alternative pair set find. A 2-pair port has the primary alone. */
   using Type = std::array<Kind, 2>;

   Type type {};
   /** 0 to 8, of each pair set of a dual-signature device; or what a classification that fails gives. */
   uint8_t pdClass = 0;
   /** Watts that it takes once it is powered. */
   double draw = 0;
};

/* A classification that fails. */
constexpr uint8_t classMismatch = 14;
constexpr uint8_t classOverCurrent = 15;

/**
 * The type of a word: "single", or "single/open" for a device that the primary pair set alone reaches. Throws
 * std::invalid_argument, with words for a person, for another word.
 */
Bcm59121Device::Type bcm59121TypeOf( std::string_view word );
std::string bcm59121TypeWord( const Bcm59121Device::Type& type );

/* The same for classes: "0" to "8", and "mismatch" and "over-current" for a classification that fails. */
uint8_t bcm59121ClassOf( std::string_view word );
std::string bcm59121ClassWord( uint8_t pdClass );

/** Watts that a device may take. Throws std::invalid_argument, with words for a person, for another number.
 */
double bcm59121DrawOf( std::string_view word );
/** Watts that a device takes when nobody says otherwise: half of what its class allows. */
double bcm59121UsualDraw( const Bcm59121Device& device );

/** What a class, 0 to 8, may take at the port on one signature, in 0.1 W. */
unsigned bcm59121ClassPower( uint8_t pdClass );

} // namespace Emulator

#endif
