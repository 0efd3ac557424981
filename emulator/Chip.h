#ifndef EMULATOR_CHIP_H
#define EMULATOR_CHIP_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Emulator {

/**
 * A chip on an emulated bus. It has two faces: the bus, where bytes go in and come out with all side effects
 * of the real part, and the bench, where physical values are set and looked at by name. A model follows the
 * part's data sheet and knows nothing of the drivers.
 */
class Chip {
public:
   virtual ~Chip() = default;

   /** The part, such as "pct2075". */
   virtual std::string part() const = 0;

   /* The bus. */

   /** Whether it answers to its address at all, which a part in reset does not. */
   virtual bool listens() const { return true; }

   /** A start or repeated start with the chip's address: a message begins. */
   virtual void start() {}

   /** One write message. @return false when the chip does not acknowledge one of the bytes */
   virtual bool write( std::span<const uint8_t> bytes ) = 0;
   /**
    * Fills in the next bytes of a read message. One message may be read in several steps: only start() begins
    * another. A chip can't refuse a read: behind its last byte nobody drives the line, which reads as 0xff.
    */
   virtual void read( std::span<uint8_t> bytes ) = 0;

   /** A stop condition: what a model starts when a transfer has ended, also when it has ended early. */
   virtual void stop() {}

   /**
    * So much time has passed since the last call or since power-on: what moves by itself, such as a rotor,
    * moves now. The chip sees time only here.
    */
   virtual void advance( std::chrono::nanoseconds ) {}

   /* The bench. */

   /** Power-on reset: registers take their default values, physical values stay. */
   virtual void reset() = 0;
   /** Names of the properties, in the order in which they are listed. */
   virtual std::vector<std::string> properties() const = 0;
   /**
    * The property as one printable word. Throws std::invalid_argument, with words for a person, for a name
    * that it lacks.
    */
   virtual std::string get( const std::string& property ) const = 0;
   /** Throws std::invalid_argument, with words for a person, for a name or value that can't be set. */
   virtual void set( const std::string& property, const std::string& value ) = 0;

   /** What act() takes, such as "PORT detach; chip crc", or nothing for a chip that nothing happens to. */
   virtual std::string actions() const { return ""; }

   /**
    * Something happens that is more than one value: a plug is pulled, a load is too high. Throws
    * std::invalid_argument, with words for a person, for words that name no action. There is at least one.
    */
   virtual void act( std::span<const std::string_view> words );
};

} // namespace Emulator

#endif
