// Owns one file descriptor.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace fringix::bench {

[[noreturn]] inline void throwSystemError(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

class Descriptor {
 public:
  Descriptor(int value, const char* origin) : value_(value) {
    if (value_ < 0) throwSystemError(origin);
  }
  ~Descriptor() {
    if (value_ >= 0) close(value_);
  }
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const noexcept { return value_; }

 private:
  int value_;
};

}  // namespace fringix::bench
