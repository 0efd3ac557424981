#include "States.h"

#include <algorithm>
#include <iterator>

namespace States {

namespace {

constexpr const char* red = "\033[1;31m";
constexpr const char* yellow = "\033[33m";
constexpr const char* green = "\033[32m";
constexpr const char* dim = "\033[2m";

struct Row {
   std::string_view state;
   const char* colour;
   bool isAlert;
};

constexpr Row rows[] = {
   { "failed", red, false },
   { "critical", red, true },
   { "stalled", red, true },
   { "fault", red, true },
   { "overload", red, true },
   { "alert", yellow, true },
   { "absent", dim, false },
   { "disabled", dim, false },
   { "ok", green, false },
   { "powered", green, false },
};

Row rowOf( std::string_view state ) {
   auto row = std::find_if(
      std::begin( rows ), std::end( rows ), [=]( auto& candidate ) { return candidate.state == state; } );
   return row == std::end( rows ) ? Row { state, "", false } : *row;
}

} // namespace

const char* colourOf( std::string_view state ) { return rowOf( state ).colour; }

bool isAlert( std::string_view state ) { return rowOf( state ).isAlert; }

} // namespace States
