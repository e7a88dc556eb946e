// fringix select where no dialog can be shown. With a display it is tested beside the dialog.
#include <gtest/gtest.h>

#include <cstdlib>

#include "program.h"

namespace fringix::test {
namespace {

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

TEST(FringixSelect, TellsWhatADialogNeeds) {
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) GTEST_SKIP() << "there is a display";
  const Outcome outcome = runProgram(FRINGIX_TOOL, "select");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors,
            "fringix: no head was picked\n"
            "  If no dialog appeared: it needs a display and, on Linux, libDAXFringix-dialog.so beside the library and GTK 3.\n");
}

}  // namespace
}  // namespace fringix::test
