#include "Bcm59121Commands.h"

#include <algorithm>
#include <cmath>

namespace Emulator {

namespace {

using namespace std::chrono_literals;
using Outcome = Bcm59121Command::Outcome;
using State = Bcm59121State;
using Message = Bcm59121Message;

constexpr auto ofPort = Bcm59121Command::Addressee::Port;
constexpr auto ofGroup = Bcm59121Command::Addressee::Group;

// A host waits 4 ms.
constexpr auto quick = 3ms;

/* Units of the converters. */
constexpr double voltStep = 0.06445;
constexpr double ampereStep = 0.001;
constexpr double wattStep = 0.1;
/** Code 120 is 125 °C, so code 0 is 120 steps more. */
constexpr double celsiusStep = -1.25;
constexpr double celsiusAtCode0 = 275;

/* Flags of the system status. */
constexpr unsigned imageRuns = 1U << 1;
constexpr unsigned mapInForce = 1U << 3;

constexpr uint8_t staticManagement = 1;

/** Byte 3 of a request for a CRC. */
constexpr uint8_t withCrc = 1;

/* Of a channel group, and of each of its channels. */
constexpr unsigned crcOk = 1U << 0;
constexpr unsigned crcFailure = 1U << 2;

unsigned code( double value, double step ) {
   return static_cast<unsigned>( std::clamp( std::lround( value / step ), 0L, 0xFFFFL ) );
}

const Bcm59121Port& portOf( const State& state, const Message& request ) { return state.ports[request[2]]; }

unsigned failuresOf( const State& state, const Message& request ) {
   return state.checksCrc ? state.crcFailures[request[2]] : 0;
}

Outcome systemStatus( State& state, const Message&, Message& reply ) {
   unsigned flags = state.map.isInForce() ? mapInForce : 0;
   if ( state.firmware.isRunning() ) {
      auto& image = state.firmware.image();
      reply.put( 7, image[0] );
      reply.put( 10, image[1] );
      flags |= imageRuns;
   }
   reply.put( 9, flags );
   return Outcome::Done;
}

Outcome portStatus( State& state, const Message& request, Message& reply ) {
   auto& port = portOf( state, request );
   reply.put( 3, port.statusCode() );
   reply.put( 4, port.faultCode() );
   reply.put( 5, port.pdClass() );
   reply.put( 9, port.pairState() );
   reply.put( 10, port.signatures() );
   return Outcome::Done;
}

Outcome portStatistics( State& state, const Message& request, Message& reply ) {
   auto& counts = portOf( state, request ).counts();
   reply.put( 3, counts.mpsAbsent );
   reply.put( 4, counts.overload );
   reply.put( 5, counts.shorted );
   reply.put( 6, counts.denied );
   reply.put( 7, counts.invalidSignature );
   return Outcome::Done;
}

Outcome systemPower( State& state, const Message&, Message& reply ) {
   auto& power = state.power;
   reply.putWord( 2, power.allocated );
   reply.putWord( 4, power.budget - std::min( power.allocated, power.budget ) );
   reply.put( 6, power.shutOff );
   return Outcome::Done;
}

Outcome portConfiguration( State& state, const Message& request, Message& reply ) {
   auto& settings = portOf( state, request ).settings();
   reply.put( 3, settings.isEnabled );
   reply.put( 5, settings.detectionType );
   return Outcome::Done;
}

Outcome extendedPortConfiguration( State& state, const Message& request, Message& reply ) {
   auto& settings = portOf( state, request ).settings();
   reply.put( 3, settings.powerMode );
   reply.put( 4, settings.violationType );
   reply.put( 5, settings.limit );
   return Outcome::Done;
}

Outcome powerManagement( State&, const Message&, Message& reply ) {
   reply.put( 2, staticManagement );
   return Outcome::Done;
}

Outcome systemConfiguration( State&, const Message&, Message& reply ) {
   reply.put( 2, Bcm59121Power::underVoltageCode );
   reply.put( 7, Bcm59121Power::overVoltageCode );
   return Outcome::Done;
}

Outcome chipStatus( State& state, const Message& request, Message& reply ) {
   if ( request[3] != withCrc && request[3] != Message::unused ) {
      return Outcome::Refused;
   }
   reply.putWord( 4, code( state.power.volts, voltStep ) );
   reply.put( 8, failuresOf( state, request ) ? 0 : crcOk );
   return Outcome::Done;
}

Outcome portMpssMask( State& state, const Message& request, Message& reply ) {
   reply.putWord( 3, portOf( state, request ).settings().mpssMask );
   return Outcome::Done;
}

Outcome portMeasurement( State& state, const Message& request, Message& reply ) {
   auto& port = portOf( state, request );
   double volts = port.volts();
   reply.putWord( 3, code( volts, voltStep ) );
   reply.putWord( 5, volts > 0 ? code( port.watts() / volts, ampereStep ) : 0 );
   reply.putWord( 7, code( state.celsius - celsiusAtCode0, celsiusStep ) );
   reply.putWord( 9, code( port.watts(), wattStep ) );
   return Outcome::Done;
}

Outcome perPairPower( State& state, const Message& request, Message& reply ) {
   auto& port = portOf( state, request );
   reply.putWord( 3, code( port.channel( 0 ).watts, wattStep ) );
   reply.putWord( 5, code( port.channel( 1 ).watts, wattStep ) );
   return Outcome::Done;
}

Outcome perPairStatus( State& state, const Message& request, Message& reply ) {
   auto& port = portOf( state, request );
   for ( size_t pair = 0; pair < 2; ++pair ) {
      auto channel = port.channel( pair );
      size_t offset = 3 + 4 * pair;
      reply.put( offset, channel.detection );
      reply.put( offset + 1, channel.pdClass );
      reply.put( offset + 2, channel.error );
      reply.put( offset + 3, channel.mode );
   }
   return Outcome::Done;
}

Outcome channelCrcStatus( State& state, const Message& request, Message& reply ) {
   if ( request[3] != withCrc ) {
      return Outcome::Refused;
   }
   auto failures = failuresOf( state, request );
   for ( unsigned channel = 0; channel < Bcm59121PortMap::channelsPerGroup; ++channel ) {
      reply.put( 3 + channel, failures & ( 1U << channel ) ? crcFailure : 0 );
   }
   return Outcome::Done;
}

Outcome crcConfiguration( State& state, const Message&, Message& reply ) {
   reply.put( 2, state.checksCrc );
   reply.put( 3, state.resetsOnCrcFailure );
   return Outcome::Done;
}

} // namespace

const std::vector<Bcm59121Command> bcm59121Queries = {
   { 0x20, ofPort, 1, quick, systemStatus },
   { 0x21, ofPort, 1, quick, portStatus },
   { 0x22, ofPort, 1, quick, portStatistics },
   { 0x23, ofPort, 1, quick, systemPower },
   { 0x25, ofPort, 1, quick, portConfiguration },
   { 0x26, ofPort, 1, quick, extendedPortConfiguration },
   { 0x27, ofPort, 1, quick, powerManagement },
   { 0x2B, ofPort, 1, quick, systemConfiguration },
   { 0x2D, ofGroup, 2, quick, chipStatus },
   { 0x2E, ofPort, 1, quick, portMpssMask },
   { 0x30, ofPort, 1, quick, portMeasurement },
   { 0x3C, ofPort, 1, quick, perPairPower },
   { 0x3D, ofPort, 1, quick, perPairStatus },
   { 0x4C, ofGroup, 2, quick, channelCrcStatus },
   { 0x4F, ofGroup, 1, quick, crcConfiguration },
};

} // namespace Emulator
