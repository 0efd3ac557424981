#ifndef EMULATOR_CHIP_FACTORY_H
#define EMULATOR_CHIP_FACTORY_H

#include "Chip.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Emulator {

/** What a board fixes about a chip when it is built, by name. */
using Options = std::map<std::string, std::string>;

/**
 * A chip fresh from power-on. Throws std::invalid_argument, with words for a person, for a part without a
 * model and for an option that it lacks.
 */
std::unique_ptr<Chip> makeChip( const std::string& part, const Options& options = {} );
/** The parts that there are models of. */
std::vector<std::string> parts();

} // namespace Emulator

#endif
