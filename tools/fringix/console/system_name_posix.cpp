#include <sys/utsname.h>

#include "console/system_name.h"

namespace fringix::tool {

std::string systemName() {
  utsname name{};
  return uname(&name) == 0 ? std::string(name.sysname) + ' ' + name.release + ' ' + name.machine : "unknown";
}

}  // namespace fringix::tool
