#include "Bcm59121Message.h"

#include <algorithm>
#include <numeric>

namespace Emulator {

namespace {

/** The low 8 bits of the sum. */
uint8_t sumOf( std::span<const uint8_t> bytes ) {
   return static_cast<uint8_t>( std::accumulate( bytes.begin(), bytes.end(), 0U ) );
}

} // namespace

std::optional<Bcm59121Message> Bcm59121Message::parse( std::span<const uint8_t> bytes ) {
   if ( bytes.size() != size || sumOf( bytes.first( size - 1 ) ) != bytes.back() ) {
      return std::nullopt;
   }
   Bcm59121Message message( 0 );
   std::ranges::copy( bytes.first( size - 1 ), message.bytes_.begin() );
   return message;
}

bool Bcm59121Message::isUnusedFrom( size_t offset ) const {
   return std::ranges::all_of(
      std::span( bytes_ ).subspan( offset ), []( uint8_t byte ) { return byte == unused; } );
}

void Bcm59121Message::putWord( size_t offset, unsigned value ) {
   put( offset, value >> 8 );
   put( offset + 1, value );
}

std::vector<uint8_t> Bcm59121Message::withChecksum() const {
   std::vector<uint8_t> bytes( bytes_.begin(), bytes_.end() );
   bytes.push_back( sumOf( bytes_ ) );
   return bytes;
}

} // namespace Emulator
