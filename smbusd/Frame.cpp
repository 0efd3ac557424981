#include "Frame.h"

#include <google/protobuf/message_lite.h>

#include <cassert>

namespace Smbusd::Frame {

size_t payloadSize( std::span<const uint8_t, headerSize> header ) {
   size_t size = 0;
   for ( auto byte : header ) {
      size = size << 8 | byte;
   }
   return size;
}

void encode( const google::protobuf::MessageLite& message, std::vector<uint8_t>& frame ) {
   auto size = message.ByteSizeLong();
   assert( size <= maxPayload );
   frame.resize( headerSize + size );
   for ( size_t i = 0; i < headerSize; ++i ) {
      frame[i] = static_cast<uint8_t>( size >> 8 * ( headerSize - 1 - i ) );
   }
   message.SerializeWithCachedSizesToArray( frame.data() + headerSize );
}

} // namespace Smbusd::Frame
