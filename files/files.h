// Files that the programs read and write. Every failure is a std::runtime_error that names the file and the system's reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace fringix::files {

// As the name of a file that is written: standard output.
inline constexpr const char* standardOutput = "-";

// Regular files of at most `limit` bytes. Others are refused before anything is read of them: a device may have no end, and at a pipe
// one might wait for ever.
std::vector<std::uint8_t> readFile(const std::string& path, std::uint64_t limit);

// Throws unless the file can be written, and leaves everything as it was: asked before the head is, so that no picture is lost. Links
// and what is no regular file cannot be written: they lead to files, or are devices, that nobody named.
void requireWritable(const std::string& path);

// Puts a whole file in the place of an older one, or leaves that as it is: nobody ever sees half a file, and an end of the program, at
// whatever moment, leaves the old one. To standard output the bytes go as they are.
void writeFile(const std::string& path, std::span<const std::uint8_t> bytes);

// Where to say what was written: to standard error when the bytes went to standard output.
std::FILE* reportStream(const std::string& path);

// The name of a file in a folder.
std::string inFolder(const std::string& folder, const std::string& name);

// Makes a folder, and those above it, unless it is there.
void makeFolder(const std::string& folder);

bool exists(const std::string& path);

// Whether two names lead to one file that exists.
bool isSameFile(const std::string& one, const std::string& other);

// The name of one file of a series, with as many digits as the last one's number: "live.png" becomes "live-07.png" when `last` is
// 10 to 99.
std::string numberedPath(const std::string& path, std::size_t number, std::size_t last);

}  // namespace fringix::files
