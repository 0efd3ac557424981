#include "Finding.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

std::string placeOf( const Finding& finding ) {
   return finding.place
             ? fmt::format( "{}:{}:{}: ", finding.file, finding.place->line, finding.place->column )
             : "";
}

std::string sentenceOf( const Finding& finding ) {
   return fmt::format( "{}{}{}{}{}", finding.pointer, finding.pointer.empty() ? "" : ": ", finding.reason,
      finding.repair.empty() ? "" : "; ", finding.repair );
}

} // namespace

std::string Finding::text() const { return placeOf( *this ) + sentenceOf( *this ); }

std::string Finding::textWithSeverity() const {
   return fmt::format( "{}{}: {}", placeOf( *this ), wordFor( severity ), sentenceOf( *this ) );
}

std::string wordFor( Severity severity ) { return severity == Severity::Error ? "error" : "warning"; }

bool hasErrors( const Findings& findings ) {
   return std::any_of(
      findings.begin(), findings.end(), []( auto& finding ) { return finding.severity == Severity::Error; } );
}
