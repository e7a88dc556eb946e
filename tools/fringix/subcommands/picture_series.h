// One or several camera pictures, fetched from a head and written as PNG files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <functional>
#include <string>

#include "subcommands/subcommand.h"

namespace fringix::tool {

struct PictureSeries {
  std::size_t count = 1;
  std::uint32_t channel = 0;
  std::function<std::string(std::size_t)> path;  // of the picture at a place, counted from 0
  std::function<Image(const Device&, std::size_t)> fetch;
};

// Fetches and writes one picture after the other, with a bar on a terminal, and prints what was written and how quick that was.
// A file that cannot be written is told before the head is asked.
void fetchSeries(const PictureSeries& series, Context& context);

}  // namespace fringix::tool
