// Files that the tool reads and writes. Every failure is a std::runtime_error that names the file and the system's reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fringix::files {

std::vector<std::uint8_t> readFile(const std::string& path);

// Throws unless the file can be written, and leaves everything as it was: asked before the head is, so that no picture is lost.
void requireWritable(const std::string& path);

void writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes);

// The name of one file of a series, with as many digits as the last one's number: "live.png" becomes "live-07.png" when `last` is
// 10 to 99.
std::string numberedPath(const std::string& path, std::size_t number, std::size_t last);

}  // namespace fringix::files
