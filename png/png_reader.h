// Reads the PNG files that people make patterns with: 8 bits per sample, gray or RGB, not interlaced.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "png/raster.h"

namespace fringix::png {

// Throw std::runtime_error with the reason: the file is no PNG, is damaged, or is of a kind that is not read, and how to save it
// then. Pictures of more than 2^28 pixels are refused.
Raster decodePng(std::span<const std::uint8_t> file);
Raster readPng(const std::string& path);  // the reason begins with the file's name

}  // namespace fringix::png
