// Progress for people: drawn over itself on one line of a terminal, never drawn elsewhere.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace fringix::tool {

// A line that is gone when the object is.
class TransientLine {
 public:
  TransientLine(std::FILE* stream, bool visible, const std::string& text = {});
  ~TransientLine();
  TransientLine(const TransientLine&) = delete;
  TransientLine& operator=(const TransientLine&) = delete;

  void show(const std::string& text);

 private:
  std::FILE* stream_;
  bool visible_;
  std::size_t shown_ = 0;
};

// "[==========          ]  10/20  52.3/s": one line, no line end. The rate is left out until there is one.
std::string progressText(std::size_t done, std::size_t total, std::chrono::duration<double> elapsed);

class ProgressBar {
 public:
  ProgressBar(std::FILE* stream, bool visible, std::size_t total);
  void advance();  // one step is done; redraws at most ten times a second

 private:
  using Clock = std::chrono::steady_clock;

  TransientLine line_;
  std::size_t done_ = 0;
  std::size_t total_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point drawn_ = start_;
};

// How long something takes that tells nothing on its way: "measuring ... 2.4 s", as long as the object lives.
class ElapsedTime {
 public:
  ElapsedTime(std::FILE* stream, bool visible, std::string text);
  ~ElapsedTime();
  ElapsedTime(const ElapsedTime&) = delete;
  ElapsedTime& operator=(const ElapsedTime&) = delete;

 private:
  void run();

  TransientLine line_;
  const std::string text_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;
  std::thread thread_;  // none when nothing is drawn
};

}  // namespace fringix::tool
