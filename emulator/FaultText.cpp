#include "FaultText.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

namespace {

struct Word {
   Fault::Kind kind;
   const char* text;
   bool hasDuration;
};

constexpr Word kindWords[] = {
   { Fault::Kind::Busy, "busy", false },
   { Fault::Kind::Arbitration, "arbitration", false },
   { Fault::Kind::Nack, "nack", false },
   { Fault::Kind::Hang, "hang", true },
   { Fault::Kind::Slow, "slow", true },
   { Fault::Kind::Corrupt, "corrupt", false },
   { Fault::Kind::Checksum, "checksum", false },
};

const Word& wordOf( std::string_view text ) {
   auto found = std::ranges::find( kindWords, text, &Word::text );
   if ( found == std::end( kindWords ) ) {
      throw std::invalid_argument(
         fmt::format( "no fault {}{}", printable( text ), suggestion( text, faultKinds() ) ) );
   }
   return *found;
}

} // namespace

std::vector<std::string> faultKinds() {
   std::vector<std::string> words;
   for ( auto& word : kindWords ) {
      words.push_back( word.text );
   }
   return words;
}

Fault parseFault( std::span<const std::string_view> words ) {
   auto& word = wordOf( words[0] );
   words = words.subspan( 1 );
   Fault fault { word.kind };
   if ( word.hasDuration ) {
      auto duration = words.empty() ? std::nullopt : parseDuration( words[0] );
      if ( !duration ) {
         throw std::invalid_argument(
            fmt::format( "{} needs a duration such as 500ms or 2s, at most an hour", word.text ) );
      }
      fault.duration = *duration;
      words = words.subspan( 1 );
   }
   if ( !words.empty() ) {
      fault.transfers = parseUnsigned( words[0] );
      if ( !fault.transfers || *fault.transfers == 0 ) {
         throw std::invalid_argument( fmt::format(
            "the number of transfers must be a whole number from 1 on, not {}", printable( words[0] ) ) );
      }
      words = words.subspan( 1 );
   }
   if ( !words.empty() ) {
      throw std::invalid_argument( fmt::format( "{} behind {}", printable( words[0] ), word.text ) );
   }
   return fault;
}

std::string format( const Fault& fault ) {
   auto& word = *std::ranges::find( kindWords, fault.kind, &Word::kind );
   std::string text = word.text;
   if ( word.hasDuration ) {
      text += fmt::format( " {}", format( fault.duration ) );
   }
   if ( fault.transfers ) {
      text += fmt::format( " {}", *fault.transfers );
   }
   return text;
}

} // namespace Emulator
