#include "console/progress_bar.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace fringix::tool {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

// A stream that keeps what is printed.
class Recording {
 public:
  std::FILE* stream() { return file_.get(); }
  std::string text() {
    std::string text(static_cast<std::size_t>(std::ftell(file_.get())), '\0');
    std::rewind(file_.get());
    text.resize(std::fread(text.data(), 1, text.size(), file_.get()));
    return text;
  }

 private:
  std::unique_ptr<std::FILE, CloseFile> file_{std::tmpfile()};
};

TEST(ProgressText, GrowsFromEmptyToFull) {
  EXPECT_EQ(progressText(0, 20, {}), "[                                        ]  0/20");
  EXPECT_EQ(progressText(5, 20, std::chrono::milliseconds(100)), "[==========                              ]  5/20  50.0/s");
  EXPECT_EQ(progressText(20, 20, std::chrono::seconds(1)), "[========================================] 20/20  20.0/s");
}

TEST(ProgressText, NothingToDoIsDone) { EXPECT_EQ(progressText(0, 0, {}), "[========================================] 0/0"); }

TEST(TransientLine, ShorterTextCoversTheLongerOneBefore) {
  Recording recording;
  {
    TransientLine line(recording.stream(), true, "connecting");
    line.show("done");
  }
  EXPECT_EQ(recording.text(), "\rconnecting\rdone      \r    \r");
}

TEST(TransientLine, PrintsNothingWhereNobodyWatches) {
  Recording recording;
  { TransientLine line(recording.stream(), false, "connecting"); }
  EXPECT_EQ(recording.text(), "");
}

TEST(ProgressBar, LastStepIsDrawnAndThenGone) {
  Recording recording;
  {
    ProgressBar bar(recording.stream(), true, 2);
    bar.advance();
    bar.advance();
  }
  const std::string text = recording.text();
  EXPECT_NE(text.find("] 2/2  "), std::string::npos);
  EXPECT_EQ(text.substr(text.rfind('\r', text.size() - 2)).find_first_not_of("\r "), std::string::npos);
}

TEST(ProgressBar, PrintsNothingWhereNobodyWatches) {
  Recording recording;
  {
    ProgressBar bar(recording.stream(), false, 1);
    bar.advance();
  }
  EXPECT_EQ(recording.text(), "");
}

TEST(ElapsedTime, CountsWhileSomethingTakesItsTimeAndIsGoneThen) {
  Recording recording;
  {
    const ElapsedTime elapsed(recording.stream(), true, "measuring");
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
  }
  const std::string text = recording.text();
  EXPECT_EQ(text.find("\rmeasuring ... 0.0 s"), 0U) << text;
  EXPECT_NE(text.find("\rmeasuring ... 0.2 s"), std::string::npos) << text;
  const std::string blank = "\r" + std::string(std::string("measuring ... 0.0 s").size(), ' ') + "\r";
  EXPECT_EQ(text.substr(text.size() - blank.size()), blank);
}

TEST(ElapsedTime, IsNotDrawnWhereNobodySeesIt) {
  Recording recording;
  { const ElapsedTime elapsed(recording.stream(), false, "measuring"); }
  EXPECT_EQ(recording.text(), "");
}

}  // namespace
}  // namespace fringix::tool
