// A lock that its owner may take again; it is free once every take was undone. Usable with std::lock_guard.
#pragma once

#include <memory>

namespace fringix::platform {

class ReentrantLock {
 public:
  ReentrantLock();  // throws when the system has no lock to give
  ~ReentrantLock();
  ReentrantLock(const ReentrantLock&) = delete;
  ReentrantLock& operator=(const ReentrantLock&) = delete;

  void lock() noexcept;
  bool try_lock() noexcept;
  void unlock() noexcept;

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace fringix::platform
