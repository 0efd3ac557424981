#ifndef SERVE_LED_SETTINGS_H
#define SERVE_LED_SETTINGS_H

#include "Kind.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Serve {

/**
 * The bits of an LED's register, bit 0 first, as GPIOs of its own device: ql.h has no callback that reads an
 * LED. None for other objects, and for LEDs of which no register is known.
 */
std::vector<ObjectEntry> bitsOfLed( const ObjectEntry& led );

/**
 * What an LED was set to, such as "good"; "warning or inactive" where both have the same code. Empty for a
 * code that no setting has, as before anything was set.
 */
std::string settingOfLed( const ObjectEntry& led, uint8_t code );

} // namespace Serve

#endif
