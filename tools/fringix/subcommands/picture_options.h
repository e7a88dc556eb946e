// Options of every subcommand that fetches camera pictures.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <optional>
#include <string>

namespace fringix::tool {

struct PictureOptions {
  std::string output;
  std::uint32_t channel = 0;
  std::optional<Region> region;  // without it the whole picture
};

// `options` lives as long as `app` and holds the default output.
void addPictureOptions(CLI::App& app, PictureOptions& options);

}  // namespace fringix::tool
