// Reads PNG files of all kinds as gray or RGB pictures with 8 bits per sample. Of 16 bits the upper 8 are taken; transparent parts are
// as if they lay on black, which is no light where the picture is projected.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "png/raster.h"

namespace fringix::png {

// Refused before anything is inflated, or read.
inline constexpr std::uint64_t maximumPixels = std::uint64_t{1} << 28;
inline constexpr std::uint64_t maximumFileSize = std::uint64_t{1} << 30;

// Throw std::runtime_error with the reason: the file is no PNG, is damaged, or is too large.
Raster decodePng(std::span<const std::uint8_t> file);
Raster readPng(const std::string& path);  // the reason begins with the file's name

}  // namespace fringix::png
