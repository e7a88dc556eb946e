#include "png/png_reader.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "png/png_writer.h"
#include "support/scratch_folder.h"

namespace fringix::png {
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
    decodePng(file);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "readable";
}

TEST(PngReader, ReadsWhatTheWriterWrites) {
  const Bytes gray{1, 2, 3, 250, 251, 252};
  const Raster read = decodePng(encodePngGray8(3, 2, gray));
  EXPECT_EQ(read.width, 3U);
  EXPECT_EQ(read.height, 2U);
  EXPECT_EQ(read.samplesPerPixel, 1U);
  EXPECT_EQ(read.samples, gray);
  const Raster colours = decodePng(encodePngRgb24(1, 2, gray));
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
  const Raster read = decodePng(pngFile({.height = 2}, {0, 10, 20, 30, GetParam().filter, 5, 6, 7}));
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
  EXPECT_EQ(decodePng(pngFile({.width = 2, .height = 2}, {0, 100, 50, 4, 0, 1})).samples, (Bytes{100, 50, 100, 51}));
  // Above 10 10, left 200: 10 + 200 - 10 = 200 is left.
  EXPECT_EQ(decodePng(pngFile({.width = 2, .height = 2}, {0, 10, 10, 4, 190, 1})).samples, (Bytes{10, 10, 200, 201}));
  // Above left 100, above 110, left 90: 100 is above left.
  EXPECT_EQ(decodePng(pngFile({.width = 2, .height = 2}, {0, 100, 110, 4, 246, 1})).samples, (Bytes{100, 110, 90, 101}));
}

TEST(PngReader, FiltersOfRgbLookAWholePixelBack) {
  const Raster read = decodePng(pngFile({.width = 2, .colorType = 2}, {1, 1, 2, 3, 10, 10, 10}));
  EXPECT_EQ(read.samples, (Bytes{1, 2, 3, 11, 12, 13}));
}

TEST(PngReader, DataInSeveralChunksWithOthersBetween) {
  const Bytes packed = deflated({0, 1, 2, 3});
  const Bytes front(packed.begin(), packed.begin() + 4);
  const Bytes back(packed.begin() + 4, packed.end());
  const Bytes file = joined(
      {headerChunk({}), chunk("tEXt", {'a', 0, 'b'}), chunk("IDAT", front), chunk("IDAT", back), chunk("tIME", {0}), chunk("IEND", {})});
  EXPECT_EQ(decodePng(file).samples, (Bytes{1, 2, 3}));
}

TEST(PngReader, OtherFilesAreNoPng) {
  EXPECT_EQ(complaint({'G', 'I', 'F', '8', '9', 'a', 0, 0, 0, 0}), "is no PNG file");
  EXPECT_EQ(complaint({}), "is no PNG file");
  EXPECT_EQ(complaint({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A}), "is no PNG file");
}

Bytes samplesOf(const Bytes& file, std::uint32_t expectedPerPixel) {
  const Raster raster = decodePng(file);
  EXPECT_EQ(raster.samplesPerPixel, expectedPerPixel);
  EXPECT_EQ(raster.samples.size(), std::size_t{raster.width} * raster.height * raster.samplesPerPixel);
  return raster.samples;
}

TEST(PngReader, OfSixteenBitsTheUpperEight) {
  EXPECT_EQ(samplesOf(pngFile({.bitDepth = 16}, {0, 1, 0xFF, 0x80, 0, 0xFF, 2}), 1), (Bytes{1, 0x80, 0xFF}));
  EXPECT_EQ(samplesOf(pngFile({.width = 1, .bitDepth = 16, .colorType = 2}, {0, 9, 0, 8, 0, 7, 0}), 3), (Bytes{9, 8, 7}));
}

TEST(PngReader, FewBitsFillTheWholeRange) {
  EXPECT_EQ(samplesOf(pngFile({.bitDepth = 1}, {0, 0b10100000}), 1), (Bytes{255, 0, 255}));
  EXPECT_EQ(samplesOf(pngFile({.bitDepth = 2}, {0, 0b00011000}), 1), (Bytes{0, 85, 170}));
  EXPECT_EQ(samplesOf(pngFile({.bitDepth = 4}, {0, 0x1F, 0x80}), 1), (Bytes{17, 255, 136}));
}

TEST(PngReader, Palette) {
  const Bytes palette = chunk("PLTE", {1, 2, 3, 40, 50, 60});
  const Bytes data = chunk("IDAT", deflated({0, 1, 0, 1}));
  EXPECT_EQ(samplesOf(joined({headerChunk({.colorType = 3}), palette, data, chunk("IEND", {})}), 3),
            (Bytes{40, 50, 60, 1, 2, 3, 40, 50, 60}));
  EXPECT_EQ(samplesOf(joined({headerChunk({.colorType = 3}), palette, chunk("tRNS", {0}), data, chunk("IEND", {})}), 3),
            (Bytes{40, 50, 60, 0, 0, 0, 40, 50, 60}));
  EXPECT_EQ(complaint(joined({headerChunk({.colorType = 3}), data, chunk("IEND", {})})), "is damaged") << "without the palette";
}

TEST(PngReader, TransparentPartsLieOnBlack) {
  EXPECT_EQ(samplesOf(pngFile({.colorType = 4}, {0, 200, 255, 200, 128, 200, 0}), 1), (Bytes{200, 100, 0}));
  EXPECT_EQ(samplesOf(pngFile({.width = 2, .colorType = 6}, {0, 10, 20, 30, 255, 10, 20, 30, 51}), 3), (Bytes{10, 20, 30, 2, 4, 6}));
  EXPECT_EQ(samplesOf(pngFile({.width = 1, .bitDepth = 16, .colorType = 6}, {0, 10, 0, 20, 0, 30, 0, 255, 255}), 3), (Bytes{10, 20, 30}));
}

// The first pixel comes in the first pass, the one four to its right in the second, the fifth row in the third, and so on.
TEST(PngReader, Interlaced) {
  const Bytes file = pngFile({.width = 8, .height = 2, .interlaced = 1}, {0, 1, 0, 2, 0, 3, 4, 0, 5, 6, 7, 8, 0, 9, 9, 9, 9, 9, 9, 9, 9});
  EXPECT_EQ(samplesOf(file, 1), (Bytes{1, 5, 3, 6, 2, 7, 4, 8, 9, 9, 9, 9, 9, 9, 9, 9}));
}

TEST(PngReader, TooManyPixelsAreRefusedUnseen) {
  EXPECT_EQ(complaint(joined({headerChunk({.width = 16385, .height = 16384})})),
            "has 16385 x 16384 pixels, and at most 268435456 altogether are taken");
  EXPECT_EQ(complaint(joined({headerChunk({.width = 0x7FFFFFFF, .height = 0x7FFFFFFF})})),
            "has 2147483647 x 2147483647 pixels, and at most 268435456 altogether are taken");
  EXPECT_EQ(complaint(joined({headerChunk({.width = 16384, .height = 16384}), chunk("IEND", {})})), "is damaged");
}

TEST(PngReader, TellsDamage) {
  EXPECT_EQ(complaint(pngFile({.width = 0}, {0})), "is damaged");
  EXPECT_EQ(complaint(pngFile({.colorType = 1}, {0, 1, 2, 3})), "is damaged");
  EXPECT_EQ(complaint(pngFile({}, {5, 1, 2, 3})), "is damaged") << "no such filter";
  EXPECT_EQ(complaint(pngFile({}, {0, 1, 2})), "is damaged") << "too few samples";
  EXPECT_EQ(complaint(pngFile({.width = 10000, .height = 10000}, {0, 1, 2, 3})), "is damaged") << "claims much more than it has";
  EXPECT_EQ(complaint(joined({chunk("IDAT", {}), headerChunk({})})), "is damaged") << "no header first";
}

TEST(PngReader, FileThatEndsEarlyIsDamaged) {
  const Bytes file = pngFile({}, {0, 1, 2, 3});
  constexpr std::size_t lastCheckSum = 4;  // of the chunk that says that nothing follows
  for (std::size_t size = 9; size < file.size() - lastCheckSum; ++size) {
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
  test::writeBytes(path, "no");
  EXPECT_THROW(
      {
        try {
          readPng(path);
        } catch (const std::runtime_error& error) {
          EXPECT_EQ(error.what(), "\"" + path + "\" is no PNG file");
          throw;
        }
      },
      std::runtime_error);
  EXPECT_THROW(readPng(path + ".missing"), std::runtime_error);
}

}  // namespace
}  // namespace fringix::png
