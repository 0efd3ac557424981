#ifndef COMPONENTS_MUX_H
#define COMPONENTS_MUX_H

#include <cstdint>

namespace Ham {
class QuillonSmbusHam;
}

namespace Component {

class HardwareDevice;

namespace LogicalDevice {

/** One channel of a bus multiplexer. The chip's own address is in force while requests are added. */
class Mux {
public:
   virtual ~Mux() = default;
   /** Queues the requests that select the channel. @return how many */
   virtual uint32_t addSelectRequests( Ham::QuillonSmbusHam* ham ) = 0;
   /** Queues what is to follow a transaction. */
   virtual void addReleaseRequests( Ham::QuillonSmbusHam* ham ) = 0;

   /** Part of the layout that drivers know; nothing calls it. */
   virtual void reserved() {}

   /** The multiplexer chip, whose Ham is a QuillonSmbusHam. */
   virtual HardwareDevice* device() = 0;
};

} // namespace LogicalDevice
} // namespace Component

#endif
