#include "Server.h"

#include "ControlClient.h"
#include "SmbusClient.h"

#include <utility>

namespace Smbusd {

void Server::serveBusses( const std::string& path, Backend& backend, Scheduler& scheduler ) {
   listeners_.push_back( std::make_unique<Listener>( loop_, path, [&]( Descriptor descriptor ) {
      keep( std::make_shared<SmbusClient>( loop_, std::move( descriptor ), backend, scheduler ) );
   } ) );
}

void Server::serveControl( const std::string& path, Emulator::Board& board ) {
   listeners_.push_back( std::make_unique<Listener>( loop_, path, [&]( Descriptor descriptor ) {
      keep( std::make_shared<ControlClient>( loop_, std::move( descriptor ), board ) );
   } ) );
}

void Server::keep( std::shared_ptr<Connection> connection ) {
   connection->ended = [this]( Connection& ended ) {
      // It is still at work when it tells this.
      loop_.post( [last = std::move( connections_.extract( &ended ).mapped() )] {} );
   };
   auto key = connection.get();
   connections_.emplace( key, std::move( connection ) );
}

} // namespace Smbusd
