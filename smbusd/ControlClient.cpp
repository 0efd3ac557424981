#include "ControlClient.h"

#include "emulator/Control.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace Smbusd {

size_t ControlClient::take( std::span<const uint8_t> bytes ) {
   auto end = std::ranges::find( bytes, '\n' );
   auto length = static_cast<size_t>( end - bytes.begin() );
   if ( length > maxLine ) {
      drop( fmt::format( "sent a line of more than {} bytes", maxLine ) );
      return 0;
   }
   if ( end == bytes.end() ) {
      return 0;
   }
   auto line = Emulator::control( board_, { reinterpret_cast<const char*>( bytes.data() ), length } );
   output.assign( line.begin(), line.end() );
   output.push_back( '\n' );
   answer();
   return length + 1;
}

} // namespace Smbusd
