// Meshes: their files, and rays that meet them.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "head/geometry/mount.h"
#include "head/scene/mesh_file.h"
#include "head/scene/ply_mesh.h"
#include "head/scene/scenes.h"
#include "head/scene/stl_mesh.h"
#include "support/scratch_folder.h"
#include "told_geometry.h"

namespace fringix::head {
namespace {

// A roof: two rectangles of 40 x 30 mm that meet in an edge along y.
const std::vector<Vector> corners{{-30, -20, 0}, {0, -20, 20}, {30, -20, 0}, {-30, 20, 0}, {0, 20, 20}, {30, 20, 0}};
const std::vector<Triangle> faces{{0, 1, 4}, {0, 4, 3}, {1, 2, 5}, {1, 5, 4}};

template <class Number>
void append(std::string& bytes, Number number, bool reversed = false) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  if (reversed) std::reverse(raw, raw + sizeof number);
  bytes.append(raw, sizeof number);
}

std::string plyHeader(const std::string& format) {
  return "ply\nformat " + format +
         " 1.0\ncomment element face 3\nelement vertex 6\nproperty float x\nproperty double y\nproperty uchar red\nproperty float z\n" +
         "element edge 1\nproperty list uchar short ends\nelement face 2\nproperty list uchar int vertex_indices\nproperty float "
         "area\nend_header\n";
}

std::string textPly() {
  std::ostringstream text;
  text << plyHeader("ascii");
  for (const Vector& v : corners) text << v.x << ' ' << v.y << " 200 " << v.z << "\n";
  text << "2 0 1\n4 0 1 4 3 2.5\n4 1 2 5 4 2.5\n";
  return text.str();
}

std::string binaryPly(bool bigEndian) {
  std::string bytes = plyHeader(bigEndian ? "binary_big_endian" : "binary_little_endian");
  for (const Vector& v : corners) {
    append(bytes, static_cast<float>(v.x), bigEndian);
    append(bytes, v.y, bigEndian);
    append(bytes, std::uint8_t{200});
    append(bytes, static_cast<float>(v.z), bigEndian);
  }
  append(bytes, std::uint8_t{2});
  for (const std::int16_t end : {std::int16_t{0}, std::int16_t{1}}) append(bytes, end, bigEndian);
  for (const auto& polygon : {std::array{0, 1, 4, 3}, std::array{1, 2, 5, 4}}) {
    append(bytes, std::uint8_t{4});
    for (const int corner : polygon) append(bytes, corner, bigEndian);
    append(bytes, 2.5F, bigEndian);
  }
  return bytes;
}

std::string textStl() {
  std::ostringstream text;
  text << "solid roof\n";
  for (const Triangle& face : faces) {
    text << "facet normal 0 0 0\n outer loop\n";
    for (const std::uint32_t corner : face)
      text << "  vertex " << corners[corner].x << " " << corners[corner].y << " +" << corners[corner].z << "\n";
    text << " endloop\nendfacet\n";
  }
  text << "endsolid roof\n";
  return text.str();
}

std::string binaryStl() {
  std::string bytes = "solid, although it is binary";
  bytes.resize(80, ' ');
  append(bytes, static_cast<std::uint32_t>(faces.size()));
  for (const Triangle& face : faces) {
    bytes.append(12, '\0');
    for (const std::uint32_t corner : face) {
      append(bytes, static_cast<float>(corners[corner].x));
      append(bytes, static_cast<float>(corners[corner].y));
      append(bytes, static_cast<float>(corners[corner].z));
    }
    bytes.append(2, '\0');
  }
  return bytes;
}

// The places of the triangles' corners, one after the other.
std::vector<std::array<double, 3>> unrolled(const MeshData& mesh) {
  std::vector<std::array<double, 3>> places;
  for (const Triangle& triangle : mesh.triangles) {
    for (const std::uint32_t corner : triangle)
      places.push_back({mesh.vertices[corner].x, mesh.vertices[corner].y, mesh.vertices[corner].z});
  }
  return places;
}

TEST(MeshFileTest, AllKindsGiveTheSameTriangles) {
  const auto expected = unrolled({corners, faces});
  EXPECT_EQ(unrolled(parsePly(textPly())), expected);
  EXPECT_EQ(unrolled(parsePly(binaryPly(false))), expected);
  EXPECT_EQ(unrolled(parsePly(binaryPly(true))), expected);
  EXPECT_EQ(unrolled(parseStl(textStl())), expected);
  EXPECT_EQ(unrolled(parseStl(binaryStl())), expected);
}

std::string complaintOf(const std::string& name, const std::string& content) {
  const test::ScratchFolder folder;
  const std::string file = (folder.path() / name).string();
  std::ofstream(file, std::ios::binary) << content;
  try {
    readMesh(file);
    return "";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
    return error.what();
  }
}

void expectComplaint(const std::string& name, const std::string& content, const std::string& reason) {
  const std::string complaint = complaintOf(name, content);
  EXPECT_NE(complaint.find(reason), std::string::npos) << "\"" << complaint << "\" for " << reason;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

TEST(MeshFileTest, DamagedFilesAreRefusedWithTheReason) {
  expectComplaint("a.ply", "", "header has no end");
  expectComplaint("a.ply", "plx\n", "does not begin with \"ply\"");
  expectComplaint("a.ply", replaced(textPly(), "ascii", "utf8"), "unknown format \"utf8\"");
  expectComplaint("a.ply", replaced(textPly(), "property float x", "property half x"), "unknown type \"half\"");
  expectComplaint("a.ply", replaced(textPly(), "vertex 6", "vertex -6"), "number \"-6\" of elements");
  expectComplaint("a.ply", replaced(textPly(), "vertex 6", "vertex 600000000"), "ends too early");
  expectComplaint("a.ply", replaced(textPly(), "4 1 2 5 4", "4 1 2 9 4"), "no vertex");
  expectComplaint("a.ply", replaced(textPly(), "4 1 2 5 4", "4 1 2 -5 4"), "no vertex");
  expectComplaint("a.ply", replaced(textPly(), "-30 -20 200", "nan -20 200"), "not finite");
  expectComplaint("a.ply", replaced(textPly(), "-30 -20 200", "x -20 200"), "\"x\" is no number");
  expectComplaint("a.ply", "ply\nformat ascii 1.0\nend_header\n", "no triangles");
  expectComplaint("a.stl", textStl().substr(1), "no STL file");
  expectComplaint("a.stl", "solid nothing\nendsolid\n", "no triangles");
  expectComplaint("a.stl", replaced(textStl(), "  vertex", "  corner"), "fewer than 3 corners");
  const std::string binary = binaryPly(false);
  for (std::size_t size = 0; size < binary.size(); ++size) EXPECT_NE(complaintOf("a.ply", binary.substr(0, size)), "") << size;
}

TEST(MeshFileTest, AFileThatIsNotThereIsRefused) {
  try {
    makeScene("nowhere/part.stl");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("part.stl"), std::string::npos);
  }
}

MeshData soup(std::size_t triangles) {
  std::mt19937 generator(11);
  std::uniform_real_distribution<> side(-100, 100);
  std::uniform_real_distribution<> edge(-15, 15);
  MeshData mesh;
  for (std::uint32_t i = 0; i < triangles; ++i) {
    const Vector first{side(generator), side(generator), side(generator)};
    mesh.vertices.push_back(first);
    for (int k = 0; k < 2; ++k) mesh.vertices.push_back(first + Vector{edge(generator), edge(generator), edge(generator)});
    mesh.triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
  }
  return mesh;
}

// Without any order among the triangles.
std::optional<double> nearestOf(const MeshData& mesh, const Vector& origin, const Vector& direction) {
  std::optional<double> nearest;
  for (const auto& [a, b, c] : mesh.triangles) {
    const MeshData one{{mesh.vertices[a], mesh.vertices[b], mesh.vertices[c]}, {{0, 1, 2}}};
    const auto hit = Mesh("one", one, 1).firstSurface(origin, direction);
    if (hit && (!nearest || hit->distance < *nearest)) nearest = hit->distance;
  }
  return nearest;
}

TEST(MeshTest, TheNearestTriangleIsFoundAmongMany) {
  const MeshData data = soup(300);
  const Mesh mesh("soup", data, 0.5);
  std::mt19937 generator(12);
  std::uniform_real_distribution<> side(-120, 120);
  int hits = 0;
  for (int i = 0; i < 500; ++i) {
    const Vector origin{side(generator), side(generator), -300};
    const Vector direction = i % 5 == 0 ? Vector{0, 0, 1} : unit(Vector{side(generator), side(generator), 0} - origin);
    const auto found = mesh.firstSurface(origin, direction);
    const auto expected = nearestOf(data, origin, direction);
    ASSERT_EQ(found.has_value(), expected.has_value()) << i;
    if (!found) continue;
    ++hits;
    EXPECT_EQ(found->distance, *expected);
    EXPECT_NEAR(length(found->normal), 1, 1e-12);
    EXPECT_LT(dot(found->normal, direction), 0);
  }
  EXPECT_GT(hits, 100);
}

TEST(MeshTest, ATriangleIsMetWithinItsEdgesOnly) {
  const Mesh mesh("one", {{{0, 0, 10}, {4, 0, 10}, {0, 4, 10}}, {{0, 1, 2}}}, 0.5);
  EXPECT_NEAR(mesh.firstSurface({1, 1, 0}, {0, 0, 1})->distance, 10, 1e-12);
  for (const Vector& beside : {Vector{-0.01, 1, 0}, Vector{1, -0.01, 0}, Vector{2.01, 2.01, 0}})
    EXPECT_FALSE(mesh.firstSurface(beside, {0, 0, 1}));
  EXPECT_FALSE(mesh.firstSurface({1, 1, 0}, {0, 0, -1})) << "behind the ray's start";
  EXPECT_FALSE(mesh.firstSurface({1, 1, 0}, {1, 0, 0})) << "along its plane";
}

TEST(MeshSceneTest, StandsInTheMiddleOfTheMeasuringVolumeAndIsTold) {
  const test::ScratchFolder folder;
  HeadSettings settings;
  settings.camera = {160, 128};
  settings.projector = {160, 100};
  settings.scene = (folder.path() / "Roof.STL").string();
  std::ofstream(settings.scene, std::ios::binary) << binaryStl();
  HeadModel model(settings);
  const test::Json truth = blockOf(model, "truth.json");
  EXPECT_EQ(truth.at("/meshes/0/triangles").size(), 4U);
  ASSERT_EQ(truth.at("/meshes/0/vertices").size(), 12U);
  const Pose volume = inverse(measuringVolume());
  const Triple told = tripleAt(truth, "/meshes/0/vertices/1");  // the first one of the edge on top: 0, -20, 20
  const Vector back = volume({told[0], told[1], told[2]});
  EXPECT_NEAR(back.x, 0, 1e-9);
  EXPECT_NEAR(back.y, 20, 1e-9) << "y is up in the file";
  EXPECT_NEAR(back.z, -10, 1e-9) << "z is towards the head in the file";
  Picture picture;
  ASSERT_TRUE(model.takePicture(0, picture));
  EXPECT_GT(picture.pixels[64 * 160 + 80], 60) << "it is lit";
  EXPECT_LT(picture.pixels[64 * 160 + 5], 20) << "and nothing is beside it";
}

}  // namespace
}  // namespace fringix::head
