#include "support/child_process.h"

#include <array>
#include <utility>

namespace fringix::test {

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments, Input input) {
  start(std::filesystem::absolute(program).make_preferred(), arguments, input);
  collector_ = std::thread([this] { collect(); });
}

ChildProcess::~ChildProcess() {
  kill();
  wait();
  collector_.join();
  release();
}

void ChildProcess::collect() noexcept {
  std::array<char, 512> buffer;
  std::string line;
  while (const std::size_t count = readOutput(buffer.data(), buffer.size())) {
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < count; ++i) {
      if (buffer[i] == '\n')
        lines_.push_back(std::exchange(line, {}));
      else if (buffer[i] != '\r')
        line.push_back(buffer[i]);
    }
    changed_.notify_all();
  }
  const std::lock_guard lock(mutex_);
  if (!line.empty()) lines_.push_back(line);
  complete_ = true;
  changed_.notify_all();
}

std::optional<std::string> ChildProcess::nextLine(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, limit, [&] { return complete_ || !lines_.empty(); });
  if (lines_.empty()) return std::nullopt;
  std::string line = std::move(lines_.front());
  lines_.pop_front();
  return line;
}

std::string ChildProcess::waitForLine(std::string_view part, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (true) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    const auto line = nextLine(std::max(rest, std::chrono::milliseconds(0)));
    if (!line || line->find(part) != std::string::npos) return line.value_or("");
  }
}

}  // namespace fringix::test
