// The head that most tests of this folder talk to: quick, and of sizes of its own, so that nothing can be right by chance.
#pragma once

#include "head/settings/head_settings.h"

namespace fringix::test {

inline head::HeadSettings smallHead(std::int32_t protocolVersion = 3300) {
  head::HeadSettings settings;
  settings.address = "127.0.0.1";
  settings.serial = 4711;
  settings.camera = {64, 48};
  settings.projector = {32, 20};
  settings.protocolVersion = protocolVersion;
  return settings;
}

}  // namespace fringix::test
