// A program run beside a test: spoken to, listened to, ended as the test wants it. It never outlives its object.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace fringix::test {

enum class Input { pipe, nullDevice, closed };

class ChildProcess {
 public:
  using Handle = std::intptr_t;
  static constexpr std::chrono::seconds defaultLimit{20};

  // No argument has blanks or quotes. Throws when the program cannot be started.
  ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments, Input input = Input::pipe);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void write(std::string_view text);  // to its standard input; throws when nobody reads it
  void closeInput();

  // The next line of its outputs, standard and error together; nothing when they have ended or `limit` is over.
  std::optional<std::string> nextLine(std::chrono::milliseconds limit = defaultLimit);
  // Passes over lines up to one with this part; empty when none comes.
  std::string waitForLine(std::string_view part, std::chrono::milliseconds limit = defaultLimit);

  bool interrupt();      // as Ctrl-C does; false where a program cannot do that to another
  void kill() noexcept;  // it ends at once and cleans nothing up
  std::optional<int> wait(
      std::chrono::milliseconds limit = defaultLimit);  // its exit code; none when it still runs, or was killed by a signal

 private:
  // Per platform.
  void start(const std::filesystem::path& program, const std::vector<std::string>& arguments, Input input);
  std::size_t readOutput(char* buffer, std::size_t size) noexcept;  // blocks; 0 at the end
  void release() noexcept;

  void collect() noexcept;

  Handle process_ = 0;
  Handle input_ = 0;  // 0: closed
  Handle output_ = 0;
  std::optional<int> exitCode_;
  bool ended_ = false;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> lines_;
  bool complete_ = false;
  std::thread collector_;
};

}  // namespace fringix::test
