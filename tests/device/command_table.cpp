#include "device/command_table.h"

#include "fringix/fringix.h"

namespace fringix::test {

namespace {

std::int32_t* asInteger(std::uint8_t* output) { return reinterpret_cast<std::int32_t*>(output); }

const Bytes frame = noise(8 * 4);  // one picture of the test head's camera

}  // namespace

std::ostream& operator<<(std::ostream& out, const CommandCase& row) { return out << row.name; }

std::vector<CommandCase> commandTable() {
  constexpr auto follows = StatusWord::follows;
  return {
      {.name = "EnableCamLogging",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().EnableCamLogging(); },
       .sent = text("70MSG_SLEnableCamLogging")},
      {.name = "Noop", .call = [](OpenSession& s, std::uint8_t*) { return s.device().Noop(); }, .sent = text("100MSG_SLNOOP")},
      {.name = "GetSerial",
       .call = [](OpenSession& s, std::uint8_t* output) { return s.device().GetSerial(asInteger(output)); },
       .sent = text("21MSG_SLGetSerial"),
       .reply = integer(70123),
       .written = integer(70123)},
      {.name = "GetPixelDepth",
       .call = [](OpenSession& s, std::uint8_t* output) { return s.device().GetPixelDepth(asInteger(output)); },
       .sent = text("22MSG_SLGetPixelDepth"),
       .reply = integer(8),
       .written = integer(8),
       .statusWord = follows},
      {.name = "GetLiveImage",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLGetLiveImage(s.handle(), output, 8, 4); },
       .sent = text("41MSG_SLGetLiveImage"),
       .reply = frame,
       .written = frame},
  };
}

}  // namespace fringix::test
