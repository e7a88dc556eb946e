// Cloud files, their bytes read back by other means.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "clouds/npy.h"
#include "clouds/pcd.h"
#include "clouds/ply.h"

namespace fringix::tool {
namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

// 3 x 2 pixels: one without a point, one without a normal.
struct SomeCloud {
  std::vector<float> points{1, 2, 3, none, none, none, 7, 8, 9, -1.5F, 0, 1e-3F, 4, 5, 6, 10, 11, 12};
  std::vector<float> normals{0, 0, -1, none, none, none, none, none, none, 1, 0, 0, 0, 1, 0, 0, 0, -1};
  std::vector<float> sigma{0.01F, 0.5F, 0.03F, 0.04F, 0.05F, 0.06F};
  std::vector<std::uint8_t> intensity{10, 20, 30, 40, 50, 255};

  PointGrid grid() const { return {3, 2, points, normals, sigma, intensity}; }
};

struct File {
  std::string header;  // up to the mark, which it ends with
  std::string body;
};

File split(const Bytes& bytes, const std::string& mark) {
  const std::string text(bytes.begin(), bytes.end());
  const std::size_t end = text.find(mark) + mark.size();
  return {text.substr(0, end), text.substr(end)};
}

// This runs where the low byte comes first, as it does in the files.
float floatAt(const std::string& bytes, std::size_t place) {
  float number = 0;
  std::memcpy(&number, bytes.substr(place, 4).data(), 4);
  return number;
}

std::vector<float> floatsAt(const std::string& bytes, std::size_t place, std::size_t count) {
  std::vector<float> numbers;
  for (std::size_t i = 0; i < count; ++i) numbers.push_back(floatAt(bytes, place + 4 * i));
  return numbers;
}

TEST(PlyTest, HeaderNamesAllProperties) {
  const std::string comments[] = {"unit mm", "serial 7"};
  EXPECT_EQ(split(makePly(SomeCloud().grid(), comments), "end_header\n").header,
            "ply\nformat binary_little_endian 1.0\ncomment unit mm\ncomment serial 7\nelement vertex 5\n"
            "property float x\nproperty float y\nproperty float z\nproperty float nx\nproperty float ny\nproperty float nz\n"
            "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty float intensity\nproperty float quality\n"
            "end_header\n");
}

TEST(PlyTest, PixelsWithoutAPointAreLeftOut) {
  const std::string body = split(makePly(SomeCloud().grid(), {}), "end_header\n").body;
  ASSERT_EQ(body.size(), 5U * 35);
  EXPECT_EQ(floatsAt(body, 0, 6), (std::vector<float>{1, 2, 3, 0, 0, -1}));
  EXPECT_EQ(body.substr(24, 3), "\x0A\x0A\x0A");
  EXPECT_EQ(floatsAt(body, 27, 2), (std::vector<float>{10, 0.01F}));
  EXPECT_EQ(floatsAt(body, 35, 3), (std::vector<float>{7, 8, 9}));
  EXPECT_EQ(floatsAt(body, 4 * 35, 3), (std::vector<float>{10, 11, 12}));
  EXPECT_EQ(body.substr(4 * 35 + 24, 3), "\xFF\xFF\xFF");
}

TEST(PlyTest, AMissingNormalIsZero) {
  const std::string body = split(makePly(SomeCloud().grid(), {}), "end_header\n").body;
  EXPECT_EQ(floatsAt(body, 35 + 12, 3), (std::vector<float>{0, 0, 0}));
}

TEST(PcdTest, KeepsThePlaceOfEachPixel) {
  const File file = split(makePcd(SomeCloud().grid()), "DATA binary\n");
  EXPECT_NE(file.header.find("\nVERSION 0.7\n"), std::string::npos);
  EXPECT_NE(file.header.find("\nFIELDS x y z normal_x normal_y normal_z intensity quality\n"), std::string::npos);
  EXPECT_NE(file.header.find("\nWIDTH 3\nHEIGHT 2\n"), std::string::npos);
  EXPECT_NE(file.header.find("\nPOINTS 6\n"), std::string::npos);
  ASSERT_EQ(file.body.size(), 6U * 32);
  EXPECT_EQ(floatsAt(file.body, 3 * 32, 8), (std::vector<float>{-1.5F, 0, 1e-3F, 1, 0, 0, 40, 0.04F}));
}

TEST(PcdTest, APixelWithoutAPointHasNoNumbers) {
  const std::string body = split(makePcd(SomeCloud().grid()), "DATA binary\n").body;
  for (const std::size_t field : {0U, 1U, 2U, 3U, 4U, 5U, 7U}) EXPECT_TRUE(std::isnan(floatAt(body, 32 + 4 * field))) << field;
}

TEST(NpyTest, HeaderTellsTheShapeAndEndsAtAMultipleOf64) {
  const Bytes bytes = makeRangeArray(SomeCloud().grid());
  const std::string text(bytes.begin(), bytes.end());
  EXPECT_EQ(text.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8));
  const std::size_t length = static_cast<unsigned char>(text[8]) + 256U * static_cast<unsigned char>(text[9]);
  EXPECT_EQ((10 + length) % 64, 0U);
  EXPECT_EQ(text[10 + length - 1], '\n');
  EXPECT_EQ(text.substr(10, 62), "{'descr': '<f4', 'fortran_order': False, 'shape': (2, 3, 3), }");
  EXPECT_EQ(text.size(), 10 + length + 6 * 12);
  EXPECT_EQ(floatsAt(text, 10 + length + 2 * 12, 3), (std::vector<float>{7, 8, 9}));
  EXPECT_TRUE(std::isnan(floatAt(text, 10 + length + 12)));
}

TEST(CloudTest, BuffersOfAnotherSizeAreRefused) {
  SomeCloud cloud;
  cloud.sigma.pop_back();
  EXPECT_THROW(makePly(cloud.grid(), {}), std::invalid_argument);
  EXPECT_THROW(makePcd(cloud.grid()), std::invalid_argument);
  EXPECT_THROW(makeRangeArray(cloud.grid()), std::invalid_argument);
}

}  // namespace
}  // namespace fringix::tool
