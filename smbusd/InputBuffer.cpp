#include "InputBuffer.h"

#include <algorithm>

namespace Smbusd {

std::span<uint8_t> InputBuffer::room() {
   if ( begin_ > 0 ) {
      std::copy( storage_.begin() + static_cast<ptrdiff_t>( begin_ ),
         storage_.begin() + static_cast<ptrdiff_t>( end_ ), storage_.begin() );
      end_ -= begin_;
      begin_ = 0;
   }
   if ( end_ == storage_.size() ) {
      storage_.resize( std::max( usualSize, 2 * storage_.size() ) );
   }
   return std::span( storage_ ).subspan( end_ );
}

void InputBuffer::remove( size_t count ) {
   begin_ += count;
   if ( begin_ < end_ ) {
      return;
   }
   begin_ = end_ = 0;
   if ( storage_.size() > usualSize ) {
      // A rare large message does not hold its memory for the rest of the connection.
      storage_.resize( usualSize );
      storage_.shrink_to_fit();
   }
}

} // namespace Smbusd
