// The device selector by way of the C++ wrapper and of the tool.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "application.h"
#include "user.h"

namespace fringix::test {

namespace {

class SelectHeadTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = whyNoDisplay(); !reason.empty()) GTEST_SKIP() << reason;
  }
};

void pressOk(const ShownDialog& dialog) { dialog.press(ok); }
void pressCancel(const ShownDialog& dialog) { dialog.press(cancel); }

struct ToolOutcome {
  int exitCode;
  std::string output;
  std::string errors;
};

ToolOutcome runSelect(std::vector<const char*> options = {}) {
  std::vector<const char*> arguments = {"fringix", "select"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int exitCode = tool::run(static_cast<int>(arguments.size()), arguments.data());
  std::fflush(stdout);
  const std::string output = testing::internal::GetCapturedStdout();
  return {exitCode, output, testing::internal::GetCapturedStderr()};
}

TEST_F(SelectHeadTest, TheWrapperGivesTheHeadThatWasPicked) {
  const AnnouncingHead heads({head(3)});
  const User user(pressOk);
  const std::optional<SelectedHead> picked = selectHead();
  ASSERT_TRUE(picked.has_value());
  EXPECT_EQ(picked->serial, 3);
  EXPECT_EQ(picked->info1, 30);
  EXPECT_EQ(picked->address, addressOf(3));
}

TEST_F(SelectHeadTest, TheWrapperGivesNothingWhenCancelled) {
  const AnnouncingHead heads({head(3)});
  const User user(pressCancel);
  EXPECT_EQ(selectHead().has_value(), false);
}

TEST_F(SelectHeadTest, TheWrapperThrowsWhenTheHeadHasGone) {
  std::optional<AnnouncingHead> heads;
  heads.emplace(std::vector{head(3)});
  const User user([&](const ShownDialog& dialog) {
    heads.reset();
    dialog.press(ok);
  });
  try {
    selectHead();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), SLCONNECTION_ERROR);
  }
}

TEST_F(SelectHeadTest, TheToolPrintsSerialNumberAndAddress) {
  const AnnouncingHead heads({head(3)});
  const User user(pressOk);
  const ToolOutcome outcome = runSelect();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "serial number     3\nhead              " + addressOf(3) + "\n");
}

TEST_F(SelectHeadTest, TheToolPrintsJson) {
  const AnnouncingHead heads({head(3)});
  const User user(pressOk);
  const ToolOutcome outcome = runSelect({"--json"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "{\n  \"serial\": 3,\n  \"address\": \"" + addressOf(3) + "\"\n}\n");
}

TEST_F(SelectHeadTest, TheToolFailsWhenNothingWasPicked) {
  const User user(pressCancel);
  const ToolOutcome outcome = runSelect();
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_NE(outcome.errors.find("fringix: no head was picked\n"), std::string::npos) << outcome.errors;
}

}  // namespace

}  // namespace fringix::test
