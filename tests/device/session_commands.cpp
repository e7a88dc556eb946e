// Commands of the session itself.
#include "device/command_table.h"

namespace fringix::test {

std::vector<CommandCase> sessionCommands() {
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
       .statusWord = follows,
       .leftByBreak = untouched},
  };
}

}  // namespace fringix::test
