#include "support/win32/start_process.h"

#include <stdexcept>

namespace fringix::test {

namespace {

constexpr int mostTries = 5;

// Wine has failed with this error on a busy machine, in one start of many.
bool isWorthAnotherTry(DWORD error) {
  if (error != ERROR_INTERNAL_ERROR) return false;
  Sleep(100);
  return true;
}

}  // namespace

HANDLE startProcess(std::wstring line, HANDLE input, HANDLE output, HANDLE errors) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = input;
  start.hStdOutput = output;
  start.hStdError = errors;
  PROCESS_INFORMATION information{};
  int left = mostTries;
  while (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &information) == 0) {
    const DWORD error = GetLastError();
    if (--left == 0 || !isWorthAnotherTry(error)) throw std::runtime_error("CreateProcessW failed: " + std::to_string(error));
  }
  CloseHandle(information.hThread);
  return information.hProcess;
}

}  // namespace fringix::test
