#ifndef SMBUSD_EMULATED_BACKEND_H
#define SMBUSD_EMULATED_BACKEND_H

#include "Bus.h"
#include "EventLoop.h"

#include "emulator/Board.h"

#include <array>
#include <cstdint>
#include <memory>

namespace Smbusd {

/** The busses of an emulated board. The bus number alone says which; controllers and accelerators aren't
 * emulated. */
class EmulatedBackend : public Backend {
public:
   EmulatedBackend( EventLoop& loop, Emulator::Board& board ) : loop_( loop ), board_( board ) {}

   Bus* find( const BusKey& key ) override;

private:
   EventLoop& loop_;
   Emulator::Board& board_;
   std::array<std::unique_ptr<Bus>, 256> busses_;
};

} // namespace Smbusd

#endif
