#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <utility>
#include <vector>

#include "console/explain.h"
#include "console/json.h"
#include "console/progress_bar.h"
#include "console/terminal.h"
#include "heads/networks.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

constexpr const char* note =
    "The search asks the networks of this machine one after the other, each for 0.3 s\n"
    "and 0.3 s more after each answer. A head that is reached over two networks, or\n"
    "that answers twice, is shown twice. Up to 256 heads are shown.\n"
    "Exit code: 1 when no head answers.";

void printTable(const std::vector<FoundDevice>& heads) {
  fmt::print("{:<13}  {:<14}  {:<15}  {}\n", "serial number", "model", "address", "info 1 to 7");
  for (const FoundDevice& head : heads)
    fmt::print("{:<13}  {:<14}  {:<15}  {}\n", head.serial, head.model, head.address, fmt::join(head.info, " "));
}

void printJson(const std::vector<FoundDevice>& heads) {
  std::vector<Json> all;
  for (const FoundDevice& head : heads)
    all.push_back(Json::object({{"serial", head.serial},
                                {"model", head.model},
                                {"address", head.address},
                                {"info", Json::array(std::vector<Json>(head.info.begin(), head.info.end()))}}));
  fmt::print("{}\n", Json::array(std::move(all)).indented());
}

std::vector<FoundDevice> search() {
  const TransientLine line(stderr, isTerminal(stderr), "searching for heads ...");
  return findDevices();
}

Explanation nobody() {
  const std::vector<std::string> networks = searchedNetworks();
  const std::string asked = networks.empty() ? "This machine has no IPv4 network." : fmt::format("Asked: {}.", fmt::join(networks, ", "));
  return {"no head answers the search", asked +
                                            " Check that the head is on and in one of these networks, and that no firewall keeps\n"
                                            "  UDP port 44332 from answering. A head in another network is reached by its address."};
}

}  // namespace

void defineList(arguments::Command& command, Context&) {
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", json.get(), "Print JSON instead of a table");
  command.note(note);
  command.run([json] {
    const std::vector<FoundDevice> heads = search();
    if (*json) printJson(heads);
    if (heads.empty()) throw Failure(nobody());
    if (!*json) printTable(heads);
  });
}

}  // namespace fringix::tool
