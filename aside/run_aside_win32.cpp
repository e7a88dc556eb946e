#include <process.h>
#include <windows.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include "aside/run_aside.h"

namespace fringix {
namespace {

using Work = std::function<void()>;

unsigned __stdcall run(void* given) {
  const std::unique_ptr<Work> work(static_cast<Work*>(given));
  (*work)();
  return 0;
}

}  // namespace

// Not std::thread: with the thread library of MinGW, one thread in a few hundred never starts when it is detached that early, or
// whoever waits for what it tells is not woken.
void runAside(std::function<void()> work) {
  auto given = std::make_unique<Work>(std::move(work));
  const std::uintptr_t thread = _beginthreadex(nullptr, 0, run, given.get(), 0, nullptr);
  if (thread == 0) throw std::system_error(errno, std::generic_category(), "no more threads can be started");
  given.release();
  CloseHandle(reinterpret_cast<HANDLE>(thread));
}

}  // namespace fringix
