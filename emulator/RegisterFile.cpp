#include "RegisterFile.h"

#include <algorithm>

namespace Emulator {

RegisterFile::RegisterFile( Pointer pointer, const std::vector<Register>& registers ) : mode_( pointer ) {
   for ( auto& definition : registers ) {
      cells_[definition.number] = { definition, definition.reset };
   }
}

bool RegisterFile::write( std::span<const uint8_t> bytes ) {
   if ( bytes.empty() ) {
      return true;
   }
   if ( cells_[bytes[0]].definition.bytes == 0 ) {
      return false;
   }
   pointer_ = bytes[0];
   byte_ = 0;
   return std::ranges::all_of( bytes.subspan( 1 ), [this]( uint8_t byte ) { return put( byte ); } );
}

void RegisterFile::read( std::span<uint8_t> bytes ) {
   std::ranges::generate( bytes, [this] { return next(); } );
}

void RegisterFile::reset() {
   for ( auto& cell : cells_ ) {
      cell.value = cell.definition.reset;
   }
   pointer_ = 0;
   byte_ = 0;
}

RegisterFile::Cell* RegisterFile::current() {
   if ( pointer_ >= cells_.size() || byte_ >= cells_[pointer_].definition.bytes ) {
      return nullptr;
   }
   return &cells_[pointer_];
}

void RegisterFile::advance( const Cell& cell ) {
   if ( ++byte_ == cell.definition.bytes && mode_ == Pointer::Increments ) {
      ++pointer_;
      byte_ = 0;
   }
}

namespace {

/** How far the byte at a position is from the low end of its register. */
unsigned shiftOf( const Register& definition, unsigned byte ) { return 8 * ( definition.bytes - 1U - byte ); }

} // namespace

bool RegisterFile::put( uint8_t byte ) {
   auto cell = current();
   if ( !cell ) {
      return mode_ == Pointer::Stays;
   }
   unsigned shift = shiftOf( cell->definition, byte_ );
   unsigned mask = cell->definition.writable & 0xFFU << shift;
   cell->value = static_cast<uint16_t>( ( cell->value & ~mask ) | ( unsigned { byte } << shift & mask ) );
   advance( *cell );
   return true;
}

uint8_t RegisterFile::next() {
   auto cell = current();
   if ( !cell ) {
      return 0xFF;
   }
   unsigned shift = shiftOf( cell->definition, byte_ );
   auto byte = static_cast<uint8_t>( cell->value >> shift );
   cell->value = static_cast<uint16_t>( cell->value & ~( cell->definition.clearedByRead & 0xFFU << shift ) );
   advance( *cell );
   return byte;
}

} // namespace Emulator
