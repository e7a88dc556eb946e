// Data blocks and configuration values on the head, its lines and outputs, and commands passed through to what hangs on it.
#include <algorithm>
#include <cstring>
#include <string>

#include "device/camera_device.h"
#include "platform/block_memory.h"

namespace fringix {

namespace {

// A file name crosses as a raw block with its terminating zero.
std::size_t wireSize(const char* fileName) { return std::strlen(fileName) + 1; }

// Whether the reply fitted, cut to what fits; the terminating zero needs its place, too.
bool copyReply(const std::string& reply, char* buffer, std::int32_t bufferSize) {
  if (bufferSize <= 0) return false;
  const std::size_t length = std::min(reply.size(), static_cast<std::size_t>(bufferSize) - 1);
  std::memcpy(buffer, reply.data(), length);
  buffer[length] = '\0';
  return true;
}

}  // namespace

// Bad arguments give -4 here and -3 in LoadData; on purpose. A refusal of the head is the result as it stands; it may take a negative
// size, too, behind which no data follows.
int CameraDevice::SaveData(const std::uint8_t* data, std::int32_t size, const char* fileName) {
  if (data == nullptr || size == 0 || fileName == nullptr) return SLSYSTEM_ERROR;
  const std::size_t nameSize = wireSize(fileName);
  std::int32_t accepted = 0;
  return command("80MSG_SLSaveDataToFile")
      .send(size, nameSize)
      .receive(&accepted)
      .finishUnlessZero(accepted)
      .bytes(fileName, nameSize)
      .bytes(data, static_cast<std::size_t>(std::max(size, 0)))
      .status();
}

// The block is the caller's as soon as it is made, also when the rest fails. One that cannot be made stays unread, and the session goes
// on; on purpose.
int CameraDevice::LoadData(std::uint8_t** data, std::int32_t* size, const char* fileName) {
  if (data == nullptr || size == nullptr || fileName == nullptr) return SLBAD_PARAMETER;
  *data = nullptr;
  *size = 0;
  const std::size_t nameSize = wireSize(fileName);
  std::int32_t accepted = 0;
  auto exchange = command("81MSG_SLReadDataFromFile");
  exchange.send(nameSize).receive(&accepted).finishUnlessZero(accepted).bytes(fileName, nameSize).receive(size).finishIf(*size == 0);
  if (!exchange.undecided()) return exchange.result();

  if (*size > 0) *data = static_cast<std::uint8_t*>(platform::allocateBlock(static_cast<std::size_t>(*size)));
  if (*data == nullptr) return exchange.finish(SLSYSTEM_ERROR);
  return exchange.receiveBytes(*data, static_cast<std::size_t>(*size)).status();
}

int CameraDevice::ReadIniInt(std::int32_t* value, const char* section, const char* key) {
  return command("82MSG_SLReadIniInt").require(section != nullptr && key != nullptr).text(section).text(key).receive(value).status();
}

int CameraDevice::WriteIniInt(std::int32_t value, const char* section, const char* key) {
  const std::string digits = std::to_string(value);
  return command("83MSG_SLWriteIniInt").require(section != nullptr && key != nullptr).text(section).text(key).text(digits.c_str()).status();
}

int CameraDevice::SetOutputSettings(std::int32_t output, std::int32_t setting) {
  return command("58MSG_SLSetOutputSettings").require(output >= 0).send(output, setting).status();
}

int CameraDevice::ExecOutput(std::int32_t output) { return command("59MSG_SLExecOutput").require(output >= 0).send(output).status(); }

int CameraDevice::GetGPIOStatus(std::int32_t line, std::int32_t* state) {
  return command("84MSG_SLGetGPIOStatus").since(2400).finishIf(state == nullptr).send(line).receive(state).status();
}

int CameraDevice::SetGPIOValue(std::int32_t line, std::int32_t value) {
  return command("230MSG_SLSetGPIOValue").since(2700).send(line, value).status();
}

// Without a connection this command alone gives -40, and without room for the answer it leaves the status unread; both on purpose.
int CameraDevice::ExecRS232(const char* request, char* reply, std::int32_t replySize) {
  std::string received;
  auto exchange = command("200MSG_SLRS232Exec");
  exchange.connectedOr(SLVERSION_TOO_OLD).since(2500).require(request != nullptr && reply != nullptr).text(request).receiveText(&received);
  if (!exchange.undecided()) return exchange.result();
  if (!copyReply(received, reply, replySize)) return exchange.finish(SLBAD_PARAMETER);
  return exchange.status();
}

int CameraDevice::ExecProjCmd(std::uint8_t request, std::uint8_t argument, std::uint8_t* result1, std::uint8_t* result2,
                              std::uint8_t* result3) {
  std::int32_t results[3];
  auto exchange = command("310MSG_EXEC_PROJCMD");
  exchange.since(3300, FetchFailure::ownCode).send(request, argument).receive(&results[0]).receive(&results[1]).receive(&results[2]);
  if (exchange.undecided()) {
    std::uint8_t* const outputs[3] = {result1, result2, result3};
    for (int i = 0; i < 3; ++i) {
      if (outputs[i] != nullptr) *outputs[i] = static_cast<std::uint8_t>(results[i]);
    }
  }
  return exchange.status();
}

}  // namespace fringix
