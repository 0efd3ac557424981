#ifndef EMULATOR_BCM59121_PORT_MAP_H
#define EMULATOR_BCM59121_PORT_MAP_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Emulator {

/**
 * Which channels of the BCM59121 make up each port, in non-volatile memory. A new map is announced with its
 * number of ports, given row by row, ended, and put in force; a step out of order is refused. All steps but a
 * row take time to be stored, in which the chip refuses all that it is told.
 */
class Bcm59121PortMap {
public:
   /** Channels lie in groups of 8. A 2-pair port has its one channel in both places. */
   struct Row {
      bool isFourPair;
      uint8_t group;
      uint8_t primary;
      uint8_t alternative;
   };

   static constexpr size_t channelsPerGroup = 8;

   /** The map of the factory: the 2-pair ports first, channels in order. No later map has more ports. */
   Bcm59121PortMap( size_t ports, size_t twoPairPorts );

   const std::vector<Row>& rows() const { return rows_; }

   /** The number of channel groups. */
   size_t groups() const;

   /** Whether a map for 4-pair ports is in force: the factory's with such ports, or any that was given. */
   bool isInForce() const { return isInForce_; }

   /* The steps, each false where it is refused. */

   bool begin( size_t ports );
   bool add( size_t port, const Row& row );
   /** All rows are there, and no channel is in two of them. */
   bool end();
   bool putInForce();

   bool isStoring() const { return left_ > left_.zero(); }

   void advance( std::chrono::nanoseconds elapsed );
   /** The steps so far are forgotten. */
   void abandon();

private:
   size_t mostPorts_;
   std::vector<Row> rows_;
   bool isInForce_;
   std::vector<std::optional<Row>> given_;
   bool isComplete_ = false;
   /** Until the step is stored. */
   std::chrono::nanoseconds left_ {};
};

} // namespace Emulator

#endif
