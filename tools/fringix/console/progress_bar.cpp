#include "console/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace fringix::tool {
namespace {

constexpr std::size_t barWidth = 40;
constexpr std::chrono::milliseconds redrawInterval{100};

}  // namespace

TransientLine::TransientLine(std::FILE* stream, bool visible, const std::string& text) : stream_(stream), visible_(visible) {
  if (!text.empty()) show(text);
}

TransientLine::~TransientLine() {
  if (!visible_ || shown_ == 0) return;
  show("");
  std::fputc('\r', stream_);
  std::fflush(stream_);
}

// Blanks cover what a longer text before left: they work on every console, which escape sequences do not.
void TransientLine::show(const std::string& text) {
  if (!visible_) return;
  fmt::print(stream_, "\r{:<{}}", text, shown_);
  std::fflush(stream_);
  shown_ = text.size();
}

std::string progressText(std::size_t done, std::size_t total, std::chrono::duration<double> elapsed) {
  const std::size_t filled = total == 0 ? barWidth : std::min(done, total) * barWidth / total;
  std::string counted = fmt::format("[{:<{}}] {:>{}}/{}", std::string(filled, '='), barWidth, done, std::to_string(total).size(), total);
  if (done == 0 || elapsed.count() <= 0) return counted;
  return fmt::format("{}  {:.1f}/s", counted, static_cast<double>(done) / elapsed.count());
}

ProgressBar::ProgressBar(std::FILE* stream, bool visible, std::size_t total) : line_(stream, visible), total_(total) {
  line_.show(progressText(0, total_, {}));
}

void ProgressBar::advance() {
  ++done_;
  const Clock::time_point now = Clock::now();
  if (now - drawn_ < redrawInterval && done_ < total_) return;
  drawn_ = now;
  line_.show(progressText(done_, total_, now - start_));
}

ElapsedTime::ElapsedTime(std::FILE* stream, bool visible, std::string text) : line_(stream, visible), text_(std::move(text)) {
  if (visible) thread_ = std::thread([this] { run(); });
}

ElapsedTime::~ElapsedTime() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void ElapsedTime::run() {
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  do {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    line_.show(fmt::format("{} ... {:.1f} s", text_, elapsed.count()));
  } while (!changed_.wait_for(lock, redrawInterval, [this] { return over_; }));
}

}  // namespace fringix::tool
