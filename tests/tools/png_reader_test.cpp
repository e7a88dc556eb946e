#include "png/png_reader.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "files/files.h"
#include "png/png_writer.h"
#include "program.h"

namespace fringix::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The fields of a header that a test may want to be different.
struct Header {
  std::uint32_t width = 3;
  std::uint32_t height = 1;
  std::uint8_t bitDepth = 8;
  std::uint8_t colorType = 0;
  std::uint8_t interlaced = 0;
};

void append32(Bytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

Bytes chunk(const std::string& type, const Bytes& data) {
  Bytes bytes;
  append32(bytes, static_cast<std::uint32_t>(data.size()));
  bytes.insert(bytes.end(), type.begin(), type.end());
  bytes.insert(bytes.end(), data.begin(), data.end());
  append32(bytes, static_cast<std::uint32_t>(crc32(0, bytes.data() + 4, static_cast<uInt>(bytes.size() - 4))));
  return bytes;
}

Bytes deflated(const Bytes& data) {
  Bytes packed(compressBound(static_cast<uLong>(data.size())));
  uLongf size = static_cast<uLongf>(packed.size());
  compress(packed.data(), &size, data.data(), static_cast<uLong>(data.size()));
  packed.resize(size);
  return packed;
}

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  for (const Bytes& part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
  return bytes;
}

Bytes headerChunk(const Header& header) {
  Bytes data;
  append32(data, header.width);
  append32(data, header.height);
  data.insert(data.end(), {header.bitDepth, header.colorType, 0, 0, header.interlaced});
  return chunk("IHDR", data);
}

// `rows` with the filter's number before each of them.
Bytes pngFile(const Header& header, const Bytes& rows) {
  return joined({headerChunk(header), chunk("IDAT", deflated(rows)), chunk("IEND", {})});
}

std::string complaint(const Bytes& file) {
  try {
    png::decodePng(file);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "readable";
}

TEST(PngReader, ReadsWhatTheWriterWrites) {
  const Bytes gray{1, 2, 3, 250, 251, 252};
  const png::Raster read = png::decodePng(png::encodePngGray8(3, 2, gray));
  EXPECT_EQ(read.width, 3U);
  EXPECT_EQ(read.height, 2U);
  EXPECT_EQ(read.samplesPerPixel, 1U);
  EXPECT_EQ(read.samples, gray);
  const png::Raster colours = png::decodePng(png::encodePngRgb24(1, 2, gray));
  EXPECT_EQ(colours.samplesPerPixel, 3U);
  EXPECT_EQ(colours.samples, gray);
}

struct FilterCase {
  const char* name;
  std::uint8_t filter;
  Bytes second;  // the row after 10 20 30, read from 5 6 7
};

class PngReaderFilter : public testing::TestWithParam<FilterCase> {};

TEST_P(PngReaderFilter, OfGray) {
  const png::Raster read = png::decodePng(pngFile({.height = 2}, {0, 10, 20, 30, GetParam().filter, 5, 6, 7}));
  Bytes expected{10, 20, 30};
  expected.insert(expected.end(), GetParam().second.begin(), GetParam().second.end());
  EXPECT_EQ(read.samples, expected);
}

// Average: 5 + 10/2, 6 + (10 + 20)/2, 7 + (21 + 30)/2. Paeth: above (no left), then 20 + 15 - 10 = 25 is nearest to 20 (above),
// then 30 + 26 - 20 = 36 is nearest to 30 (above).
INSTANTIATE_TEST_SUITE_P(Each, PngReaderFilter,
                         testing::Values(FilterCase{"None", 0, {5, 6, 7}}, FilterCase{"Left", 1, {5, 11, 18}},
                                         FilterCase{"Above", 2, {15, 26, 37}}, FilterCase{"Average", 3, {10, 21, 32}},
                                         FilterCase{"Paeth", 4, {15, 26, 37}}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(PngReader, PaethTakesTheNearestNeighbour) {
  // Rows above: 100 50. Left of the second pixel: 100 + 0; 50 + 100 - 100 = 50 is above, exactly.
  EXPECT_EQ(png::decodePng(pngFile({.width = 2, .height = 2}, {0, 100, 50, 4, 0, 1})).samples, (Bytes{100, 50, 100, 51}));
  // Above 10 10, left 200: 10 + 200 - 10 = 200 is left.
  EXPECT_EQ(png::decodePng(pngFile({.width = 2, .height = 2}, {0, 10, 10, 4, 190, 1})).samples, (Bytes{10, 10, 200, 201}));
  // Above left 100, above 110, left 90: 100 is above left.
  EXPECT_EQ(png::decodePng(pngFile({.width = 2, .height = 2}, {0, 100, 110, 4, 246, 1})).samples, (Bytes{100, 110, 90, 101}));
}

TEST(PngReader, FiltersOfRgbLookAWholePixelBack) {
  const png::Raster read = png::decodePng(pngFile({.width = 2, .colorType = 2}, {1, 1, 2, 3, 10, 10, 10}));
  EXPECT_EQ(read.samples, (Bytes{1, 2, 3, 11, 12, 13}));
}

TEST(PngReader, DataInSeveralChunksWithOthersBetween) {
  const Bytes packed = deflated({0, 1, 2, 3});
  const Bytes front(packed.begin(), packed.begin() + 4);
  const Bytes back(packed.begin() + 4, packed.end());
  const Bytes file = joined(
      {headerChunk({}), chunk("tEXt", {'a', 0, 'b'}), chunk("IDAT", front), chunk("IDAT", back), chunk("tIME", {0}), chunk("IEND", {})});
  EXPECT_EQ(png::decodePng(file).samples, (Bytes{1, 2, 3}));
}

TEST(PngReader, TellsWhatItDoesNotRead) {
  const Bytes rows{0, 1, 2, 3};
  EXPECT_EQ(complaint({'G', 'I', 'F', '8', '9', 'a', 0, 0, 0, 0}), "is no PNG file");
  EXPECT_EQ(complaint({}), "is no PNG file");
  EXPECT_EQ(complaint(pngFile({.bitDepth = 16}, rows)), "has 16 bits per sample; save it with 8");
  EXPECT_EQ(complaint(pngFile({.bitDepth = 1}, rows)), "has 1 bits per sample; save it with 8");
  EXPECT_EQ(complaint(pngFile({.colorType = 3}, rows)), "has a palette; save it as gray or RGB");
  EXPECT_EQ(complaint(pngFile({.colorType = 4}, rows)), "has transparency; save it without (no alpha channel)");
  EXPECT_EQ(complaint(pngFile({.colorType = 6}, rows)), "has transparency; save it without (no alpha channel)");
  EXPECT_EQ(complaint(pngFile({.interlaced = 1}, rows)), "is interlaced; save it without interlacing");
  EXPECT_EQ(complaint(pngFile({.width = 20000, .height = 20000}, rows)), "has 20000 x 20000 pixels, which is too large");
}

TEST(PngReader, TellsDamage) {
  EXPECT_EQ(complaint(pngFile({.width = 0}, {0})), "is damaged");
  EXPECT_EQ(complaint(pngFile({.colorType = 1}, {0, 1, 2, 3})), "is damaged");
  EXPECT_EQ(complaint(pngFile({}, {5, 1, 2, 3})), "is damaged") << "no such filter";
  EXPECT_EQ(complaint(pngFile({}, {0, 1, 2})), "is damaged") << "too few samples";
  EXPECT_EQ(complaint(pngFile({}, {0, 1, 2, 3, 4})), "is damaged") << "too many samples";
  EXPECT_EQ(complaint(pngFile({.width = 10000, .height = 10000}, {0, 1, 2, 3})), "is damaged") << "claims much more than it has";
  EXPECT_EQ(complaint(joined({chunk("IDAT", {}), headerChunk({})})), "is damaged") << "no header first";
}

TEST(PngReader, FileThatEndsEarlyIsDamaged) {
  const Bytes file = pngFile({}, {0, 1, 2, 3});
  for (std::size_t size = 9; size < file.size(); ++size) {
    EXPECT_EQ(complaint(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size))), "is damaged") << size << " bytes";
  }
}

TEST(PngReader, EveryWrongByteIsNoticed) {
  const Bytes file = pngFile({}, {0, 1, 2, 3});
  for (std::size_t i = 0; i < file.size(); ++i) {
    Bytes wrong = file;
    wrong[i] = static_cast<std::uint8_t>(~wrong[i]);
    EXPECT_NE(complaint(wrong), "readable") << "byte " << i;
  }
}

TEST(PngReader, NamesTheFile) {
  const test::ScratchFolder scratch;
  const std::string path = (scratch / "not.png").string();
  files::writeFile(path, {'n', 'o'});
  EXPECT_THROW(
      {
        try {
          png::readPng(path);
        } catch (const std::runtime_error& error) {
          EXPECT_EQ(error.what(), "\"" + path + "\" is no PNG file");
          throw;
        }
      },
      std::runtime_error);
  EXPECT_THROW(png::readPng(path + ".missing"), std::runtime_error);
}

}  // namespace
}  // namespace fringix::tool
