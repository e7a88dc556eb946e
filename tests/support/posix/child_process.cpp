#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace fringix::test {

namespace {

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;
};

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

Pipe openPipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
  return {ends[0], ends[1]};
}

// In the child, between fork and exec: only calls that are safe there.
[[noreturn]] void become(char* const* arguments, Input kind, int input, int output) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  signal(SIGPIPE, SIG_DFL);
  if (kind == Input::nullDevice) input = open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(input, STDIN_FILENO);
  if (kind == Input::closed) close(STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  execv(arguments[0], arguments);
  _exit(127);
}

pid_t idOf(ChildProcess::Handle process) { return static_cast<pid_t>(process); }

}  // namespace

void ChildProcess::start(const std::filesystem::path& program, const std::vector<std::string>& arguments, Input input) {
  std::vector<std::string> words{program.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const Pipe in = openPipe();
  const Pipe out = openPipe();
  process_ = fork();
  if (process_ < 0) fail("fork");
  if (process_ == 0) become(pointers.data(), input, in.readEnd, out.writeEnd);
  close(in.readEnd);
  close(out.writeEnd);
  input_ = in.writeEnd;
  output_ = out.readEnd;
  if (input != Input::pipe) closeInput();
}

std::size_t ChildProcess::readOutput(char* buffer, std::size_t size) noexcept {
  const ssize_t count = read(static_cast<int>(output_), buffer, size);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void ChildProcess::write(std::string_view text) {
  if (::write(static_cast<int>(input_), text.data(), text.size()) != static_cast<ssize_t>(text.size())) fail("write");
}

void ChildProcess::closeInput() {
  if (input_ != 0) close(static_cast<int>(input_));
  input_ = 0;
}

bool ChildProcess::interrupt() { return ::kill(idOf(process_), SIGINT) == 0; }

void ChildProcess::kill() noexcept {
  if (!ended_) ::kill(idOf(process_), SIGKILL);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (int status = 0; !ended_;) {
    if (waitpid(idOf(process_), &status, WNOHANG) == idOf(process_)) {
      ended_ = true;
      if (WIFEXITED(status)) exitCode_ = WEXITSTATUS(status);
    } else if (std::chrono::steady_clock::now() >= end) {
      return std::nullopt;
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  return exitCode_;
}

void ChildProcess::release() noexcept {
  closeInput();
  close(static_cast<int>(output_));
}

}  // namespace fringix::test
