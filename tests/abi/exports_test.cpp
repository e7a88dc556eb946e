// The library file itself: what it exports, and what it needs to be loaded.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

#include "abi/binary_image.h"
#include "support/export_list.h"
#include "support/sanitizers.h"

namespace fringix::test {

namespace {

const BinaryImage& library() {
  static const BinaryImage image = readBinaryImage(LIBRARY_FILE);
  return image;
}

const std::vector<std::string> keptList = readExportList(EXPORT_LIST);

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

TEST(ExportsTest, AreExactlyTheKeptList) {
  ASSERT_FALSE(keptList.empty());
  EXPECT_EQ(library().exports, keptList);
}

TEST(ExportsTest, AreAllCalledByTheCProgram) {
  std::ostringstream source;
  source << std::ifstream(C_USER).rdbuf();
  for (const std::string& name : keptList) EXPECT_NE(source.str().find(name + "("), std::string::npos) << name;
}

bool isDll() { return lowered(LIBRARY_FILE).ends_with(".dll"); }

TEST(ExportsTest, TheDllHas190Slots) { EXPECT_EQ(library().exportSlots, isDll() ? 190 : 0); }

TEST(ImportsTest, NameSystemLibrariesOnly) {
  if (builtWithSanitizers) GTEST_SKIP() << "sanitizers bring libraries of their own";
  const std::set<std::string> system = {"advapi32.dll",   "kernel32.dll",  "msvcrt.dll",          "user32.dll",
                                        "ws2_32.dll",     "iphlpapi.dll",  "libc.so.6",           "libm.so.6",
                                        "libstdc++.so.6", "libgcc_s.so.1", "ld-linux-x86-64.so.2"};
  EXPECT_FALSE(library().needs.empty());
  for (const std::string& name : library().needs) EXPECT_TRUE(system.contains(lowered(name))) << name;
}

TEST(ImageTest, IsHardened) { EXPECT_TRUE(library().hardened); }

// On Windows no thread outlives its session.
TEST(ImageTest, StaysLoadedForThreadsThatWereAbandoned) { EXPECT_EQ(library().staysLoaded, !isDll()); }

}  // namespace

}  // namespace fringix::test
