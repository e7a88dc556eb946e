#include "patches.h"

#include <algorithm>
#include <cstring>

namespace fringix::scan {

namespace {

// Runs instead of pixels: a patch has few of them, so that labels cost no memory to speak of.
class Patches {
 public:
  Patches(const std::uint8_t* reason, std::size_t width, std::size_t height) {
    std::size_t above = 0;
    for (std::size_t row = 0; row < height; ++row) {
      const std::size_t start = runs_.size();
      addRuns(reason + row * width, row, width);
      joinWith(above, start);
      above = start;
    }
  }

  std::vector<Run> smallerThan(std::size_t least) {
    std::vector<std::size_t> sizes(runs_.size(), 0);
    for (std::size_t i = 0; i < runs_.size(); ++i) sizes[root(i)] += runs_[i].end - runs_[i].first;
    std::vector<Run> small;
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      if (sizes[root(i)] < least) small.push_back(runs_[i]);
    }
    return small;
  }

 private:
  void addRuns(const std::uint8_t* reason, std::size_t row, std::size_t width) {
    const std::uint8_t* const end = reason + width;
    for (const std::uint8_t* first = std::find(reason, end, 0); first != end;) {
      const std::uint8_t* const behind = std::find_if(first, end, [](std::uint8_t r) { return r != 0; });
      parents_.push_back(runs_.size());
      runs_.push_back({row, static_cast<std::size_t>(first - reason), static_cast<std::size_t>(behind - reason)});
      first = std::find(behind, end, 0);
    }
  }

  // The runs from `above` on are those of the row before, those from `start` on are new; both are sorted.
  void joinWith(std::size_t above, std::size_t start) {
    std::size_t other = above;
    for (std::size_t run = start; run < runs_.size(); ++run) {
      while (other < start && runs_[other].end <= runs_[run].first) ++other;
      for (std::size_t touching = other; touching < start && runs_[touching].first < runs_[run].end; ++touching) join(run, touching);
    }
  }

  std::size_t root(std::size_t run) {
    while (parents_[run] != run) run = parents_[run] = parents_[parents_[run]];
    return run;
  }

  void join(std::size_t a, std::size_t b) {
    const std::size_t first = root(a);
    const std::size_t second = root(b);
    parents_[std::max(first, second)] = std::min(first, second);
  }

  std::vector<Run> runs_;
  std::vector<std::size_t> parents_;
};

}  // namespace

std::vector<Run> smallPatches(const std::uint8_t* reason, std::size_t width, std::size_t height, std::size_t least) {
  return Patches(reason, width, height).smallerThan(least);
}

}  // namespace fringix::scan
