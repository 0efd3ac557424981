#include "Adapters.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

namespace Smbusd::I2cDev {

const std::filesystem::path sysfsDevices = "/sys/bus/i2c/devices";

namespace {

/** N of "i2c-N", or nothing: chips are listed beside the adapters. */
std::optional<uint32_t> adapterNumber( const std::string& entry ) {
   constexpr std::string_view prefix = "i2c-";
   if ( !entry.starts_with( prefix ) ) {
      return std::nullopt;
   }
   uint32_t number;
   auto end = entry.data() + entry.size();
   auto [stop, error] = std::from_chars( entry.data() + prefix.size(), end, number );
   return error == std::errc() && stop == end ? std::optional( number ) : std::nullopt;
}

} // namespace

std::vector<uint32_t> findAdapters( const std::string& name, const std::filesystem::path& devices ) {
   std::vector<uint32_t> numbers;
   std::error_code ignored;
   for ( auto& entry : std::filesystem::directory_iterator( devices, ignored ) ) {
      auto number = adapterNumber( entry.path().filename() );
      std::string found;
      if ( number && std::getline( std::ifstream( entry.path() / "name" ), found ) && found == name ) {
         numbers.push_back( *number );
      }
   }
   std::ranges::sort( numbers );
   return numbers;
}

std::string listAdapters( const std::vector<uint32_t>& numbers ) {
   return fmt::format( "i2c-{}", fmt::join( numbers, ", i2c-" ) );
}

} // namespace Smbusd::I2cDev
