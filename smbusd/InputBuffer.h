#ifndef SMBUSD_INPUT_BUFFER_H
#define SMBUSD_INPUT_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Smbusd {

/** Bytes between arriving and being taken. It grows with what has arrived, not with what has been announced.
 */
class InputBuffer {
public:
   static constexpr size_t usualSize = 4096;

   /** Where the next bytes are to be stored; never empty. */
   std::span<uint8_t> room();

   /** `count` bytes have been stored. */
   void add( size_t count ) { end_ += count; }

   std::span<const uint8_t> bytes() const { return { storage_.data() + begin_, end_ - begin_ }; }

   void remove( size_t count );

private:
   std::vector<uint8_t> storage_;
   size_t begin_ = 0;
   size_t end_ = 0;
};

} // namespace Smbusd

#endif
