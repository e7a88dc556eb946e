// Reads what a library file exports and which libraries it needs, from its own tables: PE (Windows) or ELF (Linux), 64 bit.
#pragma once

#include <string>
#include <vector>

namespace fringix::test {

struct BinaryImage {
  std::vector<std::string> exports;  // sorted
  std::vector<std::string> needs;    // in file order
  int exportSlots = 0;               // ordinals from the first to the last; PE only
  bool hardened = false;             // PE: high-entropy ASLR and DEP; ELF: everything bound at start, relocations read-only
  bool staysLoaded = false;          // whatever its host does to unload it; ELF only
};

// Throws std::runtime_error for a file that is neither.
BinaryImage readBinaryImage(const std::string& path);

}  // namespace fringix::test
