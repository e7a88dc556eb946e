// The text with which a head answers an announce request.
#pragma once

#include <cstdint>
#include <string_view>

namespace fringix {

// A number that the reply does not supply is -1.
struct AnnounceReply {
  std::int32_t serial = -1;
  std::int32_t modelCode = -1;
  std::int32_t info1 = -1;
  std::int32_t info2 = -1;
  std::int32_t info3 = -1;
  std::int32_t info4 = -1;
  std::int32_t info5 = -1;
  std::int32_t info6 = -1;
  std::int32_t info7 = -1;
  bool operator==(const AnnounceReply&) const = default;
};

// Reads labels and numbers by their order, as a formatted input stream would, up to the first that does not fit. Whatever a datagram
// holds gives a reply.
AnnounceReply parseAnnounceReply(std::string_view text) noexcept;

const char* modelName(std::int32_t modelCode) noexcept;  // a constant text, never null

}  // namespace fringix
