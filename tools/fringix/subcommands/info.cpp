#include <fmt/format.h>

#include <chrono>

#include "console/json.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

struct Facts {
  Key key;
  Size camera;
  Size projector;
  double openMilliseconds = 0;
};

Facts gather(Context& context) {
  const auto start = std::chrono::steady_clock::now();
  const Device device = openHead(context);
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  return {device.key(), device.cameraSize(), device.projectorSize(), elapsed.count()};
}

void printTable(const Facts& facts) {
  fmt::print("head              {}\n", facts.key.address);
  fmt::print("serial number     {}\n", facts.key.serial);
  fmt::print("protocol version  {}\n", facts.key.protocolVersion);
  fmt::print("camera            {} x {} pixels\n", facts.camera.width, facts.camera.height);
  fmt::print("projector         {} x {} pixels\n", facts.projector.width, facts.projector.height);
  fmt::print("time to open      {:.1f} ms\n", facts.openMilliseconds);
  fmt::print("library version   {}\n", libraryVersion());
}

Json toJson(Size size) { return Json::object({{"width", size.width}, {"height", size.height}}); }

void printJson(const Facts& facts) {
  const Json json = Json::object({
      {"address", facts.key.address},
      {"serial", facts.key.serial},
      {"protocolVersion", facts.key.protocolVersion},
      {"camera", toJson(facts.camera)},
      {"projector", toJson(facts.projector)},
      {"openMilliseconds", facts.openMilliseconds},
      {"libraryVersion", libraryVersion()},
  });
  fmt::print("{}\n", json.indented());
}

}  // namespace

void defineInfo(arguments::Command& command, Context& context) {
  addAddress(command, context);
  command.run([&context] {
    const Facts facts = gather(context);
    context.json ? printJson(facts) : printTable(facts);
  });
}

}  // namespace fringix::tool
