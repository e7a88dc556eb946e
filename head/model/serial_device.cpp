#include "head/model/serial_device.h"

namespace fringix::head {

SerialDevice::SerialDevice(const SerialScript& script) {
  for (const SerialAnswer& answer : script) script_[answer.command].replies.push_back(answer.reply);
}

std::string SerialDevice::answer(std::string_view command) {
  if (script_.empty()) return std::string(command);
  const std::lock_guard lock(mutex_);
  const auto found = script_.find(command.substr(0, command.find_last_not_of("\r\n") + 1));
  if (found == script_.end()) return {};
  Answers& answers = found->second;
  const std::string& reply = answers.replies[answers.next];
  if (answers.next + 1 < answers.replies.size()) ++answers.next;
  return reply;
}

}  // namespace fringix::head
