// The device selector as a user meets it: the real dialog, driven from another thread, and what its caller finds afterwards.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fringix/fringix.h"
#include "user.h"

namespace fringix::test {

namespace {

constexpr std::int32_t untouched = 77;
const char* const someAddress = "10.0.0.1";

ShownLine lineOf(int serial) { return {" Serial: " + std::to_string(serial) + "   (IP: " + addressOf(serial) + ")", serial}; }

// Other heads answer from now on.
void become(std::optional<AnnouncingHead>& heads, std::vector<Announcement> others) {
  heads.reset();
  heads.emplace(std::move(others));
}

const ShownLine noDevices = {"No devices available", 0};

using Drive = std::function<void(const ShownDialog&)>;

class DeviceDialogTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = whyNoDisplay(); !reason.empty()) GTEST_SKIP() << reason;
  }

  // Shows the dialog on this thread, as a program does, while `drive` operates it from another one.
  void show(const Drive& drive, void* parent = nullptr) {
    const User user(drive);
    EXPECT_EQ(SLShowDeviceDialog(parent, &record_), SLALL_OKAY);
  }

  void expectRecord(std::int32_t serial, std::int32_t info1) const {
    EXPECT_EQ(record_.serial, serial);
    EXPECT_EQ(record_.info1, info1);
  }
  void expectUntouchedRecord() const {
    expectRecord(untouched, untouched);
    EXPECT_EQ(record_.ipAddress, someAddress);
  }

  DeviceKeyEntry record_ = {untouched, untouched, someAddress};
};

TEST_F(DeviceDialogTest, HasTheControlsOfEverySystem) {
  const AnnouncingHead heads({head(3)});
  show([](const ShownDialog& dialog) {
    EXPECT_EQ(dialog.controls(), (std::vector<ShownControl>{{ControlKind::label, -1, "Select device", true, false, false},
                                                            {ControlKind::button, ok, "OK", true, true, true},
                                                            {ControlKind::button, cancel, "Cancel", true, true, false},
                                                            {ControlKind::list, 1001, "", true, true, false},
                                                            {ControlKind::button, rescan, "Rescan", true, true, false}}));
    dialog.press(cancel);
  });
}

TEST_F(DeviceDialogTest, WithoutHeadsItSaysSoAndCancelChangesNothing) {
  show([](const ShownDialog& dialog) {
    EXPECT_EQ(dialog.lines(), std::vector<ShownLine>{noDevices});
    EXPECT_EQ(dialog.selectedLine(), 0);
    EXPECT_FALSE(dialog.enabled(ok));
    dialog.press(cancel);
  });
  expectUntouchedRecord();
}

TEST_F(DeviceDialogTest, ListsHeadsBySerialNumberAndGivesTheFirstOnOk) {
  AnnouncingHead heads({head(7), head(3)});
  show([&](const ShownDialog& dialog) {
    EXPECT_EQ(dialog.lines(), (std::vector<ShownLine>{lineOf(3), lineOf(7)}));
    EXPECT_EQ(dialog.selectedLine(), 0);
    EXPECT_TRUE(dialog.enabled(ok));
    dialog.press(ok);
  });
  expectRecord(3, 30);
  EXPECT_EQ(record_.ipAddress, addressOf(3));
  EXPECT_EQ(heads.requests().size(), 2U);
}

TEST_F(DeviceDialogTest, GivesTheHeadThatTheUserSelects) {
  std::optional<AnnouncingHead> heads;
  become(heads, {head(7), head(3)});
  show([&](const ShownDialog& dialog) {
    dialog.selectLine(1);
    become(heads, {head(7), head(3), head(1)});  // the confirming scan finds the choice in another place
    dialog.press(ok);
  });
  expectRecord(7, 70);
  EXPECT_EQ(record_.ipAddress, addressOf(7));
}

TEST_F(DeviceDialogTest, AHeadThatGoesSilentBeforeOkIsNotGiven) {
  std::optional<AnnouncingHead> heads;
  become(heads, {head(7), head(3)});
  show([&](const ShownDialog& dialog) {
    become(heads, {head(7)});
    dialog.press(ok);
  });
  expectRecord(-1, -1);
  EXPECT_EQ(record_.ipAddress, nullptr);
}

TEST_F(DeviceDialogTest, WhenAllHeadsGoSilentNoneIsGiven) {
  std::optional<AnnouncingHead> heads;
  become(heads, {head(7), head(3)});
  show([&](const ShownDialog& dialog) {
    heads.reset();
    dialog.press(ok);
  });
  expectRecord(-1, -1);
  EXPECT_EQ(record_.ipAddress, nullptr);
}

TEST_F(DeviceDialogTest, RescanShowsWhoIsThereNow) {
  std::optional<AnnouncingHead> heads;
  show([&](const ShownDialog& dialog) {
    EXPECT_EQ(dialog.lines(), std::vector<ShownLine>{noDevices});
    become(heads, {head(7)});
    dialog.press(rescan);
    EXPECT_EQ(dialog.lines(), std::vector<ShownLine>{lineOf(7)});
    EXPECT_EQ(dialog.selectedLine(), 0);
    EXPECT_TRUE(dialog.enabled(ok));
    heads.reset();
    dialog.press(rescan);
    EXPECT_EQ(dialog.lines(), std::vector<ShownLine>{noDevices});
    EXPECT_FALSE(dialog.enabled(ok));
    dialog.press(cancel);
  });
  expectUntouchedRecord();
}

TEST_F(DeviceDialogTest, ClosingTheWindowCancels) {
  const AnnouncingHead heads({head(3)});
  show([](const ShownDialog& dialog) { dialog.closeWindow(); });
  expectUntouchedRecord();
}

TEST_F(DeviceDialogTest, TheEscapeKeyCancels) {
  const AnnouncingHead heads({head(3)});
  show([](const ShownDialog& dialog) { dialog.pressEscape(); });
  expectUntouchedRecord();
}

TEST_F(DeviceDialogTest, CanBeShownAgain) {
  const AnnouncingHead heads({head(3)});
  show([](const ShownDialog& dialog) { dialog.press(cancel); });
  show([](const ShownDialog& dialog) { dialog.press(ok); });
  expectRecord(3, 30);
}

TEST_F(DeviceDialogTest, StandsBeforeItsParent) {
  const ParentWindow parent;
  show(
      [&](const ShownDialog& dialog) {
        EXPECT_TRUE(dialog.standsBefore(parent.handle()));
        dialog.press(cancel);
      },
      parent.handle());
}

TEST_F(DeviceDialogTest, ANullRecordIsRefusedWithoutADialog) {
  AnnouncingHead heads({head(3)});
  EXPECT_EQ(SLShowDeviceDialog(nullptr, nullptr), SLBAD_PARAMETER);
  EXPECT_TRUE(heads.requests().empty());
}

}  // namespace

}  // namespace fringix::test
