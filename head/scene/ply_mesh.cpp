#include "head/scene/ply_mesh.h"

#include <cstdint>
#include <optional>
#include <string>

#include "head/scene/bytes.h"

namespace fringix::head {

namespace {

enum class Type { int8, uint8, int16, uint16, int32, uint32, float32, float64 };

struct Property {
  std::string_view name;
  Type type;
  std::optional<Type> countType;  // of a list
};

struct Element {
  std::string_view name;
  std::uint64_t count;
  std::vector<Property> properties;
};

struct Header {
  std::optional<std::endian> order;  // nothing: the numbers are words
  std::vector<Element> elements;
};

Type typeFrom(std::string_view word) {
  constexpr std::array<std::array<std::string_view, 2>, 8> names{{{"char", "int8"},
                                                                  {"uchar", "uint8"},
                                                                  {"short", "int16"},
                                                                  {"ushort", "uint16"},
                                                                  {"int", "int32"},
                                                                  {"uint", "uint32"},
                                                                  {"float", "float32"},
                                                                  {"double", "float64"}}};
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i][0] == word || names[i][1] == word) return static_cast<Type>(i);
  }
  throw std::runtime_error("its header has the unknown type \"" + std::string(word) + "\"");
}

std::optional<std::endian> orderFrom(std::string_view word) {
  if (word == "ascii") return std::nullopt;
  if (word == "binary_little_endian") return std::endian::little;
  if (word == "binary_big_endian") return std::endian::big;
  throw std::runtime_error("its header has the unknown format \"" + std::string(word) + "\"");
}

Property propertyFrom(std::string_view& line) {
  const std::string_view type = takeWord(line);
  if (type != "list") return {takeWord(line), typeFrom(type), std::nullopt};
  const Type countType = typeFrom(takeWord(line));
  const Type entries = typeFrom(takeWord(line));
  return {takeWord(line), entries, countType};
}

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) throw std::runtime_error("its header has no end");
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end + 1);
  return line;
}

std::uint64_t countFrom(std::string_view word) {
  const double count = numberFrom(word);
  if (!(count >= 0 && count <= 1e9)) throw std::runtime_error("its header has the number \"" + std::string(word) + "\" of elements");
  return static_cast<std::uint64_t>(count);
}

Header takeHeader(std::string_view& content) {
  Header header;
  std::string_view first = takeLine(content);
  if (takeWord(first) != "ply") throw std::runtime_error("it does not begin with \"ply\"");
  for (;;) {
    std::string_view line = takeLine(content);
    const std::string_view word = takeWord(line);
    if (word == "end_header") return header;
    if (word == "format") header.order = orderFrom(takeWord(line));
    if (word == "element") {
      const std::string_view name = takeWord(line);
      header.elements.push_back({name, countFrom(takeWord(line)), {}});
    }
    if (word == "property" && header.elements.empty()) throw std::runtime_error("its header has a property of no element");
    if (word == "property") header.elements.back().properties.push_back(propertyFrom(line));
  }
}

class Body {
 public:
  Body(std::string_view content, std::optional<std::endian> order) : content_(content), order_(order) {}

  double take(Type type) { return order_ ? takeBinary(type, *order_) : numberFrom(takeWord(content_)); }

  // One value, or those of a list.
  void take(const Property& property, std::vector<double>& values) {
    const double count = property.countType ? take(*property.countType) : 1;
    if (!(count >= 0)) throw std::runtime_error("it has a list of fewer than 0 entries");
    values.clear();
    for (double i = 0; i < count; ++i) values.push_back(take(property.type));
  }

 private:
  double takeBinary(Type type, std::endian order) {
    switch (type) {
      case Type::int8:
        return takeNumber<std::int8_t>(content_, order);
      case Type::uint8:
        return takeNumber<std::uint8_t>(content_, order);
      case Type::int16:
        return takeNumber<std::int16_t>(content_, order);
      case Type::uint16:
        return takeNumber<std::uint16_t>(content_, order);
      case Type::int32:
        return takeNumber<std::int32_t>(content_, order);
      case Type::uint32:
        return takeNumber<std::uint32_t>(content_, order);
      case Type::float32:
        return takeNumber<float>(content_, order);
      case Type::float64:
        break;
    }
    return takeNumber<double>(content_, order);
  }

  std::string_view content_;
  std::optional<std::endian> order_;
};

std::uint32_t cornerFrom(double value) {
  if (!(value >= 0 && value <= 4e9)) throw std::runtime_error("a face has a corner that is no vertex of the file");
  return static_cast<std::uint32_t>(value);
}

void addPolygon(const std::vector<double>& corners, MeshData& mesh) {
  for (std::size_t i = 2; i < corners.size(); ++i)
    mesh.triangles.push_back({cornerFrom(corners[0]), cornerFrom(corners[i - 1]), cornerFrom(corners[i])});
}

void takeVertex(const Element& element, Body& body, MeshData& mesh) {
  Vector vertex;
  std::vector<double> values;
  for (const Property& property : element.properties) {
    body.take(property, values);
    if (values.size() != 1) continue;
    if (property.name == "x") vertex.x = values.front();
    if (property.name == "y") vertex.y = values.front();
    if (property.name == "z") vertex.z = values.front();
  }
  mesh.vertices.push_back(vertex);
}

void takeFace(const Element& element, Body& body, MeshData& mesh) {
  std::vector<double> values;
  for (const Property& property : element.properties) {
    body.take(property, values);
    if (property.name == "vertex_indices" || property.name == "vertex_index") addPolygon(values, mesh);
  }
}

}  // namespace

MeshData parsePly(std::string_view content) {
  const Header header = takeHeader(content);
  Body body(content, header.order);
  MeshData mesh;
  std::vector<double> passedOver;
  for (const Element& element : header.elements) {
    if (element.properties.empty()) continue;
    for (std::uint64_t i = 0; i < element.count; ++i) {
      if (element.name == "vertex")
        takeVertex(element, body, mesh);
      else if (element.name == "face")
        takeFace(element, body, mesh);
      else
        for (const Property& property : element.properties) body.take(property, passedOver);
    }
  }
  return mesh;
}

}  // namespace fringix::head
