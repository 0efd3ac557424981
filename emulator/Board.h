#ifndef EMULATOR_BOARD_H
#define EMULATOR_BOARD_H

#include "Chip.h"
#include "Faults.h"
#include "I2c.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Emulator {

/**
 * How a transfer ended, and how long it kept the bus: zero unless a fault held it. The board itself never
 * waits; a caller that wants to be as late as the board waits that long before it uses the result.
 */
struct Transfer {
   I2c::Result result;
   std::chrono::nanoseconds duration {};
};

/**
 * The chips of an emulated board on their busses, each with a name, and the faults put on them. Not locked:
 * one thread at a time.
 */
class Board {
public:
   struct Place {
      std::string name;
      uint32_t bus;
      /** 7-bit address. */
      uint8_t address;
      std::unique_ptr<Chip> chip;
   };

   /** The time since any moment; it never goes back. */
   using Clock = std::function<std::chrono::nanoseconds()>;

   /** The machine's own clock. */
   static std::chrono::nanoseconds machineTime();

   explicit Board( Clock clock = machineTime );

   /** Throws std::invalid_argument for a name or a place that is taken. */
   void add( Place place );

   /** One end of a wire: a property of a chip. */
   struct Pin {
      Chip* chip;
      std::string property;
   };

   /** The pin "CHIP.PROPERTY". Throws std::invalid_argument, with words for a person, if there is none. */
   Pin pin( const std::string& text );
   /**
    * Joins two pins: `to` gets the value of `from` now, and from now on whenever that changes, but for
    * values that it refuses. Throws std::invalid_argument, with words for a person, when it refuses the
    * first.
    */
   void connect( const Pin& from, const Pin& to );
   /** Brings values that the bench may have changed over the wires. Transfers and time do so themselves. */
   void settle();

   const std::vector<Place>& places() const { return places_; }

   /** The chip of a name, or null. */
   Place* find( const std::string& name );
   /** The same. Throws std::invalid_argument, with words for a person, where find() gives null. */
   Place& named( std::string_view name );
   /** The chip at an address, or null. */
   Place* at( uint32_t bus, uint8_t address );
   /** A bus is there when a chip is on it. */
   bool hasBus( uint32_t bus ) const;

   /**
    * One transfer: messages with repeated starts between them and a stop at the end. The answers of reads go
    * into the messages. After a failure no message behind the failing one has reached the chip, and its
    * answer is empty. A single write of no bytes asks only whether the address is acknowledged.
    */
   Transfer transfer( uint32_t bus, uint8_t address, std::span<I2c::Message> messages );

   /** Lets all chips know how much time has passed. A transfer does so itself; the bench has to ask for it.
    */
   void advance();

   Faults faults;

private:
   struct Wire {
      Pin from;
      Pin to;
      std::string value;
   };

   Clock clock_;
   std::chrono::nanoseconds now_;
   std::vector<Place> places_;
   std::vector<Wire> wires_;
};

} // namespace Emulator

#endif
