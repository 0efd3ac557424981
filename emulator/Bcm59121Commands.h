#ifndef EMULATOR_BCM59121_COMMANDS_H
#define EMULATOR_BCM59121_COMMANDS_H

#include "Bcm59121Message.h"
#include "Bcm59121State.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

namespace Emulator {

/** What a write to the BCM59121 leads to. */
struct Bcm59121Answer {
   bool isAcknowledged = true;
   /** The reply, or nothing for a write that gets none. */
   std::vector<uint8_t> reply {};
   /** How long the chip is at it before it gives the reply. */
   std::chrono::nanoseconds time {};
};

/**
 * Does what a write asks for. In place of the command, byte 0 of a reply may be an error code: 0xaf while no
 * image runs, but for the system status after a load that has failed; 0xae for a message of another length or
 * with a wrong checksum; 0xad for an unknown command; 0xac for a port, group or value that can't be and for
 * an unused byte that is not 0xff; 0xab while a step of the port map is stored.
 */
Bcm59121Answer answerBcm59121( Bcm59121State& state, std::span<const uint8_t> bytes );

/** A row of a command table. */
struct Bcm59121Command {
   /** What byte 2 of the request numbers. */
   enum class Addressee { Chip, Port, Group };
   enum class Outcome { Done, Refused, Silent };

   uint8_t code;
   Addressee addressee;
   /** How many bytes of the request are used, from byte 2 on. */
   size_t arguments;
   std::chrono::milliseconds time;
   Outcome ( *run )( Bcm59121State& state, const Bcm59121Message& request, Bcm59121Message& reply );
};

extern const std::vector<Bcm59121Command> bcm59121Settings;
extern const std::vector<Bcm59121Command> bcm59121Queries;

} // namespace Emulator

#endif
