#include "SmbusClient.h"

#include "Frame.h"

#include <fmt/format.h>

namespace Smbusd {

size_t SmbusClient::take( std::span<const uint8_t> bytes ) {
   if ( bytes.size() < Frame::headerSize ) {
      return 0;
   }
   auto size = Frame::payloadSize( bytes.first<Frame::headerSize>() );
   if ( size > Frame::maxPayload ) {
      drop( fmt::format( "announces a message of {} bytes, {} are the most", size, Frame::maxPayload ) );
      return 0;
   }
   auto payload = bytes.subspan( Frame::headerSize );
   if ( payload.size() < size ) {
      return 0;
   }
   auto transaction = std::make_shared<Transaction>();
   if ( !transaction->parse( payload.first( size ) ) ) {
      drop( "sent a message that can't be parsed" );
      return 0;
   }
   if ( !transaction->plan( backend_ ) ) {
      answer( *transaction );
      return Frame::headerSize + size;
   }
   // A client that vanishes doesn't stop its transaction: a multiplexer is to be released, for instance.
   scheduler_.run( transaction, [self = weak_from_this(), transaction] {
      if ( auto client = self.lock() ) {
         client->answer( *transaction );
      }
   } );
   return Frame::headerSize + size;
}

void SmbusClient::answer( const Transaction& transaction ) {
   Frame::encode( transaction.response(), output );
   Connection::answer();
}

} // namespace Smbusd
