// Winsock is usable while one of these lives. For files of this room that know Windows.
#pragma once

#include <winsock2.h>

namespace fringix::tool {

class Winsock {
 public:
  Winsock() noexcept : error_(WSAStartup(MAKEWORD(2, 2), &data_)) {}
  ~Winsock() {
    if (error_ == 0) WSACleanup();
  }
  Winsock(const Winsock&) = delete;
  Winsock& operator=(const Winsock&) = delete;

  int error() const noexcept { return error_; }

 private:
  WSADATA data_{};
  int error_;
};

}  // namespace fringix::tool
