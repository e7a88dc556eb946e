#include <windows.h>

#include <cstdlib>

#include "shell.h"
#include "support/win32/start_process.h"

namespace fringix::test {

namespace {

// As the interpreter would read it.
std::wstring wide(const std::string& text) {
  std::wstring result(text.size(), L'\0');
  result.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), result.data(), static_cast<int>(result.size()))));
  return result;
}

HANDLE openInheritable(const std::filesystem::path& file, DWORD access, DWORD how) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return CreateFileW(file.c_str(), access, FILE_SHARE_READ, &inheritable, how, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE inputFrom(const std::filesystem::path& file) {
  return file.empty() ? GetStdHandle(STD_INPUT_HANDLE) : openInheritable(file, GENERIC_READ, OPEN_EXISTING);
}

HANDLE outputTo(const std::filesystem::path& file) { return openInheritable(file, GENERIC_WRITE, CREATE_ALWAYS); }

}  // namespace

// The interpreter strips one pair of quotes around the whole line before it reads it.
int runShell(const std::string& command) { return std::system(("\"" + command + "\"").c_str()); }

// Without the interpreter, which takes Wine longer to start than most programs take to run.
int runWithFiles(const std::string& command, const std::filesystem::path& input, const std::filesystem::path& output,
                 const std::filesystem::path& errors) {
  const HANDLE files[] = {outputTo(output), outputTo(errors)};
  const HANDLE read = inputFrom(input);
  const HANDLE process = startProcess(wide(command), read, files[0], files[1]);
  for (const HANDLE file : files) CloseHandle(file);
  if (!input.empty()) CloseHandle(read);
  WaitForSingleObject(process, INFINITE);
  DWORD exitCode = 0;
  GetExitCodeProcess(process, &exitCode);
  CloseHandle(process);
  return static_cast<int>(exitCode);
}

}  // namespace fringix::test
