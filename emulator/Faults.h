#ifndef EMULATOR_FAULTS_H
#define EMULATOR_FAULTS_H

#include <chrono>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>

namespace Emulator {

/** A chip's place, or without an address a whole bus. */
struct FaultPlace {
   uint32_t bus;
   std::optional<uint8_t> address {};
   auto operator<=>( const FaultPlace& ) const = default;
};

struct Fault {
   /** The first four make a transfer fail, in the order in which it meets them; the chip notices nothing. */
   enum class Kind {
      /** A line is held: nothing can be sent. */
      Busy,
      Arbitration,
      /** The address is not acknowledged. */
      Nack,
      /** The bus is held for the duration, then the transfer times out. */
      Hang,
      /** The right answer, later by the duration. */
      Slow,
      /** Bit 7 of the first byte read is wrong. The first byte of a block read is its count. */
      Corrupt,
      /** Bit 0 of the last byte read is wrong. */
      Checksum
   };
   Kind kind;
   /** For Hang and Slow. */
   std::chrono::nanoseconds duration {};
   /** On how many transfers it still acts; without a number, until cleared. */
   std::optional<uint32_t> transfers {};
};

/**
 * The faults on a board. A place has at most one of each kind, and they act together. A transfer meets those
 * of its bus before those of its chip, and one of a kind at most. Only a transfer on which a fault acts uses
 * it up: one that fails leaves the slowness and the wrong bits for the next, and one that reads nothing
 * leaves the wrong bits.
 */
class Faults {
public:
   using Kinds = std::map<Fault::Kind, Fault>;

   /** Takes the place of the fault of its kind. */
   void put( const FaultPlace& place, const Fault& fault );
   /** Removes all faults of this very place: those of a bus are not those of its chips. */
   void clear( const FaultPlace& place );

   const std::map<FaultPlace, Kinds>& all() const { return places_; }

   /** The fault, if any, that makes a transfer fail, used once by that. */
   std::optional<Fault> takeFailure( uint32_t bus, uint8_t address );
   /** The fault of a kind, if any, that acts on a transfer, used once by that. */
   std::optional<Fault> take( Fault::Kind kind, uint32_t bus, uint8_t address );

private:
   std::optional<Fault> use( const FaultPlace& place, Fault::Kind kind );

   std::map<FaultPlace, Kinds> places_;
};

} // namespace Emulator

#endif
