#ifndef EMULATOR_FAULT_TEXT_H
#define EMULATOR_FAULT_TEXT_H

#include "Faults.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Emulator {

/** The words for all kinds. */
std::vector<std::string> faultKinds();
/**
 * A fault from the words "KIND [DURATION] [N]", of which there must be at least one. Throws
 * std::invalid_argument, with words for a person.
 */
Fault parseFault( std::span<const std::string_view> words );
/** The same words again. */
std::string format( const Fault& fault );

} // namespace Emulator

#endif
