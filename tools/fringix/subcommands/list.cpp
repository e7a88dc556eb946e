#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
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
    "What follows the address is what a head announces of itself: - is a number that it\n"
    "does not tell, px are pixels.\n"
    "Exit code: 1 when no head answers.";

// What a head's seven numbers are, in their order.
enum Info { protocolVersion, channels, cameraWidth, cameraHeight, projectorWidth, projectorHeight, uptime };

constexpr std::int32_t notTold = -1;

std::string format(std::int32_t number) { return number == notTold ? "-" : std::to_string(number); }
std::string formatSize(std::int32_t width, std::int32_t height) { return fmt::format("{} x {}", format(width), format(height)); }

constexpr const char* row = "{:<13}  {:<14}  {:<15}  {:<8}  {:<8}  {:<13}  {:<13}  {}\n";

void printTable(const std::vector<FoundDevice>& heads) {
  fmt::print(fmt::runtime(row), "serial number", "model", "address", "protocol", "channels", "camera px", "projector px", "uptime s");
  for (const FoundDevice& head : heads) {
    const auto& info = head.info;
    fmt::print(fmt::runtime(row), head.serial, head.model, head.address, format(info[protocolVersion]), format(info[channels]),
               formatSize(info[cameraWidth], info[cameraHeight]), formatSize(info[projectorWidth], info[projectorHeight]),
               format(info[uptime]));
  }
}

Json toJson(const FoundDevice& head) {
  std::vector<Json> info;
  for (const std::int32_t number : head.info) info.emplace_back(number);
  const auto size = [&](Info width, Info height) { return Json::object({{"width", head.info[width]}, {"height", head.info[height]}}); };
  return Json::object({{"serial", head.serial},
                       {"model", head.model},
                       {"address", head.address},
                       {"protocolVersion", head.info[protocolVersion]},
                       {"channels", head.info[channels]},
                       {"camera", size(cameraWidth, cameraHeight)},
                       {"projector", size(projectorWidth, projectorHeight)},
                       {"uptime", head.info[uptime]},
                       {"info", Json::array(std::move(info))}});
}

void printJson(const std::vector<FoundDevice>& heads) {
  std::vector<Json> all;
  for (const FoundDevice& head : heads) all.push_back(toJson(head));
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

void defineList(arguments::Command& command, Context& context) {
  addJson(command, context);
  command.note(note);
  command.run([&context] {
    const std::vector<FoundDevice> heads = search();
    if (context.json) printJson(heads);
    if (heads.empty()) throw Failure(nobody());
    if (!context.json) printTable(heads);
  });
}

}  // namespace fringix::tool
