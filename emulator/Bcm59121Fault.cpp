#include "Bcm59121Fault.h"

#include <algorithm>

namespace Emulator {

namespace {

using Kind = Bcm59121Fault::Kind;

constexpr Bcm59121Fault faults[] = {
   { Kind::MpsAbsent, "mps-absent", 4, 1, 1, false },
   { Kind::Short, "short", 4, 2, 2, true },
   { Kind::Overload, "overload", 4, 3, 3, true },
   { Kind::Denied, "denied", 5, 4, 4, false },
   { Kind::Thermal, "thermal", 4, 5, 5, true },
   { Kind::Startup, "startup", 4, 6, 6, true },
   { Kind::UnderVoltage, "uvlo", 5, 7, 7, false },
   { Kind::OverVoltage, "ovlo", 5, 0, 8, false },
};

} // namespace

const Bcm59121Fault& bcm59121Fault( Kind kind ) {
   return *std::ranges::find( faults, kind, &Bcm59121Fault::kind );
}

const Bcm59121Fault* bcm59121FaultAction( std::string_view word ) {
   auto found =
      std::ranges::find_if( faults, [&]( auto& fault ) { return fault.isAction && word == fault.word; } );
   return found == std::end( faults ) ? nullptr : &*found;
}

} // namespace Emulator
