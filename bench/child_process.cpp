#include "child_process.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cstdio>
#include <exception>

#include "descriptor.h"

namespace fringix::bench {

namespace {

[[noreturn]] void runToTheEnd(const std::function<void()>& body) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  try {
    body();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fringix-bench: %s\n", error.what());
  }
  _exit(1);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& body) : id_(fork()) {
  if (id_ < 0) throwSystemError("fork");
  if (id_ == 0) runToTheEnd(body);
}

ChildProcess::~ChildProcess() {
  kill(id_, SIGKILL);
  waitpid(id_, nullptr, 0);
}

}  // namespace fringix::bench
