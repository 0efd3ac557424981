/*
 * What a client of the SMBus server sends, over a real connection to the code that the server runs. The first
 * byte tells in pieces of which size the others arrive, 0 for all at once.
 */

#include "smbusd/Frame.h"
#include "smbusd/Log.h"
#include "smbusd/Scheduler.h"
#include "smbusd/SmbusClient.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <vector>

#include <sys/socket.h>

using namespace Smbusd;

namespace {

/** Carries out whatever is asked: at once or later, and with a failure for chips above 0x60. */
class AnyBus : public Bus {
public:
   AnyBus( EventLoop& loop, bool late ) : loop_( loop ), late_( late ) {}

   std::string name() const override { return "i2c-0"; }

   std::optional<Outcome> transfer( Operation& operation, Done done ) override {
      auto outcome = carryOut( operation );
      if ( !late_ ) {
         return outcome;
      }
      loop_.post( [done = std::move( done ), outcome] { done( outcome ); } );
      return std::nullopt;
   }

private:
   static Outcome carryOut( Operation& operation ) {
      std::vector<I2c::Message> messages;
      layOut( operation, messages );
      assert( !messages.empty() );
      for ( auto& message : messages ) {
         message.kind == I2c::Message::Kind::Write ? assert( !message.bytes.empty() )
                                                   : message.bytes.resize( message.length, 0x5A );
      }
      if ( operation.chip > 0x60 ) {
         return { I2c::Result::NoAcknowledge, describe( operation ) };
      }
      takeResult( operation, messages );
      return {};
   }

   EventLoop& loop_;
   const bool late_;
};

/** Busses up to 0x60; those of odd numbers take their time. */
class AnyBackend : public Backend {
public:
   explicit AnyBackend( EventLoop& loop ) : quick_( loop, false ), late_( loop, true ) {}

   Bus* find( const BusKey& key ) override {
      return key.bus > 0x60 ? nullptr : key.bus % 2 ? &late_ : &quick_;
   }

private:
   AnyBus quick_;
   AnyBus late_;
};

/** The client's end of the connection. */
class Peer {
public:
   explicit Peer( int fd ) : fd_( fd ) {}

   /** @return how many bytes the server has room for */
   size_t send( std::span<const uint8_t> bytes ) const {
      auto count = ::send( fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT );
      return count < 0 ? 0 : static_cast<size_t>( count );
   }

   void end() const { shutdown( fd_.get(), SHUT_WR ); }

   void receive() {
      uint8_t bytes[4096];
      ssize_t count;
      while ( ( count = recv( fd_.get(), bytes, sizeof( bytes ), MSG_DONTWAIT ) ) > 0 ) {
         answers_.insert( answers_.end(), bytes, bytes + count );
      }
   }

   /** Every answer is a whole frame with a message that makes sense. */
   void checkAnswers() const {
      std::span<const uint8_t> rest( answers_ );
      while ( !rest.empty() ) {
         assert( rest.size() >= Frame::headerSize );
         auto size = Frame::payloadSize( rest.first<Frame::headerSize>() );
         rest = rest.subspan( Frame::headerSize );
         assert( size <= Frame::maxPayload && size <= rest.size() );
         Smbus::TransactionResponse response;
         assert( response.ParseFromArray( rest.data(), static_cast<int>( size ) ) );
         assert( response.has_failed() && response.failed() == response.has_reason() );
         assert( !response.failed() || response.response_size() == 0 );
         rest = rest.subspan( size );
      }
   }

private:
   Descriptor fd_;
   std::vector<uint8_t> answers_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   if ( size == 0 ) {
      return 0;
   }
   Log::threshold = Log::Level::Error;
   static EventLoop loop;
   static AnyBackend backend( loop );
   static Scheduler scheduler( loop );

   int fds[2];
   auto made = socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds );
   assert( made == 0 );
   Peer peer( fds[0] );
   auto client = std::make_shared<SmbusClient>( loop, Descriptor( fds[1] ), backend, scheduler );
   bool ended = false;
   client->ended = [&]( Connection& ) { ended = true; };

   std::span<const uint8_t> rest( data + 1, size - 1 );
   auto piece = data[0] == 0 ? rest.size() : data[0];
   while ( !ended ) {
      rest = rest.subspan( peer.send( rest.first( std::min( piece, rest.size() ) ) ) );
      if ( rest.empty() ) {
         peer.end();
      }
      loop.post( [] {} );
      loop.runOnce();
      peer.receive();
   }
   peer.checkAnswers();
   return 0;
}
