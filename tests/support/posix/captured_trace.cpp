#include "support/captured_trace.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace fringix::test {

struct CapturedTrace::Native {
  std::FILE* file = std::tmpfile();
  int savedError = dup(STDERR_FILENO);
};

CapturedTrace::CapturedTrace() : native_(std::make_unique<Native>()) {
  if (native_->file == nullptr || dup2(fileno(native_->file), STDERR_FILENO) < 0) throw std::runtime_error("cannot capture standard error");
}

CapturedTrace::~CapturedTrace() {
  dup2(native_->savedError, STDERR_FILENO);
  close(native_->savedError);
  std::fclose(native_->file);
}

std::vector<std::string> CapturedTrace::lines() {
  std::string all;
  std::array<char, 4096> buffer;
  off_t offset = 0;
  for (ssize_t count = 0; (count = pread(fileno(native_->file), buffer.data(), buffer.size(), offset)) > 0; offset += count) {
    all.append(buffer.data(), static_cast<std::size_t>(count));
  }
  std::vector<std::string> result;
  for (std::size_t start = 0; start < all.size();) {
    const std::size_t end = std::min(all.find('\n', start), all.size() - 1) + 1;
    result.push_back(all.substr(start, end - start));
    start = end;
  }
  return result;
}

}  // namespace fringix::test
