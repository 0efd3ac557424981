#include "Bcm59121Commands.h"

#include <algorithm>

namespace Emulator {

namespace {

using Addressee = Bcm59121Command::Addressee;
using Outcome = Bcm59121Command::Outcome;

constexpr uint8_t errorNoImage = 0xAF;
constexpr uint8_t errorMessage = 0xAE;
constexpr uint8_t errorCommand = 0xAD;
constexpr uint8_t errorArgument = 0xAC;
constexpr uint8_t errorStoring = 0xAB;

/** The register of firmware blocks, and the command about firmware and port map. */
constexpr uint8_t firmware = 0xE0;
constexpr uint8_t firmwareClear = 0xC0;
constexpr uint8_t firmwareLoad = 0x40;
constexpr uint8_t portMapInForce = 0xF0;
/** The one query that is answered after a load that has failed. */
constexpr uint8_t systemStatus = 0x20;

constexpr std::chrono::milliseconds errorTime( 1 );
constexpr std::chrono::milliseconds firmwareTime( 10 );

Bcm59121Answer error( uint8_t code ) { return { true, Bcm59121Message( code ).withChecksum(), errorTime }; }

Outcome control( Bcm59121State& state, uint8_t subCommand ) {
   switch ( subCommand ) {
   case firmwareClear:
      state.stop();
      state.firmware.clear();
      return Outcome::Done;
   case firmwareLoad:
      state.stop();
      state.firmware.load();
      return Outcome::Silent;
   default:
      break;
   }
   if ( subCommand != portMapInForce || !state.map.putInForce() ) {
      return Outcome::Refused;
   }
   state.applyMap();
   return Outcome::Done;
}

/** A block is anything but a message that starts with the same byte. */
bool isBlock( std::span<const uint8_t> bytes, const std::optional<Bcm59121Message>& message ) {
   return bytes[0] == firmware && bytes.size() > 1 &&
          !( message && ( message->subCommand() == firmwareClear || message->subCommand() == firmwareLoad ||
                           message->subCommand() == portMapInForce ) );
}

const Bcm59121Command* find( const std::vector<Bcm59121Command>& table, uint8_t code ) {
   auto found = std::ranges::find( table, code, &Bcm59121Command::code );
   return found == table.end() ? nullptr : &*found;
}

bool reaches( const Bcm59121State& state, const Bcm59121Command& command, const Bcm59121Message& request ) {
   switch ( command.addressee ) {
   case Addressee::Port:
      return request[2] < state.map.rows().size();
   case Addressee::Group:
      return request[2] < state.map.groups();
   case Addressee::Chip:
      break;
   }
   return true;
}

bool isWellFormed( const Bcm59121Command& command, const Bcm59121Message& request ) {
   return request.subCommand() == Bcm59121Message::unused &&
          request.isUnusedFrom( Bcm59121Message::firstArgument + command.arguments );
}

Bcm59121Answer answer( Bcm59121State& state, const Bcm59121Message& request ) {
   Bcm59121Message reply( request.command(), request.subCommand() );
   if ( state.map.isStoring() ) {
      return error( errorStoring );
   }
   Outcome outcome = Outcome::Refused;
   std::chrono::nanoseconds time = firmwareTime;
   if ( request.command() == firmware &&
        ( state.firmware.isRunning() || request.subCommand() != portMapInForce ) ) {
      if ( request.isUnusedFrom( Bcm59121Message::firstArgument ) ) {
         outcome = control( state, request.subCommand() );
      }
   } else if ( !state.firmware.isRunning() &&
               !( state.firmware.hasFailed() && request.command() == systemStatus ) ) {
      return error( errorNoImage );
   } else {
      auto setting = find( bcm59121Settings, request.command() );
      auto command = setting ? setting : find( bcm59121Queries, request.command() );
      if ( !command ) {
         return error( errorCommand );
      }
      if ( command->addressee != Addressee::Chip ) {
         reply.put( 2, request[2] );
      }
      if ( isWellFormed( *command, request ) && reaches( state, *command, request ) ) {
         outcome = command->run( state, request, reply );
      }
      time = command->time;
   }
   switch ( outcome ) {
   case Outcome::Done:
      return { true, reply.withChecksum(), time };
   case Outcome::Silent:
      return {};
   case Outcome::Refused:
      break;
   }
   return error( errorArgument );
}

} // namespace

Bcm59121Answer answerBcm59121( Bcm59121State& state, std::span<const uint8_t> bytes ) {
   auto message = Bcm59121Message::parse( bytes );
   if ( isBlock( bytes, message ) && !state.firmware.isRunning() ) {
      if ( !state.firmware.takesBlocks() ) {
         return { .isAcknowledged = false };
      }
      state.firmware.append( bytes.subspan( 1 ) );
      return {};
   }
   return message ? answer( state, *message ) : error( errorMessage );
}

} // namespace Emulator
