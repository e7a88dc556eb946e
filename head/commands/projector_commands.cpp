// Commands for the projector itself: a code and an argument of 8 bits, three results of 8 bits.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "head/commands/commands.h"
#include "head/commands/transfers.h"
#include "head/optics/patterns.h"
#include "head/settings/range.h"

namespace fringix::head {

namespace {

using Results = std::array<std::int32_t, 3>;

struct ProjectorCommand {
  std::int32_t code;
  std::optional<Results> (*run)(HeadModel& model, std::int32_t argument);  // empty for an argument that means nothing
};

std::optional<Results> tellVersion(HeadModel&, std::int32_t) { return Results{1, 0, 0}; }

std::optional<Results> tellState(HeadModel& model, std::int32_t) {
  return Results{model.projectorStatus(), model.controls().projectorTemperature(), model.controls().ledPower()};
}

std::optional<Results> setPower(HeadModel& model, std::int32_t argument) {
  model.controls().setLedPowerDirectly(argument);
  return Results{model.controls().ledPower(), 0, 0};
}

std::optional<Pattern> makeTestPattern(Size size, std::int32_t number) {
  constexpr std::uint8_t full = 255;
  constexpr std::int32_t square = 32;
  switch (number) {
    case 0:
      return makeUniform(size, full);
    case 1:
      return makeUniform(size, 0);
    case 2:
      return makeCheckerboard(size, full, square);
    case 3:
      return makeRamp(size, Axis::columns, full);
    default:
      return std::nullopt;
  }
}

std::optional<Results> showTestPattern(HeadModel& model, std::int32_t argument) {
  auto pattern = makeTestPattern(model.settings().projector, argument);
  if (!pattern) return std::nullopt;
  model.show(std::make_shared<const Pattern>(std::move(*pattern)));
  return Results{argument, 0, 0};
}

constexpr std::int32_t testPatternCode = 4;
constexpr ProjectorCommand projectorTable[] = {{1, tellVersion}, {2, tellState}, {3, setPower}, {testPatternCode, showTestPattern}};

std::optional<Results> execute(HeadModel& model, std::int32_t code, std::int32_t argument) {
  constexpr Range bytes{0, 255};
  const auto* row =
      std::find_if(std::begin(projectorTable), std::end(projectorTable), [=](const auto& entry) { return entry.code == code; });
  return row != std::end(projectorTable) && bytes.contains(argument) ? row->run(model, argument) : std::nullopt;
}

constexpr Command commands[] = {
    {"310MSG_EXEC_PROJCMD", 3300,
     [](Call& call) {
       const std::int32_t code = call.wire.readInt();
       const std::int32_t argument = call.wire.readInt();
       const auto room = code == testPatternCode ? takeRoomForPattern(call) : takeRoom(call, 0);
       const auto results = room ? execute(call.model, code, argument) : std::nullopt;
       for (const std::int32_t result : results.value_or(Results{})) call.wire.writeInt(result);
       call.reply(!room ? Status::outOfMemory : results ? Status::ok : Status::badParameter);
     }},
};

}  // namespace

CommandFamily projectorCommands() { return commands; }

}  // namespace fringix::head
