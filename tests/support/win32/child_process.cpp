#include "support/child_process.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "support/win32/start_process.h"

namespace fringix::test {

namespace {

HANDLE handleOf(ChildProcess::Handle handle) { return reinterpret_cast<HANDLE>(handle); }
ChildProcess::Handle numberOf(HANDLE handle) { return reinterpret_cast<ChildProcess::Handle>(handle); }

struct Pipe {
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
};

// The end that the child is to have can be inherited, the other one not.
Pipe openPipe(HANDLE Pipe::*inherited) {
  Pipe pipe;
  if (CreatePipe(&pipe.readEnd, &pipe.writeEnd, nullptr, 0) == 0) throw std::runtime_error("CreatePipe failed");
  SetHandleInformation(pipe.*inherited, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  return pipe;
}

HANDLE openNullDevice() {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, OPEN_EXISTING, 0, nullptr);
}

std::wstring commandLine(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
  std::wstring line = L"\"" + program.wstring() + L"\"";
  for (const std::string& argument : arguments) line += L" " + std::wstring(argument.begin(), argument.end());
  return line;
}

}  // namespace

void ChildProcess::start(const std::filesystem::path& program, const std::vector<std::string>& arguments, Input input) {
  const Pipe in = openPipe(&Pipe::readEnd);
  const Pipe out = openPipe(&Pipe::writeEnd);
  input_ = numberOf(in.writeEnd);
  output_ = numberOf(out.readEnd);
  const HANDLE nullDevice = input == Input::nullDevice ? openNullDevice() : nullptr;
  process_ =
      numberOf(startProcess(commandLine(program, arguments), input == Input::pipe ? in.readEnd : nullDevice, out.writeEnd, out.writeEnd));
  for (const HANDLE handle : {in.readEnd, out.writeEnd, nullDevice}) {
    if (handle != nullptr) CloseHandle(handle);
  }
  if (input != Input::pipe) closeInput();
}

std::size_t ChildProcess::readOutput(char* buffer, std::size_t size) noexcept {
  DWORD count = 0;
  return ReadFile(handleOf(output_), buffer, static_cast<DWORD>(size), &count, nullptr) != 0 ? count : 0;
}

void ChildProcess::write(std::string_view text) {
  DWORD count = 0;
  if (WriteFile(handleOf(input_), text.data(), static_cast<DWORD>(text.size()), &count, nullptr) == 0 || count != text.size())
    throw std::runtime_error("WriteFile failed");
}

void ChildProcess::closeInput() {
  if (input_ != 0) CloseHandle(handleOf(std::exchange(input_, 0)));
}

// Ctrl-C reaches all programs of a console together, the test as well.
bool ChildProcess::interrupt() { return false; }

void ChildProcess::kill() noexcept {
  if (!ended_) TerminateProcess(handleOf(process_), 9);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds limit) {
  if (!ended_ && WaitForSingleObject(handleOf(process_), static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0) {
    DWORD code = 0;
    GetExitCodeProcess(handleOf(process_), &code);
    exitCode_ = static_cast<int>(code);
    ended_ = true;
  }
  return exitCode_;
}

void ChildProcess::release() noexcept {
  closeInput();
  CloseHandle(handleOf(output_));
  CloseHandle(handleOf(process_));
}

}  // namespace fringix::test
