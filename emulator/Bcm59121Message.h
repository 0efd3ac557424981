#ifndef EMULATOR_BCM59121_MESSAGE_H
#define EMULATOR_BCM59121_MESSAGE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Emulator {

/**
 * A request to the BCM59121 or its reply: command, sub-command, nine bytes of arguments or results, and a
 * checksum. Numbers of 16 bits have the high byte first.
 */
class Bcm59121Message {
public:
   static constexpr size_t size = 12;

   /** What stands in a byte that a request does not use. */
   static constexpr uint8_t unused = 0xFF;
   static constexpr size_t firstArgument = 2;

   /** The message that came, or nothing if it has another length or a wrong checksum. */
   static std::optional<Bcm59121Message> parse( std::span<const uint8_t> bytes );

   /** All arguments or results are 0. */
   explicit Bcm59121Message( uint8_t command, uint8_t subCommand = 0 ) : bytes_ { command, subCommand } {}

   uint8_t command() const { return bytes_[0]; }

   uint8_t subCommand() const { return bytes_[1]; }

   /** Whether this byte and all behind it are unused. */
   bool isUnusedFrom( size_t offset ) const;

   uint8_t operator[]( size_t offset ) const { return bytes_.at( offset ); }

   void put( size_t offset, unsigned value ) { bytes_.at( offset ) = static_cast<uint8_t>( value ); }

   void putWord( size_t offset, unsigned value );

   /** The message as it goes out, with its checksum. */
   std::vector<uint8_t> withChecksum() const;

private:
   /** Without the checksum. */
   std::array<uint8_t, size - 1> bytes_ {};
};

} // namespace Emulator

#endif
