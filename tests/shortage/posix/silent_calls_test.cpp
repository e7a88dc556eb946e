// What talks to nobody, with every call of the system failing that it makes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "fringix/fringix.h"
#include "fringix/scan.h"
#include "head/model/calibration_block.h"
#include "shortage.h"
#include "sweep.h"

namespace fringix::test {

namespace {

// Trace lines go to standard error, which is what can fail here; those that it does not take are lost.
class SilentExportsInShortageTest : public testing::Test {
 protected:
  SilentExportsInShortageTest() : standardError_(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  ~SilentExportsInShortageTest() override {
    SLSetDebugFlag(0);
    dup2(standardError_, STDERR_FILENO);
    close(standardError_);
    printTally();
  }

  const int standardError_;
};

struct SilentExport {
  const char* name;
  std::int32_t (*run)();
  std::int32_t expected;
};

const std::vector<SilentExport>& silentExports() {
  static const std::vector<SilentExport> table{
      {"SLSetDebugFlag", [] { return SLSetDebugFlag(1); }, SLALL_OKAY},
      {"SLErrorcodeToChar", [] { return SLErrorcodeToChar(-10) != nullptr ? SLALL_OKAY : SLSYSTEM_ERROR; }, SLALL_OKAY},
      {"QORFringixVersion", QORFringixVersion, 4002},
      {"SLFreeData", [] { return SLFreeData(nullptr); }, SLALL_OKAY},
      {"SLGetCameraSize", [] { return SLGetCameraSize(0, nullptr, nullptr); }, SLUNKNOWN_DEVICE_ID},
      {"SLGetProjectorSize", [] { return SLGetProjectorSize(0, nullptr, nullptr); }, SLUNKNOWN_DEVICE_ID},
  };
  return table;
}

TEST_F(SilentExportsInShortageTest, EndWithTheirStatus) {
  SLSetDebugFlag(1);
  for (const SilentExport& row : silentExports()) {
    std::int32_t result = 0;
    sweep({row.name, [&] { result = row.run(); },
           [&](const Fault& fault) {
             const bool isOutOfMemory = fault.struck > 0 && fault.isOf("malloc") && result == SLSYSTEM_ERROR;
             const bool mayBe = result == row.expected || isOutOfMemory;
             return mayBe ? testing::AssertionSuccess() : testing::AssertionFailure() << "gave " << result;
           }});
  }
}

TEST(CalibrationInShortageTest, IsReadAndWrittenOrRefused) {
  const head::Block block = head::calibrationBlock(head::HeadSettings{});
  SLScanCalibration calibration{};
  std::int32_t result = 0;
  const auto readAndWrite = [&] {
    std::array<char, 1 << 14> text;
    std::uint32_t length = 0;
    const auto room = static_cast<std::uint32_t>(text.size());
    result = SLScanCalibrationRead(reinterpret_cast<const char*>(block.data()), static_cast<std::uint32_t>(block.size()), &calibration);
    if (result == SLALL_OKAY) result = SLScanCalibrationWrite(&calibration, text.data(), room, &length);
  };
  const auto check = [&](const Fault& fault) {
    const bool mayBe = result == SLALL_OKAY || (fault.struck > 0 && result == SLSYSTEM_ERROR);
    return mayBe ? testing::AssertionSuccess() : testing::AssertionFailure() << "gave " << result;
  };
  EXPECT_EQ(sweep({"SLScanCalibrationRead, Write", readAndWrite, check, true, everyFault() ? 1U : 13U}), 0);
  printTally();
}

}  // namespace

}  // namespace fringix::test
