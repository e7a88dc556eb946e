#include "arguments/describe.h"

#include <fmt/format.h>

#include <string_view>

#include "arguments/usage_error.h"

namespace fringix::arguments {
namespace {

std::string described(const Command& program, std::string_view form) {
  if (form == "man") return manualPage(program);
  if (form == "bash") return bashCompletion(program);
  if (form == "zsh") return zshCompletion(program);
  if (form == "fish") return fishCompletion(program);
  throw UsageError("--describe-as", fmt::format("\"{}\" is none of man, bash, zsh and fish", form));
}

}  // namespace

bool describe(const Command& program, int argc, const char* const* argv) {
  if (argc != 3 || std::string_view(argv[1]) != "--describe-as") return false;
  fmt::print("{}", described(program, argv[2]));
  return true;
}

}  // namespace fringix::arguments
