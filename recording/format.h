// What a recording is made of: a header, then records, each after the other. docs/recordings.md describes the bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fringix::recording {

// What is wrong with a file that should be a recording, and at which byte of it.
struct BadRecording : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline constexpr std::uint32_t formatVersion = 1;
inline constexpr std::size_t headerSize = 32;
inline constexpr std::size_t recordHeadSize = 24;
inline constexpr std::size_t largestPayload = std::size_t{1} << 20;

enum class Kind : std::uint8_t {
  opened = 1,      // a client has connected: its endpoint
  fromClient = 2,  // bytes of a connection
  fromHead = 3,
  closedByClient = 4,  // the end of a connection: an Ending
  closedByHead = 5,
  announcement = 6,  // what the head answers to a search
  search = 7,        // a client's, which was answered with the announcement: its endpoint and what it said
  trigger = 8,       // the endpoint of its sender and what it said; nothing, where another program only told of it
  end = 9            // the recording has ended in order
};

enum class Ending : std::uint8_t { inOrder = 0, reset = 1, notReached = 2 };  // the last: the head could not be connected to

struct Header {
  std::uint64_t startedAt = 0;  // microseconds since 1970, UTC
  std::uint32_t head = 0;       // addresses in host byte order
  std::uint32_t listening = 0;
  bool compressed = false;  // records may be
};

// An address and a port, in host byte order.
struct Endpoint {
  std::uint32_t address = 0;
  std::uint16_t port = 0;
};
inline constexpr std::size_t endpointSize = 6;

std::string inWords(Endpoint endpoint);
std::string addressInWords(std::uint32_t address);

enum class Encoding : std::uint8_t { plain = 0, zstd = 1 };

struct RecordHead {
  std::uint32_t size = 0;  // of the payload as it is in the file
  Kind kind = Kind::end;
  Encoding encoding = Encoding::plain;
  std::uint32_t connection = 0;  // counted from 1; 0: none
  std::uint64_t time = 0;        // nanoseconds since the recording began
  std::uint32_t checksum = 0;    // of the other bytes of the head and of the payload
};

using HeaderBytes = std::array<std::uint8_t, headerSize>;
using RecordHeadBytes = std::array<std::uint8_t, recordHeadSize>;

HeaderBytes encode(const Header& header);
Header decodeHeader(std::span<const std::uint8_t> bytes);  // throws BadRecording

RecordHeadBytes encode(const RecordHead& head);
RecordHead decodeRecordHead(std::span<const std::uint8_t> bytes);
bool isReasonable(const RecordHead& head);
std::uint32_t checksumOf(std::span<const std::uint8_t> headBytes, std::span<const std::uint8_t> payload);

std::array<std::uint8_t, endpointSize> encode(Endpoint endpoint);
Endpoint decodeEndpoint(std::string_view payload);  // throws BadRecording

}  // namespace fringix::recording
