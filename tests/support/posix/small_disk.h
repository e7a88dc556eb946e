// A file system that is soon full.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "support/scratch_folder.h"

namespace fringix::test {

// Only the thread that makes it, and the programs and threads which that one starts later, see it.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string& size) : usable_(enterNamespace() && mountAt(size)) {}
  ~SmallDisk() {
    if (usable_) umount2(scratch_.path().c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool usable() const { return usable_; }  // false where nobody may mount anything
  const std::filesystem::path& path() const { return scratch_.path(); }
  std::filesystem::path operator/(const std::string& name) const { return scratch_ / name; }

 private:
  // An ordinary user gets the rights for this by being root in a user namespace.
  static bool enterNamespace() {
    const std::string user = std::to_string(getuid());
    if (unshare(CLONE_NEWNS) == 0) return true;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    return static_cast<bool>(std::ofstream("/proc/self/uid_map") << "0 " + user + " 1" << std::flush);
  }

  bool mountAt(const std::string& size) const {
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
    return mount("fringix", path().c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
  }

  ScratchFolder scratch_;
  bool usable_;
};

}  // namespace fringix::test
