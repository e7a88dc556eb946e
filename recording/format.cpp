#include "recording/format.h"

#include <zlib.h>

#include <algorithm>

namespace fringix::recording {

namespace {

// As PNG has it: what takes the file for text, or loses the eighth bit, shows at once.
constexpr std::array<std::uint8_t, 8> mark{0x89, 'F', 'X', 'R', '\r', '\n', 0x1A, '\n'};
constexpr std::uint32_t compressedFlag = 1;
constexpr std::size_t checksumAt = 20;

template <typename Number>
void put(std::span<std::uint8_t> bytes, std::size_t at, Number number) {
  for (std::size_t i = 0; i < sizeof number; ++i) bytes[at + i] = static_cast<std::uint8_t>(std::uint64_t{number} >> (8 * i));
}

template <typename Number>
Number get(std::span<const std::uint8_t> bytes, std::size_t at) {
  std::uint64_t number = 0;
  for (std::size_t i = sizeof(Number); i > 0; --i) number = number << 8 | bytes[at + i - 1];
  return static_cast<Number>(number);
}

}  // namespace

HeaderBytes encode(const Header& header) {
  HeaderBytes bytes{};
  std::copy(mark.begin(), mark.end(), bytes.begin());
  put(bytes, 8, formatVersion);
  put(bytes, 12, header.compressed ? compressedFlag : 0U);
  put(bytes, 16, header.startedAt);
  put(bytes, 24, header.head);
  put(bytes, 28, header.listening);
  return bytes;
}

Header decodeHeader(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < headerSize || !std::equal(mark.begin(), mark.end(), bytes.begin()))
    throw BadRecording("it is no recording: it does not begin with the header of one");
  const auto version = get<std::uint32_t>(bytes, 8);
  if (version != formatVersion)
    throw BadRecording("it is a recording of version " + std::to_string(version) + ", and this program reads version " +
                       std::to_string(formatVersion));
  const bool compressed = (get<std::uint32_t>(bytes, 12) & compressedFlag) != 0;
  return {get<std::uint64_t>(bytes, 16), get<std::uint32_t>(bytes, 24), get<std::uint32_t>(bytes, 28), compressed};
}

RecordHeadBytes encode(const RecordHead& head) {
  RecordHeadBytes bytes{};
  put(bytes, 0, head.size);
  bytes[4] = static_cast<std::uint8_t>(head.kind);
  bytes[5] = static_cast<std::uint8_t>(head.encoding);
  put(bytes, 8, head.connection);
  put(bytes, 12, head.time);
  put(bytes, checksumAt, head.checksum);
  return bytes;
}

RecordHead decodeRecordHead(std::span<const std::uint8_t> bytes) {
  return {
      get<std::uint32_t>(bytes, 0),         Kind{bytes[4]}, Encoding{bytes[5]}, get<std::uint32_t>(bytes, 8), get<std::uint64_t>(bytes, 12),
      get<std::uint32_t>(bytes, checksumAt)};
}

bool isReasonable(const RecordHead& head) {
  return head.size <= largestPayload && head.kind >= Kind::opened && head.kind <= Kind::end && head.encoding <= Encoding::zstd;
}

std::uint32_t checksumOf(std::span<const std::uint8_t> headBytes, std::span<const std::uint8_t> payload) {
  const uLong ofHead = crc32(0, headBytes.data(), checksumAt);
  return static_cast<std::uint32_t>(payload.empty() ? ofHead : crc32(ofHead, payload.data(), static_cast<uInt>(payload.size())));
}

std::array<std::uint8_t, endpointSize> encode(Endpoint endpoint) {
  std::array<std::uint8_t, endpointSize> bytes{};
  put(bytes, 0, endpoint.address);
  put(bytes, 4, endpoint.port);
  return bytes;
}

Endpoint decodeEndpoint(std::string_view payload) {
  if (payload.size() < endpointSize) throw BadRecording("an address is too short");
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size());
  return {get<std::uint32_t>(bytes, 0), get<std::uint16_t>(bytes, 4)};
}

std::string addressInWords(std::uint32_t address) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += std::to_string(address >> shift & 0xFFU) + (shift > 0 ? "." : "");
  return text;
}

std::string inWords(Endpoint endpoint) { return addressInWords(endpoint.address) + ":" + std::to_string(endpoint.port); }

}  // namespace fringix::recording
