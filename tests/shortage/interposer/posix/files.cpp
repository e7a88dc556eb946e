// Files, pipes and events, and what makes threads.
#include <fcntl.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <limits.h>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "interposer/posix/real.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* block);
}

using namespace fringix::shortage;

namespace {

// The system moves the numbers of events, and what is small enough for a pipe, whole or not at all.
struct What {
  bool isEvent;
  bool canBeShort;
};

What whatIs(int descriptor, std::size_t size) noexcept {
  struct stat file {};
  if (fstat(descriptor, &file) != 0) return {false, false};
  const bool isEvent = (file.st_mode & S_IFMT) == 0;  // neither file nor pipe nor socket
  return {isEvent, !isEvent && size > (S_ISFIFO(file.st_mode) ? std::size_t{PIPE_BUF} : 1)};
}

template <class Move>
ssize_t moved(Function function, int descriptor, std::size_t size, Move&& move) noexcept {
  const int before = errno;
  const What what = whatIs(descriptor, size);
  errno = before;
  const int failure = what.isEvent ? nothing : strike(function, what.canBeShort);
  if (failure == nothing) return move(size);
  return failure == shortCount ? move(1) : failed(failure, ssize_t{-1});
}

template <class Open>
int opened(Open&& open) noexcept {
  const int failure = strike(openCall);
  return failure == nothing ? open() : failed(failure, -1);
}

struct Start {
  void* (*body)(void*);
  void* argument;
};

void* runWatched(void* raw) {
  const Start start = *static_cast<Start*>(raw);
  __libc_free(raw);
  shortage_watch(1);
  void* const result = start.body(start.argument);
  shortage_watch(0);
  return result;
}

// What the C library keeps of threads that have ended, for those to come, is neither counted nor made to fail.
template <class Call>
int unwatched(Call&& call) noexcept {
  const bool before = setWatched(false);
  const int result = call();
  setWatched(before);
  return result;
}

}  // namespace

FRINGIX_INTERPOSED int openat(int folder, const char* path, int flags, ...) {
  static const auto real = next<int(int, const char*, int, mode_t)>("openat");
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return opened([&] { return real(folder, path, flags, mode); });
}

FRINGIX_INTERPOSED int open(const char* path, int flags, ...) {
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return openat(AT_FDCWD, path, flags, mode);
}

FRINGIX_INTERPOSED int open64(const char* path, int flags, ...) {
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return openat(AT_FDCWD, path, flags, mode);
}

FRINGIX_INTERPOSED int __open_2(const char* path, int flags) { return openat(AT_FDCWD, path, flags); }
FRINGIX_INTERPOSED int __open64_2(const char* path, int flags) { return openat(AT_FDCWD, path, flags); }

FRINGIX_INTERPOSED std::FILE* fopen(const char* path, const char* mode) {
  static const auto real = next<decltype(fopen)>("fopen");
  if (const int failure = strike(openCall); failure != nothing) return failed<std::FILE*>(failure, nullptr);
  return real(path, mode);
}

FRINGIX_INTERPOSED std::FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }

FRINGIX_INTERPOSED ssize_t read(int descriptor, void* buffer, std::size_t size) {
  static const auto real = next<decltype(read)>("read");
  return moved(readCall, descriptor, size, [&](std::size_t part) { return real(descriptor, buffer, part); });
}

FRINGIX_INTERPOSED ssize_t __read_chk(int descriptor, void* buffer, std::size_t size, std::size_t) {
  return read(descriptor, buffer, size);
}

FRINGIX_INTERPOSED ssize_t write(int descriptor, const void* data, std::size_t size) {
  static const auto real = next<decltype(write)>("write");
  return moved(writeCall, descriptor, size, [&](std::size_t part) { return real(descriptor, data, part); });
}

FRINGIX_INTERPOSED int rename(const char* from, const char* to) noexcept {
  static const auto real = next<decltype(rename)>("rename");
  if (const int failure = strike(renameCall); failure != nothing) return failed(failure, -1);
  return real(from, to);
}

FRINGIX_INTERPOSED int eventfd(unsigned count, int flags) noexcept {
  static const auto real = next<decltype(eventfd)>("eventfd");
  if (const int failure = strike(eventCall); failure != nothing) return failed(failure, -1);
  return real(count, flags);
}

FRINGIX_INTERPOSED int pipe2(int* ends, int flags) noexcept {
  static const auto real = next<decltype(pipe2)>("pipe2");
  if (const int failure = strike(pipeCall); failure != nothing) return failed(failure, -1);
  return real(ends, flags);
}

FRINGIX_INTERPOSED int pipe(int* ends) noexcept { return pipe2(ends, 0); }

FRINGIX_INTERPOSED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument) noexcept {
  static const auto real = next<decltype(pthread_create)>("pthread_create");
  if (const int failure = strike(threadCall); failure != nothing) return failure;
  if (!isWatched()) return real(thread, attributes, body, argument);
  auto* const start = static_cast<Start*>(__libc_malloc(sizeof(Start)));
  *start = {body, argument};
  const int result = unwatched([&] { return real(thread, attributes, runWatched, start); });
  if (result != 0) __libc_free(start);
  return result;
}

FRINGIX_INTERPOSED int pthread_join(pthread_t thread, void** result) {
  static const auto real = next<decltype(pthread_join)>("pthread_join");
  return unwatched([&] { return real(thread, result); });
}

FRINGIX_INTERPOSED int nanosleep(const timespec* pause, timespec* left) {
  static const auto real = next<decltype(nanosleep)>("nanosleep");
  return hurries() ? 0 : real(pause, left);
}

FRINGIX_INTERPOSED int clock_nanosleep(clockid_t clock, int flags, const timespec* pause, timespec* left) {
  static const auto real = next<decltype(clock_nanosleep)>("clock_nanosleep");
  return hurries() && flags == 0 ? 0 : real(clock, flags, pause, left);
}
