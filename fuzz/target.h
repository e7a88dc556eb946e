// What is fuzzed: a function of bytes that must hold for all of them. A file in targets/ registers one under its own name; CMake finds it.
//
//   const Registered target("png", [](Bytes input) { ... require(whatAlwaysHolds, "what that is"); });
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::fuzz {

using Bytes = std::span<const std::uint8_t>;
using Run = void (*)(Bytes input);
using Seeds = std::vector<std::string> (*)();

struct Target {
  std::string name;
  Run run;
  Seeds seeds;  // inputs to begin with, besides those in corpora/; null: none
};

std::vector<Target>& targets();

struct Registered {
  Registered(const char* name, Run run, Seeds seeds = nullptr) { targets().push_back({name, run, seeds}); }
};

// Ends the process, which is how a fuzzer is told, when what always holds does not.
void require(bool holds, const char* what);

inline std::string_view textOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

}  // namespace fringix::fuzz
