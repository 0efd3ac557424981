#ifndef SMBUSD_CONTROL_CLIENT_H
#define SMBUSD_CONTROL_CLIENT_H

#include "Connection.h"

#include "emulator/Board.h"

namespace Smbusd {

/** Somebody at the bench of the emulated board: a line in, a line out. */
class ControlClient : public Connection {
public:
   static constexpr size_t maxLine = 4096;

   ControlClient( EventLoop& loop, Descriptor descriptor, Emulator::Board& board )
      : Connection( loop, std::move( descriptor ) ), board_( board ) {}

private:
   size_t take( std::span<const uint8_t> bytes ) override;

   Emulator::Board& board_;
};

} // namespace Smbusd

#endif
