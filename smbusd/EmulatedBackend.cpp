#include "EmulatedBackend.h"

#include <fmt/format.h>

#include <utility>

namespace Smbusd {

namespace {

class EmulatedBus : public Bus {
public:
   EmulatedBus( EventLoop& loop, Emulator::Board& board, uint8_t number )
      : loop_( loop ), board_( board ), number_( number ) {}

   std::string name() const override { return fmt::format( "i2c-{}", number_ ); }

   std::optional<Outcome> transfer( Operation& operation, Done done ) override {
      layOut( operation, messages_ );
      auto [result, duration] = board_.transfer( number_, operation.chip, messages_ );
      takeResult( operation, messages_ );
      if ( duration <= duration.zero() ) {
         return Outcome { result };
      }
      loop_.after( duration, [done = std::move( done ), result = result] { done( { result } ); } );
      return std::nullopt;
   }

private:
   EventLoop& loop_;
   Emulator::Board& board_;
   const uint8_t number_;
   std::vector<I2c::Message> messages_;
};

} // namespace

Bus* EmulatedBackend::find( const BusKey& key ) {
   auto& bus = busses_[key.bus];
   if ( !bus ) {
      bus = std::make_unique<EmulatedBus>( loop_, board_, key.bus );
   }
   return bus.get();
}

} // namespace Smbusd
