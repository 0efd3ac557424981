#include "SmbusClient.h"

#include "Frame.h"

#include <fmt/format.h>

namespace Smbusd {

SmbusClient::SmbusClient( EventLoop& loop, Descriptor descriptor, Backend& backend, Scheduler& scheduler )
   : Connection( loop, std::move( descriptor ) ), backend_( backend ), scheduler_( scheduler ) {
   newJob();
}

SmbusClient::~SmbusClient() {
   // A transaction that has begun is not stopped: a multiplexer is to be released, for instance. One that
   // waits goes with its client, who could else pile up work by connecting again and again.
   scheduler_.abandon( job_ );
}

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
   if ( !job_->transaction.parse( payload.first( size ) ) ) {
      drop( "sent a message that can't be parsed" );
      return 0;
   }
   messageSize_ = size;
   job_->transaction.plan( backend_ ) ? scheduler_.run( job_ ) : answer();
   return Frame::headerSize + size;
}

void SmbusClient::newJob() {
   job_ = std::make_shared<Scheduler::Job>( [this] { answer(); } );
}

void SmbusClient::answer() {
   Frame::encode( job_->transaction.response(), output );
   if ( messageSize_ > InputBuffer::usualSize || output.size() > InputBuffer::usualSize ) {
      // A rare large message does not hold its memory for the rest of the connection.
      newJob();
   }
   Connection::answer();
}

} // namespace Smbusd
