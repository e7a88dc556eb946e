// Loaded before a program (LD_PRELOAD): its threads pause at random before and after they lock, wait, or speak to another one, so that they
// meet in other orders than usual. JITTER_SEED begins the pauses of all threads; which thread comes when is still the system's choice.
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::uint64_t oneIn = 8;          // calls that pause
constexpr std::uint64_t longest = 400'000;  // nanoseconds

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ (value >> 33U)) * 0xFF51AFD7ED558CCDU;
  return value ^ (value >> 29U);
}

std::uint64_t seed() {
  static const std::uint64_t given = [] {
    const char* const text = std::getenv("JITTER_SEED");
    return text != nullptr ? std::strtoull(text, nullptr, 10) : 1;
  }();
  return given;
}

std::uint64_t random() {
  static std::atomic<std::uint64_t> threads{0};
  thread_local std::uint64_t state = mixed(seed() * 1000 + ++threads) | 1U;
  state = state * 6364136223846793005U + 1442695040888963407U;
  return mixed(state);
}

void pauseAtRandom() {
  const std::uint64_t choice = random();
  if (choice % oneIn != 0) return;
  const int error = errno;
  const timespec time{0, static_cast<long>(choice / oneIn % longest)};
  nanosleep(&time, nullptr);
  errno = error;
}

template <class Function>
Function next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Calls what the program meant, with a pause on either side.
template <class Function, class... Arguments>
auto paused(Function own, const char* name, Arguments... arguments) {
  const Function meant = next(own, name);
  pauseAtRandom();
  const auto result = meant(arguments...);
  pauseAtRandom();
  return result;
}

}  // namespace

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto meant = next(pthread_mutex_lock, "pthread_mutex_lock");
  pauseAtRandom();
  return meant(mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static const auto meant = next(pthread_mutex_unlock, "pthread_mutex_unlock");
  const int result = meant(mutex);
  pauseAtRandom();
  return result;
}

int poll(pollfd* descriptors, nfds_t count, int limit) { return paused(poll, "poll", descriptors, count, limit); }
ssize_t send(int socket, const void* data, size_t size, int flags) { return paused(send, "send", socket, data, size, flags); }
ssize_t recv(int socket, void* data, size_t size, int flags) { return paused(recv, "recv", socket, data, size, flags); }
ssize_t write(int file, const void* data, size_t size) { return paused(write, "write", file, data, size); }
ssize_t read(int file, void* data, size_t size) { return paused(read, "read", file, data, size); }
int close(int file) { return paused(close, "close", file); }
}
