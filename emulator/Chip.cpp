#include "Chip.h"

#include "Text.h"

#include <fmt/format.h>

#include <stdexcept>

namespace Emulator {

void Chip::act( std::span<const std::string_view> words ) {
   throw std::invalid_argument( fmt::format( "no action {}", printable( words[0] ) ) );
}

} // namespace Emulator
