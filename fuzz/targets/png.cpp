// Pictures as PNG files. So that inputs get past checksums and compression, the file is made of the input's choices:
// a header of 13 bytes, then chunks: a byte that chooses the type, a length, and the bytes, packed as zlib does, or not.
#include "png/png_reader.h"

#include <zlib.h>

#include <stdexcept>

#include "fuzz/input.h"
#include "fuzz/target.h"

namespace fringix::fuzz::png_target {

namespace {

std::string bigEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFFU);
  return bytes;
}

std::string chunk(const std::string& type, const std::string& data) {
  const std::string body = type + data;
  const uLong checksum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
  return bigEndian(static_cast<std::uint32_t>(data.size())) + body + bigEndian(static_cast<std::uint32_t>(checksum));
}

// As one stored block: to compress would take longer than all the rest.
std::string packed(const std::string& data) {
  const auto size = static_cast<std::uint32_t>(data.size());
  const auto low = [](std::uint32_t value) { return static_cast<char>(value & 0xFFU); };
  const std::string head{'\x78', '\x01', '\x01', low(size), low(size >> 8U), low(~size), low(~size >> 8U)};
  const uLong checksum = adler32(1, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size()));
  return head + data + bigEndian(static_cast<std::uint32_t>(checksum));
}

std::string header(Input& in) {
  const std::uint32_t width = in.upTo(70) == 70 ? in.size() : static_cast<std::uint32_t>(in.upTo(33));
  const std::uint32_t height = in.upTo(70) == 70 ? in.size() : static_cast<std::uint32_t>(in.upTo(33));
  return bigEndian(width) + bigEndian(height) + in.text(5);
}

std::string nextChunk(Input& in) {
  static const std::string types[] = {"IDAT", "IDAT", "PLTE", "tRNS", "IEND", "gAMA", "iCCP", "tEXt", "zTXt", "iTXt",
                                      "cHRM", "sRGB", "bKGD", "hIST", "sPLT", "eXIf", "pHYs", "tIME", "oFFs", "sBIT"};
  const std::size_t kind = in.byte() % (std::size(types) + 1);
  const std::string type = kind < std::size(types) ? types[kind] : in.text(4);
  const bool packs = in.flag();
  const std::string data = in.text(in.byte()) + std::string(in.byte() % 4 * 100, '\0');
  return chunk(type, packs ? packed(data) : data);
}

void decode(const std::string& file) {
  try {
    const png::Raster raster = png::decodePng({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
    require(raster.samples.size() == std::size_t{raster.width} * raster.height * raster.samplesPerPixel, "a picture has all its samples");
  } catch (const std::runtime_error&) {
  }
}

void run(Bytes input) {
  Input in(input);
  std::string file = "\x89PNG\r\n\x1a\n";
  if (in.byte() % 8 == 7) return decode(in.flag() ? file + std::string(textOf(in.all())) : std::string(textOf(in.all())));
  const std::string size = header(in);
  file += chunk("IHDR", size);
  while (!in.empty()) file += nextChunk(in);
  file += chunk("IEND", "");
  decode(file);
}

const Registered target("png", run);

}  // namespace

}  // namespace fringix::fuzz::png_target
