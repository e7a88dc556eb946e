// Commands of the session itself.
#include <cstring>

#include "device/command_table.h"

namespace fringix::test {

namespace {

// Leaves at `output` what came of it, the beginning of the address in place of the pointer to it.
int devKeyInto(OpenSession& session, std::uint8_t* output) {
  auto* const key = reinterpret_cast<DeviceKeyEntry*>(output);
  const int result = SLGetDevKey(session.handle(), key);
  if (result == SLALL_OKAY) std::memcpy(&key->ipAddress, Bytes(key->ipAddress).data(), sizeof key->ipAddress);
  return result;
}

}  // namespace

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
      {.name = "GetDevKey",
       .call = [](OpenSession& s, std::uint8_t* output) { return devKeyInto(s, output); },
       .before = {text("21MSG_SLGetSerial"), integer(70123)},
       .sent = text("20MSG_SLGetProtocolVersion"),
       .reply = integer(3300),
       .written = integer(70123) + integer(3300) + "127.0.0.",
       .leftByBreak = [](std::size_t arrived) { return arrived < 4 ? Bytes{} : integer(70123); }},
  };
}

}  // namespace fringix::test
