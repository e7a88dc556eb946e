// A process that ends with the object, and with its parent.
#pragma once

#include <sys/types.h>

#include <functional>

namespace fringix::bench {

class ChildProcess {
 public:
  explicit ChildProcess(const std::function<void()>& body);  // runs `body`, which must not return, in a copy of this process
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t id() const noexcept { return id_; }

 private:
  pid_t id_;
};

}  // namespace fringix::bench
