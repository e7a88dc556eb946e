#include <cstdio>

#include "export.h"

namespace fringix::scan {

namespace {

// Of a fixed length, so that telling that memory ran out needs none.
thread_local char lastError[512] = "";

}  // namespace

void keepErrorText(const char* text) noexcept { std::snprintf(lastError, sizeof lastError, "%s", text); }

}  // namespace fringix::scan

extern "C" {

int32_t SLScanVersion(void) { return 0x04000002; }

const char* SLScanErrorText(void) { return fringix::scan::lastError; }
}
