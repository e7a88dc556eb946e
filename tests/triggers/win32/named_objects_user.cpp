// A program that shares the port for triggers without the library: it knows the three objects by their names only. It does what the
// lines of its input say, and answers each with a line.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

namespace {

constexpr DWORD blockSize = 64;
constexpr DWORD patience = 20000;  // milliseconds

void answer(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

}  // namespace

int main() {
  const HANDLE mapping =
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, blockSize, "5CD4232B-DC80-424a-9B46-B85B97F28D95");
  void* const block = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, blockSize);
  const HANDLE lock = CreateMutexA(nullptr, FALSE, "C5128585-87BE-4b48-9F65-9A4CAC572E59");
  const HANDLE notification = CreateEventA(nullptr, TRUE, FALSE, "01C8BBBF-2F08-43b6-A986-6EE1CA79A1BE");
  if (block == nullptr || lock == nullptr || notification == nullptr) return 1;

  std::uint32_t address = 0;
  for (std::string command; std::cin >> command;) {
    if (command == "receive") answer(WaitForSingleObject(lock, patience) == WAIT_OBJECT_0 ? "receiver" : "no receiver");
    if (command == "announce" && std::cin >> address) {
      std::memcpy(block, &address, sizeof address);
      SetEvent(notification);
      answer("announced");
    }
    if (command == "settle") ResetEvent(notification), answer("settled");
    if (command == "resign") ReleaseMutex(lock), answer("resigned");
    if (command == "follow") {
      const bool told = WaitForSingleObject(notification, patience) == WAIT_OBJECT_0;
      std::memcpy(&address, block, sizeof address);
      answer(told ? "told " + std::to_string(address) : "not told");
    }
  }
  return 0;
}
