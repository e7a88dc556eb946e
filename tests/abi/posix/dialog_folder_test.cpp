// Where the library looks for its dialog module: whoever can choose the current folder must not choose what is loaded.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "fringix/fringix.h"
#include "support/scratch_folder.h"

namespace fringix::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* shownFrom = "FRINGIX_TEST_DIALOG";
constexpr const char* moduleName = "libDAXFringix-dialog.so";

class DialogFolderTest : public testing::Test {
 protected:
  DialogFolderTest() {
    fs::copy_file(LIBRARY_FILE, own_ / library_);
    fs::copy_file(DIALOG_STAND_IN, strangers_ / moduleName);
    unsetenv(shownFrom);
  }
  ~DialogFolderTest() override { fs::current_path(before_); }

  // The file that a library shows the dialog from which was loaded by this name while its own folder was the current one.
  std::string shownBy(const std::string& name) {
    fs::current_path(own_.path());
    void* const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return dlerror();
    fs::current_path(strangers_.path());
    DeviceKeyEntry record = {77, 78, "10.0.0.1"};
    EXPECT_EQ(reinterpret_cast<decltype(&SLShowDeviceDialog)>(dlsym(library, "SLShowDeviceDialog"))(nullptr, &record), SLALL_OKAY);
    dlclose(library);
    const char* const shown = std::getenv(shownFrom);
    return shown == nullptr ? "" : shown;
  }

  // One that was loaded stays, and is found again by its name.
  const std::string library_ = std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".so";
  const fs::path before_ = fs::current_path();
  ScratchFolder own_;
  ScratchFolder strangers_;
};

TEST_F(DialogFolderTest, TheModuleBesideTheLibraryIsShown) {
  fs::copy_file(DIALOG_STAND_IN, own_ / moduleName);
  EXPECT_EQ(shownBy(own_ / library_), fs::canonical(own_ / moduleName));
}

TEST_F(DialogFolderTest, ALibraryLoadedByARelativePathFindsItsOwn) {
  fs::copy_file(DIALOG_STAND_IN, own_ / moduleName);
  EXPECT_EQ(shownBy("./" + library_), fs::canonical(own_ / moduleName));
}

TEST_F(DialogFolderTest, AModuleInTheCurrentFolderIsNotLoaded) { EXPECT_EQ(shownBy("./" + library_), ""); }

}  // namespace

}  // namespace fringix::test
