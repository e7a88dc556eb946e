#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "console/explain.h"
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
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const FoundDevice& head : heads)
    all.push_back({{"serial", head.serial}, {"model", head.model}, {"address", head.address}, {"info", head.info}});
  fmt::print("{}\n", all.dump(2));
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

void defineList(CLI::App& app, Context&) {
  const auto json = std::make_shared<bool>(false);
  app.add_flag("--json", *json, "Print JSON instead of a table");
  app.footer(note);
  app.callback([json] {
    const std::vector<FoundDevice> heads = search();
    if (*json) printJson(heads);
    if (heads.empty()) throw Failure(nobody());
    if (!*json) printTable(heads);
  });
}

}  // namespace fringix::tool
