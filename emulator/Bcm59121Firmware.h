#ifndef EMULATOR_BCM59121_FIRMWARE_H
#define EMULATOR_BCM59121_FIRMWARE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Emulator {

/**
 * The flash memory of the BCM59121: an image that begins with its revision of two bytes. An image that has
 * been written runs when it has been loaded and holds at least the revision. A load that comes before the
 * memory has stored the last block fails.
 */
class Bcm59121Firmware {
public:
   /** With the image of the factory, running. */
   Bcm59121Firmware() = default;

   bool isRunning() const { return state_ == State::Running; }

   /** The last load has given no image that runs, and no reset came since. */
   bool hasFailed() const { return state_ == State::Failed; }

   /** Whether bytes may be written now: no image runs and nothing else goes on. */
   bool takesBlocks() const { return state_ == State::Stopped || state_ == State::Failed; }

   const std::vector<uint8_t>& image() const { return image_; }

   /** The image stops, and the memory is empty some seconds later. */
   void clear();
   void append( std::span<const uint8_t> block );
   /** Checks and starts what has been written, which takes some seconds. */
   void load();
   /** The image is gone at once, as after a failure of the memory. */
   void lose();
   /** After a reset: an image that was not completely loaded does not run. */
   void restart();
   /** @return true when the image has started to run */
   bool advance( std::chrono::nanoseconds elapsed );

   /** "0x01.05", or what becomes of the image: "none", "clearing", "loading" or "failed". */
   std::string text() const;

private:
   enum class State { Running, Stopped, Clearing, Loading, Failed };

   /** Revision 1.5. */
   std::vector<uint8_t> image_ { 0x01, 0x05, 'f', 'a', 'c', 't', 'o', 'r', 'y' };
   State state_ = State::Running;
   /** Until the clearing, the storing of a block or the loading has ended. */
   std::chrono::nanoseconds left_ {};
   /** Of the image that is loaded. */
   bool isGood_ = false;
};

} // namespace Emulator

#endif
