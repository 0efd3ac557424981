#ifndef EMULATOR_BCM59121_DETECTION_H
#define EMULATOR_BCM59121_DETECTION_H

#include "Bcm59121Device.h"

#include <cstdint>

namespace Emulator {

/* What the BCM59121 makes of what is plugged in. */

/* Codes of a detection. */
constexpr uint8_t detectionUnknown = 0;
constexpr uint8_t detectionShort = 1;
constexpr uint8_t detectionHighCapacitance = 2;
constexpr uint8_t detectionLowResistance = 3;
constexpr uint8_t detectionValid = 4;
constexpr uint8_t detectionHighResistance = 5;
constexpr uint8_t detectionOpen = 6;
/** Beside the code of a channel with a signature of its own. */
constexpr uint8_t ownSignature = 0x10;

/** The code that a detection of a type, 0 to 5, gives for a device. */
uint8_t bcm59121Detect( uint8_t detectionType, Bcm59121Device::Kind kind );

/** The highest class that a power mode, 0 to 6, gives to a port, or to each signature on it. */
uint8_t bcm59121HighestClass( uint8_t powerMode, bool isFourPair, bool isDual );

/* The power modes that ports start with: 802.3at, and for 4-pair ports the one before 802.3bt. */
constexpr uint8_t powerModeAt = 3;
constexpr uint8_t powerModeBeforeBt = 4;

} // namespace Emulator

#endif
