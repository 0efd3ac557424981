#include "Bcm59121Commands.h"

namespace Emulator {

namespace {

using namespace std::chrono_literals;
using Outcome = Bcm59121Command::Outcome;
using State = Bcm59121State;
using Message = Bcm59121Message;
using PortSettings = Bcm59121Port::Settings;

constexpr auto toChip = Bcm59121Command::Addressee::Chip;
constexpr auto toPort = Bcm59121Command::Addressee::Port;

// A host waits 4 ms, 12 ms for the port map, and 20 ms for command 0x17.
constexpr auto quick = 3ms;
constexpr auto mapping = 10ms;
constexpr auto slow = 15ms;

constexpr uint8_t mapBegin = 2;
constexpr uint8_t mapEnd = 3;

Outcome doneIf( bool done ) { return done ? Outcome::Done : Outcome::Refused; }

/** Byte 3 is the value of one setting of a port. */
template <auto setting, uint8_t highest>
Outcome setPort( State& state, const Message& request, Message& ) {
   if ( request[3] > highest ) {
      return Outcome::Refused;
   }
   auto& port = state.ports[request[2]];
   auto settings = port.settings();
   settings.*setting = request[3];
   port.change( settings );
   state.followSupply();
   return Outcome::Done;
}

Outcome powerOn( State& state, const Message& request, Message& ) {
   if ( request[3] != 1 ) {
      return Outcome::Refused;
   }
   state.ports[request[2]].powerOn();
   return Outcome::Done;
}

Outcome powerOff( State& state, const Message& request, Message& ) {
   if ( request[3] != 1 ) {
      return Outcome::Refused;
   }
   state.ports[request[2]].powerOff();
   return Outcome::Done;
}

Outcome setGlobal0a( State& state, const Message& request, Message& ) {
   state.command0a = { request[2], request[3], request[4], request[5] };
   return Outcome::Done;
}

Outcome setGlobal17( State& state, const Message& request, Message& ) {
   state.command17 = request[2];
   return Outcome::Done;
}

Outcome setCrc( State& state, const Message& request, Message& ) {
   if ( request[2] > 1 || request[3] > 1 ) {
      return Outcome::Refused;
   }
   state.checksCrc = request[2];
   state.resetsOnCrcFailure = request[3];
   return Outcome::Done;
}

Outcome startOrEndMap( State& state, const Message& request, Message& ) {
   switch ( request[2] ) {
   case mapBegin:
      return doneIf( state.map.begin( request[3] ) );
   case mapEnd:
      return doneIf( request[3] == Message::unused && state.map.end() );
   default:
      return Outcome::Refused;
   }
}

Outcome addMapRow( State& state, const Message& request, Message& ) {
   bool hasConstants = request[7] == 1 && request[8] == 0 && request[9] == 1;
   if ( request[3] > 1 || !hasConstants ) {
      return Outcome::Refused;
   }
   return doneIf( state.map.add( request[2], { request[3] == 1, request[4], request[5], request[6] } ) );
}

} // namespace

const std::vector<Bcm59121Command> bcm59121Settings = {
   { 0x00, toPort, 2, quick, setPort<&PortSettings::isEnabled, 1> },
   { 0x01, toPort, 2, quick, powerOn },
   { 0x02, toChip, 2, mapping, startOrEndMap },
   { 0x03, toPort, 2, quick, powerOff },
   { 0x08, toPort, 2, quick, setPort<&PortSettings::command08, 0xFF> },
   { 0x0A, toChip, 4, quick, setGlobal0a },
   { 0x0E, toChip, 8, mapping, addMapRow },
   { 0x10, toPort, 2, quick, setPort<&PortSettings::detectionType, 5> },
   { 0x12, toPort, 2, quick, setPort<&PortSettings::command12, 0xFF> },
   { 0x15, toPort, 2, quick, setPort<&PortSettings::violationType, 2> },
   { 0x16, toPort, 2, quick, setPort<&PortSettings::limit, 155> },
   { 0x17, toChip, 1, slow, setGlobal17 },
   { 0x1C, toPort, 2, quick, setPort<&PortSettings::powerMode, 6> },
   { 0x1E, toPort, 2, quick, setPort<&PortSettings::mpssMask, 0xFF> },
   { 0x4E, toChip, 2, quick, setCrc },
};

} // namespace Emulator
