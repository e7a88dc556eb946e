// Data, configuration and pass-through.
#include <cstring>

#include "device/command_table.h"

namespace fringix::test {

namespace {

const Bytes line = noise(6, 6);
const Bytes fileName("a.bin", 6);  // with its terminating zero

char* asText(std::uint8_t* output) { return reinterpret_cast<char*>(output); }

// Loads "a.bin" and leaves at `output` what came of it: the size, and the block unless it is broken off, as its end is anything then.
int loadInto(OpenSession& session, std::uint8_t* output) {
  std::uint8_t* data = nullptr;
  const int result = SLLoadData(session.handle(), &data, asInteger(output), "a.bin");
  if (data != nullptr && result != SLCONNECTION_ERROR) std::memcpy(output + 4, data, static_cast<std::size_t>(*asInteger(output)));
  SLFreeData(data);
  return result;
}

}  // namespace

std::vector<CommandCase> dataCommands() {
  constexpr auto follows = StatusWord::follows;
  return {
      {.name = "SaveData",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSaveData(s.handle(), asPixels(line), 6, "a.bin"); },
       .before = {text("80MSG_SLSaveDataToFile") + integers(6, 6), integer(0)},
       .sent = fileName + line,
       .statusWord = follows},
      {.name = "LoadData",
       .call = [](OpenSession& s, std::uint8_t* output) { return loadInto(s, output); },
       .before = {text("81MSG_SLReadDataFromFile") + integers(6), integer(0)},
       .sent = fileName,
       .reply = integer(6) + line,
       .written = integer(6) + line,
       .statusWord = follows,
       .leftByBreak = zeroUntil(8, integer(6)),
       .writtenOffline = integer(0)},
      {.name = "ReadIniInt",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLReadIniInt(s.handle(), asInteger(output), "camera", "rows"); },
       .sent = text("82MSG_SLReadIniInt") + text("camera") + text("rows"),
       .reply = integer(-3),
       .written = integer(-3),
       .statusWord = follows},
      {.name = "ReadIniIntIntoNowhere",
       .call = [](OpenSession& s, std::uint8_t*) { return SLReadIniInt(s.handle(), nullptr, "", "rows"); },
       .sent = text("82MSG_SLReadIniInt") + text("") + text("rows"),
       .reply = integer(-3),
       .statusWord = follows},
      {.name = "WriteIniInt",
       .call = [](OpenSession& s, std::uint8_t*) { return SLWriteIniInt(s.handle(), -12, "camera", "rows"); },
       .sent = text("83MSG_SLWriteIniInt") + text("camera") + text("rows") + text("-12"),
       .statusWord = follows},
      {.name = "SetOutputSettings",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().SetOutputSettings(0, -4); },
       .sent = text("58MSG_SLSetOutputSettings") + integers(0, -4),
       .statusWord = follows},
      {.name = "ExecOutput",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().ExecOutput(3); },
       .sent = text("59MSG_SLExecOutput") + integers(3),
       .statusWord = follows},
      {.name = "GetGPIOStatus",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLGetGPIOStatus(s.handle(), -2, asInteger(output)); },
       .sent = text("84MSG_SLGetGPIOStatus") + integers(-2),
       .reply = integer(1),
       .written = integer(1),
       .statusWord = follows,
       .minimumVersion = 2400},
      {.name = "SetGPIOValue",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSetGPIOValue(s.handle(), 3, -1); },
       .sent = text("230MSG_SLSetGPIOValue") + integers(3, -1),
       .statusWord = follows,
       .minimumVersion = 2700},
      {.name = "ExecRS232",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLExecRS232(s.handle(), "go 5", asText(output), 16); },
       .sent = text("200MSG_SLRS232Exec") + text("go 5"),
       .reply = text("done"),
       .written = Bytes("done", 5),
       .statusWord = follows,
       .minimumVersion = 2500,
       .withoutConnection = SLVERSION_TOO_OLD},
      {.name = "ExecProjCmd",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLExecProjCmd(s.handle(), 255, 200, output, output + 1, output + 2); },
       .sent = text("310MSG_EXEC_PROJCMD") + integers(255, 200),
       .reply = integers(0x1FF, 2, 3),
       .written = "\xFF\x02\x03",
       .statusWord = follows,
       .minimumVersion = 3300,
       .whenVersionFails = SLCONNECTION_ERROR},
  };
}

}  // namespace fringix::test
