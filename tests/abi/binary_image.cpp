#include "abi/binary_image.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fringix::test {

namespace {

// A file's bytes with checked access.
class File {
 public:
  explicit File(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    bytes_ = all.str();
  }

  template <class Value>
  Value at(std::size_t offset) const {
    if (offset + sizeof(Value) > bytes_.size()) throw std::runtime_error("the file ends too early");
    Value value;
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
  }

  std::string textAt(std::size_t offset) const { return bytes_.c_str() + std::min(offset, bytes_.size()); }

 private:
  std::string bytes_;
};

class PeReader {
 public:
  explicit PeReader(const File& file) : file_(file), header_(file.at<std::uint32_t>(0x3C)), optional_(header_ + 24) {}

  BinaryImage read() const {
    BinaryImage image;
    readExports(image);
    readImports(image);
    constexpr unsigned highEntropy = 0x0020;
    constexpr unsigned dynamicBase = 0x0040;
    constexpr unsigned executionPrevention = 0x0100;
    constexpr unsigned wanted = highEntropy | dynamicBase | executionPrevention;
    image.hardened = (file_.at<std::uint16_t>(optional_ + 70) & wanted) == wanted;
    return image;
  }

 private:
  std::size_t directory(std::size_t index) const { return file_.at<std::uint32_t>(optional_ + 112 + 8 * index); }

  std::size_t fileOffset(std::size_t address) const {
    const std::size_t sections = optional_ + file_.at<std::uint16_t>(header_ + 20);
    for (std::size_t i = 0; i < file_.at<std::uint16_t>(header_ + 6); ++i) {
      const std::size_t section = sections + 40 * i;
      const std::size_t start = file_.at<std::uint32_t>(section + 12);
      if (address >= start && address < start + file_.at<std::uint32_t>(section + 8)) {
        return address - start + file_.at<std::uint32_t>(section + 20);
      }
    }
    throw std::runtime_error("an address outside of every section");
  }

  void readExports(BinaryImage& image) const {
    const std::size_t table = fileOffset(directory(0));
    image.exportSlots = static_cast<int>(file_.at<std::uint32_t>(table + 20));
    const std::size_t names = fileOffset(file_.at<std::uint32_t>(table + 32));
    for (std::size_t i = 0; i < file_.at<std::uint32_t>(table + 24); ++i) {
      image.exports.push_back(file_.textAt(fileOffset(file_.at<std::uint32_t>(names + 4 * i))));
    }
  }

  void readImports(BinaryImage& image) const {
    for (std::size_t entry = fileOffset(directory(1)); file_.at<std::uint32_t>(entry + 12) != 0; entry += 20) {
      image.needs.push_back(file_.textAt(fileOffset(file_.at<std::uint32_t>(entry + 12))));
    }
  }

  const File& file_;
  std::size_t header_;
  std::size_t optional_;
};

class ElfReader {
 public:
  explicit ElfReader(const File& file) : file_(file) {}

  BinaryImage read() const {
    BinaryImage image;
    const auto sections = file_.at<std::uint64_t>(0x28);
    for (std::size_t i = 0; i < file_.at<std::uint16_t>(0x3C); ++i) {
      const std::size_t section = sections + 64 * i;
      constexpr std::uint32_t dynamicTable = 6;
      constexpr std::uint32_t dynamicSymbols = 11;
      const std::size_t names = file_.at<std::uint64_t>(sections + 64 * file_.at<std::uint32_t>(section + 40) + 24);
      if (file_.at<std::uint32_t>(section + 4) == dynamicTable) readDynamic(section, names, image);
      if (file_.at<std::uint32_t>(section + 4) == dynamicSymbols) readSymbols(section, names, image);
    }
    image.hardened = image.hardened && hasReadOnlyRelocations();
    return image;
  }

 private:
  void readDynamic(std::size_t section, std::size_t names, BinaryImage& image) const {
    constexpr std::uint64_t needed = 1;
    constexpr std::uint64_t flags = 30;
    constexpr std::uint64_t bindNow = 8;
    constexpr std::uint64_t moreFlags = 0x6FFFFFFB;
    constexpr std::uint64_t noDelete = 8;
    const std::size_t start = file_.at<std::uint64_t>(section + 24);
    for (std::size_t entry = start; entry < start + file_.at<std::uint64_t>(section + 32); entry += 16) {
      const auto tag = file_.at<std::uint64_t>(entry);
      const auto value = file_.at<std::uint64_t>(entry + 8);
      if (tag == needed) image.needs.push_back(file_.textAt(names + value));
      if (tag == flags) image.hardened = (value & bindNow) != 0;
      if (tag == moreFlags) image.staysLoaded = (value & noDelete) != 0;
    }
  }

  void readSymbols(std::size_t section, std::size_t names, BinaryImage& image) const {
    const std::size_t start = file_.at<std::uint64_t>(section + 24);
    for (std::size_t symbol = start; symbol < start + file_.at<std::uint64_t>(section + 32); symbol += 24) {
      const bool defined = file_.at<std::uint16_t>(symbol + 6) != 0;
      const bool visible = file_.at<std::uint8_t>(symbol + 4) >> 4 != 0;
      if (defined && visible) image.exports.push_back(file_.textAt(names + file_.at<std::uint32_t>(symbol)));
    }
  }

  bool hasReadOnlyRelocations() const {
    constexpr std::uint32_t readOnlyAfterRelocation = 0x6474E552;
    const std::size_t headers = file_.at<std::uint64_t>(0x20);
    for (std::size_t i = 0; i < file_.at<std::uint16_t>(0x38); ++i) {
      if (file_.at<std::uint32_t>(headers + 56 * i) == readOnlyAfterRelocation) return true;
    }
    return false;
  }

  const File& file_;
};

}  // namespace

BinaryImage readBinaryImage(const std::string& path) {
  const File file(path);
  BinaryImage image;
  if (file.textAt(0).starts_with("MZ")) {
    image = PeReader(file).read();
  } else if (file.textAt(0).starts_with("\x7F"
                                        "ELF")) {
    image = ElfReader(file).read();
  } else {
    throw std::runtime_error(path + " is no library");
  }
  std::sort(image.exports.begin(), image.exports.end());
  return image;
}

}  // namespace fringix::test
