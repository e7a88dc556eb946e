#include "head/scene/stl_mesh.h"

#include <cstdint>

#include "head/scene/bytes.h"

namespace fringix::head {

namespace {

constexpr std::size_t headerSize = 80;
constexpr std::size_t triangleSize = 50;

void addTriangle(MeshData& mesh) {
  const auto end = static_cast<std::uint32_t>(mesh.vertices.size());
  mesh.triangles.push_back({end - 3, end - 2, end - 1});
}

// How many triangles a binary file of this size says that it has; 0 when it is none.
std::uint32_t binaryCount(std::string_view content) {
  if (content.size() < headerSize + 4) return 0;
  content.remove_prefix(headerSize);
  const auto count = takeNumber<std::uint32_t>(content, std::endian::little);
  return content.size() == std::uint64_t{count} * triangleSize ? count : 0;
}

Vector takePoint(std::string_view& bytes) {
  const double x = takeNumber<float>(bytes, std::endian::little);
  const double y = takeNumber<float>(bytes, std::endian::little);
  return {x, y, takeNumber<float>(bytes, std::endian::little)};
}

MeshData parseBinary(std::string_view bytes, std::uint32_t count) {
  MeshData mesh;
  bytes.remove_prefix(headerSize + 4);
  for (std::uint32_t i = 0; i < count; ++i) {
    takePoint(bytes);  // the normal
    for (int corner = 0; corner < 3; ++corner) mesh.vertices.push_back(takePoint(bytes));
    bytes.remove_prefix(2);
    addTriangle(mesh);
  }
  return mesh;
}

MeshData parseText(std::string_view text) {
  MeshData mesh;
  if (takeWord(text) != "solid")
    throw std::runtime_error("it is no STL file: its size fits no number of triangles, and it does not begin with \"solid\"");
  for (std::string_view word = takeWord(text); !word.empty(); word = takeWord(text)) {
    if (word != "vertex") continue;
    const double x = numberFrom(takeWord(text));
    const double y = numberFrom(takeWord(text));
    mesh.vertices.push_back({x, y, numberFrom(takeWord(text))});
    if (mesh.vertices.size() % 3 == 0) addTriangle(mesh);
  }
  if (mesh.vertices.size() % 3 != 0) throw std::runtime_error("its last triangle has fewer than 3 corners");
  return mesh;
}

}  // namespace

MeshData parseStl(std::string_view content) {
  const std::uint32_t count = binaryCount(content);
  return count > 0 ? parseBinary(content, count) : parseText(content);
}

}  // namespace fringix::head
