// With FRINGIX_SHORTAGE=REQUESTS,REPLIES,LIMIT in its environment, two descriptors and the seconds that a run may take, a program that this
// is preloaded to is started once and run for each line that comes: "FUNCTION FAILURE FIRST LASTING". Each run is a fork of it before
// main(), so that loading it costs no time. It answers "STATUS STRUCK CALLS..." when the run has ended: how, as waitpid() has it, how often
// the plan struck, and how often each function was called.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "interposer/posix/real.h"

using namespace fringix::shortage;

namespace {

using Main = int(int, char**, char**);
Main* realMain = nullptr;

struct Plan {
  int function;
  int failure;
  unsigned first;
  int lasting;
};

unsigned limit = 0;

// A run leaves them to its parent, also when it is killed.
Counts* shared = nullptr;

// The C library writes its streams by ways of its own; these lead through what can fail.
ssize_t writeToStream(void* descriptor, const char* data, std::size_t size) {
  std::size_t written = 0;
  while (written < size) {
    const ssize_t count = write(static_cast<int>(reinterpret_cast<std::intptr_t>(descriptor)), data + written, size - written);
    if (count < 0) break;
    written += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(written);
}

std::FILE* streamTo(int descriptor) {
  return fopencookie(reinterpret_cast<void*>(std::intptr_t{descriptor}), "w", {nullptr, writeToStream, nullptr, nullptr});
}

int runOnce(const Plan& plan, int argc, char** argv, char** environment) {
  alarm(limit);
  stdout = streamTo(STDOUT_FILENO);
  stderr = streamTo(STDERR_FILENO);
  setvbuf(stderr, nullptr, _IONBF, 0);
  shortage_hurry(1);
  shortage_plan(plan.function, plan.failure, plan.first, plan.lasting);
  shortage_watch_all();
  return realMain(argc, argv, environment);
}

bool fetch(int requests, Plan& plan) {
  char line[64];
  std::size_t size = 0;
  while (size + 1 < sizeof line && read(requests, line + size, 1) == 1 && line[size] != '\n') ++size;
  line[size] = '\0';
  return std::sscanf(line, "%d %d %u %d", &plan.function, &plan.failure, &plan.first, &plan.lasting) == 4;
}

int serve(int argc, char** argv, char** environment) {
  int requests = 0;
  int replies = 0;
  std::sscanf(std::getenv("FRINGIX_SHORTAGE"), "%d,%d,%u", &requests, &replies, &limit);
  unsetenv("FRINGIX_SHORTAGE");
  shared = static_cast<Counts*>(mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  countIn(*shared);
  for (Plan plan{}; fetch(requests, plan);) {
    const pid_t child = fork();
    if (child == 0) {
      close(requests);
      close(replies);
      return runOnce(plan, argc, argv, environment);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
    }
    dprintf(replies, "%d %u", status, shared->struck.load());
    for (const auto& calls : shared->calls) dprintf(replies, " %u", calls.load());
    dprintf(replies, "\n");
  }
  _exit(0);
}

using Start = int(Main*, int, char**, void (*)(), void (*)(), void (*)(), void*);

}  // namespace

// Such a stream has no descriptor; who asks is told the one behind it.
FRINGIX_INTERPOSED int fileno(std::FILE* stream) noexcept {
  static const auto real = next<decltype(fileno)>("fileno");
  const int descriptor = real(stream);
  if (descriptor >= 0) return descriptor;
  return stream == stdout ? STDOUT_FILENO : stream == stderr ? STDERR_FILENO : -1;
}

FRINGIX_INTERPOSED int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(), void (*loaderFini)(),
                                         void* stackEnd) {
  const auto real = next<Start>("__libc_start_main");
  realMain = main;
  return real(std::getenv("FRINGIX_SHORTAGE") == nullptr ? main : serve, argc, argv, init, fini, loaderFini, stackEnd);
}
