#include "head/program/pattern_files.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <span>
#include <stdexcept>

#include "files/files.h"
#include "png/png_writer.h"

namespace fringix::head {

namespace {

std::vector<std::uint8_t> encode(const Pattern& pattern) {
  const std::span pixels(reinterpret_cast<const std::uint8_t*>(pattern.pixels.data()), pattern.pixels.size() * sizeof(Colour));
  return png::encodePngRgb24(static_cast<std::uint32_t>(pattern.size.width), static_cast<std::uint32_t>(pattern.size.height), pixels);
}

}  // namespace

std::function<void(std::uint32_t, std::uint32_t, const Pattern&)> patternWriter(const std::string& folder, std::int32_t serial) {
  std::filesystem::create_directories(folder);
  return [folder = std::filesystem::path(folder), serial](std::uint32_t sequence, std::uint32_t image, const Pattern& pattern) {
    const std::filesystem::path path = folder / fmt::format("{}-{}-{:03}.png", serial, sequence, image);
    try {
      files::writeFile(path.string(), encode(pattern));
    } catch (const std::runtime_error& error) {
      fmt::print(stderr, "fringix-head: {}\n", error.what());
    }
  };
}

}  // namespace fringix::head
