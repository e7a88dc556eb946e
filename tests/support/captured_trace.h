// Collects what the library writes to the debug output, from its construction to lines(), at the place where a user would see it:
// standard error, or the debugger's output on Windows. One at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace fringix::test {

class CapturedTrace {
 public:
  CapturedTrace();
  ~CapturedTrace();

  // The lines so far, each with "<QOR> " and its line end, as they were written.
  std::vector<std::string> lines();

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace fringix::test
