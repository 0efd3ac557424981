#include "Kind.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array allKinds = { &systemKind, &tempSensorKind, &fanKind, &slotKind, &xcvrKind, &poePortKind,
   &ledKind, &gpioKind };

} // namespace

std::span<const Kind* const> kinds() { return allKinds; }

const Step* findStep( std::string_view line ) {
   for ( auto kind : allKinds ) {
      for ( auto& step : kind->steps ) {
         if ( line.starts_with( step.trace ) ) {
            return &step;
         }
      }
   }
   return nullptr;
}

const Kind* findKind( std::string_view name ) {
   auto found =
      std::find_if( allKinds.begin(), allKinds.end(), [=]( auto kind ) { return kind->name == name; } );
   return found == allKinds.end() ? nullptr : *found;
}
