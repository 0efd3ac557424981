#ifndef SMBUSD_FRAME_H
#define SMBUSD_FRAME_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace google::protobuf {
class MessageLite;
}

/** A frame: the length of the payload as 4 bytes, most significant first, and the payload, one message. */
namespace Smbusd::Frame {

constexpr size_t headerSize = 4;
constexpr size_t maxPayload = 1 << 20;

/** The length that a header announces. */
size_t payloadSize( std::span<const uint8_t, headerSize> header );

/** Makes `frame` the frame of a message, which must be within the limit. */
void encode( const google::protobuf::MessageLite& message, std::vector<uint8_t>& frame );

} // namespace Smbusd::Frame

#endif
