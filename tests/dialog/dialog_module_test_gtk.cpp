// The module that holds the dialog of Linux: what happens without it, and what it does to the program that shows it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include "fringix/fringix.h"
#include "user.h"

namespace fringix::test {

namespace {

class DialogModuleTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = whyNoDisplay(); !reason.empty()) GTEST_SKIP() << reason;
  }

  // Whether there was a dialog to cancel.
  static bool showAndCancel(void* parent) {
    bool shown = false;
    {
      const User user([&](const ShownDialog& dialog) {
        shown = true;
        dialog.press(cancel);
      });
      DeviceKeyEntry record = {};
      EXPECT_EQ(SLShowDeviceDialog(parent, &record), SLALL_OKAY);
    }
    return shown;
  }
};

TEST_F(DialogModuleTest, ALibraryWithoutItsModuleShowsNothing) {
  char folder[] = "/tmp/fringix-test-XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const std::string copy = std::string(folder) + "/libDAXFringix.so";
  std::filesystem::copy_file(LIBRARY_FILE, copy);
  void* const library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto show = reinterpret_cast<decltype(&SLShowDeviceDialog)>(dlsym(library, "SLShowDeviceDialog"));
  DeviceKeyEntry record = {77, 78, folder};
  EXPECT_EQ(show(nullptr, &record), SLALL_OKAY);
  EXPECT_EQ(record.serial, 77);
  EXPECT_EQ(record.info1, 78);
  EXPECT_EQ(record.ipAddress, folder);
  dlclose(library);
  std::filesystem::remove_all(folder);
}

TEST_F(DialogModuleTest, TheProgramKeepsItsLocale) {
  setenv("LC_ALL", "C.UTF-8", 1);
  ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  EXPECT_TRUE(showAndCancel(nullptr));
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(DialogModuleTest, AParentThatIsNoWindowIsNone) { EXPECT_TRUE(showAndCancel(reinterpret_cast<void*>(std::uintptr_t{0x1234567}))); }

}  // namespace

}  // namespace fringix::test
