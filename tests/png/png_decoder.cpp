#include "png/png_decoder.h"

#include <zlib.h>

#include <stdexcept>
#include <string>

namespace fringix::test {
namespace {

void expect(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string("bad PNG file: ") + what);
}

std::uint32_t big32(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(0, 4)) value = value << 8 | static_cast<std::uint8_t>(byte);
  return value;
}

struct Chunk {
  std::string type;
  std::string data;
};

// Takes the next chunk off the front of `file`.
Chunk takeChunk(std::string_view& file) {
  expect(file.size() >= 12, "ends within a chunk");
  const std::size_t length = big32(file);
  expect(file.size() - 12 >= length, "chunk longer than the file");
  const std::string_view checked = file.substr(4, 4 + length);
  const uLong sum = crc32(0, reinterpret_cast<const Bytef*>(checked.data()), static_cast<uInt>(checked.size()));
  expect(big32(file.substr(8 + length)) == sum, "check sum of a chunk");
  file.remove_prefix(12 + length);
  return {std::string(checked.substr(0, 4)), std::string(checked.substr(4))};
}

DecodedPng readHeader(const Chunk& chunk) {
  expect(chunk.type == "IHDR" && chunk.data.size() == 13 && chunk.data.substr(10) == std::string(3, '\0'), "header");
  return {big32(chunk.data),
          big32(std::string_view(chunk.data).substr(4)),
          static_cast<std::uint8_t>(chunk.data[8]),
          static_cast<std::uint8_t>(chunk.data[9]),
          {},
          {}};
}

std::vector<std::uint8_t> inflated(std::string_view packed, std::size_t expectedSize) {
  std::vector<std::uint8_t> plain(expectedSize + 1);
  uLongf size = static_cast<uLongf>(plain.size());
  expect(uncompress(plain.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size())) == Z_OK, "zlib");
  expect(size == expectedSize, "number of samples");
  plain.resize(size);
  return plain;
}

std::vector<std::uint8_t> unfiltered(const std::vector<std::uint8_t>& filtered, std::size_t rowBytes) {
  std::vector<std::uint8_t> samples;
  for (std::size_t row = 0; row < filtered.size(); row += rowBytes + 1) {
    const unsigned filter = filtered[row];
    expect(filter == 0 || filter == 2, "unknown filter");
    for (std::size_t i = row + 1; i <= row + rowBytes; ++i) {
      const unsigned above = filter == 2 && row > 0 ? samples[samples.size() - rowBytes] : 0;
      samples.push_back(static_cast<std::uint8_t>(filtered[i] + above));
    }
  }
  return samples;
}

}  // namespace

DecodedPng decodePng(std::string_view file) {
  constexpr std::string_view signature("\x89PNG\r\n\x1A\n");
  expect(file.substr(0, signature.size()) == signature, "signature");
  file.remove_prefix(signature.size());
  DecodedPng png = readHeader(takeChunk(file));
  std::string packed;
  Chunk chunk = takeChunk(file);
  for (; chunk.type != "IEND"; chunk = takeChunk(file)) {
    expect(chunk.type == "IDAT" || chunk.type == "tEXt", "other chunk than expected");
    if (chunk.type == "IDAT") packed += chunk.data;
    if (chunk.type == "tEXt") png.texts[chunk.data.c_str()] = chunk.data.substr(chunk.data.find('\0') + 1);
  }
  expect(chunk.data.empty() && file.empty(), "end");
  const std::size_t rowBytes = std::size_t{png.width} * (png.colorType == 2 ? 3 : 1) * png.bitDepth / 8;
  png.samples = unfiltered(inflated(packed, (rowBytes + 1) * png.height), rowBytes);
  return png;
}

}  // namespace fringix::test
