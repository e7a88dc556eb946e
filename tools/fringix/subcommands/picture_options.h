// Options of every subcommand that fetches camera pictures.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <optional>
#include <string>

#include "arguments/command.h"

namespace fringix::tool {

struct PictureOptions {
  std::string output;
  std::uint32_t channel = 0;
  std::optional<Region> region;  // without it the whole picture
};

// `options` lives as long as `command` and holds the default output.
void addPictureOptions(arguments::Command& command, PictureOptions& options);

// From a text such as 0,0,640x480 or 0,0,640,480. Throws UsageError.
Region parseRegion(const std::string& text);

// Wrong usage unless as many pictures can go there: to PNG files, or one to standard output.
void requirePictureOutput(const std::string& output, std::size_t count);

}  // namespace fringix::tool
