#include "Model.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

std::vector<std::string> Model::properties() const {
   std::vector<std::string> names;
   for ( auto& property : properties_ ) {
      names.push_back( property.name );
   }
   return names;
}

std::string Model::get( const std::string& property ) const { return find( property ).get(); }

void Model::set( const std::string& property, const std::string& value ) {
   auto& found = find( property );
   if ( !found.set ) {
      throw std::invalid_argument( fmt::format( "property {} can't be set", property ) );
   }
   found.set( value );
}

void Model::addProperty( const std::string& name, Getter get, Setter set ) {
   properties_.push_back( { name, std::move( get ), std::move( set ) } );
}

namespace {

template <typename Number>
Number within( const std::string& name, const std::string& value, std::optional<Number> number,
   const char* kind, Number lowest, Number highest ) {
   if ( !number || *number < lowest || *number > highest ) {
      throw std::invalid_argument( fmt::format(
         "{} must be a {} from {} to {}, not {}", name, kind, lowest, highest, printable( value ) ) );
   }
   return *number;
}

} // namespace

double Model::numberIn( const std::string& name, const std::string& value, double lowest, double highest ) {
   return within( name, value, parseNumber( value ), "number", lowest, highest );
}

uint32_t Model::unsignedIn(
   const std::string& name, const std::string& value, uint32_t lowest, uint32_t highest ) {
   return within( name, value, parseUnsigned( value ), "whole number", lowest, highest );
}

const Model::Property& Model::find( const std::string& name ) const {
   auto found = std::ranges::find( properties_, name, &Property::name );
   if ( found == properties_.end() ) {
      throw std::invalid_argument(
         fmt::format( "no property {}{}", printable( name ), suggestion( name, properties() ) ) );
   }
   return *found;
}

} // namespace Emulator
