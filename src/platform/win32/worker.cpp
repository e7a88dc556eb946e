#include "platform/worker.h"

#include <windows.h>

#include <process.h>

#include <cerrno>
#include <new>

namespace fringix::platform {

namespace {

constexpr DWORD forcedExitCode = static_cast<DWORD>(-1000);

struct Assignment {
  Worker::Body body;
  void* argument;
};

unsigned __stdcall run(void* given) {
  const Assignment assignment = *static_cast<Assignment*>(given);
  delete static_cast<Assignment*>(given);
  return static_cast<unsigned>(assignment.body(assignment.argument));
}

}  // namespace

struct Worker::Thread {
  HANDLE handle;
};

Worker::Worker() noexcept = default;
Worker::~Worker() = default;

// A thread that was ended by force touches nothing any more, so nothing is kept alive for it.
std::uint32_t Worker::start(Body body, void* argument, std::shared_ptr<void>) noexcept {
  std::unique_ptr<Assignment> assignment(new (std::nothrow) Assignment{body, argument});
  std::unique_ptr<Thread> started(new (std::nothrow) Thread{});
  if (!assignment || !started) return ERROR_NOT_ENOUGH_MEMORY;
  started->handle = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, run, assignment.get(), 0, nullptr));
  if (started->handle == nullptr) return GetLastError();
  assignment.release();
  thread_ = std::move(started);
  return 0;
}

bool Worker::end(std::chrono::milliseconds limit) noexcept {
  const HANDLE handle = thread_->handle;
  ResumeThread(handle);  // without effect, the thread was never suspended; kept on purpose
  const bool ended = WaitForSingleObject(handle, static_cast<DWORD>(limit.count())) != WAIT_TIMEOUT;
  if (!ended) TerminateThread(handle, forcedExitCode);  // a worker that ends itself ends here
  CloseHandle(handle);
  thread_.reset();
  return ended;
}

bool Worker::isEndedByForce() noexcept { return true; }

bool thisWorkerIsAbandoned() noexcept { return false; }

}  // namespace fringix::platform
