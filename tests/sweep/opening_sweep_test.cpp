// What a session begins with, and what a search gets, cut at every byte and with every field at its borders, on a network in memory.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "fringix/fringix.h"
#include "fuzz/platform/network.h"
#include "support/wire.h"

namespace fringix::test {

namespace {

using fuzz::End;
using fuzz::network;

constexpr std::uint32_t headAddress = 0x7F000001;
constexpr std::int32_t serial = 1001;

int openByAddress(int* handle) { return SLDevAlloc("127.0.0.1", handle); }

int openBySerial(int* handle) {
  network().addresses = {{headAddress, 0xFF000000, true}};
  network().datagrams = {{headAddress, "SERIAL 1001 MODEL 1"}};
  return SLDevAllocBySerial(serial, handle);
}

class OpeningSweepTest : public testing::TestWithParam<int (*)(int*)> {
 protected:
  ~OpeningSweepTest() override { std::printf("%zu cases\n", cases_); }

  // Gives the handle.
  int open(const Bytes& answers, End end, int expected, std::size_t room = fuzz::unlimited) {
    ++cases_;
    network().connection.arriving = answers;
    network().connection.end = end;
    network().connection.room = room;
    int handle = -1;
    EXPECT_EQ(GetParam()(&handle), expected);
    EXPECT_EQ(handle >= 0, expected == SLALL_OKAY);
    EXPECT_EQ(network().open, expected == SLALL_OKAY ? 1U : 0U);
    EXPECT_FALSE(network().waitedForEver);
    return handle;
  }

  static constexpr std::array<int, 7> numbers{1, 8, 4, 0, 6, 5, 0};  // greeting, camera with status, projector with one of no interest
  static Bytes answers(const std::array<int, 7>& values = numbers) {
    Bytes bytes;
    for (const int value : values) bytes += integer(value);
    return bytes;
  }

  std::size_t cases_ = 0;
};

TEST_P(OpeningSweepTest, EndsAfterEveryByte) {
  for (std::size_t offset = 0; offset < answers().size(); ++offset) {
    for (const End end : {End::closed, End::reset, End::silence}) {
      SCOPED_TRACE(offset);
      const fuzz::FreshNetwork fresh;
      open(answers().substr(0, offset), end, offset == 0 && end == End::silence ? SLHANDSHAKE_TIMEOUT : SLCONNECTION_ERROR);
    }
  }
}

TEST_P(OpeningSweepTest, BreaksInEveryByteThatItSends) {
  const std::size_t sent = 4 + text("40MSG_SLGetMaxImageSize").size() + text("45MSG_SLGetProjDimension").size();
  for (std::size_t room = 0; room < sent; ++room) {
    SCOPED_TRACE(room);
    const fuzz::FreshNetwork fresh;
    open(answers(), End::silence, SLCONNECTION_ERROR, room);
  }
}

TEST_P(OpeningSweepTest, HasEveryNumberAtItsBorders) {
  constexpr std::size_t status = 3;
  for (std::size_t place = 0; place < numbers.size(); ++place) {
    for (const int border : {0, 1, -1, INT32_MAX, INT32_MIN, numbers[place] + 1, numbers[place] - 1}) {
      SCOPED_TRACE(std::to_string(place) + ": " + std::to_string(border));
      const fuzz::FreshNetwork fresh;
      auto values = numbers;
      values[place] = border;
      const bool isRefused = place == status && border != 0;
      const int handle = open(answers(values), End::silence, isRefused ? SLSYSTEM_ERROR : SLALL_OKAY);
      if (isRefused) continue;
      std::array<std::uint32_t, 4> sizes{};
      EXPECT_EQ(SLGetCameraSize(handle, &sizes[0], &sizes[1]), SLALL_OKAY);
      EXPECT_EQ(SLGetProjectorSize(handle, &sizes[2], &sizes[3]), SLALL_OKAY);
      const std::array told{values[1], values[2], values[4], values[5]};
      for (std::size_t i = 0; i < sizes.size(); ++i) EXPECT_EQ(static_cast<int>(sizes[i]), told[i]) << i;
      EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ways, OpeningSweepTest, testing::Values(openByAddress, openBySerial),
                         [](const auto& test) { return test.param == openByAddress ? "ByAddress" : "BySerial"; });

// The numbers of an announcement as a formatted input stream reads them; -1 from the first on that is none.
class AnnouncementReading {
 public:
  explicit AnnouncementReading(const std::string& text) : in_(text) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      std::int32_t value = 0;
      std::string label;
      if (i != 3 && !(in_ >> label)) return;  // the fourth stands without a label
      if (!(in_ >> value)) return;
      numbers[i] = value;
    }
  }

  std::array<std::int32_t, 9> numbers{-1, -1, -1, -1, -1, -1, -1, -1, -1};

 private:
  std::istringstream in_;
};

class SearchSweepTest : public testing::Test {
 protected:
  ~SearchSweepTest() override { std::printf("%zu cases\n", cases_); }

  void expectReading(const std::string& text) {
    ++cases_;
    SCOPED_TRACE(text);
    const fuzz::FreshNetwork fresh;
    network().addresses = {{headAddress, 0xFF000000, true}};
    network().datagrams = {{headAddress, text}};
    std::int32_t count = -1;
    EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
    ASSERT_EQ(count, text.empty() ? 0 : 1);
    if (count == 0) return;
    DeviceKeyEntryEx entry{};
    EXPECT_EQ(SLGetDeviceKeyListEntryEx(0, &entry), SLALL_OKAY);
    const auto& [first, model, info1, info2, info3, info4, info5, info6, info7] = AnnouncementReading(text).numbers;
    EXPECT_EQ(entry.serial, first);
    EXPECT_STREQ(entry.modelName, model == 0 ? "HXA_T3D" : model == 1 ? "QOR_T3D" : model == 2 ? "QOR_T3D_C" : "UNKNOWN_DEVICE");
    EXPECT_EQ((std::array{entry.info1, entry.info2, entry.info3, entry.info4, entry.info5, entry.info6, entry.info7}),
              (std::array{info1, info2, info3, info4, info5, info6, info7}));
  }

  static std::vector<std::string> words() {
    return {"SERIAL", "1001", "MODEL", "1",    "PROTOCOL", "3300", "2",      "WIDTH", "1280",
            "HEIGHT", "1024", "P",     "1280", "Q",        "800",  "UPTIME", "12"};
  }
  static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
  }

  std::size_t cases_ = 0;
};

TEST_F(SearchSweepTest, GetsAnAnswerThatEndsAfterEveryByte) {
  const std::string whole = joined(words());
  for (std::size_t size = 0; size <= whole.size(); ++size) expectReading(whole.substr(0, size));
}

TEST_F(SearchSweepTest, GetsEveryWordAtItsBorders) {
  for (std::size_t place = 0; place < words().size(); ++place) {
    for (const char* border :
         {"0",   "1",     "-1",  "+1", "2",   "3",   "2147483647", "-2147483648", "2147483648", "-2147483649", "99999999999999999999",
          "007", "",      "-",   "+",  "+-1", "-+1", "x",          "1x",          "0x10",       "1.5",         "1e3",
          " 7",  "\t7\n", "1\v2"}) {
      auto changed = words();
      changed[place] = border;
      expectReading(joined(changed));
    }
  }
}

}  // namespace

}  // namespace fringix::test
