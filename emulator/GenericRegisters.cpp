#include "GenericRegisters.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

namespace {

constexpr uint32_t mostRegisters = 256;

std::vector<std::string> namesOf( size_t count ) {
   std::vector<std::string> names;
   for ( size_t number = 0; number < count; ++number ) {
      names.push_back( fmt::format( "r{:#04x}", number ) );
   }
   return names;
}

} // namespace

GenericRegisters::GenericRegisters( const Options& options ) : GenericRegisters( tableOf( options ) ) {}

GenericRegisters::GenericRegisters( const std::vector<Register>& table )
   : registers_( RegisterFile::Pointer::Increments, table ) {
   auto names = namesOf( table.size() );
   for ( auto& definition : table ) {
      auto& name = names[definition.number];
      addProperty(
         name,
         [this, number = definition.number] { return fmt::format( "{:#04x}", registers_.get( number ) ); },
         [this, number = definition.number, name]( const std::string& value ) {
            registers_.set( number, static_cast<uint16_t>( unsignedIn( name, value, 0, 0xFF ) ) );
         } );
   }
}

std::vector<Register> GenericRegisters::tableOf( const Options& options ) {
   auto size = options.find( "size" );
   auto count = size == options.end() ? mostRegisters : unsignedIn( "size", size->second, 1, mostRegisters );
   auto names = namesOf( count );
   std::vector<Register> table;
   for ( auto& name : names ) {
      auto option = options.find( name );
      auto reset = option == options.end() ? 0 : unsignedIn( name, option->second, 0, 0xFF );
      table.push_back( { static_cast<uint8_t>( table.size() ), 1, static_cast<uint16_t>( reset ), 0xFF } );
   }
   for ( auto& [name, value] : options ) {
      if ( name != "size" && std::ranges::find( names, name ) == names.end() ) {
         throw std::invalid_argument(
            fmt::format( "no option {}{}", printable( name ), suggestion( name, names ) ) );
      }
   }
   return table;
}

} // namespace Emulator
