#include "parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace fringix::scan {

namespace {

class Team {
 public:
  Team(std::size_t pieces, const std::function<void(std::size_t)>& work) : pieces_(pieces), work_(work) {}

  void run(std::size_t members) {
    work(members);
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void work(std::size_t members) {
    std::vector<std::jthread> others;  // are waited for here, however this ends
    try {
      for (std::size_t i = 1; i < members; ++i) others.emplace_back([this] { takePieces(); });
    } catch (const std::exception&) {  // no thread, or no memory for one: fewer do it as well
    }
    takePieces();
  }

  void takePieces() noexcept {
    try {
      for (std::size_t piece = next_++; piece < pieces_; piece = next_++) work_(piece);
    } catch (...) {
      const std::lock_guard lock(mutex_);
      failure_ = std::current_exception();
      next_ = pieces_;
    }
  }

  std::size_t pieces_;
  const std::function<void(std::size_t)>& work_;
  std::atomic<std::size_t> next_{0};
  std::mutex mutex_;
  std::exception_ptr failure_;
};

}  // namespace

void inParallel(std::size_t threads, std::size_t pieces, const std::function<void(std::size_t)>& work) {
  Team(pieces, work).run(std::min(threads, pieces));
}

}  // namespace fringix::scan
