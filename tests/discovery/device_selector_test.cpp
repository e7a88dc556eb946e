// What the device selector does to a dialog, and what it leaves in the caller's record. The key list functions are the test's own, so
// that each of their failures can be had.
#include "discovery/device_selector.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace fringix::test {

namespace {

namespace control = platform::device_dialog;

struct Line {
  std::string text;
  std::int32_t data = 0;
  bool operator==(const Line&) const = default;
};

class FakeView final : public platform::DeviceDialogView {
 public:
  void clearLines() noexcept override {
    lines.clear();
    selected.reset();
  }
  void addLine(const char* text) noexcept override { lines.push_back({text}); }
  void setLineData(std::int32_t line, std::int32_t data) noexcept override { lines[static_cast<std::size_t>(line)].data = data; }
  void selectLine(std::int32_t line) noexcept override { selected = line; }
  std::optional<std::int32_t> selectedLineData() const noexcept override {
    if (!selected) return std::nullopt;
    return lines[static_cast<std::size_t>(*selected)].data;
  }
  void enableOk(bool enabled) noexcept override { okEnabled = enabled; }
  void setWaitCursor() noexcept override { cursor += "w"; }
  void restoreCursor() noexcept override { cursor += "r"; }
  void end(std::int32_t code) noexcept override { endCodes.push_back(code); }

  std::vector<Line> lines;
  std::optional<std::int32_t> selected;
  bool okEnabled = true;
  std::string cursor;  // a "w" for each time that it became the wait cursor, an "r" for each time that it was restored
  std::vector<std::int32_t> endCodes;
};

// The network as the key list functions tell it.
struct FakeNetwork {
  std::vector<DeviceKeyEntry> heads;
  std::int32_t scanStatus = SLALL_OKAY;
  std::size_t entryLimit = 256;  // entries from there on are refused
  int scans = 0;
  std::function<void()> whileScanning = [] {};
};

FakeNetwork network;

std::int32_t scan(std::int32_t* count) {
  ++network.scans;
  network.whileScanning();
  *count = static_cast<std::int32_t>(network.heads.size());
  return network.scanStatus;
}

std::int32_t entry(std::int32_t index, DeviceKeyEntry* entry) {
  const auto place = static_cast<std::size_t>(index);
  if (place >= network.heads.size() || place >= network.entryLimit) return SLBAD_PARAMETER;
  *entry = network.heads[place];
  return SLALL_OKAY;
}

constexpr std::int32_t untouched = 77;
const char* const someAddress = "10.0.0.1";

class DeviceSelectorTest : public testing::Test {
 protected:
  DeviceSelectorTest() { network = {}; }

  void press(std::int32_t identifier) { selector_.command(view_, identifier); }

  void expectRecord(std::int32_t serial, std::int32_t info1, const char* address) const {
    EXPECT_EQ(record_.serial, serial);
    EXPECT_EQ(record_.info1, info1);
    EXPECT_EQ(record_.ipAddress, address);
  }
  void expectUntouchedRecord() const { expectRecord(untouched, untouched, someAddress); }
  void expectUnconfirmed() const {
    expectRecord(-1, -1, nullptr);
    EXPECT_EQ(view_.endCodes, std::vector<std::int32_t>{-10});
  }

  FakeView view_;
  DeviceKeyEntry record_ = {untouched, untouched, someAddress};
  DeviceSelector selector_{{scan, entry}, record_};
};

const DeviceKeyEntry head3 = {3, 30, "10.0.0.3"};
const DeviceKeyEntry head7 = {7, 70, "10.0.0.7"};

TEST_F(DeviceSelectorTest, ListsTheHeadsInTheirOrderAndSelectsTheFirst) {
  network.heads = {head3, head7};
  view_.okEnabled = false;
  selector_.opened(view_);
  EXPECT_EQ(view_.lines, (std::vector<Line>{{" Serial: 3   (IP: 10.0.0.3)", 3}, {" Serial: 7   (IP: 10.0.0.7)", 7}}));
  EXPECT_EQ(view_.selected, 0);
  EXPECT_TRUE(view_.okEnabled);
  EXPECT_EQ(view_.cursor, "wr");
  EXPECT_EQ(network.scans, 1);
  EXPECT_TRUE(view_.endCodes.empty());
  expectUntouchedRecord();
}

TEST_F(DeviceSelectorTest, TheLongestLineIsWhole) {
  network.heads = {{-2147483647 - 1, 0, "255.255.255.255"}};
  selector_.opened(view_);
  EXPECT_EQ(view_.lines, (std::vector<Line>{{" Serial: -2147483648   (IP: 255.255.255.255)", -2147483647 - 1}}));
}

TEST_F(DeviceSelectorTest, WithoutHeadsItSaysSoAndDisablesOk) {
  selector_.opened(view_);
  EXPECT_EQ(view_.lines, std::vector<Line>{{"No devices available"}});
  EXPECT_EQ(view_.selected, 0);
  EXPECT_FALSE(view_.okEnabled);
  EXPECT_EQ(view_.cursor, "wr");
}

TEST_F(DeviceSelectorTest, RescanShowsWhatIsThereNow) {
  selector_.opened(view_);
  network.heads = {head7};
  press(control::rescan);
  EXPECT_EQ(view_.lines, (std::vector<Line>{{" Serial: 7   (IP: 10.0.0.7)", 7}}));
  EXPECT_EQ(view_.selected, 0);
  EXPECT_TRUE(view_.okEnabled);
  network.heads = {};
  press(control::rescan);
  EXPECT_EQ(view_.lines, std::vector<Line>{{"No devices available"}});
  EXPECT_FALSE(view_.okEnabled);
  EXPECT_EQ(view_.cursor, "wrwrwr");
}

TEST_F(DeviceSelectorTest, AFailedScanLeavesTheListAsItWas) {
  network.heads = {head3, head7};
  selector_.opened(view_);
  view_.selected = 1;
  network.heads = {};
  network.scanStatus = SLSYSTEM_ERROR;
  press(control::rescan);
  EXPECT_EQ(view_.lines.size(), 2U);
  EXPECT_EQ(view_.selected, 1);
  EXPECT_TRUE(view_.okEnabled);
  EXPECT_EQ(view_.cursor, "wrwr");
}

TEST_F(DeviceSelectorTest, ARefusedEntryEndsTheListWithoutASelection) {
  network.heads = {head3, head7, head7};
  network.entryLimit = 2;
  selector_.opened(view_);
  EXPECT_EQ(view_.lines.size(), 2U);
  EXPECT_EQ(view_.selected, std::nullopt);
  EXPECT_TRUE(view_.okEnabled);
  EXPECT_EQ(view_.cursor, "wr");
}

TEST_F(DeviceSelectorTest, Lists256HeadsOfMoreWithoutASelection) {
  network.heads.assign(257, head3);
  selector_.opened(view_);
  EXPECT_EQ(view_.lines.size(), 256U);
  EXPECT_EQ(view_.selected, std::nullopt);
}

TEST_F(DeviceSelectorTest, OkGivesTheSelectedHeadAsANewScanFindsIt) {
  network.heads = {head3, head7};
  selector_.opened(view_);
  view_.selected = 1;
  network.heads = {head3, {7, 71, "10.0.0.77"}, head7};
  press(control::ok);
  expectRecord(7, 71, network.heads[1].ipAddress);  // the first of two with that serial
  EXPECT_EQ(view_.endCodes, std::vector<std::int32_t>{10});
  EXPECT_EQ(network.scans, 2);
  EXPECT_EQ(view_.cursor, "wr");
}

TEST_F(DeviceSelectorTest, AHeadThatToldNoSerialCanBeChosen) {
  network.heads = {{-1, -1, "10.0.0.9"}};
  selector_.opened(view_);
  press(control::ok);
  expectRecord(-1, -1, network.heads[0].ipAddress);
  EXPECT_EQ(view_.endCodes, std::vector<std::int32_t>{10});
}

TEST_F(DeviceSelectorTest, OkFailsWithoutASelection) {
  network.heads = {head3};
  selector_.opened(view_);
  view_.selected.reset();
  press(control::ok);
  expectUnconfirmed();
  EXPECT_EQ(network.scans, 1);
}

TEST_F(DeviceSelectorTest, OkFailsWhenTheHeadHasGone) {
  network.heads = {head3, head7};
  selector_.opened(view_);
  network.heads = {head7};
  press(control::ok);
  expectUnconfirmed();
}

TEST_F(DeviceSelectorTest, OkFailsWhenAllHeadsHaveGone) {
  network.heads = {head3};
  selector_.opened(view_);
  network.heads = {};
  press(control::ok);
  expectUnconfirmed();
}

TEST_F(DeviceSelectorTest, OkFailsWhenTheScanFails) {
  network.heads = {head3};
  selector_.opened(view_);
  network.scanStatus = SLSYSTEM_ERROR;
  press(control::ok);
  expectUnconfirmed();
}

TEST_F(DeviceSelectorTest, OkFailsAtAnEntryThatIsRefused) {
  network.heads = {head3, head7};
  selector_.opened(view_);
  view_.selected = 1;
  network.entryLimit = 1;
  press(control::ok);
  expectUnconfirmed();
}

TEST_F(DeviceSelectorTest, CancelLeavesTheRecordAlone) {
  network.heads = {head3};
  selector_.opened(view_);
  press(control::cancel);
  expectUntouchedRecord();
  EXPECT_EQ(view_.endCodes, std::vector<std::int32_t>{-20});
  EXPECT_EQ(network.scans, 1);
}

TEST_F(DeviceSelectorTest, Command32SetsTheWaitCursorWhileTheListIsFilled) {  // kept on purpose
  selector_.opened(view_);
  press(32);
  EXPECT_EQ(view_.cursor, "wr");
  network.whileScanning = [&] { press(32); };
  press(control::rescan);
  EXPECT_EQ(view_.cursor, "wrwwr");
}

TEST_F(DeviceSelectorTest, Command32IsIdleBeforeTheListIsFilled) {
  press(32);
  EXPECT_EQ(view_.cursor, "");
}

TEST_F(DeviceSelectorTest, Command32IsIdleAfterAFailureToo) {
  network.heads = {head3};
  network.entryLimit = 0;
  selector_.opened(view_);
  network.scanStatus = SLSYSTEM_ERROR;
  press(control::rescan);
  press(32);
  EXPECT_EQ(view_.cursor, "wrwr");
}

TEST_F(DeviceSelectorTest, OtherCommandsDoNothing) {
  network.heads = {head3};
  selector_.opened(view_);
  press(control::list);
  press(-1);
  EXPECT_EQ(network.scans, 1);
  EXPECT_TRUE(view_.endCodes.empty());
  expectUntouchedRecord();
}

}  // namespace

}  // namespace fringix::test
