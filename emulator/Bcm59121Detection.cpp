#include "Bcm59121Detection.h"

#include <algorithm>
#include <array>

namespace Emulator {

namespace {

using Kind = Bcm59121Device::Kind;

/** What a detection type takes for valid. */
struct DetectionType {
   bool resistor;
   bool capacitor;
};

constexpr std::array<DetectionType, 6> detectionTypes = { {
   { false, false }, // none
   { false, true },  // legacy capacitive
   { true, false },  // 4 point
   { true, true },   // legacy 4 point
   { true, false },  // 2 point
   { true, true },   // legacy 2 point
} };

/** From IEEE 802.3af to 802.3bt Type-4. */
constexpr std::array<uint8_t, 7> modeClasses = { 3, 3, 4, 4, 6, 6, 8 };
constexpr uint8_t highestTwoPairClass = 4;
/** Up to Type-3 and for Type-4. */
constexpr uint8_t highestDualClass = 4;
constexpr uint8_t highestDualClassType4 = 5;
constexpr uint8_t powerModeType4 = 6;

} // namespace

uint8_t bcm59121Detect( uint8_t detectionType, Kind kind ) {
   auto type = detectionTypes.at( detectionType );
   if ( !type.resistor && !type.capacitor ) {
      return detectionUnknown;
   }
   switch ( kind ) {
   case Kind::Single:
   case Kind::Dual:
      return type.resistor ? detectionValid : detectionUnknown;
   case Kind::Legacy:
      return type.capacitor ? detectionValid : detectionHighCapacitance;
   case Kind::Short:
      return detectionShort;
   case Kind::LowResistance:
      return detectionLowResistance;
   case Kind::HighResistance:
      return detectionHighResistance;
   case Kind::None:
   case Kind::Open:
      break;
   }
   return detectionOpen;
}

uint8_t bcm59121HighestClass( uint8_t powerMode, bool isFourPair, bool isDual ) {
   auto highest = modeClasses.at( powerMode );
   if ( !isFourPair ) {
      return std::min( highest, highestTwoPairClass );
   }
   if ( isDual ) {
      return std::min( highest, powerMode == powerModeType4 ? highestDualClassType4 : highestDualClass );
   }
   return highest;
}

} // namespace Emulator
