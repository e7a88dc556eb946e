#include <fmt/format.h>

#include <optional>

#include "console/explain.h"
#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

SelectedHead letUserPick() {
  if (const std::optional<SelectedHead> head = selectHead()) return *head;
  throw Failure({"no head was picked",
                 "If no dialog appeared: it needs a display and, on Linux, libDAXFringix-dialog.so beside the library and GTK 3."});
}

void printTable(const SelectedHead& head) {
  fmt::print("serial number     {}\n", head.serial);
  fmt::print("head              {}\n", head.address);
}

void printJson(const SelectedHead& head) {
  const Json json = Json::object({{"serial", head.serial}, {"address", head.address}});
  fmt::print("{}\n", json.indented());
}

}  // namespace

void defineSelect(arguments::Command& command, Context& context) {
  addJson(command, context);
  command.run([&context] {
    const SelectedHead head = letUserPick();
    context.json ? printJson(head) : printTable(head);
  });
}

}  // namespace fringix::tool
